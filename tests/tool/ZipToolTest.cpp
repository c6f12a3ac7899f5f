// `pind zip first` and `pind pack cat --zip` on archives they cannot serve as plain bytes: entries
// compressed with another method or encrypted are refused by name, and Zip64 sizes are honoured.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "pind/files/ZipWriter.h"
#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace pind::test {
namespace {

// A one-entry stored archive whose method and flag words are then rewritten in both the local
// header and the central directory, as an archiver using another method or a password would.
std::string RelabelledArchive(const TempDir& dir, uint16_t method, uint16_t flags) {
    const std::string path = dir.File("odd.zip");
    EXPECT_TRUE(WriteZipArchive(path, {{"a.txt", "plain text", /*bDeflate=*/false}}));
    std::string bytes = dir.Read("odd.zip");
    auto put16 = [&bytes](size_t at, uint16_t v) {
        bytes[at] = static_cast<char>(v & 0xFF);
        bytes[at + 1] = static_cast<char>(v >> 8);
    };
    put16(6, flags);  // local header: flags at 6, method at 8
    put16(8, method);
    const size_t central = bytes.find("PK\x01\x02");
    EXPECT_NE(central, std::string::npos);
    put16(central + 8, flags);  // central header: flags at 8, method at 10
    put16(central + 10, method);
    return dir.Write("odd.zip", bytes);
}

TEST(ZipTool, EntriesThatAreNotPlainAreRefusedByName) {
    struct Case {
        uint16_t method;
        uint16_t flags;
        const char* why;
    };
    const Case cases[] = {
        {12, 0, "entry a.txt: compression method 12 (bzip2) is not supported"},
        {14, 0, "entry a.txt: compression method 14 (LZMA) is not supported"},
        {0, 1, "entry a.txt: encrypted entries are not supported"},
    };
    for (const Case& c : cases) {
        TempDir dir;
        const std::string archive = RelabelledArchive(dir, c.method, c.flags);
        auto run = RunPind({"zip", "first", archive, "-o", dir.File("out")});
        EXPECT_EQ(run.status, 1) << c.why;
        EXPECT_NE(run.err.find(c.why), std::string::npos) << run.err;
        EXPECT_EQ(dir.Read("out"), "") << c.why;

        run = RunPind({"pack", "cat", "--zip", archive, "a.txt"}, "", dir.Path());
        EXPECT_EQ(run.status, 1) << c.why;
        EXPECT_EQ(run.out, "") << c.why;
        EXPECT_NE(run.err.find(c.why), std::string::npos) << run.err;
    }
}

TEST(ZipTool, FirstEntriesThatGiveNothingSayWhatTheyAre) {
    struct Case {
        std::vector<ZipSource> entries;
        int status;
        const char* err;  // a part of stderr; "" when none is expected
    };
    const Case cases[] = {
        {{}, 1, "one with no entries"},
        {{{"d/", "", /*bDeflate=*/false}, {"d/a.txt", "a", true}}, 1, "first entry d/ is a folder"},
        {{{"empty.txt", "", /*bDeflate=*/true}}, 0, ""},
    };
    for (const Case& c : cases) {
        TempDir dir;
        ASSERT_TRUE(WriteZipArchive(dir.File("a.zip"), c.entries));
        const auto run = RunPind({"zip", "first", dir.File("a.zip"), "-o", dir.File("out")});
        EXPECT_EQ(run.status, c.status) << run.err;
        EXPECT_NE(run.err.find(c.err), std::string::npos) << run.err;
        EXPECT_EQ(run.out, c.status == 0 ? "0\n" : "") << c.err;
    }
}

TEST(ZipTool, AnEntryWithAFailedChecksumIsNotCalledMissing) {
    TempDir dir;
    ASSERT_TRUE(WriteZipArchive(dir.File("a.zip"), {{"a.txt", "plain text", /*bDeflate=*/false}}));
    std::string bytes = dir.Read("a.zip");
    bytes[30 + 5] ^= 0x20;  // the first data byte, after the 30-byte header and "a.txt"
    dir.Write("a.zip", bytes);
    const auto run = RunPind({"pack", "cat", "--zip", dir.File("a.zip"), "a.txt"}, "", dir.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("a.txt: in " + dir.File("a.zip") + " but cannot be read"),
              std::string::npos)
        << run.err;
}

TEST(ZipTool, Zip64ArchivesFromTheZipProgramAreRead) {
    TempDir dir;
    const std::string text(70000, 'z');
    dir.Write("a.txt", text);
    const std::string zip = "cd '" + dir.Path() + "' && zip -q -fz big.zip a.txt 2>/dev/null";
    if (std::system(zip.c_str()) != 0) {
        GTEST_SKIP() << "no zip program here";
    }
    auto run = RunPind({"zip", "first", dir.File("big.zip"), "-o", dir.File("out")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(dir.Read("out"), text);
    run = RunPind({"pack", "cat", "--zip", dir.File("big.zip"), "a.txt"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, text);
}

}  // namespace
}  // namespace pind::test

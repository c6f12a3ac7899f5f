// `pind zip first` and `pind pack cat --zip` on archives they cannot serve as plain bytes: entries
// compressed with another method or encrypted are refused by name, and Zip64 sizes are honoured.

#include <cstdlib>
#include <tuple>

#include "pind/files/ZipWriter.h"
#include "tool/RunTool.h"

namespace pind::test {
namespace {

// A one-entry stored archive whose method and flag words are then rewritten in both the local
// header and the central directory, as an archiver using another method or a password would.
std::string RelabelledArchive(const TempDir& dir, uint16_t method, uint16_t flags) {
    EXPECT_TRUE(
        WriteZipArchive(dir.File("odd.zip"), {{"a.txt", "plain text", /*bDeflate=*/false}}));
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
    const std::tuple<uint16_t, uint16_t, const char*> cases[] = {
        {12, 0, "entry a.txt: compression method 12 (bzip2) is not supported"},
        {14, 0, "entry a.txt: compression method 14 (LZMA) is not supported"},
        {0, 1, "entry a.txt: encrypted entries are not supported"},
    };
    for (const auto& [method, flags, why] : cases) {
        TempDir dir;
        RelabelledArchive(dir, method, flags);
        ExpectRuns({{"zip first odd.zip -o out", 1, "", why},
                    {"pack cat --zip odd.zip a.txt", 1, "", why}},
                   dir.Path());
        EXPECT_EQ(dir.Read("out"), "") << why;
    }
}

TEST(ZipTool, FirstEntriesThatGiveNothingSayWhatTheyAre) {
    const std::tuple<std::vector<ZipSource>, int, const char*> cases[] = {
        {{}, 1, "one with no entries"},
        {{{"d/", "", /*bDeflate=*/false}, {"d/a.txt", "a", true}}, 1, "first entry d/ is a folder"},
        {{{"empty.txt", "", /*bDeflate=*/true}}, 0, ""},
    };
    for (const auto& [entries, status, err] : cases) {
        TempDir dir;
        ASSERT_TRUE(WriteZipArchive(dir.File("a.zip"), entries));
        ExpectRuns({{"zip first a.zip -o out", status, status == 0 ? "0\n" : "", err}}, dir.Path());
    }
}

TEST(ZipTool, AnEntryWithAFailedChecksumIsNotCalledMissing) {
    TempDir dir;
    ASSERT_TRUE(WriteZipArchive(dir.File("a.zip"), {{"a.txt", "plain text", /*bDeflate=*/false}}));
    std::string bytes = dir.Read("a.zip");
    bytes[30 + 5] ^= 0x20;  // the first data byte, after the 30-byte header and "a.txt"
    dir.Write("a.zip", bytes);
    ExpectRuns({{"pack cat --zip a.zip a.txt", 1, "", "a.txt: in a.zip but cannot be read"}},
               dir.Path());
}

TEST(ZipTool, Zip64ArchivesFromTheZipProgramAreRead) {
    TempDir dir;
    const std::string text(70000, 'z');
    dir.Write("a.txt", text);
    const std::string zip = "cd '" + dir.Path() + "' && zip -q -fz big.zip a.txt 2>/dev/null";
    if (std::system(zip.c_str()) != 0) {
        GTEST_SKIP() << "no zip program here";
    }
    ExpectRuns({{"zip first big.zip -o out", 0, "70000\n", ""},
                {"pack cat --zip big.zip a.txt", 0, text, ""}},
               dir.Path());
    EXPECT_EQ(dir.Read("out"), text);
}

}  // namespace
}  // namespace pind::test

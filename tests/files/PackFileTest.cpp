// CPackFile and the PackF* family: path handling, the open order over disk and package, the
// memory-mode rules and the bad-argument guards. The three-backend agreement is in
// PackModesTest.cpp.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "pind/files/PackFile.h"
#include "support/EngineLogCapture.h"
#include "support/FakePackage.h"
#include "support/TempDir.h"

namespace {

using pind::test::FakePackage;
using pind::test::PackageFirstClient;
using pind::test::RecordingClient;
using pind::test::TempDir;

TEST(PackFileText, TrimLineEndAndIsCommentLineFollowTheLineRules) {
    const std::pair<const char*, const char*> trims[] = {
        {"abc\r\n", "abc"}, {"\r\n", ""}, {"", ""}, {"a\rb", "a"}};
    for (const auto& [in, want] : trims) {
        std::string line = in;
        TrimLineEnd(&line[0]);
        EXPECT_STREQ(line.c_str(), want) << in;
    }
    TrimLineEnd(nullptr);
    for (const char* line :
         {static_cast<const char*>(nullptr), "", "\n", "\r\n", ";", ";x", "//x"}) {
        EXPECT_TRUE(IsCommentLine(line)) << (line ? line : "(null)");
    }
    for (const char* line : {"/", "/x", "\r", " ;x", "key=1"}) {
        EXPECT_FALSE(IsCommentLine(line)) << line;
    }
}

TEST(PackFileOpen, PackageIsAskedForTheNormalisedLowerCasedNameThenUnderTheBaseDir) {
    PackageFirstClient client;
    client.baseDir = "Game\\Res";
    FakePackage pack;
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"./Data//X.lua", {"data//x.dat"}},
        {"A/.//B.lua.lua", {"a/b.dat.lua"}},  // first ".lua", first ".//"
        {"a/./b/./c", {"a/b/./c"}},           // only the first "./"
        {"UI/A.txt", {"ui/a.txt", "Game/Res/ui/a.txt"}},
    };
    for (const auto& [path, asked] : cases) {
        pack.files[asked.back()] = "x";
        pack.opened.clear();
        CPackFile* f = PackFOpen(path, "r");
        EXPECT_FALSE(f->IsDiskMode());
        EXPECT_EQ(pack.opened, asked) << path;
        PackFClose(f);
    }
}

TEST(PackFileOpen, OrderFollowsThePackageModeBaseDirAndTranslation) {
    TempDir dir;
    const std::string onDisk = dir.Write("d.txt", "disk");
    std::string lowerOnDisk = onDisk;
    std::transform(onDisk.begin(), onDisk.end(), lowerOnDisk.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    RecordingClient client;
    client.packageInUse = true;
    client.baseDir = dir.Path();
    client.translations["alias.txt"] = "d.txt";
    FakePackage pack;
    pack.files[lowerOnDisk] = "pack";
    pack.files["only/pack.txt"] = "pack";
    pack.files["empty.txt"] = "";
    // Package mode, force disk, path, open mode, what opens (0 none, 1 disk, 2 memory), package
    // opens asked.
    const std::tuple<int, bool, std::string, const char*, int, size_t> cases[] = {
        {0, false, onDisk, "rb", 1, 0},               // disk first; found, package not asked
        {0, false, "only/pack.txt", "rb", 2, 1},      // disk first; missing, package fallback
        {0, false, "d.txt", "rb", 1, 0},              // disk retries under the base dir
        {0, false, "alias.txt", "rb", 1, 0},          // translated first
        {1, false, onDisk, "rb", 2, 1},               // package first
        {1, true, onDisk, "rb", 1, 0},                // forced to disk
        {1, false, dir.File("nowhere"), "rb", 0, 2},  // both package tries, then disk fails
        {1, false, "empty.txt", "r", 0, 1},           // an empty packaged file is no file
        {1, false, onDisk, "r+", 1, 0},               // write modes never ask the package
    };
    for (const auto& [mode, forceDisk, path, open, want, asked] : cases) {
        client.packageMode = mode;
        SetPackForceDisk(forceDisk);
        pack.opened.clear();
        CPackFile* f = PackFOpen(path.c_str(), open);
        EXPECT_EQ(f == nullptr ? 0 : f->IsDiskMode() ? 1 : 2, want) << path << " " << open << mode;
        EXPECT_EQ(pack.opened.size(), asked) << path << " " << open << " mode " << mode;
        PackFClose(f);
    }
    SetPackForceDisk(false);
    EXPECT_EQ(PackFOpen(nullptr, "r"), nullptr);
    EXPECT_EQ(PackFOpen("only/pack.txt", nullptr), nullptr);
    // Existence asks the package, then the client, then the file system.
    client.existing.insert("client/only.txt");
    EXPECT_TRUE(PackFExist("./Only/Pack.txt"));
    EXPECT_EQ(pack.existed.back(), "only/pack.txt");
    EXPECT_TRUE(PackFExist("Client/Only.txt"));
    EXPECT_TRUE(PackFExist(dir.Write("disk_only.txt", "x").c_str()));
    for (const char* path : {"nowhere.txt", "./", ""}) {
        EXPECT_FALSE(PackFExist(path)) << path;
    }
}

TEST(PackFileOpen, ShortPackageReadIsLoggedAndKept) {
    PackageFirstClient client;
    FakePackage pack;
    pack.files["a.txt"] = "abcdef";
    pack.shortBy = 2;
    pind::test::EngineLogCapture log;
    CPackFile* f = PackFOpen("./A.txt", "r");
    EXPECT_EQ(log.Lines(), std::vector<std::string>{"VOFRead pack error, pack_name = ./A.txt"});
    char buf[8] = {};
    EXPECT_EQ(PackFRead(buf, 1, 8, f), 6u);
    EXPECT_EQ(std::string(buf, 6), std::string("abcd\0\0", 6));
    PackFClose(f);
}

class PackFileMemory : public ::testing::Test {
protected:
    CPackFile* Open(const std::string& bytes) {
        PackFClose(m_file);
        m_pack.files["f.txt"] = bytes;
        return m_file = PackFOpen("f.txt", "r");
    }
    ~PackFileMemory() override { PackFClose(m_file); }

    PackageFirstClient m_client;
    FakePackage m_pack;
    CPackFile* m_file = nullptr;
};

TEST_F(PackFileMemory, GetsStopsAtLineEndsCapacityAndTheFfByteThenZeroesTheBuffer) {
    // Bytes, capacity, "<line>|<line ends>@<position>" or "null". Plain CR LF, LF, unended and
    // 0xFF-ended lines are read by every backend in PackModesTest.cpp.
    std::vector<std::tuple<std::string, int, std::string>> cases = {{"\r\nb", 16, "\r\n|2@2"},
                                                                    {"abcdef\n", 4, "abc|0@3"},
                                                                    {"ab", 1, "|0@0"},
                                                                    {"\377ab", 16, "null"},
                                                                    {"a\rb\n", 16, "a\rb\n|1@4"}};
    // A zero or 0xFF byte inside a line, past the open's first 128-byte scan step: the zero ends
    // the text (so no line end is seen), the 0xFF ends the read.
    const std::string x200(200, 'x');
    const std::string z300(300, 'z');
    cases.emplace_back(x200 + std::string("\0yy\r\n", 5) + z300, 256, x200 + "|0@205");
    cases.emplace_back(x200 + "\377yy\n" + z300, 256, x200 + "|0@200");
    // Lines around the 64- and 128-byte scans, also with a zero byte after the line.
    for (const auto& [length, capacity] : {std::pair<size_t, int>{1, 256},
                                           {64, 256},
                                           {65, 256},
                                           {128, 256},
                                           {129, 256},
                                           {300, 256},
                                           {129, 129},
                                           {127, 130}}) {
        std::string bytes = std::string(length - 1, 'x') + '\n' + std::string(300, 'y');
        const size_t read = std::min(length, static_cast<size_t>(capacity) - 1);
        const std::string want = bytes.substr(0, read) + (read == length ? "|1@" : "|0@");
        cases.emplace_back(bytes, capacity, want + std::to_string(read));
        bytes[length + 10] = '\0';
        cases.emplace_back(bytes, capacity, want + std::to_string(read));
    }
    for (const auto& [bytes, capacity, want] : cases) {
        CPackFile* f = Open(bytes);
        std::vector<char> buf(static_cast<size_t>(capacity) + 1, '#');
        const char* got = PackFGets(buf.data(), capacity, f);
        const std::string ends = "|" + std::to_string(f->GetLineEnds());
        EXPECT_EQ(got ? got + ends + "@" + std::to_string(f->GetPos()) : "null", want) << capacity;
        const auto past = buf.begin() + (got ? f->GetPos() : 0);
        EXPECT_TRUE(!got || std::all_of(past, buf.end() - 1, [](char c) { return c == '\0'; }))
            << bytes.size() << " " << capacity << ": a byte past the line is not zero";
        EXPECT_EQ(buf.back(), '#') << "wrote past the capacity";
    }
}

TEST_F(PackFileMemory, SeekStaysInsideTheDataExceptBeforeTheStartFromTheEnd) {
    // Offset, whence, result, position after a seek from 5.
    const std::tuple<int32_t, int, int, uint32_t> cases[] = {
        {10, SEEK_SET, 0, 10}, {11, SEEK_SET, -1, 5}, {-1, SEEK_SET, -1, 5},
        {-5, SEEK_CUR, 0, 0},  {6, SEEK_CUR, -1, 5},  {-10, SEEK_END, 0, 0},
        {1, SEEK_END, -1, 5},  {0, 3, -1, 5},         {-11, SEEK_END, 0, 0xFFFFFFFF}};
    CPackFile* f = Open("0123456789");
    for (const auto& [offset, whence, want, pos] : cases) {
        f->SetPos(5);
        EXPECT_EQ(PackFSeek(f, offset, whence), want) << offset << " " << whence;
        EXPECT_EQ(f->GetPos(), pos) << offset << " " << whence;
    }
    // The last row left the position before the start, past the data: every read comes up empty.
    char buf[4];
    EXPECT_EQ(PackFRead(buf, 1, 4, f), 0u);
    EXPECT_EQ(PackFGets(buf, 4, f), nullptr);
    EXPECT_EQ(PackFScanf(f, "%s", buf), -1);
}

TEST_F(PackFileMemory, HugeCountsWritesAndNullFilesAreRefused) {
    CPackFile* f = Open("A\x80z");
    EXPECT_EQ(PackFSeek(f, 2, SEEK_SET), 0);
    EXPECT_EQ(PackFUngetc(-1, f), -1);
    char buf[8] = {};
    // One byte left: copied and consumed, but no whole item to count.
    EXPECT_EQ(PackFRead(buf, 2, 1000000000000ull, f), 0u);
    EXPECT_STREQ(buf, "z");
    EXPECT_EQ(PackFTell(f), 3);
    EXPECT_EQ(PackFGets(buf, -5, f), nullptr);
    EXPECT_EQ(PackFReopen("f.txt", "rb", f), f);  // memory files are not reopened
    EXPECT_EQ(PackFWrite("x", 1, 1, f), 0u);
    EXPECT_EQ(PackFPrintf(f, "x"), -1);
    EXPECT_EQ(PackFGets(buf, 8, nullptr), nullptr);
    EXPECT_EQ(PackFSeek(nullptr, 0, SEEK_SET), -1);
}

}  // namespace

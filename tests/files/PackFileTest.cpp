// CPackFile and the PackF* family: path handling, the open order over disk and package, the
// memory-mode rules and the null guards. The three-backend agreement lives in PackModesTest.cpp.
#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

#include "files/FilesTestSupport.h"
#include "pind/files/PackFile.h"
#include "support/EngineLogCapture.h"
#include "support/TempDir.h"

namespace {

using pind::test::FakePackage;
using pind::test::PackageFirstClient;
using pind::test::RecordingClient;

TEST(PackFileText, TrimLineEndAndIsCommentLine) {
    struct Trim {
        const char* in;
        const char* want;
    };
    for (const Trim& c : {Trim{"abc\r\n", "abc"}, Trim{"abc\n", "abc"}, Trim{"\n", ""},
                          Trim{"\r\n", ""}, Trim{"abc", "abc"}, Trim{"", ""}, Trim{"a\rb", "a"}}) {
        std::string line = c.in;
        TrimLineEnd(&line[0]);
        EXPECT_STREQ(line.c_str(), c.want) << c.in;
    }
    TrimLineEnd(nullptr);

    struct Comment {
        const char* in;
        bool want;
    };
    for (const Comment& c :
         {Comment{nullptr, true}, Comment{"", true}, Comment{"\n", true}, Comment{";x", true},
          Comment{";", true}, Comment{"/", false}, Comment{"a", false}, Comment{"//x", true},
          Comment{"\r\n", true}, Comment{"\r", false}, Comment{"/x", false}, Comment{" ;x", false},
          Comment{"key=1", false}}) {
        EXPECT_EQ(IsCommentLine(c.in), c.want) << (c.in ? c.in : "(null)");
    }
}

TEST(PackFilePath, Normalises) {
    struct Case {
        bool inUse;
        int mode;
        bool forceDisk;
        const char* in;
        const char* want;
    };
    const Case cases[] = {
        {true, 1, false, "./data//x.lua", "data//x.dat"},
        {true, 1, false, "a/.//b.lua.lua", "a/b.dat.lua"},  // first ".lua", first ".//"
        {true, 1, false, "a/./b/./c", "a/b/./c"},           // only the first "./"
        {true, 1, true, "x.lua", "x.lua"},                  // force disk: not package-first
        {true, 2, false, "x.lua", "x.lua"},
        {false, 1, false, "./x.lua", "x.lua"},
        {true, 1, false, "", ""},
    };
    for (const Case& c : cases) {
        RecordingClient client;
        client.packageInUse = c.inUse;
        client.packageMode = c.mode;
        SetPackForceDisk(c.forceDisk);
        EXPECT_EQ(pind::detail::NormalisePackPath(c.in), c.want) << c.in;
    }
    SetPackForceDisk(false);
}

TEST(PackFileOpen, AsksThePackageForTheLowerCasedDatName) {
    PackageFirstClient client;
    FakePackage pack;
    pack.files["data//x.dat"] = "compiled";
    CPackFile* f = PackFOpen("./Data//X.lua", "r");
    ASSERT_NE(f, nullptr);
    EXPECT_FALSE(f->IsDiskMode());
    EXPECT_EQ(f->GetName(), "Data//X.dat");
    EXPECT_EQ(pack.opened, std::vector<std::string>{"data//x.dat"});
    PackFClose(f);
}

TEST(PackFileOpen, WriteModesNeverConsultThePackage) {
    pind::test::TempDir dir;
    PackageFirstClient client;
    FakePackage pack;
    for (const char* mode : {"rb+", "w", "ab", "r+"}) {
        const std::string path = dir.Write("w.txt", "x");
        pack.files[path] = "packaged";
        CPackFile* f = PackFOpen(path.c_str(), mode);
        ASSERT_NE(f, nullptr) << mode;
        EXPECT_TRUE(f->IsDiskMode()) << mode;
        PackFClose(f);
    }
    EXPECT_TRUE(pack.opened.empty());
}

TEST(PackFileOpen, PackageRetriesUnderTheBaseDirWithForwardSlashes) {
    PackageFirstClient client;
    client.baseDir = "Game\\Res";
    FakePackage pack;
    pack.files["Game/Res/ui/a.txt"] = "hi";
    CPackFile* f = PackFOpen("UI/A.txt", "r");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(pack.opened, (std::vector<std::string>{"ui/a.txt", "Game/Res/ui/a.txt"}));
    PackFClose(f);
}

TEST(PackFileOpen, OrderFollowsThePackageMode) {
    pind::test::TempDir dir;
    const std::string onDisk = dir.Write("d.txt", "disk");
    std::string lowerOnDisk = onDisk;
    for (char& ch : lowerOnDisk) {
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    }
    RecordingClient client;
    client.packageInUse = true;
    FakePackage pack;
    pack.files[lowerOnDisk] = "pack";
    pack.files["only/pack.txt"] = "pack";

    struct Case {
        int mode;
        bool forceDisk;
        std::string path;
        int want;  // 0 none, 1 disk, 2 memory
        size_t wantAsked;
    };
    const Case cases[] = {
        {0, false, onDisk, 1, 0},               // disk first; found, package not asked
        {0, false, "only/pack.txt", 2, 1},      // disk first; missing, package fallback
        {1, false, onDisk, 2, 1},               // package first
        {1, true, onDisk, 1, 0},                // forced to disk
        {1, false, dir.File("nowhere"), 0, 2},  // both package tries, then disk fails
    };
    for (const Case& c : cases) {
        client.packageMode = c.mode;
        SetPackForceDisk(c.forceDisk);
        pack.opened.clear();
        CPackFile* f = PackFOpen(c.path.c_str(), "rb");
        const int got = f == nullptr ? 0 : f->IsDiskMode() ? 1 : 2;
        EXPECT_EQ(got, c.want) << c.path << " mode " << c.mode;
        EXPECT_EQ(pack.opened.size(), c.wantAsked) << c.path << " mode " << c.mode;
        PackFClose(f);
    }
    SetPackForceDisk(false);
}

TEST(PackFileOpen, DiskRetriesUnderTheBaseDirAndTranslatesFirst) {
    pind::test::TempDir dir;
    dir.Write("sub/rel.txt", "relative");
    RecordingClient client;
    client.baseDir = dir.Path();
    client.translations["alias.txt"] = "sub/rel.txt";
    for (const char* path : {"sub/rel.txt", "alias.txt"}) {
        CPackFile* f = PackFOpen(path, "rb");
        ASSERT_NE(f, nullptr) << path;
        char line[32];
        EXPECT_STREQ(PackFGets(line, sizeof line, f), "relative");
        PackFClose(f);
    }
    client.baseDir.clear();
    EXPECT_EQ(PackFOpen("sub/rel.txt", "rb"), nullptr);
}

TEST(PackFileOpen, ShortPackageReadIsLoggedAndKept) {
    PackageFirstClient client;
    FakePackage pack;
    pack.files["a.txt"] = "abcdef";
    pack.shortBy = 2;
    pind::test::EngineLogCapture log;
    CPackFile* f = PackFOpen("./A.txt", "r");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(log.Lines(), std::vector<std::string>{"VOFRead pack error, pack_name = ./A.txt"});
    EXPECT_EQ(PackFGetLen(f), 6);
    char buf[8] = {};
    EXPECT_EQ(PackFRead(buf, 1, 8, f), 6u);
    EXPECT_EQ(std::string(buf, 6), std::string("abcd\0\0", 6));
    PackFClose(f);
}

TEST(PackFileOpen, EmptyPackagedFileAndMissingFilesGiveNull) {
    PackageFirstClient client;
    FakePackage pack;
    pack.files["empty.txt"] = "";
    EXPECT_EQ(PackFOpen("empty.txt", "r"), nullptr);
    EXPECT_EQ(PackFOpen("missing.txt", "r"), nullptr);
    EXPECT_EQ(PackFOpen(nullptr, "r"), nullptr);
    EXPECT_EQ(PackFOpen("empty.txt", nullptr), nullptr);
}

TEST(PackFileOpen, TmpFileAndReopen) {
    RecordingClient client;
    CPackFile* f = PackFTmpFile();
    ASSERT_NE(f, nullptr);
    EXPECT_GE(PackFPuts("12 34\n", f), 0);
    EXPECT_EQ(PackFPrintf(f, "%s\n", "tail"), 5);
    EXPECT_EQ(PackFPutc('!', f), '!');
    EXPECT_EQ(PackFWrite("xy", 1, 2, f), 2u);
    EXPECT_EQ(PackFFlush(f), 0);
    PackFRewind(f);
    int a = 0, b = 0;
    EXPECT_EQ(PackFScanf(f, "%d %d", &a, &b), 2);
    EXPECT_EQ(a * 100 + b, 1234);

    pind::test::TempDir dir;
    const std::string path = dir.Write("r.txt", "reopened");
    CPackFile* g = PackFReopen(path.c_str(), "rb", f);  // frees f
    ASSERT_NE(g, nullptr);
    char line[16];
    EXPECT_STREQ(PackFGets(line, sizeof line, g), "reopened");
    EXPECT_EQ(PackFReopen(nullptr, "rb", g), nullptr);
    PackFClose(g);

    PackageFirstClient packClient;
    FakePackage pack;
    pack.files["m.txt"] = "mem";
    CPackFile* m = PackFOpen("m.txt", "r");
    EXPECT_EQ(PackFReopen(path.c_str(), "rb", m), m);  // memory mode: unchanged
    PackFClose(m);
}

class PackFileMemory : public ::testing::Test {
protected:
    CPackFile* Open(const std::string& bytes) {
        m_pack.files["f.txt"] = bytes;
        m_file = PackFOpen("f.txt", "r");
        return m_file;
    }
    ~PackFileMemory() override { PackFClose(m_file); }

    PackageFirstClient m_client;
    FakePackage m_pack;
    CPackFile* m_file = nullptr;
};

TEST_F(PackFileMemory, LineTerminators) {
    struct Case {
        const char* bytes;
        int capacity;
        const char* want;  // null: PackFGets gives null
        int lineEnds;
    };
    const Case cases[] = {
        {"a\r\nb", 16, "a", 2},
        {"a\nb", 16, "a\n", 1},
        {"\r\nb", 16, "\r\n", 2},
        {"abc", 16, "abc", 0},
        {"abcdef\n", 4, "abc", 0},
        {"ab", 1, "", 0},
        {"ab\xff"
         "cd\n",
         16, "ab", 0},
        {"\xff"
         "ab",
         16, nullptr, 0},
        {"a\rb\n", 16, "a\rb\n", 1},
    };
    for (const Case& c : cases) {
        CPackFile* f = Open(c.bytes);
        ASSERT_NE(f, nullptr) << c.bytes;
        std::vector<char> buf(static_cast<size_t>(c.capacity) + 4, '#');
        const char* got = PackFGets(buf.data(), c.capacity, f);
        if (c.want == nullptr) {
            EXPECT_EQ(got, nullptr) << c.bytes;
        } else {
            ASSERT_NE(got, nullptr) << c.bytes;
            EXPECT_STREQ(got, c.want) << c.bytes;
            EXPECT_EQ(f->GetLineEnds(), c.lineEnds) << c.bytes;
        }
        EXPECT_EQ(buf[static_cast<size_t>(c.capacity)], '#') << "wrote past the capacity";
        PackFClose(f);
        m_file = nullptr;
    }
}

TEST_F(PackFileMemory, SeekRules) {
    struct Case {
        uint32_t from;
        int32_t offset;
        int whence;
        int want;
        uint32_t pos;
    };
    const Case cases[] = {
        {5, 0, SEEK_SET, 0, 0},
        {5, 10, SEEK_SET, 0, 10},
        {5, 11, SEEK_SET, -1, 5},
        {5, -1, SEEK_SET, -1, 5},
        {5, -5, SEEK_CUR, 0, 0},
        {5, -6, SEEK_CUR, -1, 5},
        {5, 5, SEEK_CUR, 0, 10},
        {5, 6, SEEK_CUR, -1, 5},
        {5, 0, SEEK_END, 0, 10},
        {5, 1, SEEK_END, -1, 5},
        {5, -10, SEEK_END, 0, 0},
        {5, 0, 3, -1, 5},
        {5, -11, SEEK_END, 0, 0xFFFFFFFF},
    };
    CPackFile* f = Open("0123456789");
    for (const Case& c : cases) {
        f->SetPos(c.from);
        EXPECT_EQ(PackFSeek(f, c.offset, c.whence), c.want) << c.offset << " " << c.whence;
        EXPECT_EQ(f->GetPos(), c.pos) << c.offset << " " << c.whence;
    }
    // Past the data every read comes up empty.
    char buf[4];
    EXPECT_EQ(PackFRead(buf, 1, 4, f), 0u);
    EXPECT_EQ(PackFGetc(f), -1);
    EXPECT_EQ(PackFGets(buf, 4, f), nullptr);
    EXPECT_EQ(PackFScanf(f, "%s", buf), -1);
    EXPECT_EQ(PackFUngetc('x', f), -1);
    EXPECT_EQ(PackFSeek64(f, 0x100000005LL, SEEK_SET), 0);
    EXPECT_EQ(PackFTell64(f), 5);
}

TEST_F(PackFileMemory, HugeCountsAndTheAllOnesWord) {
    CPackFile* f = Open("A\x80z");
    EXPECT_EQ(static_cast<uint32_t>(PackFGetc(f)), 0xFFFFFF41u);
    EXPECT_EQ(static_cast<uint32_t>(PackFGetc(f)), 0xFFFFFF80u);
    EXPECT_EQ(PackFUngetc(-1, f), -1);
    char buf[8] = {};
    // One byte left: copied and consumed, but no whole item to count.
    EXPECT_EQ(PackFRead(buf, 2, 1000000000000ull, f), 0u);
    EXPECT_STREQ(buf, "z");
    EXPECT_EQ(PackFTell(f), 3);
    EXPECT_EQ(PackFGets(buf, -5, f), nullptr);
    EXPECT_EQ(PackFWrite("x", 1, 1, f), 0u);
    EXPECT_EQ(PackFFlush(f), -1);
    EXPECT_EQ(PackFPuts("x", f), -1);
    EXPECT_EQ(PackFPrintf(f, "x"), -1);
    EXPECT_EQ(PackFGetc(nullptr), -1);
    EXPECT_EQ(PackFGets(buf, 8, nullptr), nullptr);
    EXPECT_EQ(PackFScanf(nullptr, "%s", buf), -1);
    EXPECT_EQ(PackFSeek(nullptr, 0, SEEK_SET), -1);
}

TEST(PackFileExist, AsksPackageThenClientThenFileSystem) {
    pind::test::TempDir dir;
    const std::string lower = dir.Write("on_disk.txt", "x");
    RecordingClient client;
    client.packageInUse = true;
    client.existing.insert("client/only.txt");
    FakePackage pack;
    pack.files["pack/only.txt"] = "x";
    EXPECT_TRUE(PackFExist("./Pack/Only.txt"));
    EXPECT_EQ(pack.existed.back(), "pack/only.txt");
    EXPECT_TRUE(PackFExist("Client/Only.txt"));
    EXPECT_TRUE(PackFExist(lower.c_str()));
    EXPECT_FALSE(PackFExist("nowhere.txt"));
    EXPECT_FALSE(PackFExist("./"));
    EXPECT_FALSE(PackFExist(""));
}

}  // namespace

// The same bytes read from disk, from a CDirPackage, a CZipPackage and a CMemoryPackage: one script
// of stdio calls whose results must agree across the modes, except the rows where memory mode
// differs by design (eof as -1, ungetc at end, seeking past the end); and the package backends'
// shared contract: names ignoring case, nothing outside the root, Read and Dump; and the memory
// package's own rules for adding and removing.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "pind/files/DirPackage.h"
#include "pind/files/MemoryPackage.h"
#include "pind/files/PackFile.h"
#include "pind/files/ZipPackage.h"
#include "pind/files/ZipWriter.h"
#include "support/FakePackage.h"
#include "support/TempDir.h"

namespace {

using Handle = pind::platform::PackHandle;

std::string Num(long long n) { return std::to_string(n); }
// "<result>@<position>", the position read after the call that gave the result.
std::string At(const std::string& result, CPackFile* f) {
    return result + "@" + Num(PackFTell64(f));
}
std::string Eof(int n) { return n == 0 ? "0" : n == -1 ? "-1" : "set"; }
std::string Line(CPackFile* f) {
    char buf[64];
    const char* got = PackFGets(buf, sizeof buf, f);
    return got == nullptr ? "null" : std::string(got) + "|" + Num(f->GetLineEnds());
}
std::string Scan(CPackFile* f) {
    int a = 0, b = 0;
    const int n = PackFScanf(f, "%d %d", &a, &b);
    return At(Num(n) + ":" + Num(a) + ":" + Num(b), f);
}
std::string Read(CPackFile* f, size_t size, size_t count) {
    char buf[32] = {};
    const size_t n = PackFRead(buf, size, count, f);
    return At(Num(static_cast<long long>(n)) + ":" + buf, f);
}
std::fpos_t g_saved;

struct Step {
    const char* what;
    std::string (*run)(CPackFile*);
    const char* disk;
    const char* memory = nullptr;  // null: as disk
};

// Over "ab\r\ncd\n\n12 34\nxyz" (17 bytes).
const Step kScript[] = {
    {"gets crlf", Line, "ab|2"},
    {"getc", [](CPackFile* f) { return At(Num(static_cast<uint32_t>(PackFGetc(f))), f); },
     "4294967139@5"},  // 0xFFFFFF63
    {"ungetc", [](CPackFile* f) { return At(Num(PackFUngetc('C', f)), f); }, "67@4"},
    {"gets after ungetc", Line, "Cd\n|1"},
    {"getpos", [](CPackFile* f) { return Num(PackFGetPos(f, &g_saved)); }, "0"},
    {"scanf over blank", Scan, "2:12:34@14"},
    {"setpos", [](CPackFile* f) { return At(Num(PackFSetPos(f, &g_saved)), f); }, "0@7"},
    {"scanf again", Scan, "2:12:34@14"},
    {"scanf no match", Scan, "0:0:0@14"},
    {"gets last", Line, "xyz|0"},
    {"gets at end", Line, "null"},
    {"eof", [](CPackFile* f) { return Eof(PackFEof(f)); }, "set", "-1"},
    {"ungetc at end", [](CPackFile* f) { return Num(PackFUngetc('x', f)); }, "120", "-1"},
    {"seek end", [](CPackFile* f) { return At(Num(PackFSeek(f, 0, SEEK_END)), f); }, "0@17"},
    {"seek end+1", [](CPackFile* f) { return Num(PackFSeek(f, 1, SEEK_END)); }, "0", "-1"},
    {"seek cur -18", [](CPackFile* f) { return Num(PackFSeek(f, -18, SEEK_CUR)); }, "0", "-1"},
    {"rewind eof",
     [](CPackFile* f) {
         PackFRewind(f);
         return Eof(PackFEof(f));
     },
     "0"},
    {"read items", [](CPackFile* f) { return Read(f, 4, 3); }, "3:ab\r\ncd\n\n12 3@12",
     "3:ab\r\nCd\n\n12 3@12"},  // ungetc wrote into the buffer
    {"read partial item", [](CPackFile* f) { return Read(f, 4, 100); }, "1:4\nxyz@17"},
    {"seek64 cut", [](CPackFile* f) { return At(Num(PackFSeek64(f, 0x100000005LL, SEEK_SET)), f); },
     "0@5"},
    {"length", [](CPackFile* f) { return Num(PackFGetLen(f)) + ":" + Num(PackFGetLen64(f)); },
     "17:17"},
    {"putc", [](CPackFile* f) { return Num(PackFPutc('x', f)); }, "-1"},
};

enum class Backend { kDisk, kDir, kZip, kMemory };

class PackModes : public ::testing::TestWithParam<Backend> {
protected:
    void SetUp() override {
        auto memory = std::make_unique<CMemoryPackage>();
        for (const auto& [name, bytes] :
             {std::pair<const char*, const char*>{"Data/Text.txt", "ab\r\ncd\n\n12 34\nxyz"},
              {"Data/ff.txt", "ab\377cd\n"}}) {
            m_dir.Write(std::string("pack/") + name, bytes);
            ASSERT_TRUE(memory->AddFile(name, bytes));
        }
        m_dir.Write("secret.txt", "outside");
        ASSERT_TRUE(pind::ZipFolder(m_dir.File("pack"), m_dir.File("pack.zip")));
        if (GetParam() == Backend::kDisk) {
            m_client.packageInUse = false;
            m_prefix = m_dir.File("pack") + "/";  // disk mode sees the on-disk case
        } else if (GetParam() == Backend::kDir) {
            m_package = std::make_unique<CDirPackage>(m_dir.File("pack"));
        } else if (GetParam() == Backend::kZip) {
            m_package = std::make_unique<CZipPackage>(m_dir.File("pack.zip"));
        } else {
            m_package = std::move(memory);
        }
        m_scope = std::make_unique<pind::test::ScopedPackage>(m_package.get());
    }
    CPackFile* Open(const std::string& name) { return PackFOpen((m_prefix + name).c_str(), "rb"); }

    pind::test::TempDir m_dir;
    pind::test::PackageFirstClient m_client;
    std::string m_prefix;
    std::unique_ptr<pind::platform::IPindPackage> m_package;
    std::unique_ptr<pind::test::ScopedPackage> m_scope;
};

TEST_P(PackModes, ScriptAgreesWhereTheModesAgree) {
    CPackFile* f = Open("Data/Text.txt");
    const bool disk = GetParam() == Backend::kDisk;
    EXPECT_EQ(f->IsDiskMode(), disk);
    for (const Step& step : kScript) {
        EXPECT_EQ(step.run(f), disk || step.memory == nullptr ? step.disk : step.memory)
            << step.what;
    }
    PackFClose(f);
}

TEST_P(PackModes, PackagesMatchNamesIgnoringCaseAndStayBelowTheRoot) {
    if (!m_package) {
        GTEST_SKIP() << "disk mode has no package";
    }
    pind::platform::IPindPackage& pack = *m_package;
    for (const char* name :
         {"data/text.txt", "DATA\\TEXT.TXT", "data//text.txt", "./data/text.txt"}) {
        EXPECT_EQ(pack.Exist(name, 0), 1) << name;
    }
    Handle handle = nullptr;
    for (const char* name :
         {"../secret.txt", "data/../../secret.txt", "data", "", "/data/text.txt", "missing"}) {
        EXPECT_EQ(pack.Exist(name, 0), 0) << name;
        EXPECT_NE(pack.Open(name, &handle), 0) << name;
    }
    ASSERT_EQ(pack.Open("data/text.txt", &handle), 0);
    char buf[32] = {};
    EXPECT_EQ(pack.Read(buf, 5, 1, handle), 5u);
    EXPECT_EQ(pack.Read(buf + 5, 1, 0xFFFFFFFFu, handle), 12u);  // huge count: what is left
    EXPECT_STREQ(buf, "ab\r\ncd\n\n12 34\nxyz");
    pack.Close(handle);
    EXPECT_EQ(pack.GetLen(handle), 0u);  // closed handles are forgotten
    EXPECT_EQ(pack.Read(buf, 1, 1, &buf), 0u);

    void* dumped = nullptr;
    int32_t length = 0;
    ASSERT_EQ(pack.Dump("DATA/FF.TXT", &dumped, &length, 0), 0);
    EXPECT_EQ(std::string(static_cast<char*>(dumped), static_cast<size_t>(length)), "ab\377cd\n");
    pack.Undump(dumped);
    pack.Undump(buf);  // not ours: ignored
    EXPECT_EQ(pack.Dump("missing", &dumped, &length, 0), -1);
    if (GetParam() == Backend::kMemory) {
        // The same name in another case replaces the file; names no package can hold are refused.
        auto& memory = static_cast<CMemoryPackage&>(pack);
        EXPECT_TRUE(memory.AddFile("DATA/FF.TXT", "new"));
        for (const char* bad : {"", "/root.txt", "../up.txt", "c:x.txt"}) {
            EXPECT_FALSE(memory.AddFile(bad, "x")) << bad;
        }
        EXPECT_EQ(memory.List(), (std::vector<std::string>{"data/ff.txt", "data/text.txt"}));
        EXPECT_TRUE(memory.RemoveFile("Data/FF.txt"));
        EXPECT_EQ(memory.Exist("data/ff.txt", 0), 0);
    }
}

std::string BackendName(const ::testing::TestParamInfo<Backend>& param) {
    const char* const names[] = {"Disk", "Dir", "Zip", "Memory"};
    return names[static_cast<int>(param.param)];
}

INSTANTIATE_TEST_SUITE_P(Backends, PackModes,
                         ::testing::Values(Backend::kDisk, Backend::kDir, Backend::kZip,
                                           Backend::kMemory),
                         BackendName);

}  // namespace

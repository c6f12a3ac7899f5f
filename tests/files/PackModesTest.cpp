// The same bytes read from disk, from a CDirPackage and from a CZipPackage: one script of stdio
// calls whose results must agree across the modes, except the rows where memory mode differs by
// design (eof as -1, ungetc at end, seeking past the end, the 0xFF end-of-data byte).
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "files/FilesTestSupport.h"
#include "pind/files/DirPackage.h"
#include "pind/files/PackFile.h"
#include "pind/files/ZipPackage.h"
#include "pind/files/ZipWriter.h"
#include "support/TempDir.h"

namespace {

const std::string kText = "ab\r\ncd\n\n12 34\nxyz";  // 17 bytes

std::string Num(long long n) { return std::to_string(n); }
// "<result>@<position>", the position read after the call that gave the result.
std::string At(const std::string& result, CPackFile* f) {
    return result + "@" + Num(PackFTell64(f));
}
std::string Eof(int n) { return n == 0 ? "0" : n == -1 ? "-1" : "set"; }
std::string Line(CPackFile* f, int capacity = 64) {
    char buf[64];
    const char* got = PackFGets(buf, capacity, f);
    return got == nullptr ? "null" : std::string(got) + "|" + Num(f->GetLineEnds());
}

struct Step {
    const char* what;
    std::function<std::string(CPackFile*)> run;
    const char* disk;
    const char* memory;  // null: as disk
};

std::fpos_t g_saved;

const std::vector<Step>& Script() {
    static const std::vector<Step> steps = {
        {"gets crlf", [](CPackFile* f) { return Line(f); }, "ab|2", nullptr},
        {"tell", [](CPackFile* f) { return Num(PackFTell(f)); }, "4", nullptr},
        {"getc", [](CPackFile* f) { return Num(static_cast<uint32_t>(PackFGetc(f))); },
         "4294967139", nullptr},  // 0xFFFFFF63
        {"ungetc", [](CPackFile* f) { return Num(PackFUngetc('C', f)); }, "67", nullptr},
        {"gets after ungetc", [](CPackFile* f) { return Line(f); }, "Cd\n|1", nullptr},
        {"getpos", [](CPackFile* f) { return Num(PackFGetPos(f, &g_saved)); }, "0", nullptr},
        {"scanf over blank",
         [](CPackFile* f) {
             int a = 0, b = 0;
             const int n = PackFScanf(f, "%d %d", &a, &b);
             return Num(n) + ":" + Num(a) + ":" + Num(b);
         },
         "2:12:34", nullptr},
        {"setpos", [](CPackFile* f) { return At(Num(PackFSetPos(f, &g_saved)), f); }, "0@7",
         nullptr},
        {"scanf again",
         [](CPackFile* f) {
             int a = 0, b = 0;
             const int n = PackFScanf(f, "%d %d", &a, &b);
             return Num(n) + ":" + Num(a + b);
         },
         "2:46", nullptr},
        {"scanf no match",
         [](CPackFile* f) {
             int a = 0;
             return At(Num(PackFScanf(f, "%d", &a)), f);
         },
         "0@14", nullptr},
        {"gets last", [](CPackFile* f) { return Line(f); }, "xyz|0", nullptr},
        {"gets at end", [](CPackFile* f) { return Line(f); }, "null", nullptr},
        {"eof", [](CPackFile* f) { return Eof(PackFEof(f)); }, "set", "-1"},
        {"ungetc at end", [](CPackFile* f) { return Num(PackFUngetc('x', f)); }, "120", "-1"},
        {"seek end", [](CPackFile* f) { return At(Num(PackFSeek(f, 0, SEEK_END)), f); }, "0@17",
         nullptr},
        {"seek end+1", [](CPackFile* f) { return Num(PackFSeek(f, 1, SEEK_END)); }, "0", "-1"},
        {"seek cur -18", [](CPackFile* f) { return Num(PackFSeek(f, -18, SEEK_CUR)); }, "0", "-1"},
        {"rewind eof",
         [](CPackFile* f) {
             PackFRewind(f);
             return Eof(PackFEof(f));
         },
         "0", nullptr},
        {"read items",
         [](CPackFile* f) {
             char buf[32] = {};
             const size_t n = PackFRead(buf, 4, 3, f);
             return Num(static_cast<long long>(n)) + ":" + std::string(buf);
         },
         "3:ab\r\ncd\n\n12 3", "3:ab\r\nCd\n\n12 3"},  // ungetc wrote into the buffer
        {"read partial item",
         [](CPackFile* f) {
             char buf[32] = {};
             return At(Num(static_cast<long long>(PackFRead(buf, 4, 100, f))), f);
         },
         "1@17", nullptr},
        {"seek64 cut",
         [](CPackFile* f) { return At(Num(PackFSeek64(f, 0x100000005LL, SEEK_SET)), f); }, "0@5",
         nullptr},
        {"length", [](CPackFile* f) { return Num(PackFGetLen(f)) + ":" + Num(PackFGetLen64(f)); },
         "17:17", nullptr},
        {"putc", [](CPackFile* f) { return Num(PackFPutc('x', f)); }, "-1", nullptr},
        {"error",
         [](CPackFile* f) {
             PackFClearErr(f);
             return Num(PackFError(f));
         },
         "0", nullptr},
    };
    return steps;
}

enum class Backend { kDisk, kDir, kZip };

void PrintTo(Backend b, std::ostream* os) {
    *os << (b == Backend::kDisk ? "disk" : b == Backend::kDir ? "folder" : "zip");
}

class PackModes : public ::testing::TestWithParam<Backend> {
protected:
    void SetUp() override {
        m_dir.Write("pack/Data/Text.txt", kText);
        m_dir.Write("pack/Data/ff.txt", std::string("ab\xff"
                                                    "cd\n",
                                                    6));
        ASSERT_TRUE(pind::ZipFolder(m_dir.File("pack"), m_dir.File("pack.zip")));
        switch (GetParam()) {
            case Backend::kDisk:
                m_client.packageInUse = false;
                m_prefix = m_dir.File("pack") + "/";
                break;
            case Backend::kDir:
                m_package = std::make_unique<CDirPackage>(m_dir.File("pack"));
                break;
            case Backend::kZip:
                m_package = std::make_unique<CZipPackage>(m_dir.File("pack.zip"));
                break;
        }
        m_installed = std::make_unique<pind::test::ScopedPackage>(m_package.get());
    }

    CPackFile* Open(const std::string& name) {
        // Disk mode sees the on-disk case; the packages match any case.
        return PackFOpen((m_prefix + name).c_str(), "rb");
    }

    pind::test::TempDir m_dir;
    pind::test::PackageFirstClient m_client;
    std::string m_prefix;
    std::unique_ptr<pind::platform::IPindPackage> m_package;
    std::unique_ptr<pind::test::ScopedPackage> m_installed;
};

TEST_P(PackModes, ScriptAgreesWhereTheModesAgree) {
    CPackFile* f = Open("Data/Text.txt");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->IsDiskMode(), GetParam() == Backend::kDisk);
    for (const Step& step : Script()) {
        const char* want =
            GetParam() == Backend::kDisk || step.memory == nullptr ? step.disk : step.memory;
        EXPECT_EQ(step.run(f), want) << step.what;
    }
    PackFClose(f);
}

TEST_P(PackModes, FfByteEndsPackagedTextOnly) {
    CPackFile* f = Open(GetParam() == Backend::kDisk ? "Data/ff.txt" : "DATA/FF.TXT");
    ASSERT_NE(f, nullptr);
    if (GetParam() == Backend::kDisk) {
        EXPECT_EQ(Line(f), std::string("ab\xff"
                                       "cd\n|1"));
    } else {
        EXPECT_EQ(Line(f), "ab|0");
        EXPECT_EQ(Line(f), "null");
    }
    PackFClose(f);
}

std::string BackendName(const ::testing::TestParamInfo<Backend>& param) {
    static const char* const kNames[] = {"Disk", "Dir", "Zip"};
    return kNames[static_cast<int>(param.param)];
}

INSTANTIATE_TEST_SUITE_P(Backends, PackModes,
                         ::testing::Values(Backend::kDisk, Backend::kDir, Backend::kZip),
                         BackendName);

}  // namespace

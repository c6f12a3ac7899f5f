// The string memory tracker: the running total with its +1 drift per add/remove pair, re-tagging,
// copying tags, and the dump's lines. The registry is process-wide, so checks use differences.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "pind/diag/StringMem.h"
#include "support/TempDir.h"

namespace pind::test {
namespace {

// Report files are opened in text mode, which on Windows ends lines with "\r\n".
inline std::string Lf(std::string text) {
    for (size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at)) {
        text.erase(at, 1);
    }
    return text;
}

struct TotalCase {
    const char* what;
    void (*run)(const char* a, const char* b);
    int32_t delta;
};

TEST(StringMem, TotalFollowsAddsAndRemoves) {
    static char a[8], b[8];
    const TotalCase cases[] = {
        {"add and remove 5 chars leaves 1",
         [](const char* p, const char*) {
             StringMemAdd(p, "hello");
             StringMemRemove(p);
         },
         1},
        {"null and empty texts add nothing",
         [](const char* p, const char*) {
             StringMemAdd(p, static_cast<const char*>(nullptr));
             StringMemAdd(p, "");
             StringMemAdd(p, std::string());
         },
         0},
        {"unknown address removes nothing", [](const char* p, const char*) { StringMemRemove(p); },
         0},
        {"two adds at one address count both",
         [](const char* p, const char*) {
             StringMemAdd(p, std::string("abc"));
             StringMemAdd(p, "defgh");
             StringMemRemove(p);
         },
         4 + 6 - 5},
        {"retag is remove then add",
         [](const char* p, const char*) {
             StringMemAdd(p, "abc");
             StringMemRetag(p, "xy");
             StringMemRetag(p, nullptr);
             StringMemRemove(p);
         },
         4 - 3 + 3 - 2},
        {"copy from an untagged address creates nothing",
         [](const char* p, const char* q) { EXPECT_EQ(StringMemCopyTag(q, p), q); }, 0},
        {"copy from a tagged address",
         [](const char* p, const char* q) {
             StringMemAdd(p, "four");
             StringMemCopyTag(q, p);
             StringMemRemove(p);
             StringMemRemove(q);
         },
         2},
    };
    for (const TotalCase& c : cases) {
        const int32_t before = StringMemTotal();
        c.run(a, b);
        EXPECT_EQ(StringMemTotal() - before, c.delta) << c.what;
    }
}

TEST(StringMem, DumpListsTagsByAddress) {
    TempDir dir;
    ScopedCurrentDir cwd(dir.Path());
    static char buffer[2];
    StringMemAdd(&buffer[1], "second");
    StringMemAdd(&buffer[0], "\xb5\xf7 first");
    StringMemDump();
    const std::string text = Lf(dir.Read("profile/StringExMemory.txt"));
    char head[64];
    std::snprintf(head, sizeof head, "=====TotalSize: %d======\n", StringMemTotal());
    EXPECT_EQ(text.rfind(head, 0), 0u) << text;
    char line0[128], line1[128];
    std::snprintf(line0, sizeof line0, "%p  =  8        \xb5\xf7 first\n",
                  static_cast<void*>(&buffer[0]));
    std::snprintf(line1, sizeof line1, "%p  =  6        second\n", static_cast<void*>(&buffer[1]));
    const size_t at0 = text.find(line0);
    const size_t at1 = text.find(line1);
    ASSERT_NE(at0, std::string::npos) << text;
    ASSERT_NE(at1, std::string::npos) << text;
    EXPECT_LT(at0, at1);
    StringMemRemove(&buffer[0]);
    StringMemRemove(&buffer[1]);

    // A second dump replaces the file; one into a folder that cannot be made writes nothing.
    StringMemDump();
    EXPECT_EQ(Lf(dir.Read("profile/StringExMemory.txt")).find("second"), std::string::npos);
    TempDir other;
    other.Write("profile", "a file where the folder should be");
    ScopedCurrentDir cwd2(other.Path());
    StringMemDump();
    EXPECT_EQ(Lf(other.Read("profile")), "a file where the folder should be");
}

}  // namespace
}  // namespace pind::test

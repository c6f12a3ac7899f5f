// The string memory tracker: the running total with its +1 drift per add/remove pair, re-tagging,
// copying tags, and the dump's lines. The registry is process-wide, so checks use differences.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "pind/diag/StringMem.h"
#include "support/TempDir.h"

namespace pind::test {
namespace {

// Report files are opened in text mode, which on Windows ends lines with "\r\n".
std::string Lf(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

TEST(StringMem, TotalFollowsAddsAndRemoves) {
    static char a[8], b[8];
    int32_t last = StringMemTotal();
    const auto change = [&last] {
        return StringMemTotal() - std::exchange(last, StringMemTotal());
    };
    StringMemAdd(a, "hello");
    StringMemRemove(a);
    EXPECT_EQ(change(), 1);  // an add counts the terminator, a remove does not
    StringMemAdd(a, static_cast<const char*>(nullptr));
    StringMemAdd(a, "");
    StringMemAdd(a, std::string());
    StringMemRemove(b);                    // never added
    EXPECT_EQ(StringMemCopyTag(b, a), b);  // nothing to copy from an untagged address
    EXPECT_EQ(change(), 0);
    StringMemAdd(a, std::string("abc"));
    StringMemAdd(a, "defgh");
    EXPECT_EQ(change(), 4 + 6);  // both count; the address keeps the last tag
    StringMemRetag(a, "xy");
    StringMemRetag(a, nullptr);   // keeps the tag
    EXPECT_EQ(change(), -5 + 3);  // a remove, then an add
    StringMemCopyTag(b, a);
    StringMemRemove(a);
    StringMemRemove(b);
    EXPECT_EQ(change(), 3 - 2 - 2);
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
    char lines[256];
    std::snprintf(lines, sizeof lines, "%p  =  8        \xb5\xf7 first\n%p  =  6        second\n",
                  static_cast<void*>(&buffer[0]), static_cast<void*>(&buffer[1]));
    EXPECT_NE(text.find(lines), std::string::npos) << text;  // in address order
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

// The in-memory package's own rules: what replaces what, and names a package cannot hold. Serving
// through the engine entry points is in PackModesTest.cpp with the other backends.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pind/files/MemoryPackage.h"

namespace {

TEST(MemoryPackage, AddsReplacesAndRemovesByNameIgnoringCase) {
    CMemoryPackage pack;
    ASSERT_TRUE(pack.AddFile("Ini/A.ini", "[s]\nk=1\n"));
    ASSERT_TRUE(pack.AddFile("b.txt", "old"));
    ASSERT_TRUE(pack.AddFile("B.TXT", "new"));  // same file: replaced
    for (const char* bad : {"", "/root.txt", "../up.txt", "c:x.txt"}) {
        EXPECT_FALSE(pack.AddFile(bad, "x")) << bad;
    }
    EXPECT_EQ(pack.List(), (std::vector<std::string>{"b.txt", "ini/a.ini"}));
    void* data = nullptr;
    int32_t length = 0;
    ASSERT_EQ(pack.Dump("ini\\a.INI", &data, &length, 0), 0);
    pack.Undump(data);
    ASSERT_EQ(pack.Dump("b.txt", &data, &length, 0), 0);
    EXPECT_EQ(std::string(static_cast<char*>(data), static_cast<size_t>(length)), "new");
    pack.Undump(data);

    EXPECT_TRUE(pack.RemoveFile("B.txt"));
    EXPECT_FALSE(pack.RemoveFile("B.txt"));
    EXPECT_EQ(pack.Exist("b.txt", 0), 0);
}

}  // namespace

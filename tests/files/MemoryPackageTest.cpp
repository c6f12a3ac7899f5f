// The in-memory package: what it holds is served through the engine entry points, by name ignoring
// case, and names a package cannot hold are refused.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "pind/files/MemoryPackage.h"
#include "pind/files/PackFile.h"
#include "pind/platform/Package.h"
#include "support/FakePackage.h"

namespace {

TEST(MemoryPackage, ServesWhatItHoldsThroughTheEntryPoints) {
    CMemoryPackage pack;
    ASSERT_TRUE(pack.AddFile("Ini/A.ini", "[s]\nk=1\n"));
    ASSERT_TRUE(pack.AddFile("b.txt", "old"));
    ASSERT_TRUE(pack.AddFile("B.TXT", "new"));  // same file: replaced
    for (const char* bad : {"", "/root.txt", "../up.txt", "c:x.txt"}) {
        EXPECT_FALSE(pack.AddFile(bad, "x")) << bad;
    }
    EXPECT_EQ(pack.List(), (std::vector<std::string>{"b.txt", "ini/a.ini"}));

    const pind::test::ScopedPackage installed(&pack);
    EXPECT_EQ(pind::platform::VoFExist("ini\\a.INI", 0), 1);
    pind::platform::PackHandle h = nullptr;
    ASSERT_EQ(pind::platform::VoFOpen("ini/a.ini", &h), 0);
    EXPECT_EQ(pind::platform::VoFGetLen(h), 8u);
    pind::platform::VoFClose(h);

    void* data = nullptr;
    int32_t length = 0;
    ASSERT_EQ(pind::platform::VoFDump("b.txt", &data, &length, 0), 0);
    EXPECT_EQ(std::string(static_cast<char*>(data), static_cast<size_t>(length)), "new");
    pind::platform::VoFUndump(data);

    EXPECT_TRUE(pack.RemoveFile("B.txt"));
    EXPECT_FALSE(pack.RemoveFile("B.txt"));
    EXPECT_EQ(pind::platform::VoFOpen("b.txt", &h), -1);
}

}  // namespace

// The package seam's edges. Every engine-log check elsewhere goes through the log seam (long
// texts in the server-text tests), the window seam through the client's posts (tests/client), key
// state through the profiler's hot keys, the lock through CMyLockCs (tests/diag).
#include <gtest/gtest.h>

#include "pind/platform/Package.h"
#include "support/FakePackage.h"

namespace pind::platform {
namespace {

TEST(Package, WithoutAPackageEveryCallFails) {
    ASSERT_EQ(GetPackage(), nullptr);
    PackHandle h = nullptr;
    char buf[4];
    void* data = nullptr;
    int32_t length = 0;
    EXPECT_NE(VoFOpen("a.txt", &h), 0);
    EXPECT_EQ(VoFGetLen(h), 0u);
    EXPECT_EQ(VOFRead(buf, 1, 4, h), 0u);
    VoFClose(h);
    EXPECT_EQ(VoFExist("a.txt", 0), 0);
    EXPECT_NE(VoFDump("a.txt", &data, &length, 0), 0);
    VoFUndump(data);
}

// Reading through an installed package is what every files test does; only the edges are here.
TEST(Package, InstalledPackageGetsNoNullNamesOrBuffers) {
    test::FakePackage pack;
    PackHandle h = nullptr;
    EXPECT_NE(VoFOpen(nullptr, &h), 0);
    VoFUndump(nullptr);
    EXPECT_TRUE(pack.opened.empty());
    EXPECT_EQ(pack.undumps, 0);
}

}  // namespace
}  // namespace pind::platform

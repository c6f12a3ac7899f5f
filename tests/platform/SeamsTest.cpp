// The installable seams: clock readings from an installed source and from the system, the zone's
// daylight rule across a switch of zones, and the package entry points' edges. Offsets and calendar
// conversions under many zones are walked by the time tests' grid of machine and server zones;
// reading through an installed package by every files test; the engine-log seam by every log-line
// check (long texts in the server-text tests); the window seam through the client's posts
// (tests/client); key state through the profiler's hot keys; the lock through CMyLockCs
// (tests/diag).
#include <gtest/gtest.h>

#include <ctime>
#include <utility>

#include "pind/platform/Clock.h"
#include "pind/platform/Package.h"
#include "pind/platform/System.h"
#include "pind/platform/TimeZone.h"
#include "support/FakeClock.h"
#include "support/FakePackage.h"
#include "support/TempDir.h"

namespace pind::platform {
namespace {

TEST(Clock, InstalledSourceAnswersEveryReading) {
    test::FakeClock clock;
    clock.SetTickMs(4000000000u);
    clock.SetUnixTimeMs(1715043792345);
    const int64_t counter = QueryPerformanceCounter();
    clock.AdvanceMs(300000000);  // the 32-bit tick wraps; the wide readings do not
    EXPECT_EQ(TimeGetTime(), static_cast<uint32_t>(4000000000u + 300000000u));
    EXPECT_EQ(GetTickCount(), TimeGetTime());
    EXPECT_EQ(QueryPerformanceFrequency(), 1000000);
    EXPECT_EQ(QueryPerformanceCounter() - counter, 300000000LL * 1000);
    EXPECT_EQ(UnixTimeMs(), 1715043792345 + 300000000);
    EXPECT_EQ(Time64(), 1715043792 + 300000);
}

TEST(Clock, Time64RoundsDownBeforeTheEpoch) {
    test::FakeClock clock;
    const std::pair<int64_t, int64_t> cases[] = {{0, 0},   {999, 0},    {1000, 1},
                                                 {-1, -1}, {-1000, -1}, {-1001, -2}};
    for (const auto& [ms, seconds] : cases) {
        clock.SetUnixTimeMs(ms);
        EXPECT_EQ(Time64(), seconds) << ms;
    }
}

// Runs after the fakes above: uninstalling them must have given the system clock back.
TEST(Clock, SystemClockIsTheWallClockAndMovesForward) {
    const int64_t wall = static_cast<int64_t>(std::time(nullptr));
    EXPECT_NEAR(static_cast<double>(Time64()), static_cast<double>(wall), 2.0);
    const int64_t c1 = QueryPerformanceCounter();
    const uint32_t t1 = TimeGetTime();
    volatile uint64_t spin = 0;
    for (int i = 0; i < 1000000; ++i) spin = spin + static_cast<uint64_t>(i);
    EXPECT_GT(QueryPerformanceCounter(), c1);
    EXPECT_LT(TimeGetTime() - t1, 1000u);  // moved on by milliseconds, not back (which wraps)
    // clock() counts from process start, and this test runs for less than a day.
    EXPECT_LT(ProcessClock(), 24 * 3600 * 1000);
}

const int64_t kMay = 1715043792;  // 2024-05-07 01:03:12 UTC, a Tuesday
const int64_t kJan = 1705320000;  // 2024-01-15 12:00:00 UTC

// A zone read from TZ after the process's own zone was in force keeps its daylight rule: the
// Windows runtime keeps the daylight bias from the last system zone it read.
TEST(TimeZone, DaylightRuleSurvivesTheSystemZoneInBetween) {
    test::ScopedTz outer("UTC0");  // gives the caller's TZ back at the end
    for (int round = 0; round < 2; ++round) {
        SetEnv("TZ", nullptr);  // the machine's own zone, whatever it is
        TzSet();
        test::ScopedTz tz("EST5EDT");
        EXPECT_EQ(GetDstBias(), -3600);
        std::tm tm{};
        ASSERT_TRUE(LocalTime64(kMay, &tm));
        EXPECT_EQ(tm.tm_hour, 21);
        EXPECT_GT(tm.tm_isdst, 0);
        ASSERT_TRUE(LocalTime64(kJan, &tm));
        EXPECT_EQ(tm.tm_hour, 7);
        EXPECT_EQ(tm.tm_isdst, 0);
    }
    test::ScopedTz plain("CST-8");
    EXPECT_EQ(GetDstBias(), 0);
}

TEST(Package, WithoutAPackageEveryCallFailsAndNullsAreNotPassedOn) {
    PackHandle h = nullptr;
    void* data = nullptr;
    int32_t length = 0;
    EXPECT_NE(VoFOpen("a.txt", &h), 0);
    EXPECT_EQ(VOFRead(&length, 1, 4, h), 0u);
    EXPECT_EQ(VoFGetLen(h), 0u);
    EXPECT_EQ(VoFExist("a.txt", 0), 0);
    EXPECT_NE(VoFDump("a.txt", &data, &length, 0), 0);
    test::FakePackage pack;
    EXPECT_NE(VoFOpen(nullptr, &h), 0);
    VoFUndump(nullptr);
    EXPECT_TRUE(pack.opened.empty());
    EXPECT_EQ(pack.undumps, 0);
}

}  // namespace
}  // namespace pind::platform

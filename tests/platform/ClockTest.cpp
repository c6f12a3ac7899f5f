// The clock seam: an installed source answers every reading; the system clock moves forward.
#include <gtest/gtest.h>

#include <ctime>
#include <utility>

#include "pind/platform/Clock.h"
#include "support/FakeClock.h"

namespace pind::platform {
namespace {

TEST(Clock, InstalledSourceAnswersEveryReading) {
    test::FakeClock clock;
    clock.SetTickMs(4000000000u);
    clock.SetUnixTimeMs(1715043792345);
    EXPECT_EQ(GetTickCount(), 4000000000u);
    EXPECT_EQ(UnixTimeMs(), 1715043792345);
    EXPECT_EQ(QueryPerformanceFrequency(), 1000000);

    const int64_t counter = QueryPerformanceCounter();
    clock.AdvanceMs(300000000);  // the 32-bit tick wraps; the wide readings do not
    EXPECT_EQ(TimeGetTime(), static_cast<uint32_t>(4000000000u + 300000000u));
    EXPECT_EQ(QueryPerformanceCounter() - counter, 300000000LL * 1000);
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

}  // namespace
}  // namespace pind::platform

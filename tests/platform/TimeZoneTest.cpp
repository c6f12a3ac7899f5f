// Zone offsets and calendar conversions under zones both platforms' runtimes read alike.
#include "pind/platform/TimeZone.h"

#include <gtest/gtest.h>

#include "support/FakeClock.h"
#include "support/TempDir.h"

namespace pind::platform {
namespace {

struct ZoneCase {
    const char* tz;
    long timezone;  // seconds west
    long dstBias;
    int localHourAt0103Utc;  // 2024-05-07 01:03:12 UTC, local wall clock hour
    int localMinute;
};

void PrintTo(const ZoneCase& c, std::ostream* os) { *os << c.tz; }

class Zone : public ::testing::TestWithParam<ZoneCase> {};

TEST_P(Zone, OffsetsAndLocalTimeFollowTz) {
    const ZoneCase& c = GetParam();
    test::ScopedTz tz(c.tz);
    EXPECT_EQ(GetTimezone(), c.timezone);
    EXPECT_EQ(GetDstBias(), c.dstBias);
    EXPECT_EQ(GetDaylight() != 0, c.dstBias != 0);

    std::tm tm{};
    ASSERT_TRUE(LocalTime64(1715043792, &tm));
    EXPECT_EQ(tm.tm_hour, c.localHourAt0103Utc);
    EXPECT_EQ(tm.tm_min, c.localMinute);
    EXPECT_EQ(tm.tm_sec, 12);

    // mktime is the inverse of localtime.
    EXPECT_EQ(MkTime64(&tm), 1715043792);
}

INSTANTIATE_TEST_SUITE_P(
    Zones, Zone,
    ::testing::Values(ZoneCase{"UTC0", 0, 0, 1, 3},
                      ZoneCase{"CST-8", -28800, 0, 9, 3},
                      ZoneCase{"NST+3:30", 12600, 0, 21, 33},  // 6 May
                      ZoneCase{"IST-5:30", -19800, 0, 6, 33},
                      ZoneCase{"EST5EDT", 18000, -3600, 21, 3}));  // summer: UTC-4

TEST(TimeZone, GmTimeIgnoresTheZone) {
    test::ScopedTz tz("CST-8");
    std::tm tm{};
    ASSERT_TRUE(GmTime64(1715043792, &tm));
    EXPECT_EQ(tm.tm_year + 1900, 2024);
    EXPECT_EQ(tm.tm_mon + 1, 5);
    EXPECT_EQ(tm.tm_mday, 7);
    EXPECT_EQ(tm.tm_hour, 1);
    EXPECT_EQ(tm.tm_wday, 2);  // Tuesday
}

TEST(TimeZone, RejectsWhatTheRuntimeRejects) {
    std::tm tm{};
    tm.tm_hour = 5;
    EXPECT_FALSE(LocalTime64(-1, &tm));
    EXPECT_EQ(tm.tm_hour, 0);  // zeroed on failure
    EXPECT_FALSE(GmTime64(-86400, &tm));
    EXPECT_FALSE(LocalTime64(0, nullptr));
    EXPECT_EQ(MkTime64(nullptr), -1);
}

TEST(TimeZone, SystemTimesComeFromTheClockSeam) {
    test::ScopedTz tz("CST-8");
    test::FakeClock clock;
    clock.SetUnixTimeMs(1715043792345);
    SystemTime utc{};
    GetSystemTime(&utc);
    EXPECT_EQ(utc.wYear, 2024);
    EXPECT_EQ(utc.wMonth, 5);
    EXPECT_EQ(utc.wDay, 7);
    EXPECT_EQ(utc.wDayOfWeek, 2);
    EXPECT_EQ(utc.wHour, 1);
    EXPECT_EQ(utc.wMinute, 3);
    EXPECT_EQ(utc.wSecond, 12);
    EXPECT_EQ(utc.wMilliseconds, 345);

    SystemTime local{};
    GetLocalTime(&local);
    EXPECT_EQ(local.wHour, 9);
    EXPECT_EQ(local.wMilliseconds, 345);

    clock.SetUnixTimeMs(1715043792345 + 15 * 3600 * 1000);  // past local midnight
    GetLocalTime(&local);
    EXPECT_EQ(local.wDay, 8);
    EXPECT_EQ(local.wHour, 0);
    GetSystemTime(nullptr);  // ignored
}

}  // namespace
}  // namespace pind::platform

// Zone offsets and calendar conversions under zones both platforms' runtimes read alike.
#include <gtest/gtest.h>

#include <tuple>

#include "pind/platform/System.h"
#include "pind/platform/TimeZone.h"
#include "support/TempDir.h"

namespace pind::platform {
namespace {

const int64_t kMay = 1715043792;  // 2024-05-07 01:03:12 UTC, a Tuesday
const int64_t kJan = 1705320000;  // 2024-01-15 12:00:00 UTC

TEST(TimeZone, OffsetsAndLocalTimeFollowTz) {
    // TZ, seconds west, daylight bias, local hour and minute at kMay.
    const std::tuple<const char*, long, long, int, int> cases[] = {
        {"UTC0", 0, 0, 1, 3},
        {"CST-8", -28800, 0, 9, 3},
        {"NST+3:30", 12600, 0, 21, 33},     // 6 May
        {"EST5EDT", 18000, -3600, 21, 3}};  // summer: UTC-4
    for (const auto& [zone, timezone, dstBias, hour, minute] : cases) {
        test::ScopedTz tz(zone);
        EXPECT_EQ(GetTimezone(), timezone) << zone;
        EXPECT_EQ(GetDstBias(), dstBias) << zone;
        EXPECT_EQ(GetDaylight() != 0, dstBias != 0) << zone;
        std::tm tm{};
        ASSERT_TRUE(LocalTime64(kMay, &tm));
        EXPECT_EQ(std::make_tuple(tm.tm_hour, tm.tm_min, tm.tm_sec),
                  std::make_tuple(hour, minute, 12))
            << zone;
        EXPECT_EQ(MkTime64(&tm), kMay) << zone;  // the inverse of localtime
    }
}

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

}  // namespace
}  // namespace pind::platform

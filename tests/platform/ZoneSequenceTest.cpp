// A zone read from TZ after the process's own zone was in force keeps its daylight rule: the
// Windows runtime keeps the daylight bias from the last system zone it read.
#include <gtest/gtest.h>

#include "pind/platform/System.h"
#include "pind/platform/TimeZone.h"
#include "support/TempDir.h"

namespace pind::platform {
namespace {

TEST(TimeZone, DaylightRuleSurvivesTheSystemZoneInBetween) {
    test::ScopedTz outer("UTC0");  // gives the caller's TZ back at the end
    for (int round = 0; round < 2; ++round) {
        SetEnv("TZ", nullptr);  // the machine's own zone, whatever it is
        TzSet();
        test::ScopedTz tz("EST5EDT");
        EXPECT_EQ(GetTimezone(), 18000);
        EXPECT_EQ(GetDstBias(), -3600);
        std::tm tm{};
        ASSERT_TRUE(LocalTime64(1715043792, &tm));  // 2024-05-07 01:03:12 UTC
        EXPECT_EQ(tm.tm_hour, 21);
        EXPECT_GT(tm.tm_isdst, 0);
        ASSERT_TRUE(LocalTime64(1705320000, &tm));  // 2024-01-15 12:00:00 UTC
        EXPECT_EQ(tm.tm_hour, 7);
        EXPECT_EQ(tm.tm_isdst, 0);
    }
    test::ScopedTz plain("CST-8");
    EXPECT_EQ(GetDstBias(), 0);
}

}  // namespace
}  // namespace pind::platform

// Date and time texts: the server's wall clock in its three modes, the machine's local clock, and
// the month-day number in the machine's zone.
#include <gtest/gtest.h>

#include <string>

#include "pind/time/PindTime.h"
#include "pind/time/TimeText.h"
#include "support/FakeClock.h"
#include "support/TempDir.h"

namespace {

class TimeTextTest : public ::testing::Test {
protected:
    void SetUp() override { CPindTime::DestroyInstance(); }
    void TearDown() override { CPindTime::DestroyInstance(); }

    pind::test::FakeClock m_clock;
};

TEST_F(TimeTextTest, ServerTimeTextModes) {
    // Server at UTC+8 shows 2024-03-05 09:07:03; the machine, in another zone, is at .042 s.
    pind::test::ScopedTz tz("EST5EDT");
    m_clock.SetUnixTimeMs(1600000000042);
    CPindTime::Instance()->SyncServerTime(1709600823, -28800);
    const struct {
        int32_t mode;
        const char* text;
    } cases[] = {{0, "2024-03-05"},
                 {3, "2024-03-05-09:07:03"},
                 {4, "2024-03-05-09:07:03:042"},
                 {1, ""},
                 {2, ""},
                 {-1, ""},
                 {5, ""}};
    for (const auto& c : cases) {
        EXPECT_STREQ(ServerTimeText(c.mode), c.text) << c.mode;
    }
    const char* buffer = ServerTimeText(0);
    EXPECT_EQ(ServerTimeText(3), buffer);  // one buffer, overwritten
    EXPECT_STREQ(buffer, "2024-03-05-09:07:03");
}

TEST_F(TimeTextTest, ServerTimeTextIsEmptyBefore1970) {
    CPindTime::Instance()->SyncServerTime(0, 3600);  // server wall time 1969-12-31 23:00
    EXPECT_STREQ(ServerTimeText(0), "");
    EXPECT_STREQ(ServerTimeText(4), "");
}

TEST_F(TimeTextTest, LocalTimeTextFollowsTheMachineZone) {
    const struct {
        const char* tz;
        const char* text;
    } cases[] = {{"UTC0", "2024-05-07 01:03:12"},
                 {"CST-8", "2024-05-07 09:03:12"},
                 {"NST+3:30", "2024-05-06 21:33:12"},
                 {"EST5EDT", "2024-05-06 21:03:12"}};
    m_clock.SetUnixTimeMs(1715043792999);
    for (const auto& c : cases) {
        pind::test::ScopedTz tz(c.tz);
        EXPECT_STREQ(LocalTimeText(), c.text) << c.tz;
    }
}

TEST_F(TimeTextTest, NowMMDDUsesTheMachineZoneNotTheServers) {
    const struct {
        const char* tz;
        int32_t zoneOffset;
        int32_t mmdd;
    } cases[] = {{"UTC0", -28800, 1231}, {"CST-8", 0, 101}, {"EST5EDT", -28800, 1231}};
    for (const auto& c : cases) {
        pind::test::ScopedTz tz(c.tz);
        CPindTime::Instance()->SyncServerTime(1704052800, c.zoneOffset);  // 2023-12-31 20:00 UTC
        EXPECT_EQ(NowMMDD(), c.mmdd) << c.tz;
    }
}

}  // namespace

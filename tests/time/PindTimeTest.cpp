// The time object's readings, synchronisation, frozen local record, stopwatch and lifecycle, and
// the date texts built on them.
#include <gtest/gtest.h>

#include "pind/time/PindTime.h"
#include "pind/time/TimeText.h"
#include "support/FakeClock.h"
#include "support/TempDir.h"

namespace {

constexpr int64_t kServer = 1699934400;  // 2023-11-14 04:00:00 UTC, a Tuesday

class PindTimeTest : public ::testing::Test {
protected:
    void SetUp() override { CPindTime::DestroyInstance(); }
    void TearDown() override { CPindTime::DestroyInstance(); }

    pind::test::ScopedTz m_tz{"UTC0"};
    pind::test::FakeClock m_clock;
};

TEST_F(PindTimeTest, SyncRecordsEveryPairFromOneReadingOfEachClock) {
    m_clock.SetTickMs(5000);
    m_clock.SetProcessClock(700);
    m_clock.SetUnixTimeMs(1715043792600);
    CPindTime* time = CPindTime::Instance();
    time->SyncServerTime(kServer, -28800);
    m_clock.AdvanceMs(2500);  // each reading counts from its own pair
    EXPECT_EQ(time->ServerNow(), kServer + 2);
    EXPECT_EQ(time->ServerNowMs(), static_cast<uint64_t>(kServer) * 1000 + 2500);
    EXPECT_EQ(time->ServerNowByClock(), static_cast<uint32_t>(kServer) + 2500);  // ms on seconds
    EXPECT_EQ(time->ServerNowByWall(false), kServer + 3);  // the wall passed two second marks
    EXPECT_EQ(time->ServerNowByWall(true), kServer + 3 + 28800);  // UTC+8 server, UTC machine
    EXPECT_EQ(time->SecondsSince(kServer + 10), -7);

    // A tick read before the synchronising one counts back, truncating toward zero.
    m_clock.SetTickMs(3500);
    EXPECT_EQ(time->ServerNow(), kServer - 1);
}

TEST_F(PindTimeTest, DestroyGivesAFreshObjectButLocalTmNowStaysFrozen) {
    pind::test::ScopedTz tz("CST-8");
    m_clock.SetUnixTimeMs(kServer * 1000);
    m_clock.SetTickMs(123456);
    CPindTime* time = CPindTime::Instance();
    time->SyncServerTime(kServer, -28800);
    const std::tm* frozen = time->LocalTmNow();
    EXPECT_EQ(frozen->tm_hour * 100 + frozen->tm_min, 1200);

    m_clock.AdvanceMs(60 * 1000);
    CPindTime::DestroyInstance();
    CPindTime* fresh = CPindTime::Instance();
    EXPECT_EQ(fresh->GetZoneOffset(), 0);
    EXPECT_EQ(fresh->ServerNowMs(), 183456u);  // unsynchronised: the tick
    EXPECT_EQ(fresh->LocalTmNow(), frozen);    // same record, same fields
    EXPECT_EQ(frozen->tm_min, 0);
}

TEST_F(PindTimeTest, StopwatchReadsItsChosenClockAndTheDerivedValueIsHalved) {
    CPindTime* time = CPindTime::Instance();
    m_clock.SetUnixTimeMs(1715043792000);
    time->SyncServerTime(kServer, 0);
    EXPECT_EQ(time->StopwatchMs(), 0u);

    const int readsBefore = m_clock.TickReads();
    time->SetUseEngineClock(true);
    EXPECT_EQ(time->StartStopwatch(), m_clock.TimeGetTime());
    m_clock.AdvanceMs(9999);
    EXPECT_EQ(time->StopwatchMs(), 9999u);
    EXPECT_EQ(m_clock.TickReads(), readsBefore);  // the engine clock, not GetTickCount

    // 9 whole seconds halved to 4, then moved from server to wall seconds.
    EXPECT_EQ(time->UpdateDerivedSeconds(), static_cast<uint32_t>(4 - kServer + 1715043801));
}

TEST_F(PindTimeTest, ServerTimeTextModes) {
    // Server at UTC+8 shows 2024-03-05 09:07:03; the machine, in another zone, is at .042 s.
    pind::test::ScopedTz tz("EST5EDT");
    m_clock.SetUnixTimeMs(1600000000042);
    CPindTime::Instance()->SyncServerTime(1709600823, -28800);
    EXPECT_STREQ(ServerTimeText(0), "2024-03-05");
    EXPECT_STREQ(ServerTimeText(3), "2024-03-05-09:07:03");
    EXPECT_STREQ(ServerTimeText(4), "2024-03-05-09:07:03:042");
    for (int32_t mode : {1, -1, 5}) EXPECT_STREQ(ServerTimeText(mode), "") << mode;
    EXPECT_EQ(ServerTimeText(0), ServerTimeText(3));  // one buffer, overwritten
    CPindTime::Instance()->SyncServerTime(0, 3600);   // server wall time before 1970
    EXPECT_STREQ(ServerTimeText(0), "");
}

TEST_F(PindTimeTest, LocalTextsUseTheMachineZoneNotTheServers) {
    // 2023-12-31 20:00 UTC: already 1 January on the UTC+8 machine, 31 December at a UTC-8 server.
    pind::test::ScopedTz tz("CST-8");
    m_clock.SetUnixTimeMs(1704052800999);
    CPindTime::Instance()->SyncServerTime(1704052800, 28800);
    EXPECT_STREQ(LocalTimeText(), "2024-01-01 04:00:00");
    EXPECT_EQ(NowMMDD(), 101);
}

}  // namespace

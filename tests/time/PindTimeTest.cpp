// The time object's readings, synchronisation, frozen local record, stopwatch and lifecycle.
#include <gtest/gtest.h>

#include <climits>

#include "pind/time/PindTime.h"
#include "support/FakeClock.h"
#include "support/Printable.h"
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

TEST_F(PindTimeTest, UnsynchronisedTimeIsTheTickInSeconds) {
    m_clock.SetTickMs(123456);
    CPindTime* time = CPindTime::Instance();
    EXPECT_EQ(time->ServerNow(), 123);
    EXPECT_EQ(time->ServerNowMs(), 123456u);
    EXPECT_EQ(time->ZoneOffset(), 0);
    EXPECT_EQ(time->GetZoneHours(), 0);
}

TEST_F(PindTimeTest, SyncRecordsEveryPairFromOneReadingOfEachClock) {
    m_clock.SetTickMs(5000);
    m_clock.SetProcessClock(700);
    m_clock.SetUnixTimeMs(1715043792600);
    CPindTime* time = CPindTime::Instance();
    time->SyncServerTime(kServer, -28800);
    EXPECT_EQ(time->ZoneOffset(), -28800);
    EXPECT_EQ(time->SyncTick(), 5000u);
    EXPECT_EQ(time->SyncServerTime(), static_cast<uint64_t>(kServer));
    EXPECT_EQ(time->ClockAtSync(), 700);
    EXPECT_EQ(time->ServerClockAtSync(), kServer);
    EXPECT_EQ(time->WallAtSync(), 1715043792);
    EXPECT_EQ(time->ServerTimeAtWall(), kServer);

    m_clock.AdvanceMs(2500);
    EXPECT_EQ(time->ServerNow(), kServer + 2);
    EXPECT_EQ(time->ServerNowMs(), static_cast<uint64_t>(kServer) * 1000 + 2500);
    EXPECT_EQ(time->ServerNowByClock(), static_cast<uint32_t>(kServer) + 2500);  // ms on seconds
    EXPECT_EQ(time->ServerNowByWall(false), kServer + 3);  // the wall passed two second marks
    EXPECT_EQ(time->SecondsSince(kServer), 3);
    EXPECT_EQ(time->SecondsSince(kServer + 10), -7);

    // A tick read before the synchronising one counts back, truncating toward zero.
    m_clock.SetTickMs(3500);
    EXPECT_EQ(time->ServerNow(), kServer - 1);
}

struct LocalZoneCase {
    const char* tz;
    int32_t zoneOffset;
    int64_t shift;  // ServerNowByWall(true) - ServerNowByWall(false)
};

void PrintTo(const LocalZoneCase& c, std::ostream* os) {
    *os << pind::test::Printable(c.tz) << "_" << c.zoneOffset;
}

class PindTimeLocalZone : public PindTimeTest,
                          public ::testing::WithParamInterface<LocalZoneCase> {};

TEST_P(PindTimeLocalZone, WallReadingMovesIntoTheMachineZone) {
    const LocalZoneCase& c = GetParam();
    pind::test::ScopedTz tz(c.tz);
    CPindTime* time = CPindTime::Instance();
    time->SyncServerTime(kServer, c.zoneOffset);
    EXPECT_EQ(time->ServerNowByWall(true) - time->ServerNowByWall(false), c.shift);
}

INSTANTIATE_TEST_SUITE_P(Zones, PindTimeLocalZone,
                         ::testing::Values(LocalZoneCase{"CST-8", -28800, 0},
                                           LocalZoneCase{"UTC0", -28800, 28800},
                                           LocalZoneCase{"EST5EDT", 0, 18000 - 3600},
                                           LocalZoneCase{"NST+3:30", 12600, 0}));

TEST_F(PindTimeTest, ServerTmAtShowsTheServerZone) {
    CPindTime* time = CPindTime::Instance();
    time->SyncServerTime(kServer, -28800);
    const std::tm* now = time->ServerTmAt(0);
    ASSERT_NE(now, nullptr);
    EXPECT_EQ(now->tm_hour, 12);  // eight hours past 04:00 UTC
    EXPECT_EQ(now->tm_mday, 14);

    m_clock.AdvanceMs(86400 * 1000);  // a given instant ignores the clocks
    const std::tm* given = time->ServerTmAt(kServer + 3600 * 12);
    ASSERT_NE(given, nullptr);
    EXPECT_EQ(given->tm_mday, 15);
    EXPECT_EQ(given->tm_hour, 0);
    EXPECT_EQ(given->tm_wday, 3);
    EXPECT_EQ(time->ServerTmAt(-86400), nullptr);  // before 1970
    EXPECT_EQ(time->ServerTmAt(LLONG_MIN), nullptr);
}

TEST_F(PindTimeTest, LocalTmNowConvertsOnceAndThenStaysFrozen) {
    pind::test::ScopedTz tz("CST-8");
    m_clock.SetUnixTimeMs(kServer * 1000);
    CPindTime* time = CPindTime::Instance();
    time->SyncServerTime(kServer, 0);
    const std::tm* first = time->LocalTmNow();
    const std::tm copy = *first;
    EXPECT_EQ(copy.tm_hour, 12);
    EXPECT_EQ(copy.tm_min, 0);

    m_clock.AdvanceMs(60 * 1000);
    CPindTime::DestroyInstance();
    const std::tm* second = CPindTime::Instance()->LocalTmNow();
    EXPECT_EQ(second, first);
    EXPECT_EQ(second->tm_min, 0);
    EXPECT_EQ(second->tm_mday, copy.tm_mday);
}

TEST_F(PindTimeTest, DestroyThenInstanceGivesAFreshZeroedObject) {
    CPindTime::DestroyInstance();  // nothing to destroy: harmless
    CPindTime* time = CPindTime::Instance();
    EXPECT_EQ(CPindTime::Instance(), time);
    time->SyncServerTime(kServer, -28800);
    CPindTime::DestroyInstance();
    CPindTime* fresh = CPindTime::Instance();
    EXPECT_EQ(fresh->ZoneOffset(), 0);
    EXPECT_EQ(fresh->SyncServerTime(), 0u);
    EXPECT_EQ(fresh->WallAtSync(), 0);
    EXPECT_EQ(fresh->ServerNow(), m_clock.TimeGetTime() / 1000);
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

    const uint32_t derived = time->UpdateDerivedSeconds();
    EXPECT_EQ(time->WallAtSync(), 1715043801);
    // 9 whole seconds halved to 4, then moved from server to wall seconds.
    EXPECT_EQ(derived, static_cast<uint32_t>(4 - kServer + 1715043801));
    EXPECT_EQ(time->DerivedSeconds(), derived);

    time->SetUseEngineClock(false);
    m_clock.SetTickMs(0xFFFFFF00u);
    time->StartStopwatch();
    EXPECT_GT(m_clock.TickReads(), readsBefore);
    m_clock.AdvanceMs(0x200);  // the tick wraps
    EXPECT_EQ(time->StopwatchMs(), 0x200u);
}

TEST(PindTimeZoneHours, TruncateTowardZero) {
    const struct {
        int32_t zoneOffset;
        int32_t hours;
    } cases[] = {{-28800, 8}, {12600, -3}, {-19800, 5}, {3599, 0}, {INT_MIN, 596523}};
    for (const auto& c : cases) {
        CPindTime time;
        time.SyncServerTime(0, c.zoneOffset);
        EXPECT_EQ(time.GetZoneHours(), c.hours) << c.zoneOffset;
    }
}

}  // namespace

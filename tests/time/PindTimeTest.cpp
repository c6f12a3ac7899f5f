// The time object's readings, stopwatch, lifecycle and date texts, then the schedule checks and
// packed-form conversions against the server's wall clock, under machine zones with and without
// daylight saving. The machine's own zone matters only where the client's arithmetic reads the
// machine's calendar (ShiftToWeekday, NextWeekdayTime, MonthStart, SecondsToNextDay,
// SecondsUntilInstant); those have their own tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <iterator>

#include "pind/time/PindTime.h"
#include "pind/time/TimeText.h"
#include "support/FakeClock.h"
#include "support/TempDir.h"

namespace {

constexpr int64_t kDay = 86400;
constexpr int64_t kTue = 1699934400;  // 2023-11-14 04:00:00 UTC, Tuesday; 12:00 at UTC+8

// Days from 1970-01-01 to a proleptic Gregorian date (month 1-12).
int64_t DaysFromCivil(int64_t y, int64_t m, int64_t d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    return era * 146097 + yoe * 365 + yoe / 4 - yoe / 100 + doy - 719468;
}

struct Wall {
    int year, month, day, hour, minute, second;
    int weekday;  // 0 = Sunday

    int64_t Utc(int32_t zoneOffset) const {
        return DaysFromCivil(year, month, day) * kDay + hour * 3600 + minute * 60 + second +
               zoneOffset;
    }
    int64_t Packed12() const {  // YYYYMMDDhhmm
        return ((((int64_t{year} * 100 + month) * 100 + day) * 100 + hour) * 100 + minute);
    }
    int32_t DayOfWeekMonday() const { return (weekday + 6) % 7; }
};

// Server wall times either side of midnight, month and year ends, the leap day, the days both
// daylight-saving rules change, and every weekday.
const Wall kWalls[] = {
    {2024, 2, 28, 23, 59, 59, 3}, {2024, 2, 29, 0, 0, 0, 4},    {2024, 2, 29, 12, 30, 15, 4},
    {2024, 3, 1, 0, 0, 0, 5},     {2024, 3, 2, 18, 0, 0, 6},    {2023, 12, 31, 23, 59, 59, 0},
    {2024, 1, 1, 0, 0, 0, 1},     {2024, 4, 30, 23, 59, 59, 2}, {2024, 3, 10, 2, 30, 0, 0},
    {2024, 3, 31, 2, 30, 0, 0},   {2024, 10, 27, 2, 30, 0, 0},  {2024, 11, 3, 1, 30, 0, 0},
};
const int32_t kServerZones[] = {-28800, 0, 18000, 12600};
const char* const kMachineZones[] = {"UTC0", "CST-8", "NST+3:30", "EST5EDT",
                                     "CET-1CEST,M3.5.0,M10.5.0/3"};

class PindTimeTest : public ::testing::Test {
protected:
    void SetUp() override { CPindTime::DestroyInstance(); }
    void TearDown() override { CPindTime::DestroyInstance(); }

    // Synchronises the process-wide object so that the server's wall clock shows `wall`.
    void SyncTo(const Wall& wall, int32_t zoneOffset) {
        m_clock.SetUnixTimeMs(wall.Utc(zoneOffset) * 1000);
        CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(wall.Utc(zoneOffset)),
                                              zoneOffset);
    }

    pind::test::ScopedTz m_tz{"UTC0"};
    pind::test::FakeClock m_clock;
};

TEST_F(PindTimeTest, SyncRecordsEveryPairFromOneReadingOfEachClock) {
    m_clock.SetTickMs(5000);
    m_clock.SetProcessClock(700);
    m_clock.SetUnixTimeMs(1715043792600);
    CPindTime* time = CPindTime::Instance();
    time->SyncServerTime(kTue, -28800);
    m_clock.AdvanceMs(2500);  // each reading counts from its own pair
    EXPECT_EQ(time->ServerNow(), kTue + 2);
    EXPECT_EQ(time->ServerNowMs(), static_cast<uint64_t>(kTue) * 1000 + 2500);
    EXPECT_EQ(time->ServerNowByClock(), static_cast<uint32_t>(kTue) + 2500);  // ms on seconds
    EXPECT_EQ(time->ServerNowByWall(false), kTue + 3);         // the wall passed two second marks
    EXPECT_EQ(time->ServerNowByWall(true), kTue + 3 + 28800);  // UTC+8 server, UTC machine
    EXPECT_EQ(time->SecondsSince(kTue + 10), -7);

    // A tick read before the synchronising one counts back, truncating toward zero.
    m_clock.SetTickMs(3500);
    EXPECT_EQ(time->ServerNow(), kTue - 1);
}

TEST_F(PindTimeTest, DestroyGivesAFreshObjectButLocalTmNowStaysFrozen) {
    pind::test::ScopedTz tz("CST-8");
    m_clock.SetUnixTimeMs(kTue * 1000);
    m_clock.SetTickMs(123456);
    CPindTime* time = CPindTime::Instance();
    time->SyncServerTime(kTue, -28800);
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
    time->SyncServerTime(kTue, 0);
    EXPECT_EQ(time->StopwatchMs(), 0u);

    const int readsBefore = m_clock.TickReads();
    time->SetUseEngineClock(true);
    EXPECT_EQ(time->StartStopwatch(), m_clock.TimeGetTime());
    m_clock.AdvanceMs(9999);
    EXPECT_EQ(time->StopwatchMs(), 9999u);
    EXPECT_EQ(m_clock.TickReads(), readsBefore);  // the engine clock, not GetTickCount

    // 9 whole seconds halved to 4, then moved from server to wall seconds.
    EXPECT_EQ(time->UpdateDerivedSeconds(), static_cast<uint32_t>(4 - kTue + 1715043801));
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

TEST_F(PindTimeTest, ChecksAndConversionsFollowTheServerWallClockInEveryZone) {
    for (const char* machine : kMachineZones) {
        pind::test::ScopedTz tz(machine);
        for (int32_t zone : kServerZones) {
            for (const Wall& w : kWalls) {
                SCOPED_TRACE(::testing::Message() << machine << ", zone " << zone << ", "
                                                  << w.Packed12() << ":" << w.second);
                SyncTo(w, zone);
                const int64_t now = w.Utc(zone);
                const int64_t packed14 = w.Packed12() * 100 + w.second;
                const int32_t hhmm = w.hour * 100 + w.minute;
                const int32_t sod = w.hour * 3600 + w.minute * 60 + w.second;
                const int32_t d = w.DayOfWeekMonday();

                EXPECT_EQ(NowPackedYYMMDDhhmmss(), packed14 - 20000000000000);
                EXPECT_EQ(NowPackedYYMMDDhhmm(), static_cast<uint32_t>(w.Packed12() % 10000000000));
                EXPECT_EQ(NowHHMM(), hhmm);
                EXPECT_EQ(GetServerWeekday(), w.weekday);

                EXPECT_EQ(PackedToServerTime(packed14), now);
                EXPECT_EQ(PackedToServerTime(packed14 - 20000000000000), now);
                EXPECT_EQ(YYMMDDhhmmToServerTime(NowPackedYYMMDDhhmm()), now - w.second);
                EXPECT_EQ(SecondsUntil(w.year, w.month, w.day + 1, 0, 0, 0), kDay - sod);
                // Since and Until share one difference; one of each.
                EXPECT_EQ(DaysSince(w.year, w.month, w.day + 1), sod == 0 ? -1 : 0);  // toward zero
                EXPECT_EQ(DaysUntil(w.year, w.month, w.day + 2), (2 * kDay - sod) / kDay);

                const uint32_t minute = NowPackedYYMMDDhhmm();
                EXPECT_TRUE(IsInDateWindow(minute, minute));
                EXPECT_FALSE(IsInDateWindow(minute + 1, minute + 1));
                EXPECT_TRUE(IsInDailyWindow(hhmm, hhmm));
                EXPECT_FALSE(IsInDailyWindow(hhmm + 1, 2400));
                EXPECT_TRUE(IsWeekdayInMask(1u << d));
                EXPECT_TRUE(IsInCalendar({w.month}, {w.day}, {d + 1}));
                EXPECT_EQ(GetWeeklyWindowRemain(d * 10000 + hhmm, d * 10000 + 2359),
                          sod <= 86340 ? 86340 - sod : 0);

                EXPECT_EQ(GetActivityState(w.Packed12(), w.Packed12() + 10000), 1);  // to tomorrow
                EXPECT_EQ(GetActivityState(w.Packed12() + 1, w.Packed12() + 10000), 0);
                EXPECT_EQ(GetActivityState(w.Packed12() - 10000, w.Packed12()), 2);
            }
        }
    }
}

void SyncAt(int64_t t, int32_t zoneOffset) {
    CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(t), zoneOffset);
}

TEST_F(PindTimeTest, WindowsAtTheirEdges) {
    pind::test::ScopedTz tz("UTC0");
    SyncAt(kTue + 13 * 3600, -28800);          // 01:00 at UTC+8 on 15 November 2023
    EXPECT_FALSE(IsInDailyWindow(2200, 200));  // a daily window never wraps
    EXPECT_TRUE(IsInDailyWindow(0, 0) && IsInCalendar({}, {}, {}) && IsWeekdayInMask(0));
    SyncAt(kTue + 30 * 60 + 15, -28800);  // Tuesday 12:30:15
    EXPECT_EQ(GetWeeklyWindowRemain(11200, 11300), 1785);
    EXPECT_EQ(GetWeeklyWindowRemain(11300, 11400), 0);     // not yet
    EXPECT_EQ(GetWeeklyWindowRemain(61200, 11300), 0);     // no wrap past Sunday
    EXPECT_EQ(GetWeeklyWindowRemain(INT32_MIN, 1200), 0);  // Tuesday is past Monday 12:00
}

TEST_F(PindTimeTest, FailureValuesWhenTheServerTimeCannotBeRead) {
    pind::test::ScopedTz tz("UTC0");
    SyncAt(0, 3600);  // server wall time before 1970
    EXPECT_EQ(GetServerTm(), nullptr);
    EXPECT_TRUE(IsInCalendar({1}, {1}, {1}));
    EXPECT_EQ(GetActivityState(1, 205001010000), 2);  // every distance reads 0
    // clang-format off
    const int64_t zeros[] = {
        IsInDailyWindow(0, 2359), IsInDateWindow(0, 4294967295u), IsWeekdayInMask(0x7F),
        GetWeeklyWindowRemain(0, 62359), SecondsUntil(2024, 1, 1, 0, 0, 0), DaysSince(2000, 1, 1),
        SecondsUntilInstant(12345), NowPackedYYMMDDhhmmss(), NowPackedYYMMDDhhmm(), NowHHMM(),
        GetServerWeekday(), SecondsToNextDay()};
    // clang-format on
    for (size_t i = 0; i < std::size(zeros); ++i) EXPECT_EQ(zeros[i], 0) << i;
}

TEST_F(PindTimeTest, OutOfRangeFieldsNormalise) {
    pind::test::ScopedTz tz("CST-8");
    SyncAt(kTue, -28800);
    const int64_t same[][2] = {
        {20231314120000, 20240114120000},  // month 13
        {20231100120000, 20231031120000},  // day 0
        {20231114250000, 20231115010000},  // hour 25
    };
    for (const auto& c : same) {
        EXPECT_EQ(PackedToServerTime(c[0]), PackedToServerTime(c[1])) << c[0];
    }
    EXPECT_EQ(YYMMDDhhmmToServerTime(2313141200u), YYMMDDhhmmToServerTime(2401141200u));
    EXPECT_EQ(YYMMDDhhmmToServerTime(0), 943891200);  // "2000-00-00" is 30 November 1999
    EXPECT_EQ(PackedToServerTime(-310000000000), 0);  // 1969: negative instants give 0
    EXPECT_EQ(SecondsUntilPacked(0), 0);
    EXPECT_EQ(SecondsUntilPacked(-202311141200), 0);
    EXPECT_EQ(SecondsUntilPacked(2311141200), SecondsUntilPacked(202311141200));  // year 23
    std::tm tm = *GetServerTm();
    tm.tm_min += 90;
    EXPECT_EQ(TmToServerTime(&tm), kTue + 90 * 60);
    EXPECT_EQ(tm.tm_hour, 13);  // normalised in place
    EXPECT_EQ(TmToServerTime(nullptr), 0);
}

TEST_F(PindTimeTest, WeekdayShiftsUseTheMachinesDay) {
    const char* const kCet = "CET-1CEST,M3.5.0,M10.5.0/3";
    const int64_t sunday = 1711886400;  // 2024-03-31 12:00 UTC
    // Tuesday is 3 in ShiftToWeekday's Sunday-based week and 2 in NextWeekdayTime's Monday-based
    // one, so NextWeekdayTime(.., 1) gives the Sunday before next Monday and (.., 2) that Monday.
    const struct {
        const char* tz;
        int64_t t;
        int32_t weekday;
        int64_t shifted;  // ShiftToWeekday(weekday, t) - t
        int64_t next;     // NextWeekdayTime(t, weekday, either flag) - t
    } cases[] = {{"UTC0", kTue, 1, -2 * kDay, 5 * kDay}, {"CST-8", kTue, 7, 4 * kDay, 5 * kDay},
                 {"EST5EDT", kTue, 1, -kDay, 6 * kDay},  // still Monday there
                 {kCet, sunday, 7, 6 * kDay, 6 * kDay},  // Sunday to "Sunday" is a Saturday
                 {"UTC0", kTue, 8, -kTue, -kTue},        {"UTC0", -1, 1, 1, 1}};
    for (const auto& c : cases) {
        pind::test::ScopedTz tz(c.tz);
        SCOPED_TRACE(::testing::Message() << c.tz << " " << c.t << " " << c.weekday);
        EXPECT_EQ(ShiftToWeekday(c.weekday, c.t) - c.t, c.shifted);
        EXPECT_EQ(NextWeekdayTime(c.t, c.weekday, 0) - c.t, c.next);
        EXPECT_EQ(NextWeekdayTime(c.t, c.weekday, 1) - c.t, c.next);
    }
}

TEST_F(PindTimeTest, ReadingsThatMixInTheMachinesZoneOrClock) {
    const auto toNextDay = [](int64_t) { return SecondsToNextDay(); };
    // {reading, machine zone, server zone, instant (also "now"), result}
    const struct {
        int64_t (*read)(int64_t);
        const char* tz;
        int32_t zoneOffset;
        int64_t t, want;
    } cases[] = {
        // MonthStart: the first midnight of the month in the server zone.
        {MonthStart, "UTC0", -28800, kTue, 1698768000},         // 2023-11-01 00:00 at UTC+8
        {MonthStart, "CST-8", -28800, 1704067199, 1704038400},  // 31 Dec 23:59:59 UTC: 1 Jan
        {MonthStart, "UTC0", 0, -1, 0},                         // before 1970
        // SecondsToNextDay takes midnight in the machine's frame.
        {toNextDay, "UTC0", 0, kTue + 19 * 3600, 3600},  // 23:00 UTC
        {toNextDay, "UTC0", -28800, kTue, 72000},        // midnight read as UTC
        // SecondsUntilInstant reads the server's wall fields as machine time: no correction.
        {SecondsUntilInstant, "UTC0", -28800, kTue, -28800},
    };
    for (const auto& c : cases) {
        pind::test::ScopedTz tz(c.tz);
        m_clock.SetUnixTimeMs(std::max<int64_t>(c.t, 0) * 1000);
        SyncAt(std::max<int64_t>(c.t, 0), c.zoneOffset);
        EXPECT_EQ(c.read(c.t), c.want) << c.tz << " " << c.zoneOffset << " " << c.t;
    }
    // ServerTmForZone: 1000 wall seconds + kTue - a 1000 ms tick = kTue; mode 1 is eight hours
    // back, mode 3 eight ahead.
    pind::test::ScopedTz tz("UTC0");
    m_clock.SetUnixTimeMs(1000 * 1000);
    m_clock.SetTickMs(1000);
    SyncAt(kTue, 0);
    const int hours[] = {4, 20, 4, 12};
    for (int32_t mode = 0; mode < 4; ++mode) {
        EXPECT_EQ(ServerTmForZone(mode)->tm_hour, hours[mode]) << mode;
    }
}

TEST_F(PindTimeTest, OpenDayStateAgainstAZoneCorrectedDeadline) {
    const int64_t deadline = kTue + 59;  // 2311141200 at UTC+8, second 59
    const int64_t base = kTue - 3 * kDay;
    // {first day, days, base, state}; the deadline is 2311141200 throughout.
    const struct {
        int32_t firstDay, days;
        int64_t base;
        int32_t state;
    } cases[] = {// clang-format off
        {5, 1, base, 0}, {0, 2, base, 2}, {0, 0, 0, 1},
        {0, 1, deadline, 1}, {0, 1, deadline + 1, 0},
        {0, 1, deadline - kDay + 1, 1}, {0, 1, deadline - kDay, 2}};
    // clang-format on
    pind::test::ScopedTz tz("EST5EDT");  // a machine zone far from the server's
    SyncAt(kTue, -28800);
    EXPECT_EQ(GetActivityStateByOpenDay(5, 1, base, 0), 1);  // no deadline
    for (const auto& c : cases) {
        EXPECT_EQ(GetActivityStateByOpenDay(c.firstDay, c.days, c.base, 2311141200u), c.state)
            << c.firstDay << " " << c.days << " " << c.base;
    }
}

}  // namespace

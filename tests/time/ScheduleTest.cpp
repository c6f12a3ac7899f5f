// The schedule checks and packed-form conversions, against the server's wall clock, under machine
// zones with and without daylight saving. The machine's own zone never matters except where the
// client's arithmetic reads the machine's calendar (ShiftToWeekday, NextWeekdayTime, MonthStart,
// SecondsToNextDay, SecondsUntilInstant); those have their own tables.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>

#include "pind/time/PindTime.h"
#include "support/FakeClock.h"
#include "support/Printable.h"
#include "support/TempDir.h"

namespace {

constexpr int64_t kDay = 86400;

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

class ScheduleTest : public ::testing::Test {
protected:
    void SetUp() override { CPindTime::DestroyInstance(); }
    void TearDown() override { CPindTime::DestroyInstance(); }

    // Synchronises the process-wide object so that the server's wall clock shows `wall`.
    void SyncTo(const Wall& wall, int32_t zoneOffset) {
        m_clock.SetUnixTimeMs(wall.Utc(zoneOffset) * 1000);
        CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(wall.Utc(zoneOffset)),
                                              zoneOffset);
    }

    pind::test::FakeClock m_clock;
};

class ScheduleGrid : public ScheduleTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(ScheduleGrid, ChecksAndConversionsFollowTheServerWallClock) {
    pind::test::ScopedTz tz(GetParam());
    for (int32_t zone : kServerZones) {
        for (const Wall& w : kWalls) {
            SCOPED_TRACE(::testing::Message()
                         << "zone " << zone << ", " << w.Packed12() << ":" << w.second);
            SyncTo(w, zone);
            const int64_t now = w.Utc(zone);
            const int64_t yy = w.year - 2000;
            const int64_t packed14 = w.Packed12() * 100 + w.second;
            const int32_t hhmm = w.hour * 100 + w.minute;
            const int32_t sod = w.hour * 3600 + w.minute * 60 + w.second;
            const int32_t d = w.DayOfWeekMonday();

            EXPECT_EQ(NowPackedYYMMDDhhmmss(), packed14 - 20000000000000);
            EXPECT_EQ(NowPackedYYMMDDhhmm(), static_cast<uint32_t>(w.Packed12() % 10000000000));
            EXPECT_EQ(NowPackedYYMMDD(), static_cast<uint32_t>(yy * 10000 + w.month * 100 + w.day));
            EXPECT_EQ(NowHHMM(), hhmm);
            EXPECT_EQ(GetServerWeekday(), w.weekday);

            EXPECT_EQ(PackedToServerTime(packed14), now);
            EXPECT_EQ(PackedToServerTime(packed14 - 20000000000000), now);
            EXPECT_EQ(YYMMDDhhmmToServerTime(NowPackedYYMMDDhhmm()), now - w.second);
            EXPECT_EQ(SecondsUntil(w.year, w.month, w.day, w.hour, w.minute, w.second), 0);
            EXPECT_EQ(SecondsUntil(w.year, w.month, w.day + 1, 0, 0, 0), kDay - sod);
            EXPECT_EQ(SecondsUntilPacked(w.Packed12()), -w.second);
            EXPECT_EQ(MinutesSince(w.year, w.month, w.day, 0, 0), sod / 60);
            EXPECT_EQ(DaysUntil(w.year, w.month, w.day + 2), (2 * kDay - sod) / kDay);

            const uint32_t minute = NowPackedYYMMDDhhmm();
            EXPECT_TRUE(IsInDateWindow(minute, minute));
            EXPECT_FALSE(IsInDateWindow(minute + 1, minute + 1));
            EXPECT_TRUE(IsInDailyWindow(hhmm, hhmm));
            EXPECT_FALSE(IsInDailyWindow(hhmm + 1, 2400));
            EXPECT_TRUE(IsWeekdayInMask(1u << d));
            EXPECT_FALSE(IsWeekdayInMask(0x7Fu & ~(1u << d)));
            EXPECT_TRUE(IsInCalendar({w.month}, {w.day}, {d + 1}));
            EXPECT_FALSE(IsInCalendar({}, {}, {(d + 1) % 7 + 1}));
            EXPECT_EQ(GetWeeklyWindowRemain(d * 10000 + hhmm, d * 10000 + 2359),
                      sod <= 86340 ? 86340 - sod : 0);

            EXPECT_EQ(GetActivityState(w.Packed12(), w.Packed12() + 10000), 1);  // to tomorrow
            EXPECT_EQ(GetActivityState(w.Packed12() + 1, w.Packed12() + 10000), 0);
            EXPECT_EQ(GetActivityState(w.Packed12() - 10000, w.Packed12()), 2);
        }
    }
}

// "CET-1CEST,M3.5.0,M10.5.0/3" names its test CET_1CEST.
std::string ZoneName(const ::testing::TestParamInfo<const char*>& param) {
    std::string name;
    for (const char* p = param.param; *p != '\0' && *p != ','; ++p) {
        name += (*p >= 'A' && *p <= 'Z') || (*p >= '0' && *p <= '9') ? *p : '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(MachineZones, ScheduleGrid, ::testing::ValuesIn(kMachineZones), ZoneName);

constexpr int64_t kTue = 1699934400;  // 2023-11-14 04:00:00 UTC, Tuesday; 12:00 at UTC+8

TEST_F(ScheduleTest, WindowsAtTheirEdges) {
    pind::test::ScopedTz tz("UTC0");
    const struct {
        int64_t at;
        bool dateWindow;  // IsInDateWindow(2311141200, 2311141200) at UTC+8
        bool lateNight;   // IsInDailyWindow(2200, 200)
    } cases[] = {{kTue - 1, false, false},         {kTue, true, false},
                 {kTue + 59, true, false},         {kTue + 60, false, false},
                 {kTue + 11 * 3600, false, false},   // 23:00
                 {kTue + 13 * 3600, false, false}};  // 01:00
    for (const auto& c : cases) {
        CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(c.at), -28800);
        EXPECT_EQ(IsInDateWindow(2311141200, 2311141200), c.dateWindow) << c.at;
        EXPECT_EQ(IsInDailyWindow(2200, 200), c.lateNight) << c.at;
        EXPECT_TRUE(IsInDailyWindow(0, 0));
        EXPECT_TRUE(IsInCalendar({}, {}, {}));
        EXPECT_EQ(GetActivityState(205001010000, 0), 1);
        EXPECT_EQ(GetWeeklyWindowRemain(0, 0), 0);
    }
    // Tuesday 12:30:15 in a Tuesday 12:00-13:00 window.
    CPindTime::Instance()->SyncServerTime(kTue + 30 * 60 + 15, -28800);
    EXPECT_EQ(GetWeeklyWindowRemain(11200, 11300), 1785);
    EXPECT_EQ(GetWeeklyWindowRemain(11300, 11400), 0);  // not yet
    EXPECT_EQ(GetWeeklyWindowRemain(61200, 11300), 0);  // no wrap past Sunday
    EXPECT_EQ(PackedToServerTime(20231114120000), PackedToServerTime(231114120000));
    EXPECT_EQ(PackedToServerTime(20231114120000), kTue);
}

TEST_F(ScheduleTest, MaskOneIsMondayOnly) {
    pind::test::ScopedTz tz("UTC0");
    for (int day = 0; day < 7; ++day) {
        CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(kTue + day * kDay), 0);
        EXPECT_EQ(IsWeekdayInMask(1), day == 6) << day;  // kTue + 6 days is a Monday
        EXPECT_TRUE(IsWeekdayInMask(0));
    }
}

TEST_F(ScheduleTest, FailureValuesWhenTheServerTimeCannotBeRead) {
    pind::test::ScopedTz tz("UTC0");
    CPindTime::Instance()->SyncServerTime(0, 3600);  // server wall time before 1970
    EXPECT_EQ(GetServerTm(), nullptr);
    EXPECT_TRUE(IsInCalendar({1}, {1}, {1}));
    EXPECT_FALSE(IsInDailyWindow(0, 2359));
    EXPECT_TRUE(IsInDailyWindow(0, 0));
    EXPECT_FALSE(IsInDateWindow(0, 4294967295u));
    EXPECT_EQ(GetWeeklyWindowRemain(0, 62359), 0);
    EXPECT_FALSE(IsWeekdayInMask(0x7F));
    EXPECT_EQ(GetActivityState(1, 205001010000), 2);  // every distance reads 0
    EXPECT_EQ(SecondsUntil(2024, 1, 1, 0, 0, 0), 0);
    EXPECT_EQ(DaysSince(2000, 1, 1), 0);
    EXPECT_EQ(SecondsUntilInstant(12345), 0);
    EXPECT_EQ(NowPackedYYMMDDhhmmss(), 0);
    EXPECT_EQ(NowPackedYYMMDDhhmm(), 0u);
    EXPECT_EQ(NowHHMM(), 0);
    EXPECT_EQ(GetServerWeekday(), 0);
    EXPECT_EQ(SecondsToNextDay(), 0);
}

TEST_F(ScheduleTest, MinutesAndDaysTruncateTowardZero) {
    const Wall now{2024, 2, 29, 12, 30, 15, 4};
    for (const char* machine : kMachineZones) {
        pind::test::ScopedTz tz(machine);
        SyncTo(now, -28800);
        SCOPED_TRACE(machine);
        EXPECT_EQ(MinutesSince(2024, 2, 29, 12, 0), 30);
        EXPECT_EQ(MinutesUntil(2024, 2, 29, 13, 0), 29);
        EXPECT_EQ(MinutesUntil(2024, 2, 29, 12, 0), -30);
        EXPECT_EQ(DaysSince(2024, 2, 1), 28);
        EXPECT_EQ(DaysUntil(2024, 3, 1), 0);
        EXPECT_EQ(DaysUntil(2025, 2, 28), 364);
        EXPECT_EQ(DaysSince(2023, 2, 29), 365);  // normalised to 1 March 2023
        EXPECT_EQ(DaysSince(2024, 3, 2), -1);
    }
}

TEST_F(ScheduleTest, OutOfRangeFieldsNormalise) {
    pind::test::ScopedTz tz("CST-8");
    CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(kTue), -28800);
    const struct {
        int64_t packed;
        int64_t same;
    } cases[] = {
        {20231314120000, 20240114120000},  // month 13
        {20231100120000, 20231031120000},  // day 0
        {20231114250000, 20231115010000},  // hour 25
        {231114120060, 231114120100},      // second 60
        {20230229000000, 20230301000000},  // no 29 February in 2023
        {20240229000000, 20240229000000},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(PackedToServerTime(c.packed), PackedToServerTime(c.same)) << c.packed;
    }
    EXPECT_EQ(YYMMDDhhmmToServerTime(2313141200u), YYMMDDhhmmToServerTime(2401141200u));
    EXPECT_EQ(PackedToServerTime(-310000000000), 0);  // 1969: negative instants give 0
    EXPECT_EQ(SecondsUntilPacked(0), 0);
    EXPECT_EQ(SecondsUntilPacked(-202311141200), 0);
    EXPECT_EQ(SecondsUntilPacked(231114120000 / 100), SecondsUntilPacked(202311141200));
    std::tm tm = *GetServerTm();
    tm.tm_min += 90;
    EXPECT_EQ(TmToServerTime(&tm), kTue + 90 * 60);
    EXPECT_EQ(tm.tm_hour, 13);  // normalised in place
    EXPECT_EQ(TmToServerTime(nullptr), 0);
}

TEST_F(ScheduleTest, ExtremeInputsStayDefined) {
    pind::test::ScopedTz tz("UTC0");
    CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(kTue), -28800);
    for (int64_t v : {INT64_MIN, INT64_MIN + 1, int64_t{-1}, int64_t{0}, INT64_MAX,
                      int64_t{99999999999999}, int64_t{100000000000000}}) {
        EXPECT_GE(PackedToServerTime(v), 0) << v;
        SecondsUntilPacked(v);
        GetActivityState(v, v);
        SecondsUntilInstant(v);
        MonthStart(v);
        EXPECT_EQ(GetActivityStateByOpenDay(INT32_MAX, INT32_MIN, v, 4294967295u) >= 0, true);
    }
    for (int32_t v : {INT32_MIN, -1, 0, 8, INT32_MAX}) {
        EXPECT_EQ(ShiftToWeekday(v, kTue), 0) << v;
        EXPECT_EQ(NextWeekdayTime(kTue, v, 1), 0) << v;
        SecondsUntil(v, v, v, v, v, v);
        MinutesUntil(v, v, v, v, v);
        DaysSince(v, v, v);
        IsInDailyWindow(v, v);
        GetWeeklyWindowRemain(v, INT32_MAX);
    }
    EXPECT_EQ(GetWeeklyWindowRemain(INT32_MIN, 1200), 0);  // Tuesday is past Monday 12:00
    EXPECT_EQ(ShiftToWeekday(1, -1), 0);                   // before 1970
    EXPECT_EQ(ShiftToWeekday(1, INT64_MAX), 0);
    EXPECT_EQ(NextWeekdayTime(INT64_MAX, 1, 0), 0);
    EXPECT_EQ(YYMMDDhhmmToServerTime(0), 943891200);  // "2000-00-00" is 30 November 1999
}

// The client's arithmetic reads the machine's calendar in these; the server zone stays UTC+8.
struct MachineCalendarCase {
    const char* tz;
    int64_t t;
    int32_t weekday;
    int64_t shifted;  // ShiftToWeekday(weekday, t) - t
    int64_t next;     // NextWeekdayTime(t, weekday, flag) - t
};

void PrintTo(const MachineCalendarCase& c, std::ostream* os) {
    *os << pind::test::Printable(c.tz) << "_" << c.t << "_" << c.weekday;
}

class MachineCalendar : public ScheduleTest,
                        public ::testing::WithParamInterface<MachineCalendarCase> {};

TEST_P(MachineCalendar, WeekdayShiftsUseTheMachinesDay) {
    const MachineCalendarCase& c = GetParam();
    pind::test::ScopedTz tz(c.tz);
    EXPECT_EQ(ShiftToWeekday(c.weekday, c.t) - c.t, c.shifted);
    EXPECT_EQ(NextWeekdayTime(c.t, c.weekday, 0) - c.t, c.next);
    EXPECT_EQ(NextWeekdayTime(c.t, c.weekday, 1) - c.t, c.next);
}

INSTANTIATE_TEST_SUITE_P(
    Days, MachineCalendar,
    ::testing::Values(
        // Tuesday in UTC and at UTC+8: 3 in the Sunday-based week, 2 in the Monday-based one.
        MachineCalendarCase{"UTC0", kTue, 1, -2 * kDay, 5 * kDay},  // the Sunday before Monday
        MachineCalendarCase{"UTC0", kTue, 2, -1 * kDay, 6 * kDay},  // lands on that Monday
        MachineCalendarCase{"UTC0", kTue, 3, 0, 1 * kDay},
        MachineCalendarCase{"CST-8", kTue, 5, 2 * kDay, 3 * kDay},
        MachineCalendarCase{"CST-8", kTue, 7, 4 * kDay, 5 * kDay},
        // Still Monday west of UTC.
        MachineCalendarCase{"EST5EDT", kTue, 1, -1 * kDay, 6 * kDay},
        MachineCalendarCase{"NST+3:30", kTue - 3600, 2, 0, 1 * kDay},
        // Sunday 2024-03-31 12:00 UTC; from a Sunday, target Sunday lands on Saturday.
        MachineCalendarCase{"CET-1CEST,M3.5.0,M10.5.0/3", 1711886400, 7, 6 * kDay, 6 * kDay},
        MachineCalendarCase{"CET-1CEST,M3.5.0,M10.5.0/3", 1711886400, 1, 0, 0}));

TEST_F(ScheduleTest, MonthStartIsTheFirstMidnightInTheServerZone) {
    const struct {
        const char* tz;
        int32_t zoneOffset;
        int64_t t;
        int64_t start;
    } cases[] = {
        {"UTC0", 0, kTue, 1698796800},              // 2023-11-01 00:00 UTC
        {"UTC0", -28800, kTue, 1698768000},         // 2023-11-01 00:00 at UTC+8
        {"CST-8", -28800, kTue, 1698768000},        //
        {"NST+3:30", 0, kTue, 1698796800},          //
        {"UTC0", 0, 1709164800, 1706745600},        // 29 Feb 2024 -> 1 Feb
        {"UTC0", 0, 1704067199, 1701388800},        // 31 Dec 2023 23:59:59 -> 1 Dec
        {"CST-8", -28800, 1704067199, 1704038400},  // already 1 Jan 2024 at UTC+8
    };
    for (const auto& c : cases) {
        pind::test::ScopedTz tz(c.tz);
        CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(kTue), c.zoneOffset);
        EXPECT_EQ(MonthStart(c.t), c.start) << c.tz << " " << c.t;
    }
    EXPECT_EQ(MonthStart(-1), 0);
}

TEST_F(ScheduleTest, SecondsToNextDayTakesMidnightInTheMachinesFrame) {
    const struct {
        const char* tz;
        int32_t zoneOffset;
        int64_t at;
        int64_t seconds;
    } cases[] = {
        {"UTC0", 0, kTue + 19 * 3600, 3600},            // 23:00 UTC
        {"CST-8", -28800, kTue + 11 * 3600, 3600},      // 23:00 at UTC+8 on a UTC+8 machine
        {"UTC0", -28800, kTue, 72000},                  // midnight read as UTC: 20 h, not 12 h
        {"CST-8", 18000, kTue + 24 * 3600, 86400},      // that midnight is over a day back
        {"EST5EDT", -28800, kTue - 11 * 3600, 129600},  // and this one is still ahead
    };
    for (const auto& c : cases) {
        pind::test::ScopedTz tz(c.tz);
        m_clock.SetUnixTimeMs(c.at * 1000);
        CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(c.at), c.zoneOffset);
        EXPECT_EQ(SecondsToNextDay(), c.seconds) << c.tz << " " << c.at;
    }
}

TEST_F(ScheduleTest, InstantsAndZoneReadings) {
    const struct {
        const char* tz;
        int64_t untilInstant;  // SecondsUntilInstant(kTue) with the server at UTC+8
    } cases[] = {{"UTC0", -28800}, {"CST-8", 0}, {"NST+3:30", -28800 - 12600}};
    for (const auto& c : cases) {
        pind::test::ScopedTz tz(c.tz);
        CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(kTue), -28800);
        EXPECT_EQ(SecondsUntilInstant(kTue), c.untilInstant) << c.tz;
    }

    // Wall seconds + server seconds - the tick at synchronisation, shifted by the mode.
    m_clock.SetUnixTimeMs(1000 * 1000);
    m_clock.SetTickMs(1000);
    CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(kTue), 0);
    const struct {
        int32_t mode;
        int hour;
    } modes[] = {{0, 4}, {1, 20}, {2, 4}, {3, 12}};
    for (const auto& m : modes) {
        const std::tm* tm = ServerTmForZone(m.mode);
        ASSERT_NE(tm, nullptr);
        EXPECT_EQ(tm->tm_hour, m.hour) << m.mode;
    }
}

TEST_F(ScheduleTest, OpenDayStateAgainstAZoneCorrectedDeadline) {
    const int64_t deadline = kTue + 59;  // 2311141200 at UTC+8, second 59
    const struct {
        int32_t firstDay;
        int32_t days;
        int64_t base;
        uint32_t deadline;
        int32_t state;
    } cases[] = {
        {0, 1, kTue, 0, 1},                           // no deadline
        {5, 1, kTue - 3 * kDay, 2311141200u, 0},      // opens after the deadline
        {0, 2, kTue - 3 * kDay, 2311141200u, 2},      // closes before it
        {0, 4, kTue - 3 * kDay, 2311141200u, 1},      // still open at it
        {0, 0, 0, 2311141200u, 1},                    // last second before 1970
        {0, 1, deadline, 2311141200u, 1},             // opens at the deadline itself
        {0, 1, deadline + 1, 2311141200u, 0},         //
        {0, 1, deadline - kDay + 1, 2311141200u, 1},  // last = deadline
        {0, 1, deadline - kDay, 2311141200u, 2},
    };
    for (const char* machine : {"UTC0", "CST-8", "EST5EDT"}) {
        pind::test::ScopedTz tz(machine);
        CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(kTue), -28800);
        for (const auto& c : cases) {
            EXPECT_EQ(GetActivityStateByOpenDay(c.firstDay, c.days, c.base, c.deadline), c.state)
                << machine << " " << c.firstDay << " " << c.days << " " << c.base;
        }
    }
}

}  // namespace

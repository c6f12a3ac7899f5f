// The activity-schedule checks and packed-form conversions of CPindTime, and their free forms on
// the process-wide object.
#include <algorithm>

#include "pind/platform/Clock.h"
#include "pind/platform/TimeZone.h"
#include "pind/time/PindTime.h"
#include "time/TimeDetail.h"

using pind::detail::AddWrap;
using pind::detail::Low32;
using pind::detail::SubWrap;
using pind::detail::TmFromFields;
using pind::detail::ToServerInstant;

namespace {

constexpr int64_t kDay = 86400;

bool Holds(const std::vector<int32_t>& list, int32_t value) {
    return list.empty() || std::find(list.begin(), list.end(), value) != list.end();
}

// 0 = Monday .. 6 = Sunday, from the runtime's 0 = Sunday.
int32_t MondayBased(const std::tm& tm) { return (tm.tm_wday + 6) % 7; }

int64_t WeekSeconds(int32_t dhhmm) {
    return ((int64_t{dhhmm / 10000} * 24 + dhhmm / 100 % 100) * 60 + dhhmm % 100) * 60;
}

// `_mktime64` of a copy: the shared record stays as the caller last saw it.
int64_t MkTimeOf(const std::tm& tm) {
    std::tm copy = tm;
    return pind::platform::MkTime64(&copy);
}

// The instant of the record's server-wall fields minus now, both zone-corrected; 0 when the time
// cannot be read.
int64_t SecondsUntilRecord(const CPindTime& time, std::tm fields) {
    const std::tm* now = time.GetServerTm();
    if (now == nullptr) {
        return 0;
    }
    std::tm nowCopy = *now;
    const int64_t at = ToServerInstant(&nowCopy, time.ZoneOffset());
    return SubWrap(ToServerInstant(&fields, time.ZoneOffset()), at);
}

// Seconds from the fields to now (both read in the machine's frame), or 0 when the time cannot be
// read; `until` flips the sign.
int64_t SecondsSinceFields(const CPindTime& time, std::tm fields, bool until) {
    const std::tm* now = time.GetServerTm();
    if (now == nullptr) {
        return 0;
    }
    const int64_t since = SubWrap(MkTimeOf(*now), pind::platform::MkTime64(&fields));
    return until ? SubWrap(0, since) : since;
}

}  // namespace

bool CPindTime::IsInCalendar(const std::vector<int32_t>& vecMonths,
                             const std::vector<int32_t>& vecDays,
                             const std::vector<int32_t>& vecWeekdays) const {
    const std::tm* now = GetServerTm();
    if (now == nullptr) {
        return true;
    }
    return Holds(vecMonths, now->tm_mon + 1) && Holds(vecDays, now->tm_mday) &&
           Holds(vecWeekdays, MondayBased(*now) + 1);
}

bool CPindTime::IsInDailyWindow(int32_t nStartHHMM, int32_t nEndHHMM) const {
    if (nStartHHMM == 0 && nEndHHMM == 0) {
        return true;
    }
    const std::tm* now = GetServerTm();
    if (now == nullptr) {
        return false;
    }
    const int32_t hhmm = now->tm_hour * 100 + now->tm_min;
    return nStartHHMM <= hhmm && hhmm <= nEndHHMM;
}

bool CPindTime::IsInDateWindow(uint32_t uStart, uint32_t uEnd) const {
    const std::tm* now = GetServerTm();
    if (now == nullptr) {
        return false;
    }
    // No zone correction on any side: all three are read in the machine's frame alike.
    std::tm start = pind::detail::TmFromYYMMDDhhmm(uStart, 0);
    std::tm end = pind::detail::TmFromYYMMDDhhmm(uEnd, 59);
    const int64_t at = MkTimeOf(*now);
    return pind::platform::MkTime64(&start) <= at && at <= pind::platform::MkTime64(&end);
}

int32_t CPindTime::GetWeeklyWindowRemain(int32_t nStartDHHMM, int32_t nEndDHHMM) const {
    if (nStartDHHMM == 0 && nEndDHHMM == 0) {
        return 0;
    }
    const std::tm* now = GetServerTm();
    if (now == nullptr) {
        return 0;
    }
    const int64_t at =
        ((int64_t{MondayBased(*now)} * 24 + now->tm_hour) * 60 + now->tm_min) * 60 + now->tm_sec;
    const int64_t start = WeekSeconds(nStartDHHMM);
    const int64_t end = WeekSeconds(nEndDHHMM);
    if (start > at || end < at) {
        return 0;
    }
    return Low32(end - at);
}

bool CPindTime::IsWeekdayInMask(uint32_t uMask) const {
    if (uMask == 0) {
        return true;
    }
    const std::tm* now = GetServerTm();
    return now != nullptr && (uMask >> MondayBased(*now) & 1u) != 0;
}

int32_t CPindTime::GetActivityState(int64_t nStart, int64_t nEnd) const {
    if (nEnd == 0) {
        return 1;
    }
    if (SecondsUntilRecord(*this, pind::detail::TmFromYYYYMMDDhhmm(nStart)) > 0) {
        return 0;
    }
    return SecondsUntilRecord(*this, pind::detail::TmFromYYYYMMDDhhmm(nEnd)) > 0 ? 1 : 2;
}

int32_t CPindTime::GetActivityStateByOpenDay(int32_t nFirstDay, int32_t nDays, int64_t nBase,
                                             uint32_t uDeadline) const {
    if (uDeadline == 0) {
        return 1;
    }
    std::tm fields = pind::detail::TmFromYYMMDDhhmm(uDeadline, 59);
    const int64_t deadline = ToServerInstant(&fields, m_nZoneOffset);
    if (AddWrap(nBase, nFirstDay * kDay) > deadline) {
        return 0;
    }
    const int64_t last = AddWrap(SubWrap(nBase, 1), nDays * kDay);
    if (last < 1) {
        return 1;
    }
    return last < deadline ? 2 : 1;
}

int64_t CPindTime::SecondsUntil(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour,
                                int32_t nMinute, int32_t nSecond) const {
    return SecondsUntilRecord(*this, TmFromFields(nYear, nMonth, nDay, nHour, nMinute, nSecond));
}

int64_t CPindTime::SecondsUntilPacked(int64_t nPacked) const {
    if (nPacked < 1) {
        return 0;
    }
    return SecondsUntilRecord(*this, pind::detail::TmFromYYYYMMDDhhmm(nPacked));
}

int64_t CPindTime::MinutesSince(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour,
                                int32_t nMinute) const {
    return SecondsSinceFields(*this, TmFromFields(nYear, nMonth, nDay, nHour, nMinute, 0), false) /
           60;
}

int64_t CPindTime::MinutesUntil(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour,
                                int32_t nMinute) const {
    return SecondsSinceFields(*this, TmFromFields(nYear, nMonth, nDay, nHour, nMinute, 0), true) /
           60;
}

int64_t CPindTime::DaysSince(int32_t nYear, int32_t nMonth, int32_t nDay) const {
    return SecondsSinceFields(*this, TmFromFields(nYear, nMonth, nDay, 0, 0, 0), false) / kDay;
}

int64_t CPindTime::DaysUntil(int32_t nYear, int32_t nMonth, int32_t nDay) const {
    return SecondsSinceFields(*this, TmFromFields(nYear, nMonth, nDay, 0, 0, 0), true) / kDay;
}

int64_t CPindTime::SecondsUntilInstant(int64_t t) const {
    const std::tm* now = GetServerTm();
    return now != nullptr ? SubWrap(t, MkTimeOf(*now)) : 0;
}

int64_t CPindTime::PackedToServerTime(int64_t nPacked) const {
    // The year rule looks at the whole value: below 10^14 there is no room for four year digits.
    const int64_t head = nPacked / 10000000000;
    const int64_t year = nPacked < 100000000000000 ? 2000 + head % 100 : head % 10000;
    std::tm fields = TmFromFields(year, nPacked / 100000000 % 100, nPacked / 1000000 % 100,
                                  nPacked / 10000 % 100, nPacked / 100 % 100, nPacked % 100);
    const int64_t at = ToServerInstant(&fields, m_nZoneOffset);
    return at < 0 ? 0 : at;
}

int64_t CPindTime::YYMMDDhhmmToServerTime(uint32_t uPacked) const {
    std::tm fields = pind::detail::TmFromYYMMDDhhmm(uPacked, 0);
    return ToServerInstant(&fields, m_nZoneOffset);
}

int64_t CPindTime::TmToServerTime(std::tm* pTm) const {
    return pTm != nullptr ? ToServerInstant(pTm, m_nZoneOffset) : 0;
}

int64_t CPindTime::NowPackedYYMMDDhhmmss() const {
    const std::tm* now = GetServerTm();
    if (now == nullptr) {
        return 0;
    }
    return (int64_t{now->tm_year} - 100) * 10000000000 + (now->tm_mon + 1) * int64_t{100000000} +
           now->tm_mday * int64_t{1000000} + now->tm_hour * 10000 + now->tm_min * 100 + now->tm_sec;
}

uint32_t CPindTime::NowPackedYYMMDDhhmm() const {
    const std::tm* now = GetServerTm();
    if (now == nullptr) {
        return 0;
    }
    // Unsigned 32-bit like the packed form itself: from year 43 on the value wraps.
    return static_cast<uint32_t>(now->tm_year % 100) * 100000000u +
           static_cast<uint32_t>(now->tm_mon + 1) * 1000000u +
           static_cast<uint32_t>(now->tm_mday) * 10000u +
           static_cast<uint32_t>(now->tm_hour * 100 + now->tm_min);
}

uint32_t CPindTime::NowPackedYYMMDD() const {
    const std::tm* now = GetServerTm();
    if (now == nullptr) {
        return 0;
    }
    return static_cast<uint32_t>((now->tm_year % 100) * 10000 + (now->tm_mon + 1) * 100 +
                                 now->tm_mday);
}

int32_t CPindTime::NowHHMM() const {
    const std::tm* now = GetServerTm();
    return now != nullptr ? now->tm_hour * 100 + now->tm_min : 0;
}

int32_t CPindTime::GetServerWeekday() const {
    const std::tm* now = GetServerTm();
    return now != nullptr ? now->tm_wday : 0;
}

int64_t CPindTime::ShiftToWeekday(int32_t nWeekday, int64_t t) const {
    if (nWeekday < 1 || nWeekday > 7) {
        return 0;
    }
    std::tm local{};
    if (!pind::platform::LocalTime64(t, &local)) {
        return 0;
    }
    // This week runs 1 = Sunday .. 7 = Saturday, unlike the Monday-based checks.
    const int32_t today = local.tm_wday + 1;
    return AddWrap(t, (nWeekday - today) * kDay);
}

int64_t CPindTime::NextWeekdayTime(int64_t t, int32_t nWeekday, int32_t /*nFlag*/) const {
    if (nWeekday < 1 || nWeekday > 7) {
        return 0;
    }
    std::tm local{};
    if (!pind::platform::LocalTime64(t, &local)) {
        return 0;
    }
    const int32_t today = local.tm_wday == 0 ? 7 : local.tm_wday;
    if (today < nWeekday) {
        return AddWrap(t, (nWeekday - today) * kDay);
    }
    // From the target on, the following Monday is shifted with the Sunday-based week: a target of
    // 1 lands on the Sunday before that Monday.
    return ShiftToWeekday(nWeekday, AddWrap(t, (8 - today) * kDay));
}

int64_t CPindTime::MonthStart(int64_t t) const {
    std::tm local{};
    if (!pind::platform::LocalTime64(t, &local)) {
        return 0;
    }
    local.tm_hour = 0;
    local.tm_min = 0;
    local.tm_sec = 0;
    const int64_t firstDays = (int64_t{local.tm_mday} - 1) * kDay;
    return SubWrap(ToServerInstant(&local, m_nZoneOffset), firstDays);
}

int64_t CPindTime::SecondsToNextDay() const {
    const std::tm* now = GetServerTm();
    if (now == nullptr) {
        return 0;
    }
    std::tm midnightFields = *now;
    midnightFields.tm_hour = 0;
    midnightFields.tm_min = 0;
    midnightFields.tm_sec = 0;
    // Midnight stays in the machine's frame, uncorrected, against a UTC "now": the client's
    // countdown has always been computed so.
    const int64_t midnight = pind::platform::MkTime64(&midnightFields);
    const int64_t wallNow = ServerNowByWall(false);
    if (SubWrap(wallNow, midnight) < kDay + 1) {
        return SubWrap(AddWrap(midnight, kDay), wallNow);
    }
    return kDay;
}

std::tm* CPindTime::ServerTmForZone(int32_t nMode) const {
    // Wall seconds plus server seconds minus a millisecond tick: the units are mixed, and the
    // client's zone readings are built on exactly this sum.
    int64_t at = AddWrap(pind::platform::Time64(), SubWrap(static_cast<int64_t>(m_uSyncServerTime),
                                                           static_cast<int64_t>(m_uSyncTick)));
    if (nMode == 1) {
        at = SubWrap(at, 28800);
    } else if (nMode == 3) {
        at = AddWrap(at, 28800);
    }
    return pind::detail::GmRecord(at);
}

// --- the same on the process-wide object ---------------------------------------------------------

std::tm* GetServerTm() { return CPindTime::Instance()->GetServerTm(); }
int32_t GetZoneHours() { return CPindTime::Instance()->GetZoneHours(); }
bool IsInCalendar(const std::vector<int32_t>& vecMonths, const std::vector<int32_t>& vecDays,
                  const std::vector<int32_t>& vecWeekdays) {
    return CPindTime::Instance()->IsInCalendar(vecMonths, vecDays, vecWeekdays);
}
bool IsInDailyWindow(int32_t nStartHHMM, int32_t nEndHHMM) {
    return CPindTime::Instance()->IsInDailyWindow(nStartHHMM, nEndHHMM);
}
bool IsInDateWindow(uint32_t uStart, uint32_t uEnd) {
    return CPindTime::Instance()->IsInDateWindow(uStart, uEnd);
}
int32_t GetWeeklyWindowRemain(int32_t nStartDHHMM, int32_t nEndDHHMM) {
    return CPindTime::Instance()->GetWeeklyWindowRemain(nStartDHHMM, nEndDHHMM);
}
bool IsWeekdayInMask(uint32_t uMask) { return CPindTime::Instance()->IsWeekdayInMask(uMask); }
int32_t GetActivityState(int64_t nStart, int64_t nEnd) {
    return CPindTime::Instance()->GetActivityState(nStart, nEnd);
}
int32_t GetActivityStateByOpenDay(int32_t nFirstDay, int32_t nDays, int64_t nBase,
                                  uint32_t uDeadline) {
    return CPindTime::Instance()->GetActivityStateByOpenDay(nFirstDay, nDays, nBase, uDeadline);
}
int64_t SecondsUntil(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour, int32_t nMinute,
                     int32_t nSecond) {
    return CPindTime::Instance()->SecondsUntil(nYear, nMonth, nDay, nHour, nMinute, nSecond);
}
int64_t SecondsUntilPacked(int64_t nPacked) {
    return CPindTime::Instance()->SecondsUntilPacked(nPacked);
}
int64_t MinutesSince(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour, int32_t nMinute) {
    return CPindTime::Instance()->MinutesSince(nYear, nMonth, nDay, nHour, nMinute);
}
int64_t MinutesUntil(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour, int32_t nMinute) {
    return CPindTime::Instance()->MinutesUntil(nYear, nMonth, nDay, nHour, nMinute);
}
int64_t DaysSince(int32_t nYear, int32_t nMonth, int32_t nDay) {
    return CPindTime::Instance()->DaysSince(nYear, nMonth, nDay);
}
int64_t DaysUntil(int32_t nYear, int32_t nMonth, int32_t nDay) {
    return CPindTime::Instance()->DaysUntil(nYear, nMonth, nDay);
}
int64_t SecondsUntilInstant(int64_t t) { return CPindTime::Instance()->SecondsUntilInstant(t); }
int64_t PackedToServerTime(int64_t nPacked) {
    return CPindTime::Instance()->PackedToServerTime(nPacked);
}
int64_t YYMMDDhhmmToServerTime(uint32_t uPacked) {
    return CPindTime::Instance()->YYMMDDhhmmToServerTime(uPacked);
}
int64_t TmToServerTime(std::tm* pTm) { return CPindTime::Instance()->TmToServerTime(pTm); }
int64_t NowPackedYYMMDDhhmmss() { return CPindTime::Instance()->NowPackedYYMMDDhhmmss(); }
uint32_t NowPackedYYMMDDhhmm() { return CPindTime::Instance()->NowPackedYYMMDDhhmm(); }
uint32_t NowPackedYYMMDD() { return CPindTime::Instance()->NowPackedYYMMDD(); }
int32_t NowHHMM() { return CPindTime::Instance()->NowHHMM(); }
int32_t GetServerWeekday() { return CPindTime::Instance()->GetServerWeekday(); }
int64_t ShiftToWeekday(int32_t nWeekday, int64_t t) {
    return CPindTime::Instance()->ShiftToWeekday(nWeekday, t);
}
int64_t NextWeekdayTime(int64_t t, int32_t nWeekday, int32_t nFlag) {
    return CPindTime::Instance()->NextWeekdayTime(t, nWeekday, nFlag);
}
int64_t MonthStart(int64_t t) { return CPindTime::Instance()->MonthStart(t); }
int64_t SecondsToNextDay() { return CPindTime::Instance()->SecondsToNextDay(); }
std::tm* ServerTmForZone(int32_t nMode) { return CPindTime::Instance()->ServerTmForZone(nMode); }

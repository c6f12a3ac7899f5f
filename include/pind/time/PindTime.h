// The process-wide time object: the server's clock as (local reading, server time) pairs for three
// local clocks plus the server's zone, and the activity-schedule checks that read it. Every check
// answers against the server's wall clock and zone, never the player's.
//   CPindTime::Instance()->SyncServerTime(serverUtcSeconds, -28800);  // server at UTC+8
//   if (IsInDailyWindow(2000, 2130)) { ... }                           // 20:00-21:30 server time
#ifndef PIND_TIME_PINDTIME_H_
#define PIND_TIME_PINDTIME_H_

#include <cstdint>
#include <ctime>
#include <vector>

#include "pind/platform/Export.h"

/// The server clock. Results returned as `std::tm*` are static records overwritten by the next call
/// of the same kind; nothing here is locked (the client's main thread only).
class PIND_API CPindTime {
public:
    CPindTime() = default;
    virtual ~CPindTime();
    CPindTime(const CPindTime&) = delete;
    CPindTime& operator=(const CPindTime&) = delete;

    /// The process-wide object, created zeroed on the first call (so unsynchronised readings give
    /// the local tick count in seconds).
    static CPindTime* Instance();
    /// Destroys the process-wide object if there is one; the next Instance() makes a fresh one.
    static void DestroyInstance();

    /// Records the server's UTC seconds and zone (seconds west of UTC: UTC+8 is -28800) against one
    /// reading each of the tick, `clock()` and the wall clock. The 32-bit pairs keep the low bits.
    void SyncServerTime(uint64_t serverUtcSeconds, int32_t zoneOffset);

    // --- readings of "now"
    /// Server UTC seconds from the millisecond tick; a tick read before the synchronising one
    /// gives an earlier time (the difference is signed).
    int64_t ServerNow() const;
    /// Server UTC milliseconds from the tick, wrapping modulo 2^64.
    uint64_t ServerNowMs() const;
    /// `clock()` milliseconds since synchronisation added to the paired server seconds (the units
    /// mix, as in the client's own reading), modulo 2^32.
    uint32_t ServerNowByClock() const;
    /// Server UTC seconds from the wall clock (elapsed seconds cut to 32 bits); with
    /// `bToLocalZone` shifted by the daylight bias and both zones into the machine's local zone.
    int64_t ServerNowByWall(bool bToLocalZone) const;
    /// ServerNowByWall(false) - t cut to 32 bits: negative when t lies in the future.
    int32_t SecondsSince(int64_t t) const;
    /// The server wall time at UTC instant t (0: now by the wall clock); null when the runtime
    /// cannot break it down (before 1970 or past its range).
    std::tm* ServerTmAt(int64_t t) const;
    /// The machine's local time of the first call's wall reading: later calls return the same
    /// record unchanged, however much time passes.
    std::tm* LocalTmNow() const;
    /// The machine's wall clock in seconds since 1970.
    int64_t LocalNow() const;
    /// The server wall time now (tick-based), in one record shared by every check; null when the
    /// runtime cannot break it down.
    std::tm* GetServerTm() const;
    /// Whole hours east of UTC of the server's zone, truncated toward zero.
    int32_t GetZoneHours() const;

    // --- stopwatch
    /// Starts (or restarts) the stopwatch from zero; returns the start tick.
    uint64_t StartStopwatch();
    /// Milliseconds measured so far (0 before the first start).
    uint64_t StopwatchMs() const;
    /// Stores the wall clock as the wall pair's local reading, then derives `derivedSeconds` from
    /// half the stopwatch's whole seconds; returns it.
    uint32_t UpdateDerivedSeconds();
    /// The stopwatch reads the engine clock when set, else GetTickCount.
    void SetUseEngineClock(bool bUse) { m_bUseEngineClock = bUse; }

    // --- checks on "now" (server wall time)
    /// Each non-empty list must hold today's month (1-12), day of month, and weekday (1 Monday to
    /// 7 Sunday); true when the server time cannot be read.
    bool IsInCalendar(const std::vector<int32_t>& vecMonths, const std::vector<int32_t>& vecDays,
                      const std::vector<int32_t>& vecWeekdays) const;
    /// start <= now <= end in HHMM, both inclusive, no wrap past midnight; true when both are 0,
    /// false when the time cannot be read.
    bool IsInDailyWindow(int32_t nStartHHMM, int32_t nEndHHMM) const;
    /// Now within [start at :00, end at :59], YYMMDDhhmm read in the machine's frame on all three
    /// sides; false when the time cannot be read.
    bool IsInDateWindow(uint32_t uStart, uint32_t uEnd) const;
    /// Seconds from now to the end of a weekly DHHMM window (weekday 0 = Monday) that holds now;
    /// 0 outside it, when both are 0 or when the time cannot be read. No wrap past Sunday.
    int32_t GetWeeklyWindowRemain(int32_t nStartDHHMM, int32_t nEndDHHMM) const;
    /// Bit k of the mask stands for weekday k (0 = Monday); true for mask 0, false when the time
    /// cannot be read.
    bool IsWeekdayInMask(uint32_t uMask) const;
    /// 0 not yet open, 1 open, 2 over, for a YYYYMMDDhhmm window; 1 when the end is 0.
    int32_t GetActivityState(int64_t nStart, int64_t nEnd) const;
    /// 0 when the first open day lies past the YYMMDDhhmm deadline, 2 when the last open second
    /// falls before it, else 1 (also for deadline 0). Reads no clock.
    int32_t GetActivityStateByOpenDay(int32_t nFirstDay, int32_t nDays, int64_t nBase,
                                      uint32_t uDeadline) const;

    // --- conversions
    /// Seconds from now to the instant the server's wall clock shows these fields (month 1-12;
    /// out-of-range fields normalise as in mktime); 0 when the time cannot be read.
    int64_t SecondsUntil(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour,
                         int32_t nMinute, int32_t nSecond) const;
    /// SecondsUntil of a YYYYMMDDhhmm (years 1-999 are 2000 + year); 0 for a value below 1.
    int64_t SecondsUntilPacked(int64_t nPacked) const;
    /// Whole minutes from the fields to now, truncated toward zero; 0 when the time cannot be
    /// read.
    int64_t MinutesSince(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour,
                         int32_t nMinute) const;
    /// Whole minutes from now to the fields, truncated toward zero; 0 when the time cannot be read.
    int64_t MinutesUntil(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour,
                         int32_t nMinute) const;
    /// Whole days from the date to now, truncated toward zero; 0 when the time cannot be read.
    int64_t DaysSince(int32_t nYear, int32_t nMonth, int32_t nDay) const;
    /// Whole days from now to the date, truncated toward zero; 0 when the time cannot be read.
    int64_t DaysUntil(int32_t nYear, int32_t nMonth, int32_t nDay) const;
    /// t minus the server wall time now read as a machine-local time (no zone correction); 0 when
    /// the time cannot be read.
    int64_t SecondsUntilInstant(int64_t t) const;
    /// The UTC instant of a YYYYMMDDhhmmss on the server's wall clock (a value below 10^14 takes
    /// 2000 + its two year digits); negative results give 0.
    int64_t PackedToServerTime(int64_t nPacked) const;
    /// The UTC instant of a YYMMDDhhmm (year 2000 + YY) on the server's wall clock.
    int64_t YYMMDDhhmmToServerTime(uint32_t uPacked) const;
    /// The UTC instant at which the server's wall clock shows the record (normalised in place as
    /// mktime does); 0 for null.
    int64_t TmToServerTime(std::tm* pTm) const;
    /// The server wall time as (year - 2000) * 10^10 + MMDDhhmmss; 0 when it cannot be read.
    int64_t NowPackedYYMMDDhhmmss() const;
    /// YYMMDDhhmm (year mod 100) of the server wall time, modulo 2^32 (years 43+ wrap); 0 when the
    /// time cannot be read.
    uint32_t NowPackedYYMMDDhhmm() const;
    /// YYMMDD of the server wall time; 0 when it cannot be read.
    uint32_t NowPackedYYMMDD() const;
    /// hour * 100 + minute of the server wall time; 0 when it cannot be read.
    int32_t NowHHMM() const;
    /// The server's weekday, 0 = Sunday; 0 when the time cannot be read.
    int32_t GetServerWeekday() const;
    /// t moved by whole days to weekday nWeekday of its machine-local week, counted here 1 =
    /// Sunday .. 7 = Saturday; 0 for a weekday outside 1-7 or a t the runtime cannot break down.
    int64_t ShiftToWeekday(int32_t nWeekday, int64_t t) const;
    /// The next weekday nWeekday (1 Monday .. 7 Sunday) after t's machine-local day at the same
    /// time of day; from that weekday on, ShiftToWeekday from the following Monday (so 1 gives the
    /// Sunday before it). Both flag values give the same result. 0 for a weekday outside 1-7.
    int64_t NextWeekdayTime(int64_t t, int32_t nWeekday, int32_t nFlag) const;
    /// Midnight of the first day of t's machine-local month, zone-corrected; 0 when t cannot be
    /// broken down.
    int64_t MonthStart(int64_t t) const;
    /// Seconds from the wall-clock server time to the next server midnight taken in the machine's
    /// frame; 86400 when that midnight is more than a day back, 0 when the time cannot be read.
    int64_t SecondsToNextDay() const;
    /// gmtime of (wall seconds + syncServerTime - syncTick), mode 1 minus eight hours, mode 3 plus
    /// eight hours; null when the runtime cannot break it down.
    std::tm* ServerTmForZone(int32_t nMode) const;

    // --- the synchronisation state
    ///@{
    /// The synchronisation state as SyncServerTime and UpdateDerivedSeconds left it, field by
    /// field.
    int32_t GetZoneOffset() const { return m_nZoneOffset; }
    int32_t GetServerTimeAtWall() const { return m_nServerTimeAtWall; }
    uint64_t GetSyncTick() const { return m_uSyncTick; }
    uint64_t GetSyncServerTime() const { return m_uSyncServerTime; }
    int32_t GetClockAtSync() const { return m_nClockAtSync; }
    int32_t GetServerClockAtSync() const { return m_nServerClockAtSync; }
    int64_t GetWallAtSync() const { return m_nWallAtSync; }
    uint32_t GetDerivedSeconds() const { return m_uDerivedSeconds; }
    ///@}

private:
    // Fields in the client's declaration order; the client relies on the layout.
    int32_t m_nZoneOffset = 0;
    int32_t m_nServerTimeAtWall = 0;
    uint64_t m_uSyncTick = 0;
    uint64_t m_uSyncServerTime = 0;
    int32_t m_nClockAtSync = 0;
    int32_t m_nServerClockAtSync = 0;
    int64_t m_nWallAtSync = 0;
    uint32_t m_uDerivedSeconds = 0;
    bool m_bStopwatchRunning = false;
    uint64_t m_uStopwatchStart = 0;
    uint64_t m_uStopwatchElapsed = 0;
    int32_t m_nReserved1 = 0;  ///< kept for the layout; nothing reads the three reserved values
    int64_t m_nReserved2 = 0;
    int64_t m_nReserved3 = 0;
    bool m_bUseEngineClock = false;
};

// The checks and conversions on the process-wide object (CPindTime::Instance()); each does exactly
// what the method of the same name does.
/// \copydoc CPindTime::GetServerTm
PIND_API std::tm* GetServerTm();
/// \copydoc CPindTime::GetZoneHours
PIND_API int32_t GetZoneHours();
/// \copydoc CPindTime::IsInCalendar
PIND_API bool IsInCalendar(const std::vector<int32_t>& vecMonths,
                           const std::vector<int32_t>& vecDays,
                           const std::vector<int32_t>& vecWeekdays);
/// \copydoc CPindTime::IsInDailyWindow
PIND_API bool IsInDailyWindow(int32_t nStartHHMM, int32_t nEndHHMM);
/// \copydoc CPindTime::IsInDateWindow
PIND_API bool IsInDateWindow(uint32_t uStart, uint32_t uEnd);
/// \copydoc CPindTime::GetWeeklyWindowRemain
PIND_API int32_t GetWeeklyWindowRemain(int32_t nStartDHHMM, int32_t nEndDHHMM);
/// \copydoc CPindTime::IsWeekdayInMask
PIND_API bool IsWeekdayInMask(uint32_t uMask);
/// \copydoc CPindTime::GetActivityState
PIND_API int32_t GetActivityState(int64_t nStart, int64_t nEnd);
/// \copydoc CPindTime::GetActivityStateByOpenDay
PIND_API int32_t GetActivityStateByOpenDay(int32_t nFirstDay, int32_t nDays, int64_t nBase,
                                           uint32_t uDeadline);
/// \copydoc CPindTime::SecondsUntil
PIND_API int64_t SecondsUntil(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour,
                              int32_t nMinute, int32_t nSecond);
/// \copydoc CPindTime::SecondsUntilPacked
PIND_API int64_t SecondsUntilPacked(int64_t nPacked);
/// \copydoc CPindTime::MinutesSince
PIND_API int64_t MinutesSince(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour,
                              int32_t nMinute);
/// \copydoc CPindTime::MinutesUntil
PIND_API int64_t MinutesUntil(int32_t nYear, int32_t nMonth, int32_t nDay, int32_t nHour,
                              int32_t nMinute);
/// \copydoc CPindTime::DaysSince
PIND_API int64_t DaysSince(int32_t nYear, int32_t nMonth, int32_t nDay);
/// \copydoc CPindTime::DaysUntil
PIND_API int64_t DaysUntil(int32_t nYear, int32_t nMonth, int32_t nDay);
/// \copydoc CPindTime::SecondsUntilInstant
PIND_API int64_t SecondsUntilInstant(int64_t t);
/// \copydoc CPindTime::PackedToServerTime
PIND_API int64_t PackedToServerTime(int64_t nPacked);
/// \copydoc CPindTime::YYMMDDhhmmToServerTime
PIND_API int64_t YYMMDDhhmmToServerTime(uint32_t uPacked);
/// \copydoc CPindTime::TmToServerTime
PIND_API int64_t TmToServerTime(std::tm* pTm);
/// \copydoc CPindTime::NowPackedYYMMDDhhmmss
PIND_API int64_t NowPackedYYMMDDhhmmss();
/// \copydoc CPindTime::NowPackedYYMMDDhhmm
PIND_API uint32_t NowPackedYYMMDDhhmm();
/// \copydoc CPindTime::NowPackedYYMMDD
PIND_API uint32_t NowPackedYYMMDD();
/// \copydoc CPindTime::NowHHMM
PIND_API int32_t NowHHMM();
/// \copydoc CPindTime::GetServerWeekday
PIND_API int32_t GetServerWeekday();
/// \copydoc CPindTime::ShiftToWeekday
PIND_API int64_t ShiftToWeekday(int32_t nWeekday, int64_t t);
/// \copydoc CPindTime::NextWeekdayTime
PIND_API int64_t NextWeekdayTime(int64_t t, int32_t nWeekday, int32_t nFlag);
/// \copydoc CPindTime::MonthStart
PIND_API int64_t MonthStart(int64_t t);
/// \copydoc CPindTime::SecondsToNextDay
PIND_API int64_t SecondsToNextDay();
/// \copydoc CPindTime::ServerTmForZone
PIND_API std::tm* ServerTmForZone(int32_t nMode);

#endif  // PIND_TIME_PINDTIME_H_

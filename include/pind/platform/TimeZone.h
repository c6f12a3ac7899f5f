// The C runtime's time-zone and calendar functions (`_get_timezone`, `_get_dstbias`,
// `_localtime64_s`, `_gmtime64_s`, `_mktime64`, `GetLocalTime`, `GetSystemTime`). The zone is the
// process's (`TZ` where set); the current time comes from the clock seam (Clock.h).
//   pind::platform::TzSet(); long west = pind::platform::GetTimezone();  // UTC+8: -28800
#ifndef PIND_PLATFORM_TIMEZONE_H_
#define PIND_PLATFORM_TIMEZONE_H_

#include <cstdint>
#include <ctime>

#include "pind/platform/Export.h"

namespace pind::platform {

/// Same fields and meanings as Win32 SYSTEMTIME.
struct SystemTime {
    uint16_t wYear;       ///< e.g. 2026
    uint16_t wMonth;      ///< 1-12
    uint16_t wDayOfWeek;  ///< 0 = Sunday
    uint16_t wDay;           ///< 1-31
    uint16_t wHour;          ///< 0-23
    uint16_t wMinute;        ///< 0-59
    uint16_t wSecond;        ///< 0-59
    uint16_t wMilliseconds;  ///< 0-999
};

/// Re-reads the zone (`_tzset`); call after changing `TZ`.
PIND_API void TzSet();
/// `_get_timezone`: standard offset in seconds west of UTC (UTC+8 gives -28800).
PIND_API long GetTimezone();
/// `_get_dstbias`: extra seconds west while daylight saving is in force: -3600 for a zone that has
/// daylight saving, 0 for one that has none.
PIND_API long GetDstBias();
/// `_daylight`: non-zero when the zone has a daylight-saving rule.
PIND_API int GetDaylight();

/// `_localtime64_s`: false (and `out` zeroed) for a time the runtime cannot break down.
PIND_API bool LocalTime64(int64_t t, std::tm* out);
/// `_gmtime64_s`, with the same failure rule.
PIND_API bool GmTime64(int64_t t, std::tm* out);
/// `_mktime64`: normalises `tm` as local time and returns seconds since 1970, or -1.
PIND_API int64_t MkTime64(std::tm* tm);

/// `GetLocalTime`: the clock seam's wall clock as local fields.
PIND_API void GetLocalTime(SystemTime* out);
/// `GetSystemTime`: the clock seam's wall clock as UTC fields.
PIND_API void GetSystemTime(SystemTime* out);

}  // namespace pind::platform

#endif  // PIND_PLATFORM_TIMEZONE_H_

// The current date and time as text for logs, report headings and file names, from the server's
// wall clock (CPindTime) or the machine's own. Each text lives in a static buffer that the next
// call of the same helper overwrites; none is safe for concurrent callers.
//   std::string name = std::string("report_") + ServerTimeText(0);  // "report_2024-03-05"
#ifndef PIND_TIME_TIMETEXT_H_
#define PIND_TIME_TIMETEXT_H_

#include <cstdint>

#include "pind/platform/Export.h"

/// The server wall time as "YYYY-MM-DD" (mode 0), "YYYY-MM-DD-hh:mm:ss" (3) or
/// "YYYY-MM-DD-hh:mm:ss:mmm" (4, milliseconds from the machine's local clock); empty for any other
/// mode or when the server time cannot be broken down.
PIND_API const char* ServerTimeText(int32_t nMode);
/// The machine's local time as "YYYY-MM-DD hh:mm:ss"; empty when the runtime cannot break it down.
PIND_API const char* LocalTimeText();
/// Month (1-12) * 100 + day of the synchronised server time in the machine's local zone (not the
/// server's); 0 when the runtime cannot break it down.
PIND_API int32_t NowMMDD();

#endif  // PIND_TIME_TIMETEXT_H_

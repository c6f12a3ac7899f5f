// Every clock the library reads: the millisecond ticks, the performance counter, the process clock
// and the wall clock. Hosts and tests install their own source to drive time without sleeping.
//   FakeClock clock; pind::platform::SetClockSource(&clock); clock.AdvanceMs(501);
#ifndef PIND_PLATFORM_CLOCK_H_
#define PIND_PLATFORM_CLOCK_H_

#include <cstdint>

#include "pind/platform/Export.h"

namespace pind::platform {

/// A source of time readings. Implementations must be safe to call from any thread.
class PIND_API ClockSource {
public:
    virtual ~ClockSource();
    /// `timeGetTime` / the engine's `TimeGetTime`: milliseconds since an arbitrary start, wrapping.
    virtual uint32_t TimeGetTime() const = 0;
    /// `GetTickCount`: milliseconds since an arbitrary start, wrapping.
    virtual uint32_t GetTickCount() const = 0;
    /// `QueryPerformanceCounter`: ticks of PerformanceFrequency() per second.
    virtual int64_t PerformanceCounter() const = 0;
    /// `QueryPerformanceFrequency`: counter ticks per second, never 0.
    virtual int64_t PerformanceFrequency() const = 0;
    /// `clock()` with the Windows runtime's meaning: milliseconds since the process started.
    virtual int32_t ProcessClock() const = 0;
    /// Wall clock: milliseconds since 1970-01-01 00:00:00 UTC.
    virtual int64_t UnixTimeMs() const = 0;
};

/// The operating system's clocks.
PIND_API const ClockSource& SystemClock();

/// Installs `source` for every later reading (null restores the system clock); returns the source
/// installed before. The source must outlive its installation.
PIND_API const ClockSource* SetClockSource(const ClockSource* source);

/// The source in use: the installed one, else SystemClock().
PIND_API const ClockSource& CurrentClock();

/// `timeGetTime`: milliseconds from the current clock source, wrapping at 2^32.
PIND_API uint32_t TimeGetTime();
/// `GetTickCount`: milliseconds from the current clock source, wrapping at 2^32.
PIND_API uint32_t GetTickCount();
/// The current clock source's high-resolution counter.
PIND_API int64_t QueryPerformanceCounter();
/// Counts per second of QueryPerformanceCounter.
PIND_API int64_t QueryPerformanceFrequency();
/// `clock()` in milliseconds since process start (CLOCKS_PER_SEC is 1000 on Windows).
PIND_API int32_t ProcessClock();
/// `_time64(nullptr)`: whole seconds since 1970, rounded down.
PIND_API int64_t Time64();
/// The wall clock in milliseconds since 1970.
PIND_API int64_t UnixTimeMs();

}  // namespace pind::platform

#endif  // PIND_PLATFORM_CLOCK_H_

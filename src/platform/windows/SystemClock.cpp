#include <ctime>

#include "pind/platform/Clock.h"

// mmsystem.h (timeGetTime) needs windows.h before it.
// clang-format off
#include "pind/platform/WinTypes.h"
#include <mmsystem.h>
// clang-format on

namespace pind::platform {
namespace {

class WindowsClock final : public ClockSource {
public:
    uint32_t TimeGetTime() const override { return ::timeGetTime(); }
    uint32_t GetTickCount() const override { return ::GetTickCount(); }
    int64_t PerformanceCounter() const override {
        LARGE_INTEGER v;
        ::QueryPerformanceCounter(&v);
        return v.QuadPart;
    }
    int64_t PerformanceFrequency() const override {
        LARGE_INTEGER v;
        ::QueryPerformanceFrequency(&v);
        return v.QuadPart;
    }
    int32_t ProcessClock() const override { return static_cast<int32_t>(std::clock()); }
    int64_t UnixTimeMs() const override {
        FILETIME ft;
        ::GetSystemTimeAsFileTime(&ft);
        const int64_t ticks = (static_cast<int64_t>(ft.dwHighDateTime) << 32) |
                              static_cast<int64_t>(ft.dwLowDateTime);
        // FILETIME counts 100 ns since 1601-01-01.
        return (ticks - 116444736000000000LL) / 10000;
    }
};

}  // namespace

const ClockSource& SystemClock() {
    static const WindowsClock s_clock;
    return s_clock;
}

}  // namespace pind::platform

#include "pind/platform/Clock.h"

#include <atomic>

namespace pind::platform {
namespace {
std::atomic<const ClockSource*> g_source{nullptr};
}  // namespace

ClockSource::~ClockSource() = default;

const ClockSource* SetClockSource(const ClockSource* source) { return g_source.exchange(source); }

const ClockSource& CurrentClock() {
    const ClockSource* source = g_source.load(std::memory_order_acquire);
    return source != nullptr ? *source : SystemClock();
}

uint32_t TimeGetTime() { return CurrentClock().TimeGetTime(); }
uint32_t GetTickCount() { return CurrentClock().GetTickCount(); }
int64_t QueryPerformanceCounter() { return CurrentClock().PerformanceCounter(); }
int64_t QueryPerformanceFrequency() { return CurrentClock().PerformanceFrequency(); }
int32_t ProcessClock() { return CurrentClock().ProcessClock(); }
int64_t UnixTimeMs() { return CurrentClock().UnixTimeMs(); }

int64_t Time64() {
    const int64_t ms = UnixTimeMs();
    // Round toward minus infinity so that times before 1970 keep whole-second steps.
    return ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000);
}

}  // namespace pind::platform

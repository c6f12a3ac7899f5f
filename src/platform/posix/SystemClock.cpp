#include <time.h>
#include <unistd.h>

#include <cstdio>

#include "pind/platform/Clock.h"

namespace pind::platform {
namespace {

int64_t Nanoseconds(clockid_t id) {
    timespec ts{};
    clock_gettime(id, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

// Boot-clock milliseconds at which this process started, from /proc/self/stat; the first reading
// stands in where that cannot be read.
int64_t ProcessStartMs() {
    static const int64_t s_start = [] {
        const int64_t fallback = Nanoseconds(CLOCK_BOOTTIME) / 1000000;
        std::FILE* f = std::fopen("/proc/self/stat", "r");
        if (f == nullptr) {
            return fallback;
        }
        char buf[1024];
        const size_t n = std::fread(buf, 1, sizeof buf - 1, f);
        std::fclose(f);
        buf[n] = '\0';
        // Field 2 (the command) may hold blanks and parentheses: count fields after the last ')'.
        const char* p = nullptr;
        for (size_t i = 0; i < n; ++i) {
            if (buf[i] == ')') {
                p = buf + i + 1;
            }
        }
        if (p == nullptr) {
            return fallback;
        }
        unsigned long long startTicks = 0;
        int field = 2;
        while (*p != '\0' && field < 22) {
            if (*p == ' ') {
                ++field;
                if (field == 22 && std::sscanf(p + 1, "%llu", &startTicks) != 1) {
                    return fallback;
                }
            }
            ++p;
        }
        const long hz = sysconf(_SC_CLK_TCK);
        if (field != 22 || hz <= 0) {
            return fallback;
        }
        return static_cast<int64_t>(startTicks) * 1000 / hz;
    }();
    return s_start;
}

class PosixClock final : public ClockSource {
public:
    uint32_t TimeGetTime() const override { return MonotonicMs(); }
    uint32_t GetTickCount() const override { return MonotonicMs(); }
    int64_t PerformanceCounter() const override { return Nanoseconds(CLOCK_MONOTONIC); }
    int64_t PerformanceFrequency() const override { return 1000000000; }
    int32_t ProcessClock() const override {
        return static_cast<int32_t>(Nanoseconds(CLOCK_BOOTTIME) / 1000000 - ProcessStartMs());
    }
    int64_t UnixTimeMs() const override { return Nanoseconds(CLOCK_REALTIME) / 1000000; }

private:
    static uint32_t MonotonicMs() {
        return static_cast<uint32_t>(Nanoseconds(CLOCK_MONOTONIC) / 1000000);
    }
};

}  // namespace

const ClockSource& SystemClock() {
    static const PosixClock s_clock;
    return s_clock;
}

}  // namespace pind::platform

// The packed-date conversions and schedule checks over arbitrary numbers, machine zones and server
// zones: no crash, no undefined behaviour, and the conversions agree with each other.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "pind/platform/Clock.h"
#include "pind/platform/System.h"
#include "pind/platform/TimeZone.h"
#include "pind/time/PindTime.h"

namespace {

// Every clock held at the instant the input chooses.
class StillClock final : public pind::platform::ClockSource {
public:
    explicit StillClock(int64_t unixMs) : m_unixMs(unixMs) {}
    uint32_t TimeGetTime() const override { return 5000; }
    uint32_t GetTickCount() const override { return 5000; }
    int64_t PerformanceCounter() const override { return 0; }
    int64_t PerformanceFrequency() const override { return 1000; }
    int32_t ProcessClock() const override { return 0; }
    int64_t UnixTimeMs() const override { return m_unixMs; }

private:
    int64_t m_unixMs;
};

// Reads fixed-size numbers from the input; zeros once it runs out.
class Reader {
public:
    Reader(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
    template <typename T>
    T Next() {
        T value{};
        const size_t n = m_size - m_at < sizeof value ? m_size - m_at : sizeof value;
        if (n != 0) {
            std::memcpy(&value, m_data + m_at, n);
            m_at += n;
        }
        return value;
    }
    bool Done() const { return m_at >= m_size; }

private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_at = 0;
};

const char* const kZones[] = {"UTC0", "CST-8", "NST+3:30", "EST5EDT", "CET-1CEST,M3.5.0,M10.5.0/3"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Reader in(data, size);
    static const char* s_zone = nullptr;
    const char* zone = kZones[in.Next<uint8_t>() % 5];
    if (zone != s_zone) {
        pind::platform::SetEnv("TZ", zone);
        pind::platform::TzSet();
        s_zone = zone;
    }
    // Server times from 1970 to about 2106, so that "now" can be read most of the time.
    const int64_t server = in.Next<uint32_t>();
    const StillClock clock(server * 1000);
    const pind::platform::ClockSource* previous = pind::platform::SetClockSource(&clock);
    CPindTime time;
    time.SyncServerTime(static_cast<uint64_t>(server), in.Next<int32_t>());

    while (!in.Done()) {
        const int64_t wide = in.Next<int64_t>();
        const uint32_t packed = in.Next<uint32_t>();
        const int32_t small = in.Next<int32_t>();

        if (time.PackedToServerTime(wide) < 0) {
            std::abort();
        }
        // A YYMMDDhhmm with seconds 00 is the same instant as its 14-digit form.
        const int64_t direct = time.YYMMDDhhmmToServerTime(packed);
        if (time.PackedToServerTime(int64_t{packed} * 100) != (direct < 0 ? 0 : direct)) {
            std::abort();
        }
        const int32_t state = time.GetActivityState(wide, wide ^ small);
        const int32_t byDay = time.GetActivityStateByOpenDay(small, small >> 8, wide, packed);
        if (state < 0 || state > 2 || byDay < 0 || byDay > 2) {
            std::abort();
        }
        if ((small < 1 || small > 7) &&
            (time.ShiftToWeekday(small, wide) != 0 || time.NextWeekdayTime(wide, small, 1) != 0)) {
            std::abort();
        }
        time.SecondsUntilPacked(wide);
        time.SecondsUntilInstant(wide);
        time.MonthStart(wide);
        time.ServerTmAt(wide);
        time.IsInDateWindow(packed, packed ^ static_cast<uint32_t>(small));
        time.GetWeeklyWindowRemain(small, static_cast<int32_t>(packed));
        time.IsInDailyWindow(small, static_cast<int32_t>(packed));
        time.IsWeekdayInMask(packed);
        time.SecondsUntil(small, small >> 4, small >> 8, small >> 12, small >> 16, small >> 20);
        time.DaysUntil(static_cast<int32_t>(packed), small, small >> 16);
        time.MinutesSince(small, static_cast<int32_t>(packed), 1, 0, 0);
    }
    time.NowPackedYYMMDDhhmmss();
    time.SecondsToNextDay();
    pind::platform::SetClockSource(previous);
    return 0;
}

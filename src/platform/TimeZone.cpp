#include "pind/platform/TimeZone.h"

#include "pind/platform/Clock.h"

namespace pind::platform {
namespace {

void Fill(const std::tm& tm, int64_t ms, SystemTime* out) {
    out->wYear = static_cast<uint16_t>(tm.tm_year + 1900);
    out->wMonth = static_cast<uint16_t>(tm.tm_mon + 1);
    out->wDayOfWeek = static_cast<uint16_t>(tm.tm_wday);
    out->wDay = static_cast<uint16_t>(tm.tm_mday);
    out->wHour = static_cast<uint16_t>(tm.tm_hour);
    out->wMinute = static_cast<uint16_t>(tm.tm_min);
    out->wSecond = static_cast<uint16_t>(tm.tm_sec);
    out->wMilliseconds = static_cast<uint16_t>(((ms % 1000) + 1000) % 1000);
}

int64_t FloorSeconds(int64_t ms) { return ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000); }

}  // namespace

void GetLocalTime(SystemTime* out) {
    if (out == nullptr) {
        return;
    }
    const int64_t ms = UnixTimeMs();
    std::tm tm{};
    LocalTime64(FloorSeconds(ms), &tm);
    Fill(tm, ms, out);
}

void GetSystemTime(SystemTime* out) {
    if (out == nullptr) {
        return;
    }
    const int64_t ms = UnixTimeMs();
    std::tm tm{};
    GmTime64(FloorSeconds(ms), &tm);
    Fill(tm, ms, out);
}

}  // namespace pind::platform

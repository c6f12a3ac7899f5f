#include "pind/platform/TimeZone.h"

#include <time.h>

#include <cstring>
#include <mutex>

namespace pind::platform {
namespace {
void EnsureTzSet() {
    static std::once_flag s_once;
    std::call_once(s_once, [] { tzset(); });
}
}  // namespace

void TzSet() { tzset(); }

long GetTimezone() {
    EnsureTzSet();
    return timezone;
}

long GetDstBias() {
    EnsureTzSet();
    return daylight != 0 ? -3600 : 0;
}

int GetDaylight() {
    EnsureTzSet();
    return daylight;
}

bool LocalTime64(int64_t t, std::tm* out) {
    if (out == nullptr) {
        return false;
    }
    EnsureTzSet();
    const time_t tt = static_cast<time_t>(t);
    if (t < 0 || localtime_r(&tt, out) == nullptr) {
        std::memset(out, 0, sizeof *out);
        return false;
    }
    return true;
}

bool GmTime64(int64_t t, std::tm* out) {
    if (out == nullptr) {
        return false;
    }
    const time_t tt = static_cast<time_t>(t);
    if (t < 0 || gmtime_r(&tt, out) == nullptr) {
        std::memset(out, 0, sizeof *out);
        return false;
    }
    return true;
}

int64_t MkTime64(std::tm* tm) {
    if (tm == nullptr) {
        return -1;
    }
    EnsureTzSet();
    const time_t t = mktime(tm);
    return t < 0 ? -1 : static_cast<int64_t>(t);
}

}  // namespace pind::platform

#include "pind/platform/TimeZone.h"

#include <time.h>

#include <cstdlib>
#include <cstring>
#include <mutex>

namespace pind::platform {
namespace {

// Reading TZ sets the offset and the daylight flag but leaves _dstbias as the system zone last set
// it (0 where the system has no daylight saving), and localtime then never moves to summer time.
// A TZ daylight rule is always one hour.
void ReadZone() {
    _tzset();
    const char* tz = std::getenv("TZ");
    if (tz != nullptr && tz[0] != '\0' && _daylight != 0) {
        _dstbias = -3600;
    }
}

void EnsureTzSet() {
    static std::once_flag s_once;
    std::call_once(s_once, ReadZone);
}

}  // namespace

void TzSet() { ReadZone(); }

// The old msvcrt that mingw-w64 links has no _get_timezone/_get_dstbias: read the variables.
long GetTimezone() {
    EnsureTzSet();
    return _timezone;
}

long GetDstBias() {
    EnsureTzSet();
    return _daylight != 0 ? _dstbias : 0;
}

int GetDaylight() {
    EnsureTzSet();
    return _daylight;
}

bool LocalTime64(int64_t t, std::tm* out) {
    if (out == nullptr) {
        return false;
    }
    EnsureTzSet();
    const __time64_t tt = t;
    if (_localtime64_s(out, &tt) != 0) {
        std::memset(out, 0, sizeof *out);
        return false;
    }
    return true;
}

bool GmTime64(int64_t t, std::tm* out) {
    if (out == nullptr) {
        return false;
    }
    const __time64_t tt = t;
    if (_gmtime64_s(out, &tt) != 0) {
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
    return static_cast<int64_t>(_mktime64(tm));
}

}  // namespace pind::platform

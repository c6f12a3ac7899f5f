#include "pind/time/TimeText.h"

#include <fmt/format.h>

#include <ctime>
#include <iterator>
#include <string>

#include "pind/platform/Clock.h"
#include "pind/platform/TimeZone.h"
#include "pind/time/PindTime.h"

const char* ServerTimeText(int32_t nMode) {
    // One buffer for the process, emptied and refilled in place so earlier pointers see the new
    // text.
    static std::string s_text = [] {
        std::string text;
        text.reserve(32);
        return text;
    }();
    s_text.clear();
    const std::tm* tm = CPindTime::Instance()->GetServerTm();
    if (tm == nullptr) {
        return s_text.c_str();
    }
    const int year = tm->tm_year + 1900;
    const int month = tm->tm_mon + 1;
    switch (nMode) {
        case 0:
            fmt::format_to(std::back_inserter(s_text), "{:04d}-{:02d}-{:02d}", year, month,
                           tm->tm_mday);
            break;
        case 3:
            fmt::format_to(std::back_inserter(s_text), "{:04d}-{:02d}-{:02d}-{:02d}:{:02d}:{:02d}",
                           year, month, tm->tm_mday, tm->tm_hour, tm->tm_min, tm->tm_sec);
            break;
        case 4: {
            // The milliseconds come from the machine's clock: they only order lines in a second.
            pind::platform::SystemTime local{};
            pind::platform::GetLocalTime(&local);
            s_text =
                fmt::format("{:04d}-{:02d}-{:02d}-{:02d}:{:02d}:{:02d}:{:03d}", year, month,
                            tm->tm_mday, tm->tm_hour, tm->tm_min, tm->tm_sec, local.wMilliseconds);
            break;
        }
        default:
            break;
    }
    return s_text.c_str();
}

const char* LocalTimeText() {
    static char s_text[64];
    std::tm tm{};
    if (!pind::platform::LocalTime64(pind::platform::Time64(), &tm) ||
        std::strftime(s_text, sizeof s_text, "%Y-%m-%d %H:%M:%S", &tm) == 0) {
        s_text[0] = '\0';
    }
    return s_text;
}

int32_t NowMMDD() {
    std::tm tm{};
    if (!pind::platform::LocalTime64(CPindTime::Instance()->ServerNow(), &tm)) {
        return 0;
    }
    return (tm.tm_mon + 1) * 100 + tm.tm_mday;
}

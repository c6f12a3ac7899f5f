// What the tool tests share: whether permissions can be enforced here, and today's log file name.
#ifndef PIND_TESTS_TOOL_TOOLTESTSUPPORT_H_
#define PIND_TESTS_TOOL_TOOLTESTSUPPORT_H_

#include <unistd.h>

#include <ctime>
#include <string>

namespace pind::test {

/// False when the tests run as root, which reads and writes whatever the modes say.
inline bool PermissionsHold() { return geteuid() != 0; }

/// "<year>_<month>_<day>_x64.log" for today in UTC (run the tool with TZ=UTC).
inline std::string TodaysLogName() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    return std::to_string(utc.tm_year + 1900) + "_" + std::to_string(utc.tm_mon + 1) + "_" +
           std::to_string(utc.tm_mday) + "_x64.log";
}

}  // namespace pind::test

#endif  // PIND_TESTS_TOOL_TOOLTESTSUPPORT_H_

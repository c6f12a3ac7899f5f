// Runs the built `pind` program and captures what it did, for tests of the tool's contracts; brings
// in what every tool test uses (GoogleTest, TempDir).
//   ToolRun r = RunPind({"time", "--server", "0", "NowHHMM"}); EXPECT_EQ(r.out, "0\n");
#ifndef PIND_TESTS_TOOL_RUNTOOL_H_
#define PIND_TESTS_TOOL_RUNTOOL_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <ctime>
#include <string>
#include <utility>
#include <vector>

#include "support/TempDir.h"

namespace pind::test {

struct ToolRun {
    int status = -1;  ///< the exit status, or -1 when the program did not exit normally
    std::string out;  ///< everything written to stdout, bytes as they are
    std::string err;  ///< everything written to stderr
};

/// Runs PIND_TOOL_PATH with `args` (each passed as one argument, bytes as they are), `input` on
/// stdin, in the folder `cwd` (the current one when empty), with `env` ("NAME=value" entries)
/// added to the environment, and stdout sent to `stdoutPath` when one is given (`out` then stays
/// empty). A run is stopped after a minute. POSIX shells only; the tool tests run on Linux.
ToolRun RunPind(const std::vector<std::string>& args, const std::string& input = std::string(),
                const std::string& cwd = std::string(),
                const std::vector<std::string>& env = std::vector<std::string>(),
                const std::string& stdoutPath = std::string());

/// The words of `line`, split at white space; a word in single quotes keeps it ('' is empty).
std::vector<std::string> Words(const std::string& line);

/// One row of a command's table: its arguments as Words, then what the run must give.
struct ToolCase {
    ToolCase(std::string a, int s, std::string o = "", std::string e = "", std::string i = "")
        : args(std::move(a)),
          status(s),
          out(std::move(o)),
          err(std::move(e)),
          input(std::move(i)) {}
    std::string args;
    int status;
    std::string out;    ///< stdout, exactly
    std::string err;    ///< a part of stderr; "" when stderr must be empty
    std::string input;  ///< stdin
};

/// Runs every case in `cwd` with `env` and checks it, naming the case on a mismatch.
void ExpectRuns(const std::vector<ToolCase>& cases, const std::string& cwd = std::string(),
                const std::vector<std::string>& env = std::vector<std::string>());

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

#endif  // PIND_TESTS_TOOL_RUNTOOL_H_

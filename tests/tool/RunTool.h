// Runs the built `pind` program and captures what it did, for tests of the tool's contracts.
//   ToolRun r = RunPind({"time", "--server", "0", "NowHHMM"}); EXPECT_EQ(r.out, "0\n");
#ifndef PIND_TESTS_TOOL_RUNTOOL_H_
#define PIND_TESTS_TOOL_RUNTOOL_H_

#include <string>
#include <vector>

namespace pind::test {

struct ToolRun {
    int status = -1;  ///< the exit status, or -1 when the program did not exit normally
    std::string out;  ///< everything written to stdout, bytes as they are
    std::string err;  ///< everything written to stderr
};

/// Runs PIND_TOOL_PATH with `args` (each passed as one argument, bytes as they are), `input` on
/// stdin, in the folder `cwd` (the current one when empty), with `env` ("NAME=value" entries)
/// added to the environment. POSIX shells only; the tool tests run on Linux.
ToolRun RunPind(const std::vector<std::string>& args, const std::string& input = std::string(),
                const std::string& cwd = std::string(),
                const std::vector<std::string>& env = std::vector<std::string>());

/// RunPind with stdout sent to `stdoutPath` instead (e.g. "/dev/full" for a full disk); `out`
/// stays empty.
ToolRun RunPindTo(const std::string& stdoutPath, const std::vector<std::string>& args,
                  const std::string& input = std::string(), const std::string& cwd = std::string());

}  // namespace pind::test

#endif  // PIND_TESTS_TOOL_RUNTOOL_H_

#include "tool/RunTool.h"

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>

#include "support/TempDir.h"

namespace pind::test {
namespace {

// Single-quotes a word for sh: every byte stays itself, a quote becomes '\''.
std::string Quote(const std::string& word) {
    std::string quoted = "'";
    for (char c : word) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

ToolRun Run(const std::vector<std::string>& args, const std::string& input, const std::string& cwd,
            const std::vector<std::string>& env, const std::string& stdoutPath) {
    TempDir io;
    const std::string in = io.Write("stdin", input);
    std::string command;
    if (!cwd.empty()) {
        command += "cd " + Quote(cwd) + " && ";
    }
    command += "env";
    for (const std::string& e : env) {
        command += " " + Quote(e);
    }
    command += " " + Quote(PIND_TOOL_PATH);
    for (const std::string& a : args) {
        command += " " + Quote(a);
    }
    const std::string out = stdoutPath.empty() ? io.File("stdout") : stdoutPath;
    command += " <" + Quote(in) + " >" + Quote(out) + " 2>" + Quote(io.File("stderr"));
    const int raw = std::system(command.c_str());
    ToolRun run;
    if (raw != -1 && WIFEXITED(raw)) {
        run.status = WEXITSTATUS(raw);
    }
    run.out = stdoutPath.empty() ? io.Read("stdout") : std::string();
    run.err = io.Read("stderr");
    return run;
}

}  // namespace

ToolRun RunPind(const std::vector<std::string>& args, const std::string& input,
                const std::string& cwd, const std::vector<std::string>& env) {
    return Run(args, input, cwd, env, std::string());
}

ToolRun RunPindTo(const std::string& stdoutPath, const std::vector<std::string>& args,
                  const std::string& input, const std::string& cwd) {
    return Run(args, input, cwd, {}, stdoutPath);
}

}  // namespace pind::test

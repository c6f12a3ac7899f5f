#include "tool/RunTool.h"

#include <sys/wait.h>

#include <cstdlib>
#include <iomanip>
#include <sstream>

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

}  // namespace

ToolRun RunPind(const std::vector<std::string>& args, const std::string& input,
                const std::string& cwd, const std::vector<std::string>& env,
                const std::string& stdoutPath) {
    TempDir io;
    const std::string in = io.Write("stdin", input);
    std::string command;
    if (!cwd.empty()) {
        command += "cd " + Quote(cwd) + " && ";
    }
    command += "timeout 60 env";  // a tool that hangs fails its test instead of stopping the run
    std::vector<std::string> words = env;
    words.push_back(PIND_TOOL_PATH);
    words.insert(words.end(), args.begin(), args.end());
    for (const std::string& word : words) {
        command += " " + Quote(word);
    }
    const std::string out = stdoutPath.empty() ? io.File("stdout") : stdoutPath;
    command += " <" + Quote(in) + " >" + Quote(out) + " 2>" + Quote(io.File("stderr"));
    const int raw = std::system(command.c_str());
    ToolRun run;
    run.status = raw != -1 && WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    run.out = stdoutPath.empty() ? io.Read("stdout") : std::string();
    run.err = io.Read("stderr");
    return run;
}

std::vector<std::string> Words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string word; in >> std::quoted(word, '\'', '\x7f');) words.push_back(word);
    return words;
}

void ExpectRuns(const std::vector<ToolCase>& cases, const std::string& cwd,
                const std::vector<std::string>& env) {
    for (const ToolCase& c : cases) {
        const ToolRun run = RunPind(Words(c.args), c.input, cwd, env);
        SCOPED_TRACE("pind " + c.args);
        EXPECT_EQ(run.status, c.status);
        EXPECT_EQ(run.out, c.out);
        EXPECT_TRUE(c.err.empty() ? run.err.empty() : run.err.find(c.err) != std::string::npos)
            << "stderr: " << run.err;
    }
}

}  // namespace pind::test

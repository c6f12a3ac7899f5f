// `pind log`: success only when the line is in the file; every other outcome says why.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/TempDir.h"
#include "tool/RunTool.h"
#include "tool/ToolTestSupport.h"

namespace pind::test {
namespace {

TEST(LogTool, WritesTheLineAndPrintsThePath) {
    TempDir dir;
    const auto run =
        RunPind({"log", "--folder", "logs", "login ok", "uid=42"}, "", dir.Path(), {"TZ=UTC"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "./logs/" + TodaysLogName() + "\n");
    const std::string text = dir.Read("logs/" + TodaysLogName());
    EXPECT_NE(text.find("login ok"), std::string::npos);
    EXPECT_NE(text.find("42"), std::string::npos);
}

TEST(LogTool, NothingWrittenIsAFailureThatSaysWhy) {
    struct Case {
        const char* label;
        std::vector<std::string> args;
        int status;
        const char* why;
    };
    const std::string longName(300, 'x');
    const std::vector<Case> cases = {
        {"below the minimum", {"log", "--level", "debug", "m"}, 1, "below the minimum"},
        {"__out__", {"log", "m", "__out__=1"}, 1, "__out__"},
        {"rooted folder", {"log", "--folder", "/abs", "m"}, 2, "below the current one"},
        {"component too long", {"log", "--folder", longName, "m"}, 1, "cannot write"},
        {"folder below a file", {"log", "--folder", "file/sub", "m"}, 1, "cannot write"},
        {"day file is a folder", {"log", "--folder", "blocked", "m"}, 1, "is a folder"},
    };
    for (const Case& c : cases) {
        TempDir dir;
        dir.Write("file", "");
        std::filesystem::create_directories(dir.File("blocked/" + TodaysLogName()));
        const auto run = RunPind(c.args, "", dir.Path(), {"TZ=UTC"});
        EXPECT_EQ(run.status, c.status) << c.label;
        EXPECT_EQ(run.out, "") << c.label;
        EXPECT_NE(run.err.find(c.why), std::string::npos) << c.label << ": " << run.err;
    }
}

TEST(LogTool, AReadOnlyDayFileIsNotReportedAsWritten) {
    if (!PermissionsHold()) {
        GTEST_SKIP() << "root writes read-only files";
    }
    TempDir dir;
    const std::string file = dir.Write("debug/" + TodaysLogName(), "earlier line\n");
    chmod(file.c_str(), 0444);
    const auto run = RunPind({"log", "m"}, "", dir.Path(), {"TZ=UTC"});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("cannot write"), std::string::npos) << run.err;
    EXPECT_EQ(dir.Read("debug/" + TodaysLogName()), "earlier line\n");
}

}  // namespace
}  // namespace pind::test

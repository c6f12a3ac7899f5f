// `pind log`: success only when the line is in the file; every other outcome says why.
#include <sys/stat.h>

#include <filesystem>

#include "tool/RunTool.h"

namespace pind::test {
namespace {

TEST(LogTool, WritesTheLineOrFailsSayingWhy) {
    const std::string day = TodaysLogName();
    TempDir dir;
    dir.Write("file", "");
    std::filesystem::create_directories(dir.File("blocked/" + day));
    ExpectRuns({{"log --folder logs 'login ok' uid=42", 0, "./logs/" + day + "\n", ""},
                {"log --level debug m", 1, "", "below the minimum"},
                {"log m __out__=1", 1, "", "__out__"},
                {"log --folder /abs m", 2, "", "below the current one"},
                {"log --folder " + std::string(300, 'x') + " m", 1, "", "cannot write"},
                {"log --folder file/sub m", 1, "", "cannot write"},
                {"log --folder blocked m", 1, "", "is a folder"}},
               dir.Path(), {"TZ=UTC"});
    const std::string text = dir.Read("logs/" + day);
    EXPECT_NE(text.find("\"msg\": \"login ok\""), std::string::npos) << text;
    EXPECT_NE(text.find("42"), std::string::npos);
}

TEST(LogTool, AReadOnlyDayFileIsNotReportedAsWritten) {
    if (!PermissionsHold()) {
        GTEST_SKIP() << "root writes read-only files";
    }
    TempDir dir;
    const std::string file = dir.Write("debug/" + TodaysLogName(), "earlier line\n");
    chmod(file.c_str(), 0444);
    ExpectRuns({{"log m", 1, "", "cannot write"}}, dir.Path(), {"TZ=UTC"});
    EXPECT_EQ(dir.Read("debug/" + TodaysLogName()), "earlier line\n");
}

}  // namespace
}  // namespace pind::test

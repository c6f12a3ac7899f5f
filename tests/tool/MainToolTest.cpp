// The conventions every pind command shares, checked on the built program.
#include <gtest/gtest.h>

#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

TEST(PindTool, HelpAndVersionGoToStdoutWithExitZero) {
    for (const char* flag : {"--help", "--version"}) {
        const auto run = RunPind({flag});
        EXPECT_EQ(run.status, 0) << flag;
        EXPECT_FALSE(run.out.empty()) << flag;
        EXPECT_EQ(run.err, "") << flag;
    }
}

TEST(PindTool, UnknownCommandIsAUsageError) {
    const auto run = RunPind({"no-such-command"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("unknown command"), std::string::npos);
}

}  // namespace

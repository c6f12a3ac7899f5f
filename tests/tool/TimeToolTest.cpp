// `pind time`: the option and number rules other tools script against, and a few checks end to
// end (the checks themselves are covered by the time tests).
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

TEST(PindTimeTool, PrintsOneLineOrRejectsTheArguments) {
    // 1699934400 is 2023-11-14 04:00:00 UTC, a Tuesday; 2524608000 is 2050-01-01.
    const struct {
        const char* args;  // after "time", split at blanks; '' is an empty argument
        const char* out;   // null: a usage error (exit 2, nothing on stdout)
        const char* tz = "UTC0";
    } cases[] = {{"--zone -28800 --server 1699934400 IsInDateWindow 2311141200 2311141200", "1\n"},
                 {"--server 1699934400 ServerTmAt 0", "2023-11-14 4:0:0 2 317\n"},
                 {"--server 1699934400 ServerTmAt -1", "\n"},
                 {"--server 1699934400 --zone -28800 now",
                  "2023-11-14\n2023-11-14-12:00:00\n2023-11-14-12:00:00:000\n", "EST5EDT"},
                 {"--server 1699934400 ServerTimeText 1", "\n"},
                 {"--server 1704052800 --zone -28800 NowMMDD", "101\n", "CST-8"},
                 {"--server 2524608000 NowPackedYYMMDDhhmm", "706042704\n"},  // unsigned
                 {"--server 1699934400 IsInCalendar 11,12 - 2", "1\n"},
                 {"--server 1699934400 IsInCalendar - +14,015 -", "1\n"},
                 {"--server 0001699934400 NowHHMM", "400\n"},  // never octal
                 {"--server 1699934400 GetActivityState -9223372036854775808 0", "1\n"},
                 {"--server 1699934400 NextWeekdayTime 1699934400 7 1", "1700366400\n"},
                 // Usage errors.
                 // clang-format off
        {"", nullptr}, {"--server 1699934400", nullptr}, {"nowhhmm", nullptr},
        {"--verbose NowHHMM", nullptr}, {"NowHHMM --server 1", nullptr},  // options come first
        {"--server --zone 0 NowHHMM", nullptr}, {"--server -1 NowHHMM", nullptr},
        {"--zone 2147483648 NowHHMM", nullptr}, {"--zone", nullptr}, {"NowHHMM 1", nullptr},
        {"IsInDailyWindow 1200", nullptr}, {"IsInDateWindow 4294967296 0", nullptr},
        {"IsInDailyWindow 0x10 0", nullptr}, {"IsInDailyWindow 1e3 0", nullptr},
        {"IsInDailyWindow '' 0", nullptr}, {"SecondsUntilPacked -9223372036854775809", nullptr},
        {"IsInCalendar 1,,2 - -", nullptr}, {"IsInCalendar 1, - -", nullptr},
        {"IsInCalendar '' - -", nullptr}, {"NextWeekdayTime 1699934400 7 2", nullptr}};
    // clang-format on
    for (const auto& c : cases) {
        std::vector<std::string> args = {"time"};
        std::istringstream words(c.args);
        for (std::string word; words >> word;) args.push_back(word == "''" ? "" : word);
        const auto run = RunPind(args, "", "", {std::string("TZ=") + c.tz});
        SCOPED_TRACE(std::string("TZ=") + c.tz + " pind time " + c.args);
        EXPECT_EQ(run.status, c.out != nullptr ? 0 : 2);
        EXPECT_EQ(run.out, c.out != nullptr ? c.out : "");
        if (c.out == nullptr) {
            EXPECT_NE(run.err.find("usage: pind time"), std::string::npos);
        } else {
            EXPECT_EQ(run.err, "");
        }
    }
}

TEST(PindTimeTool, HelpListsTheChecksAndTheServerDefaultsToTheMachinesTime) {
    const auto help = RunPind({"time", "--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* check : {"IsInCalendar", "GetActivityStateByOpenDay", "NextWeekdayTime",
                              "ServerTmAt", "NowMMDD", "SecondsToNextDay"}) {
        EXPECT_NE(help.out.find(check), std::string::npos) << check;
    }
    const auto run = RunPind({"time", "NowPackedYYMMDD"}, "", "", {"TZ=UTC0"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.size(), 7u) << run.out;  // YYMMDD and a newline, 2010-2099
}

}  // namespace

// `pind time`: the option and number rules other tools script against, and a few checks end to
// end (the checks themselves are covered by the time tests).
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

struct TimeCase {
    const char* args;  // after "time", split at blanks; '' is an empty argument
    const char* tz;
    const char* out;  // null: a usage error (exit 2, nothing on stdout)
};

void PrintTo(const TimeCase& c, std::ostream* os) { *os << "TZ=" << c.tz << " " << c.args; }

class PindTimeTool : public ::testing::TestWithParam<TimeCase> {};

TEST_P(PindTimeTool, PrintsOneLineOrRejectsTheArguments) {
    const TimeCase& c = GetParam();
    std::vector<std::string> args = {"time"};
    std::istringstream words(c.args);
    for (std::string word; words >> word;) {
        args.push_back(word == "''" ? "" : word);
    }
    const auto run = RunPind(args, "", "", {std::string("TZ=") + c.tz});
    if (c.out == nullptr) {
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find("usage: pind time"), std::string::npos) << run.err;
    } else {
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, c.out);
        EXPECT_EQ(run.err, "");
    }
}

// 1699934400 is 2023-11-14 04:00:00 UTC, a Tuesday; 2524608000 is 2050-01-01.
INSTANTIATE_TEST_SUITE_P(
    Contract, PindTimeTool,
    ::testing::Values(
        TimeCase{"--zone -28800 --server 1699934400 IsInDateWindow 2311141200 2311141200", "UTC0",
                 "1\n"},
        TimeCase{"--server 1699934400 ServerTmAt 0", "UTC0", "2023-11-14 4:0:0 2 317\n"},
        TimeCase{"--server 1699934400 ServerTmAt -1", "UTC0", "\n"},
        TimeCase{"--server 1699934400 --zone -28800 now", "EST5EDT",
                 "2023-11-14\n2023-11-14-12:00:00\n2023-11-14-12:00:00:000\n"},
        TimeCase{"--server 1699934400 ServerTimeText 1", "UTC0", "\n"},
        TimeCase{"--server 1704052800 --zone -28800 NowMMDD", "CST-8", "101\n"},
        TimeCase{"--server 2524608000 NowPackedYYMMDDhhmm", "UTC0", "706042704\n"},  // unsigned
        TimeCase{"--server 1699934400 IsInCalendar 11,12 - 2", "UTC0", "1\n"},
        TimeCase{"--server 1699934400 IsInCalendar - +14,015 -", "UTC0", "1\n"},
        TimeCase{"--server 0001699934400 NowHHMM", "UTC0", "400\n"},  // never octal
        TimeCase{"--server 1699934400 GetActivityState -9223372036854775808 0", "UTC0", "1\n"},
        TimeCase{"--server 1699934400 NextWeekdayTime 1699934400 7 1", "UTC0", "1700366400\n"},
        // Usage errors.
        TimeCase{"", "UTC0", nullptr}, TimeCase{"--server 1699934400", "UTC0", nullptr},
        TimeCase{"nowhhmm", "UTC0", nullptr}, TimeCase{"--verbose NowHHMM", "UTC0", nullptr},
        TimeCase{"NowHHMM --server 1", "UTC0", nullptr},  // options come first
        TimeCase{"--server --zone 0 NowHHMM", "UTC0", nullptr},
        TimeCase{"--server -1 NowHHMM", "UTC0", nullptr},
        TimeCase{"--zone 2147483648 NowHHMM", "UTC0", nullptr}, TimeCase{"--zone", "UTC0", nullptr},
        TimeCase{"NowHHMM 1", "UTC0", nullptr}, TimeCase{"IsInDailyWindow 1200", "UTC0", nullptr},
        TimeCase{"IsInDateWindow 4294967296 0", "UTC0", nullptr},
        TimeCase{"IsInDailyWindow 0x10 0", "UTC0", nullptr},
        TimeCase{"IsInDailyWindow 1e3 0", "UTC0", nullptr},
        TimeCase{"IsInDailyWindow '' 0", "UTC0", nullptr},
        TimeCase{"SecondsUntilPacked -9223372036854775809", "UTC0", nullptr},
        TimeCase{"IsInCalendar 1,,2 - -", "UTC0", nullptr},
        TimeCase{"IsInCalendar 1, - -", "UTC0", nullptr},
        TimeCase{"IsInCalendar '' - -", "UTC0", nullptr},
        TimeCase{"NextWeekdayTime 1699934400 7 2", "UTC0", nullptr}));

TEST(PindTimeToolHelp, ListsTheChecksOnStdout) {
    const auto run = RunPind({"time", "--help"});
    EXPECT_EQ(run.status, 0);
    for (const char* check : {"IsInCalendar", "GetActivityStateByOpenDay", "NextWeekdayTime",
                              "ServerTmAt", "NowMMDD", "SecondsToNextDay"}) {
        EXPECT_NE(run.out.find(check), std::string::npos) << check;
    }
}

TEST(PindTimeToolNow, DefaultsToTheMachinesTime) {
    const auto run = RunPind({"time", "NowPackedYYMMDD"}, "", "", {"TZ=UTC0"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.size(), 7u) << run.out;  // YYMMDD and a newline, 2010-2099
}

}  // namespace

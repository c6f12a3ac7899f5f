// `pind time`: the option and number rules other tools script against, and a few checks end to
// end (the checks themselves are covered by the time tests).

#include "tool/RunTool.h"

namespace pind::test {
namespace {

TEST(PindTimeTool, PrintsOneLineOrRejectsTheArguments) {
    // 1699934400 is 2023-11-14 04:00:00 UTC, a Tuesday; 2524608000 is 2050-01-01.
    std::vector<ToolCase> cases = {
        {"time --zone -28800 --server 1699934400 IsInDateWindow 2311141200 2311141200", 0, "1\n"},
        {"time --server 1699934400 ServerTmAt 0", 0, "2023-11-14 4:0:0 2 317\n"},
        {"time --server 2524608000 NowPackedYYMMDDhhmm", 0, "706042704\n"},  // unsigned
        {"time --server 1699934400 IsInCalendar - +14,015 -", 0, "1\n"},
        {"time --server 0001699934400 NowHHMM", 0, "400\n"},  // never octal
        {"time --server 1699934400 GetActivityState -9223372036854775808 0", 0, "1\n"}};
    for (const char* bad :
         {"", "--server 1699934400", "nowhhmm", "NowHHMM --server 1", "--server -1 NowHHMM",
          "--zone 2147483648 NowHHMM", "NowHHMM 1", "IsInDailyWindow 1200",
          "IsInDateWindow 4294967296 0", "IsInDailyWindow 0x10 0", "IsInDailyWindow '' 0",
          "SecondsUntilPacked -9223372036854775809", "IsInCalendar 1,,2 - -"}) {
        cases.push_back({std::string("time ") + bad, 2, "", "usage: pind time"});
    }
    ExpectRuns(cases, "", {"TZ=UTC0"});
    ExpectRuns({{"time --server 1699934400 --zone -28800 now", 0,
                 "2023-11-14\n2023-11-14-12:00:00\n2023-11-14-12:00:00:000\n"}},
               "", {"TZ=EST5EDT"});
    // Without --server the machine's clock is the server's: YYMMDD and a newline, 2010-2099.
    const auto run = RunPind({"time", "NowPackedYYMMDD"}, "", "", {"TZ=UTC0"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.size(), 7u) << run.out;
}

}  // namespace
}  // namespace pind::test

// The default report handler: its exact engine-log line and its memory of the last 11 reports.
// The key list lives for the whole process, so every test uses texts of its own.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "format/FormatTestSupport.h"
#include "pind/format/FormatError.h"
#include "pind/format/StringFormat.h"
#include "support/EngineLogCapture.h"

namespace {

TEST(FormatError, DefaultHandlerWritesOneExactLineWithStandIns) {
    pind::test::EngineLogCapture log;
    g_nErrorStrId = 77;
    CStringFormatter f("%d|first", "Hud.cpp", 12);
    EXPECT_EQ(f.GetResult(), "");
    g_nErrorStrId = 0;
    CStringFormatter g("null-site", nullptr, 3);
    ReportFormatError(2001, nullptr);
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{
                  "StringFormat error.format string:%d|first, message: not enough arguments, "
                  "g_nErrorStrId=77,at file: Hud.cpp, line: 12",
                  "StringFormat error.format string:null-site, message: (empty), g_nErrorStrId=0,"
                  "at file: (unknown), line: 3"}));
}

TEST(FormatError, RepeatsAreWrittenOnceAndOnlyTheLastElevenAreRemembered) {
    pind::test::EngineLogCapture log;
    CStringFormatter f("%s|repeat", "Repeat.cpp", 1);
    for (int i = 0; i < 3; ++i) f.GetResult();
    CStringFormatter("%s|repeat", "Repeat.cpp", 2).GetResult();  // differs only in the line
    ReportFormatError(3000, "not enough arguments");             // nor is the code in the key
    EXPECT_EQ(log.Lines().size(), 1u);
    auto report = [](int n) {
        const std::string format = "eleven-" + std::to_string(n);
        CStringFormatter g(format.c_str(), "Eleven.cpp", n);
        ReportFormatError(2001, "x");
    };
    for (int n = 0; n < 12; ++n) report(n);
    report(0);   // pushed out by the twelfth: written again
    report(11);  // still remembered
    EXPECT_EQ(log.Lines().size(), 14u);
}

TEST(FormatError, HandlerInTheSlotReplacesTheLog) {
    pind::test::EngineLogCapture log;
    pind::test::RecordedReports reports;
    CStringFormatter("%d|slot", "Slot.cpp", 1).GetResult();
    EXPECT_EQ(reports.Lines(), std::vector<std::string>{"2002 not enough arguments"});
    EXPECT_TRUE(log.Lines().empty());
}

}  // namespace

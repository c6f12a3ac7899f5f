// The default report handler: its exact engine-log line and its memory of the last 11 reports.
// The key list lives for the whole process, so every test uses texts of its own.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pind/format/FormatError.h"
#include "pind/format/StringFormat.h"
#include "support/EngineLogCapture.h"

namespace {

TEST(FormatError, DefaultHandlerWritesOneExactLine) {
    pind::test::EngineLogCapture log;
    g_nErrorStrId = 77;
    CStringFormatter f("%d|first", "Hud.cpp", 12);
    EXPECT_EQ(f.GetResult(), "");
    g_nErrorStrId = 0;
    EXPECT_EQ(log.Lines(), std::vector<std::string>{
                               "StringFormat error.format string:%d|first, message: not enough "
                               "arguments, g_nErrorStrId=77,at file: Hud.cpp, line: 12"});
}

TEST(FormatError, NullMessageAndFileStandIn) {
    pind::test::EngineLogCapture log;
    CStringFormatter f("null-site", nullptr, 3);
    ReportFormatError(2001, nullptr);
    EXPECT_EQ(log.Lines(), std::vector<std::string>{
                               "StringFormat error.format string:null-site, message: (empty), "
                               "g_nErrorStrId=0,at file: (unknown), line: 3"});
}

TEST(FormatError, RepeatsAreWrittenOnceWhateverTheLine) {
    pind::test::EngineLogCapture log;
    CStringFormatter f("%s|repeat", "Repeat.cpp", 1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(f.GetResult(), "");
    }
    CStringFormatter g("%s|repeat", "Repeat.cpp", 2);  // differs only in the line
    EXPECT_EQ(g.GetResult(), "");
    EXPECT_EQ(log.Lines().size(), 1u);
    // The code is not part of the key either.
    ReportFormatError(3000, "not enough arguments");
    EXPECT_EQ(log.Lines().size(), 1u);
}

TEST(FormatError, RemembersOnlyTheLastElevenReports) {
    pind::test::EngineLogCapture log;
    auto report = [](int n) {
        const std::string format = "eleven-" + std::to_string(n);
        CStringFormatter f(format.c_str(), "Eleven.cpp", n);
        ReportFormatError(2001, "x");
    };
    for (int n = 0; n < 12; ++n) {
        report(n);
    }
    report(0);   // pushed out by the twelfth: written again
    report(11);  // still remembered
    EXPECT_EQ(log.Lines().size(), 13u);
}

TEST(FormatError, HandlerInTheSlotReceivesEveryReportInstead) {
    pind::test::EngineLogCapture log;
    static std::vector<int> s_codes;
    s_codes.clear();
    g_pfnFormatErrorHandler = [](int nCode, const char*, const char*, int) {
        s_codes.push_back(nCode);
        return 0;
    };
    CStringFormatter f("%d|slot", "Slot.cpp", 1);
    f.GetResult();
    f.GetResult();
    g_pfnFormatErrorHandler = nullptr;
    EXPECT_EQ(s_codes, (std::vector<int>{2002, 2002}));
    EXPECT_TRUE(log.Lines().empty());
}

}  // namespace

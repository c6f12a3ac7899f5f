// The log-message function and the precondition and assertion reports built on it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pind/diag/Report.h"
#include "support/EngineLogCapture.h"
#include "support/RecordingClient.h"

namespace {

TEST(Report, LogMessageAndIfNotForwardNonEmptyTextCutAtTheBuffer) {
    pind::test::EngineLogCapture log;
    pind::LogMessage("VOFRead pack error, pack_name = %s", "ini/a.ini");
    pind::LogMessage("%s", "");
    pind::LogMessage(nullptr);
    pind::LogMessage("100%%");
    const std::string big(pind::kLogMessageCapacity + 100, 'x');
    pind::LogMessage("%s", big.c_str());
    pind::ReportIfNot("pszSection && pszIndex", "PindIni", 555);
    pind::ReportIfNot(nullptr, nullptr, 0);
    EXPECT_EQ(log.Lines(),
              (std::vector<std::string>{"VOFRead pack error, pack_name = ini/a.ini", "100%",
                                        big.substr(0, pind::kLogMessageCapacity - 1),
                                        "IF_NOT(pszSection && pszIndex) in PindIni, 555",
                                        "IF_NOT() in , 0"}));
}

TEST(Report, AssertGoesToTheDebugObject) {
    pind::test::EngineLogCapture log;
    pind::test::RecordingDebug debug;
    pind::ReportAssert("false", 120, "spline");
    EXPECT_EQ(debug.texts, std::vector<std::string>{"ASSERT(false) in 120 line of spline"});
    EXPECT_TRUE(log.Lines().empty());
}

}  // namespace

// `pind curve`: the exact output other tools script, the routines' messages and exits passed
// through untouched, input and argument errors, and the SVG picture.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

TEST(CurveTool, PchipPrintsPointsDerivativesAndValuesInOrder) {
    const auto run = RunPind({"curve", "pchip", "--at", "2.5", "--at", "-1", "--at", "0.1"},
                             "0 0\n\n1 1\r\n  \t\n2\t1\n3 2\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "0 0 1.5\n1 1 0\n2 1 0\n3 2 1.5\n"
              "2.5 1.3125\n-1 -1\n0.10000000000000001 0.14950000000000002\n");
}

TEST(CurveTool, FitPrintsTheCoefficientRowsAndValues) {
    // A weighted line: the last b keeps its undivided sum.
    const auto run =
        RunPind({"curve", "fit", "--terms", "2", "--at", "1.5"}, "0 0\n1 1 2\n2 1\n3 2\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "b 1.3999999999999999 8.7200000000000024\nc 0 0\n"
              "d 1 0.57692307692307698\n1.5 1.0576923076923077\n");
}

struct PassCase {
    const char* name;
    std::vector<std::string> args;
    const char* input;
    int status;
    const char* out;
    const char* err;
};

class CurveToolPassThrough : public testing::TestWithParam<PassCase> {};

// The library writes these messages and ends the process itself; the tool adds nothing.
TEST_P(CurveToolPassThrough, RoutineMessagesAndExitsReachTheUser) {
    const PassCase& c = GetParam();
    const auto run = RunPind(c.args, c.input);
    EXPECT_EQ(run.status, c.status);
    EXPECT_EQ(run.out, c.out);
    EXPECT_EQ(run.err, c.err);
}

INSTANTIATE_TEST_SUITE_P(
    Routines, CurveToolPassThrough,
    testing::Values(
        PassCase{"no_points",
                 {"curve", "pchip"},
                 "",
                 255,
                 "",
                 "\nSPLINE_PCHIP_SET - Fatal error!\n  Number of data points less than 2.\n"},
        PassCase{"one_point",
                 {"curve", "pchip", "--at", "1"},
                 "1 1\n",
                 255,
                 "",
                 "\nSPLINE_PCHIP_SET - Fatal error!\n  Number of data points less than 2.\n"},
        PassCase{"unsorted",
                 {"curve", "pchip"},
                 "0 0\n2 1\n1 1\n",
                 253,
                 "",
                 "\nSPLINE_PCHIP_SET - Fatal error!\n  X array not strictly increasing.\n"},
        PassCase{"too_few_distinct",
                 {"curve", "fit", "--terms", "2", "--at", "3"},
                 "1 1\n1 2\n",
                 0,
                 "b 0 0\nc 0 0\nd 0 0\n3 0\n",
                 "\nLEAST_SET - Fatal error!\n  The number of distinct X values must be\n"
                 "  at least NTERMS = 2\n  but the input data has only 1\n  distinct entries.\n"},
        PassCase{"zero_weight",
                 {"curve", "fit", "--terms", "1"},
                 "1 1\n2 2 0\n",
                 0,
                 "b 0\nc 0\nd 0\n",
                 "\nLEAST_SET - Fatal error!\n  All weights W must be positive,\n"
                 "  but weight 1\n  is 0\n"},
        PassCase{"nan_and_inf",
                 {"curve", "pchip", "--at", "nan", "--at", "1e999"},
                 "0 nan\n1 inf\n2 2\n",
                 0,
                 "0 nan 0\n1 inf 0\n2 2 0\nnan nan\ninf -nan\n",
                 ""}),
    [](const testing::TestParamInfo<PassCase>& p) { return p.param.name; });

struct BadCase {
    const char* name;
    std::vector<std::string> args;
    const char* input;
    const char* errStart;
};

class CurveToolBadInput : public testing::TestWithParam<BadCase> {};

TEST_P(CurveToolBadInput, IsAUsageErrorWithNothingPrinted) {
    const BadCase& c = GetParam();
    const auto run = RunPind(c.args, c.input);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.rfind(c.errStart, 0), 0u) << run.err;
}

INSTANTIATE_TEST_SUITE_P(
    Errors, CurveToolBadInput,
    testing::Values(
        BadCase{"one_number", {"curve", "pchip"}, "0 0\n5\n", "pind: curve: line 2: expected"},
        BadCase{"weight_in_pchip", {"curve", "pchip"}, "0 0 1\n", "pind: curve: line 1: expected"},
        BadCase{"four_numbers",
                {"curve", "fit", "--terms", "1"},
                "1 2 3 4\n",
                "pind: curve: line 1: expected"},
        BadCase{"comma", {"curve", "pchip"}, "\n\n1,2 3\n", "pind: curve: line 3: not a number"},
        BadCase{"trailing_junk", {"curve", "pchip"}, "1 2x\n", "pind: curve: line 1: not a num"},
        BadCase{"no_mode", {"curve"}, "", "usage: pind curve"},
        BadCase{"unknown_mode", {"curve", "spline"}, "", "pind: curve: unknown mode"},
        BadCase{"fit_without_terms", {"curve", "fit"}, "", "pind: curve: fit needs --terms"},
        BadCase{"zero_terms", {"curve", "fit", "--terms", "0"}, "", "pind: curve: --terms"},
        BadCase{"terms_for_pchip",
                {"curve", "pchip", "--terms", "2"},
                "",
                "pind: curve: unexpected argument --terms"},
        BadCase{"bad_at", {"curve", "pchip", "--at", "x"}, "", "pind: curve: --at"},
        BadCase{"at_without_value", {"curve", "pchip", "--at"}, "", "pind: curve: unexpected"}),
    [](const testing::TestParamInfo<BadCase>& p) { return p.param.name; });

TEST(CurveTool, HelpGoesToStdout) {
    const auto run = RunPind({"curve", "fit", "--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.rfind("usage: pind curve pchip", 0), 0u);
    EXPECT_EQ(run.err, "");
}

// Elements open and close in nesting order (a well-formedness check small enough to trust).
bool TagsNest(const std::string& xml) {
    std::vector<std::string> open;
    for (size_t at = xml.find('<'); at != std::string::npos; at = xml.find('<', at + 1)) {
        const size_t end = xml.find('>', at);
        if (end == std::string::npos) {
            return false;
        }
        const std::string tag = xml.substr(at + 1, end - at - 1);
        const std::string name = tag.substr(0, tag.find_first_of(" /", 1));
        if (tag[0] == '?' || tag.back() == '/') {
            continue;
        }
        if (tag[0] != '/') {
            open.push_back(name);
        } else if (open.empty() || open.back() != name.substr(1)) {
            return false;
        } else {
            open.pop_back();
        }
    }
    return open.empty();
}

TEST(CurveTool, SvgShowsPointsCurveAndAtMarks) {
    pind::test::TempDir dir;
    const auto fit = RunPind(
        {"curve", "fit", "--terms", "3", "--at", "0.5", "--at", "9", "--svg", dir.File("a.svg")},
        "0 1\n1 3\n2 2\n3 2.5\n");
    ASSERT_EQ(fit.status, 0) << fit.err;
    const std::string svg = dir.Read("a.svg");
    EXPECT_EQ(svg.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg ", 0), 0u);
    EXPECT_TRUE(TagsNest(svg));
    EXPECT_NE(svg.find("<polyline"), std::string::npos);
    EXPECT_NE(svg.find(">3</text>"), std::string::npos);  // the x range's end
    EXPECT_NE(svg.find("1 --at outside the plot"), std::string::npos);
    size_t circles = 0;
    for (size_t at = svg.find("<circle"); at != std::string::npos;
         at = svg.find("<circle", at + 1)) {
        ++circles;
    }
    EXPECT_EQ(circles, 4u + 1u);  // the points and the --at inside the range
    const auto run =
        RunPind({"curve", "pchip", "--svg", dir.File("no/such/folder/a.svg")}, "0 1\n1 3\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "0 1 2\n1 3 2\n");
    EXPECT_NE(run.err.find("a.svg: cannot write"), std::string::npos);
}

}  // namespace

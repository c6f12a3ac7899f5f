// `pind curve`: the exact output other tools script, the routines' messages and exits passed
// through untouched, input and argument errors, and the SVG picture.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

// "curve pchip --at 1" as the argument list.
std::vector<std::string> Words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

struct RunCase {
    const char* name;
    const char* args;
    const char* input;
    int status;
    const char* out;
    const char* err;
};

class CurveToolRun : public testing::TestWithParam<RunCase> {};

// Byte for byte: stdout, and stderr exactly as the library wrote it (the tool adds nothing, and
// the library's own exits end the run).
TEST_P(CurveToolRun, PrintsExactlyThis) {
    const RunCase& c = GetParam();
    const auto run = RunPind(Words(c.args), c.input);
    EXPECT_EQ(run.status, c.status);
    EXPECT_EQ(run.out, c.out);
    EXPECT_EQ(run.err, c.err);
}

INSTANTIATE_TEST_SUITE_P(
    Contract, CurveToolRun,
    testing::Values(
        RunCase{"pchip", "curve pchip --at 2.5 --at -1 --at 0.1", "0 0\n\n1 1\r\n  \t\n2\t1\n3 2\n",
                0,
                "0 0 1.5\n1 1 0\n2 1 0\n3 2 1.5\n"
                "2.5 1.3125\n-1 -1\n0.10000000000000001 0.14950000000000002\n",
                ""},
        // A weighted line: the last b keeps its undivided sum.
        RunCase{"fit", "curve fit --terms 2 --at 1.5", "0 0\n1 1 2\n2 1\n3 2\n", 0,
                "b 1.3999999999999999 8.7200000000000024\nc 0 0\n"
                "d 1 0.57692307692307698\n1.5 1.0576923076923077\n",
                ""},
        RunCase{"nan_and_inf", "curve pchip --at nan --at 1e999", "0 nan\n1 inf\n2 2\n", 0,
                "0 nan 0\n1 inf 0\n2 2 0\nnan nan\ninf -nan\n", ""},
        RunCase{"no_points", "curve pchip", "", 255, "",
                "\nSPLINE_PCHIP_SET - Fatal error!\n  Number of data points less than 2.\n"},
        RunCase{"unsorted", "curve pchip --at 1", "0 0\n2 1\n1 1\n", 253, "",
                "\nSPLINE_PCHIP_SET - Fatal error!\n  X array not strictly increasing.\n"},
        RunCase{"too_few_distinct", "curve fit --terms 2 --at 3", "1 1\n1 2\n", 0,
                "b 0 0\nc 0 0\nd 0 0\n3 0\n",
                "\nLEAST_SET - Fatal error!\n  The number of distinct X values must be\n"
                "  at least NTERMS = 2\n  but the input data has only 1\n  distinct entries.\n"}),
    [](const testing::TestParamInfo<RunCase>& p) { return p.param.name; });

TEST(CurveTool, BadInputIsAUsageErrorWithNothingPrinted) {
    const struct {
        const char* args;
        const char* input;
        const char* errStart;
    } cases[] = {{"curve pchip", "0 0\n5\n", "pind: curve: line 2: expected"},
                 {"curve fit --terms 1", "1 2 3 4\n", "pind: curve: line 1: expected"},
                 {"curve pchip", "\n\n1,2 3\n", "pind: curve: line 3: not a number"},
                 {"curve spline", "", "pind: curve: unknown mode"},
                 {"curve fit", "", "pind: curve: fit needs --terms"},
                 {"curve fit --terms 0", "", "pind: curve: --terms"},
                 {"curve pchip --terms 2", "", "pind: curve: unexpected argument --terms"},
                 {"curve pchip --at x", "", "pind: curve: --at"}};
    for (const auto& c : cases) {
        const auto run = RunPind(Words(c.args), c.input);
        EXPECT_EQ(run.status, 2) << c.args;
        EXPECT_EQ(run.out, "") << c.args;
        EXPECT_EQ(run.err.rfind(c.errStart, 0), 0u) << run.err;
    }
    const auto help = RunPind({"curve", "fit", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind("usage: pind curve pchip", 0), 0u);
    EXPECT_EQ(help.err, "");
}

size_t Count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        ++n;
    }
    return n;
}

TEST(CurveTool, SvgShowsPointsCurveAndAtMarks) {
    pind::test::TempDir dir;
    const auto fit = RunPind(
        {"curve", "fit", "--terms", "3", "--at", "0.5", "--at", "9", "--svg", dir.File("a.svg")},
        "0 1\n1 3\n2 2\n3 2.5\n");
    ASSERT_EQ(fit.status, 0) << fit.err;
    const std::string svg = dir.Read("a.svg");
    EXPECT_EQ(svg.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg ", 0), 0u);
    EXPECT_EQ(svg.substr(svg.size() - 7), "</svg>\n");
    EXPECT_EQ(Count(svg, "<g "), Count(svg, "</g>"));
    EXPECT_EQ(Count(svg, "<polyline"), 1u);
    EXPECT_EQ(Count(svg, "<circle"), 4u + 1u);  // the points and the --at inside the range
    EXPECT_NE(svg.find(">3</text>"), std::string::npos);  // the x range's end
    EXPECT_NE(svg.find("1 --at outside the plot"), std::string::npos);

    const auto run =
        RunPind({"curve", "pchip", "--svg", dir.File("no/such/folder/a.svg")}, "0 1\n1 3\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "0 1 2\n1 3 2\n");
    EXPECT_NE(run.err.find("a.svg: cannot write"), std::string::npos);
}

}  // namespace

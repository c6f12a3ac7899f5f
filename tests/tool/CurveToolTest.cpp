// `pind curve`: the exact output other tools script, the routines' messages and exits passed
// through untouched, input and argument errors, and the SVG picture.

#include <iterator>
#include <regex>

#include "tool/RunTool.h"

namespace pind::test {
namespace {

// Byte for byte: stdout, and stderr as the library wrote it (the library's own exits end the run).
TEST(CurveTool, PrintsExactlyThisOrAUsageError) {
    ExpectRuns({{"curve pchip --at 2.5 --at -1 --at 0.1", 0,
                 "0 0 1.5\n1 1 0\n2 1 0\n3 2 1.5\n"
                 "2.5 1.3125\n-1 -1\n0.10000000000000001 0.14950000000000002\n",
                 "", "0 0\n\n1 1\r\n  \t\n2\t1\n3 2\n"},
                // A weighted line: the last b keeps its undivided sum.
                {"curve fit --terms 2 --at 1.5", 0,
                 "b 1.3999999999999999 8.7200000000000024\nc 0 0\n"
                 "d 1 0.57692307692307698\n1.5 1.0576923076923077\n",
                 "", "0 0\n1 1 2\n2 1\n3 2\n"},
                {"curve pchip --at nan --at 1e999", 0,
                 "0 nan 0\n1 inf 0\n2 2 0\nnan nan\ninf -nan\n", "", "0 nan\n1 inf\n2 2\n"},
                {"curve pchip --at 1", 253, "",
                 "\nSPLINE_PCHIP_SET - Fatal error!\n  X array not strictly increasing.\n",
                 "0 0\n2 1\n1 1\n"},
                {"curve fit --terms 2 --at 3", 0, "b 0 0\nc 0 0\nd 0 0\n3 0\n",
                 "\nLEAST_SET - Fatal error!\n  The number of distinct X values must be\n"
                 "  at least NTERMS = 2\n  but the input data has only 1\n  distinct entries.\n",
                 "1 1\n1 2\n"},
                // Bad input is a usage error with nothing printed.
                {"curve pchip", 2, "", "pind: curve: line 2: expected", "0 0\n5\n"},
                {"curve pchip", 2, "", "pind: curve: line 3: not a number", "\n\n1,2 3\n"},
                {"curve spline", 2, "", "pind: curve: unknown mode"},
                {"curve fit", 2, "", "pind: curve: fit needs --terms"},
                {"curve pchip --terms 2", 2, "", "pind: curve: unexpected argument --terms"},
                {"curve pchip --at x", 2, "", "pind: curve: --at"}});
}

size_t Count(const std::string& text, const char* what) {
    const std::regex pattern(what);
    return static_cast<size_t>(
        std::distance(std::sregex_iterator(text.begin(), text.end(), pattern), {}));
}

TEST(CurveTool, SvgShowsPointsCurveAndAtMarks) {
    TempDir dir;
    const auto fit =
        RunPind(Words("curve fit --terms 3 --at 0.5 --at 9 --svg " + dir.File("a.svg")),
                "0 1\n1 3\n2 2\n3 2.5\n");
    ASSERT_EQ(fit.status, 0) << fit.err;
    const std::string svg = dir.Read("a.svg");
    EXPECT_EQ(svg.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg ", 0), 0u);
    EXPECT_EQ(Count(svg, "<polyline"), 1u);
    EXPECT_EQ(Count(svg, "<circle"), 4u + 1u);  // the points and the --at inside the range
    EXPECT_NE(svg.find("1 --at outside the plot"), std::string::npos);

    ExpectRuns({{"curve pchip --svg " + dir.File("no/such/folder/a.svg"), 1, "0 1 2\n1 3 2\n",
                 "a.svg: cannot write", "0 1\n1 3\n"}});
}

}  // namespace
}  // namespace pind::test

// `pind printf`: the byte-exact output other tools script against, and its usage errors.

#include "tool/RunTool.h"

namespace pind::test {
namespace {

TEST(PrintfTool, PrintsReportsThenTextAndCountTargets) {
    ExpectRuns({
        {"printf %5.3d|%s i:7 S:", 0, "  007|(null)\n", ""},
        {"printf %d i:1 i:2", 0, "1000 too many arguments\n1\n", ""},
        {"printf %d d:1.5", 1, "2001 invalid argument type. expect an integer\n", ""},
        {"printf %n%s%n|%n n: s:a:b N: n:", 0, "a:b|\nn:0\nn:4\n", ""},
        {"printf -h", 0, "-h\n", ""},
        {"printf %c|%c i:0 uc:255", 0, std::string("\0|\xff\n", 4), ""},
        {"printf '%hd %hu %d %u' h:-32768 uh:65535 sc:-128 u:4294967295", 0,
         "-32768 65535 -128 4294967295\n", ""},
        {"printf '%lld %llu' l:-9223372036854775808 ul:18446744073709551615", 0,
         "-9223372036854775808 18446744073709551615\n", ""},
        {"printf '%.2f %e %Lg %f' f:0x1p-1 d:inf ld:-2.5 d:1e-400", 0, "0.50 inf -2.5 0.000000\n",
         ""},
        {"printf '%p %p' p:0x1234 p:ABCDEF012345", 0, "00001234 ABCDEF012345\n", ""},
    });
}

TEST(PrintfTool, BadArgumentsAreUsageErrorsWithNothingOnStdout) {
    std::vector<ToolCase> cases = {{"printf", 2, "", "usage: pind printf"}};  // no FORMAT
    for (const char* arg : {"7", "q:7", "i:", "i:2147483648", "u:-1", "uh:65536", "d:1e999",
                            "d:1.5x", "p:12345678901234567", "n:0"}) {
        cases.push_back({std::string("printf %d ") + arg, 2, "", "usage: pind printf"});
    }
    ExpectRuns(cases);
}

}  // namespace
}  // namespace pind::test

// `pind printf`: the byte-exact output other tools script against, and its usage errors.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

struct PrintfCase {
    std::vector<std::string> args;  // after "printf"
    std::string strOut;
    int nStatus;
};

TEST(PrintfTool, PrintsReportsThenTextAndCountTargets) {
    const PrintfCase cases[] = {
        {{"%5.3d|%s", "i:7", "S:"}, "  007|(null)\n", 0},
        {{"%d", "i:1", "i:2"}, "1000 too many arguments\n1\n", 0},
        {{"%d", "d:1.5"}, "2001 invalid argument type. expect an integer\n", 1},
        {{"ab%ncd", "n:"}, "abcd\nn:2\n", 0},
        {{"%n%s%n|%n", "n:", "s:a:b", "N:", "n:"}, "a:b|\nn:0\nn:4\n", 0},
        {{""}, "\n", 0},
        {{"-h"}, "-h\n", 0},
        {{"%c|%c", "i:0", "uc:255"}, std::string("\0|\xff\n", 4), 0},
        {{"%hd %hu %d %u", "h:-32768", "uh:65535", "sc:-128", "u:4294967295"},
         "-32768 65535 -128 4294967295\n",
         0},
        {{"%lld %llu", "l:-9223372036854775808", "ul:18446744073709551615"},
         "-9223372036854775808 18446744073709551615\n",
         0},
        {{"%.2f %e %Lg %f", "f:0x1p-1", "d:inf", "ld:-2.5", "d:1e-400"},
         "0.50 inf -2.5 0.000000\n",
         0},
        {{"%p %p", "p:0x1234", "p:ABCDEF012345"}, "00001234 ABCDEF012345\n", 0},
        {{"%s", "sp:10"}, "2001 invalid pointer type\n", 1},
    };
    for (const PrintfCase& c : cases) {
        std::vector<std::string> args{"printf"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const auto run = RunPind(args);
        EXPECT_EQ(run.out, c.strOut) << c.args[0];
        EXPECT_EQ(run.status, c.nStatus) << c.args[0];
        EXPECT_EQ(run.err, "") << c.args[0];
    }
}

TEST(PrintfTool, BadArgumentsAreUsageErrorsWithNothingOnStdout) {
    const char* badArgs[] = {
        "7",      "q:7",      "i:",      "i:+1",   "i:2147483648", "u:-1",
        "sc:128", "uh:65536", "d:1e999", "d:1.5x", "p:0x",         "p:12345678901234567",
        "S:x",    "n:0",      "N:0"};
    std::vector<std::vector<std::string>> bad = {{"printf"}};  // no FORMAT
    for (const char* arg : badArgs) {
        bad.push_back({"printf", "%d", arg});
    }
    for (const auto& args : bad) {
        const auto run = RunPind(args);
        EXPECT_EQ(run.status, 2) << args.back();
        EXPECT_EQ(run.out, "") << args.back();
        EXPECT_NE(run.err.find("usage: pind printf"), std::string::npos) << args.back();
    }
    const auto help = RunPind({"printf", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("sp:"), std::string::npos);
}

}  // namespace

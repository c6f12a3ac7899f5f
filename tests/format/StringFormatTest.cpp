// The checked formatter: parsing, every conversion, the reports, copies and the va-list checker.
// Floating conversions are compared with a real string stream; where C's printf agrees with the
// formatter the two are compared too, and the known differences are pinned.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "format/FormatTestSupport.h"
#include "pind/format/StringFormat.h"

namespace {

using Args = std::function<void(CStringFormatter&)>;

struct Case {
    Case(const char* format, Args args, std::string want, std::vector<std::string> wantReports = {})
        : pszFormat(format),
          addArgs(std::move(args)),
          strWant(std::move(want)),
          reports(std::move(wantReports)) {}
    const char* pszFormat;
    Args addArgs;
    std::string strWant;
    std::vector<std::string> reports;  // "code message"
};

// A failing case: no text, one report.
Case Err(const char* format, std::string report, Args args) {
    return {format, std::move(args), "", {std::move(report)}};
}
const std::string kType = "2001 invalid argument type. expect ";

void PrintTo(const Case& c, std::ostream* os) { *os << '"' << c.pszFormat << '"'; }

class StringFormatCases : public ::testing::TestWithParam<Case> {};

TEST_P(StringFormatCases, GivesTextAndReports) {
    const Case& c = GetParam();
    pind::test::RecordedReports reports;
    CStringFormatter f(c.pszFormat, "StringFormatTest", 7);
    c.addArgs(f);
    EXPECT_EQ(f.GetResult(), c.strWant);
    EXPECT_EQ(reports.Lines(), c.reports);
}

int g_nTarget = -1;

INSTANTIATE_TEST_SUITE_P(
    Conversions, StringFormatCases,
    ::testing::Values(
        Case{"", [](CStringFormatter&) {}, ""}, Case{"%%|%", [](CStringFormatter&) {}, "%|"},
        Case{"100%q", [](CStringFormatter&) {}, "100q"},
        Case{"50% off", [](CStringFormatter& f) { f.AddArg(8); }, "50 10ff"},  // "% o"
        Case{"%5%|", [](CStringFormatter&) {}, "5|"},
        Case{"%5.3d|%-5d|%05d", [](CStringFormatter& f) { f.AddArg(7).AddArg(7).AddArg(-42); },
             "  007|7    |-0042"},
        Case{"% +d|%+d|% d", [](CStringFormatter& f) { f.AddArg(5).AddArg(0).AddArg(0); },
             " 5|0| 0"},
        Case{"%#x|%#X|%#o|%#o",
             [](CStringFormatter& f) { f.AddArg(0).AddArg(255).AddArg(0).AddArg(-8); },
             "0x0|0XFF|00|-010"},
        Case{"%o|%hu|%hd|%x",
             [](CStringFormatter& f) { f.AddArg(-8).AddArg(70000).AddArg(65535).AddArg(-1); },
             "-10|4464|-1|ffffffff"},
        Case{"%+u|% x|%.0d|%.5i",
             [](CStringFormatter& f) { f.AddArg(5u).AddArg(5).AddArg(0).AddArg(-12); },
             "5|5|0|-00012"},
        Case{"%05.3d|%-05d|%+08d", [](CStringFormatter& f) { f.AddArg(7).AddArg(7).AddArg(-7); },
             "00007|7    |-0000007"},
        Case{"%lld|%I64x|%llu",
             [](CStringFormatter& f) { f.AddArg(INT64_MIN).AddArg(-1LL).AddArg(UINT64_MAX); },
             "-9223372036854775808|ffffffffffffffff|18446744073709551615"},
        Case{"%*d|%-*d|%.*d|%*d",
             [](CStringFormatter& f) {
                 f.AddArg(4).AddArg(1).AddArg(3).AddArg(2).AddArg(3).AddArg(5).AddArg(-4).AddArg(9);
             },
             "   1|2  |005|9"},  // a negative '*' width neither pads nor left-adjusts
        Case{"%c%c|%3c|%-3c|",
             [](CStringFormatter& f) { f.AddArg('a').AddArg(0x142).AddArg('x').AddArg('y'); },
             "aB|  x|y  |"},
        Case{"%s|%s|%.2s|%05s|%-05s|%.*s|%3.1s",
             [](CStringFormatter& f) {
                 f.AddArg(static_cast<const char*>(nullptr)).AddArg(nullptr).AddArg("abc");
                 f.AddArg("ab").AddArg("ab").AddArg(-1).AddArg("abc").AddArg("xyz");
             },
             "(null)|(null)|ab|000ab|ab000||  x"},
        Case{"%p|%p|%p|%10p|%-10p|",
             [](CStringFormatter& f) {
                 f.AddArg(reinterpret_cast<const void*>(0x1234)).AddArg(nullptr);
                 f.AddArg(static_cast<int*>(nullptr)).AddArg(reinterpret_cast<const void*>(0xab));
                 f.AddArg(reinterpret_cast<const void*>(0xab));
             },
             "00001234|00000000|00000000|  000000AB|000000AB  |"},
        Case{"ab%ncd%5n", [](CStringFormatter& f) { f.AddArg(&g_nTarget).AddArg(nullptr); },
             "abcd"},
        Case{"%08.2f|%-8.2f|%+.1e|% f|%G",
             [](CStringFormatter& f) {
                 f.AddArg(-1.5).AddArg(-1.5).AddArg(1234.5f).AddArg(1.0).AddArg(1e-10);
             },
             "000-1.50|-1.50   |+1.2e+03|1.000000|1E-10"},
        Case{"%-08.2f|%Lf|%.*f",
             [](CStringFormatter& f) { f.AddArg(-1.5).AddArg(2.5L).AddArg(-3).AddArg(0.5); },
             "-1.50000|2.500000|0.500000"},
        // Reports: the text is dropped unless the only report is the surplus warning.
        Err("%d", kType + "an integer", [](CStringFormatter& f) { f.AddArg(1.5); }),
        Err("%d %d", "2002 not enough arguments", [](CStringFormatter& f) { f.AddArg(1); }),
        Case{"%d",
             [](CStringFormatter& f) { f.AddArg(1).AddArg(2); },
             "1",
             {"1000 too many arguments"}},
        Err("%lld", kType + "a 64-bit integer", [](CStringFormatter& f) { f.AddArg(1); }),
        Err("%x", kType + "an integer", [](CStringFormatter& f) { f.AddArg(1LL); }),
        Err("%*d", kType + "an integer", [](CStringFormatter& f) { f.AddArg(1.0).AddArg(1); }),
        Err("%.*d", "2002 not enough arguments", [](CStringFormatter& f) { f.AddArg(1); }),
        Err("%c", kType + "an integer", [](CStringFormatter& f) { f.AddArg("x"); }),
        Err("%lc", "2003 wide-char not supported yet", [](CStringFormatter& f) { f.AddArg('x'); }),
        Err("%f", kType + "a float/double", [](CStringFormatter& f) { f.AddArg(1.0L); }),
        Err("%Le", kType + "a long double", [](CStringFormatter& f) { f.AddArg(1.0); }),
        Err("%s", kType + "a string-pointer", [](CStringFormatter& f) { f.AddArg(1); }),
        Err("%ls", "2003 wide-char string not supported yet",
            [](CStringFormatter& f) { f.AddArg("x"); }),
        Err("%s", "2001 invalid pointer type",
            [](CStringFormatter& f) { f.AddArg(reinterpret_cast<const char*>(16)); }),
        Err("%p", kType + "a pointer", [](CStringFormatter& f) { f.AddArg(1); }),
        Err("%n", kType + "a pointer",
            [](CStringFormatter& f) { f.AddArg(reinterpret_cast<const void*>(&g_nTarget)); }),
        Case{"%d|%.d|%hhd|%I6d", [](CStringFormatter& f) { f.AddArg(1); }, "1|.d|hhd|I6d"}));

TEST(StringFormat, CountTargetGetsTheTextLengthSoFar) {
    g_nTarget = -1;
    CStringFormatter f("ab%ncd", "StringFormatTest", 1);
    EXPECT_EQ(f.AddArg(&g_nTarget).GetResult(), "abcd");
    EXPECT_EQ(g_nTarget, 2);
}

TEST(StringFormat, ParsesFlagsWidthPrecisionAndLength) {
    CStringFormatter f("x%-+ #0*.*I64d%12.34hX%Lg%ls%%%lli", "StringFormatTest", 1);
    ASSERT_TRUE(f.IsValid());
    ASSERT_EQ(f.GetFormatCount(), 5);
    const FormatSpec* s = f.GetFormatType(0);
    EXPECT_EQ(s->nFlags, 0x1Fu | kFormatFlagWidthStar | kFormatFlagPrecisionStar | 0x800u);
    EXPECT_EQ(s->cConversion, 'd');
    s = f.GetFormatType(1);
    EXPECT_EQ(s->nFlags, kFormatFlagWidth | kFormatFlagPrecision | kFormatFlagShort);
    EXPECT_EQ(s->nWidth, 12);
    EXPECT_EQ(s->nPrecision, 34);
    EXPECT_EQ(f.GetFormatType(2)->nFlags, kFormatFlagLongDouble);
    EXPECT_EQ(f.GetFormatType(3)->nFlags, kFormatFlagLong);
    EXPECT_EQ(f.GetFormatType(4)->nFlags, kFormatFlagInt64);
}

TEST(StringFormat, BadIndexInvalidatesAndLaterResultsAreSilentlyEmpty) {
    pind::test::RecordedReports reports;
    CStringFormatter f("%d", "StringFormatTest", 1);
    f.AddArg(1);
    EXPECT_EQ(f.GetFormatType(-1), nullptr);
    EXPECT_EQ(f.GetFormatType(1), nullptr);
    EXPECT_FALSE(f.IsValid());
    EXPECT_EQ(f.GetResult(), "");
    EXPECT_EQ(reports.Lines(),
              (std::vector<std::string>{"3000 GetFormatType error", "3000 GetFormatType error"}));
}

TEST(StringFormat, FailedResultIsRetriedAndReportedAgainWhileLateArgsAfterSuccessAreIgnored) {
    pind::test::RecordedReports reports;
    CStringFormatter f("%d%d", "here.cpp", 42);
    f.AddArg(1);
    EXPECT_EQ(f.GetResult(), "");
    EXPECT_EQ(f.GetResult(), "");
    ASSERT_EQ(reports.All().size(), 2u);
    EXPECT_EQ(reports.All()[1].strFile, "here.cpp");
    EXPECT_EQ(reports.All()[1].nLine, 42);
    EXPECT_EQ(f.AddArg(2).GetResult(), "12");
    EXPECT_EQ(f.AddArg(3).GetResult(), "12");
    EXPECT_EQ(reports.All().size(), 2u);
}

TEST(StringFormat, CopiesAreDeep) {
    CStringFormatter a("%d-%s", "StringFormatTest", 1);
    a.AddArg(1);
    CStringFormatter b(a);
    b.AddArg("b");
    CStringFormatter c("%d", "StringFormatTest", 1);
    c = b;
    CStringFormatter& self = c;
    c = self;  // self-assignment keeps it
    a.AddArg("a");
    EXPECT_EQ(a.GetResult(), "1-a");
    EXPECT_EQ(b.GetResult(), "1-b");
    EXPECT_EQ(c.GetResult(), "1-b");
    CStringFormatter d(a);  // copies the built text too
    EXPECT_EQ(d.AddArg(9).GetResult(), "1-a");
}

// Where C's printf and the formatter agree, they give the same bytes.
TEST(StringFormat, AgreesWithSnprintfOnCommonGround) {
    const char* intFormats[] = {"%d",  "%5d", "%-5d|", "%05d", "%+d", "% d",  "%.3d",   "%8.3d",
                                "%u",  "%x",  "%X",    "%#x",  "%#X", "%#8x", "%-#8X|", "%i",
                                "%hd", "%hu", "%hx",   "%c",   "%3c", "%-3c|"};
    const int values[] = {0, 1, 7, 65, -1, -42, 255, 70000, INT32_MAX, INT32_MIN};
    for (const char* format : intFormats) {
        for (int value : values) {
            if (std::strchr(format, 'c') != nullptr && value <= 0) {
                continue;  // a NUL ends snprintf's text
            }
            if (value == 0 && std::strpbrk(format, "#+") != nullptr) {
                continue;  // zero with '#' or '+' is among the differences below
            }
            char want[64];
            std::snprintf(want, sizeof want, format, value);
            CStringFormatter f(format, "StringFormatTest", 1);
            EXPECT_EQ(f.AddArg(value).GetResult(), want) << format << " " << value;
        }
    }
    const char* strFormats[] = {"%s", "%8s", "%-8s|", "%.2s", "%8.2s", "%.0s"};
    for (const char* format : strFormats) {
        for (const char* text : {"", "a", "hello", "hello world"}) {
            char want[64];
            std::snprintf(want, sizeof want, format, text);
            CStringFormatter f(format, "StringFormatTest", 1);
            EXPECT_EQ(f.AddArg(text).GetResult(), want) << format << " " << text;
        }
    }
}

// Where they differ, the formatter's rules hold (the "%p", "%05s" and "%08.2f" differences are in
// the table above: C leaves those to the runtime).
TEST(StringFormat, DiffersFromSnprintfOnPurpose) {
    struct Diff {
        const char* pszFormat;
        int nValue;
        const char* pszOurs;
        const char* pszPrintf;
    };
    const Diff diffs[] = {
        {"%o", -8, "-10", "37777777770"}, {"%.0d", 0, "0", ""},  {"%#o", 0, "00", "0"},
        {"%#x", 0, "0x0", "0"},           {"%+d", 0, "0", "+0"}, {"%05.3d", 7, "00007", "  007"},
        {"%+ d", 5, " 5", "+5"}};
    for (const Diff& d : diffs) {
        CStringFormatter f(d.pszFormat, "StringFormatTest", 1);
        EXPECT_EQ(f.AddArg(d.nValue).GetResult(), d.pszOurs) << d.pszFormat;
        char theirs[32];
        std::snprintf(theirs, sizeof theirs, d.pszFormat, d.nValue);
        EXPECT_STREQ(theirs, d.pszPrintf) << d.pszFormat;
    }
}

// Floating conversions equal a string stream set up from the same flags, width and precision.
TEST(StringFormat, FloatsMatchAStringStreamOverAGrid) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double tiny = std::numeric_limits<double>::denorm_min();
    const double values[] = {0.0,       -0.0,  1.0,   -1.5,    0.1,         2.5,
                             1234.5678, 1e-10, 1e300, -1e-300, 123456789.0, 0.5,
                             9.9999999, 1e16,  inf,   -inf,    nan,         tiny};
    const char* flagSets[] = {"", "+", "-", "0", "#", " ", "+0", "-0", "#0", "+#-"};
    const char conversions[] = {'e', 'E', 'f', 'g', 'G'};
    const int widths[] = {-1, 0, 5, 12};         // -1: none
    const int precisions[] = {-1, 0, 1, 3, 17};  // -1: none
    for (double value : values) {
        for (const char* flags : flagSets) {
            for (char conversion : conversions) {
                for (int width : widths) {
                    for (int precision : precisions) {
                        std::string format = std::string("%") + flags;
                        std::ostringstream want;
                        if (width >= 0) {
                            format += std::to_string(width);
                            want.width(width);
                        }
                        if (precision >= 0) {
                            format += "." + std::to_string(precision);
                            want.precision(precision);
                        }
                        format += conversion;
                        for (const char* p = flags; *p != '\0'; ++p) {
                            if (*p == '+') want.setf(std::ios::showpos);
                            if (*p == '-') want.setf(std::ios::left, std::ios::adjustfield);
                            if (*p == '0') want.fill('0');
                            if (*p == '#') want.setf(std::ios::showpoint);
                        }
                        if (conversion == 'E' || conversion == 'G') want.setf(std::ios::uppercase);
                        if (conversion == 'e' || conversion == 'E') {
                            want.setf(std::ios::scientific, std::ios::floatfield);
                        } else if (conversion == 'f') {
                            want.setf(std::ios::fixed, std::ios::floatfield);
                        }
                        want << value;
                        CStringFormatter f(format.c_str(), "StringFormatTest", 1);
                        ASSERT_EQ(f.AddArg(value).GetResult(), want.str())
                            << format << " of " << value;
                    }
                }
            }
        }
    }
}

bool CheckArgs(const char* pszFormat, ...) {
    va_list args;
    va_start(args, pszFormat);
    const bool valid = CheckFormatArgs(pszFormat, args);
    va_end(args);
    return valid;
}

TEST(StringFormat, CheckFormatArgsTakesSlotsByConversion) {
    pind::test::RecordedReports reports;
    int target = 0;
    EXPECT_TRUE(CheckArgs("%d %i %u %x %c %s %p %n %f %lld %I64u", 1, 2, 3u, 4, 'c', "s",
                          static_cast<void*>(&target), &target, 1.5, 5LL, 6ULL));
    EXPECT_TRUE(CheckArgs(nullptr));
    EXPECT_TRUE(reports.Lines().empty());
    struct Bad {
        std::function<bool()> check;
        const char* pszWant;
    };
    const Bad bads[] = {
        {[] { return CheckArgs("%5I64d", 5); },
         "2001 invalid argument type. expect a 64-bit integer"},
        {[] { return CheckArgs("%*d", 5, 6); }, "2002 not enough arguments"},
        {[] { return CheckArgs("%ls", L"wide"); }, "2003 wide-char string not supported yet"},
        {[] { return CheckArgs("%.*f", 1.5); }, "2001 invalid argument type. expect an integer"}};
    for (const Bad& b : bads) {
        reports.Clear();
        EXPECT_TRUE(b.check()) << b.pszWant;  // the format parsed, whatever was found
        ASSERT_EQ(reports.Lines(), std::vector<std::string>{b.pszWant});
        EXPECT_EQ(reports.All()[0].strFile, "StringFormat");
        EXPECT_EQ(reports.All()[0].nLine, 1938);
    }
}

}  // namespace

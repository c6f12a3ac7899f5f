// The checked formatter: parsing, every conversion, the reports, copies, the va-list checker and
// the default report handler's exact engine-log line and memory of the last 11 reports.
// Floating conversions are compared with a real string stream; the table's rows pin where C's
// printf differs on purpose.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "pind/format/FormatError.h"
#include "pind/format/StringFormat.h"
#include "support/EngineLogCapture.h"

namespace {

// Records every formatter report while it lives by filling the handler slot.
struct FormatReport {
    int nCode;
    std::string strMessage, strFile;
    int nLine;
};

class RecordedReports {
public:
    RecordedReports() : m_previous(g_pfnFormatErrorHandler) {
        All().clear();
        g_pfnFormatErrorHandler = [](int nCode, const char* pszMessage, const char* pszFile,
                                     int nLine) {
            All().push_back({nCode, pszMessage != nullptr ? pszMessage : "<null>",
                             pszFile != nullptr ? pszFile : "<null>", nLine});
            return 0;
        };
    }
    ~RecordedReports() { g_pfnFormatErrorHandler = m_previous; }

    static std::vector<FormatReport>& All() {
        static std::vector<FormatReport> s_log;
        return s_log;
    }
    /// "code message" per report, oldest first.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        for (const FormatReport& r : All()) {
            lines.push_back(std::to_string(r.nCode) + " " + r.strMessage);
        }
        return lines;
    }

private:
    FormatErrorHandler m_previous;
};

using Arg = std::variant<int, unsigned, long long, unsigned long long, float, double, long double,
                         const char*, const void*, int*, std::nullptr_t>;

struct Case {
    const char* pszFormat;
    std::vector<Arg> args;
    std::string strWant;
    std::vector<std::string> reports = {};  // "code message"
};

void PrintTo(const Case& c, std::ostream* os) { *os << '"' << c.pszFormat << '"'; }

const void* Ptr(uintptr_t address) { return reinterpret_cast<const void*>(address); }

const std::string kType = "2001 invalid argument type. expect ";

const Case kCases[] = {
    {"", {}, ""},
    {"%%|%", {}, "%|"},
    {"100%q|%5%|", {}, "100q|5|"},
    {"50% off", {8}, "50 10ff"},  // "% o"
    // C's printf differs on purpose in "%05.3d", "%+ d", "%+d" of 0, "%#o" and "%#x" of 0, "%o" of
    // negatives and "%.0d" of 0.
    {"%5.3d|%-5d|%05d|%-05d|%05.3d", {7, 7, -42, 7, 7}, "  007|7    |-0042|7    |00007"},
    {"% +d|%+d|% d", {5, 0, 0}, " 5|0| 0"},
    {"%#x|%#X|%#o|%#o", {0, 255, 0, -8}, "0x0|0XFF|00|-010"},
    {"%o|%hu|%hd|%x", {-8, 70000, 65535, -1}, "-10|4464|-1|ffffffff"},
    {"%+u|% x|%.0d|%.5i", {5u, 5, 0, -12}, "5|5|0|-00012"},
    {"%lld|%I64x|%llu",
     {LLONG_MIN, -1LL, ~0ULL},
     "-9223372036854775808|ffffffffffffffff|18446744073709551615"},
    // A negative '*' width neither pads nor left-adjusts.
    {"%*d|%-*d|%.*d|%*d", {4, 1, 3, 2, 3, 5, -4, 9}, "   1|2  |005|9"},
    {"%c%c|%3c|%-3c|", {'a', 0x142, 'x', 'y'}, "aB|  x|y  |"},
    {"%s|%s|%.2s|%05s|%-05s|%.*s|%3.1s",
     {static_cast<const char*>(nullptr), nullptr, "abc", "ab", "ab", -1, "abc", "xyz"},
     "(null)|(null)|ab|000ab|ab000||  x"},
    {"%p|%p|%p|%10p|%-10p|",
     {Ptr(0x1234), nullptr, static_cast<int*>(nullptr), Ptr(0xab), Ptr(0xab)},
     "00001234|00000000|00000000|  000000AB|000000AB  |"},
    {"%08.2f|%-8.2f|%+.1e|% f|%G",
     {-1.5, -1.5, 1234.5f, 1.0, 1e-10},
     "000-1.50|-1.50   |+1.2e+03|1.000000|1E-10"},
    {"%-08.2f|%Lf|%.*f", {-1.5, 2.5L, -3, 0.5}, "-1.50000|2.500000|0.500000"},
    {"%d|%.d|%hhd|%I6d", {1}, "1|.d|hhd|I6d"},
    // Reports: the text is dropped unless the only report is the surplus warning.
    {"%d", {1, 2}, "1", {"1000 too many arguments"}},
    {"%d %d", {1}, "", {"2002 not enough arguments"}},
    {"%d", {1.5}, "", {kType + "an integer"}},
    {"%lld", {1}, "", {kType + "a 64-bit integer"}},
    {"%*d", {1.0, 1}, "", {kType + "an integer"}},
    {"%c", {"x"}, "", {kType + "an integer"}},
    {"%lc", {'x'}, "", {"2003 wide-char not supported yet"}},
    {"%f", {1.0L}, "", {kType + "a float/double"}},
    {"%Le", {1.0}, "", {kType + "a long double"}},
    {"%s", {1}, "", {kType + "a string-pointer"}},
    {"%ls", {"x"}, "", {"2003 wide-char string not supported yet"}},
    {"%s", {reinterpret_cast<const char*>(16)}, "", {"2001 invalid pointer type"}},
    {"%p", {1}, "", {kType + "a pointer"}},
    {"%n", {Ptr(16)}, "", {kType + "a pointer"}},
};

class StringFormatCases : public ::testing::TestWithParam<Case> {};

TEST_P(StringFormatCases, GivesTextAndReports) {
    const Case& c = GetParam();
    RecordedReports reports;
    CStringFormatter f(c.pszFormat, "StringFormatTest", 7);
    for (const Arg& arg : c.args) std::visit([&f](auto value) { f.AddArg(value); }, arg);
    EXPECT_EQ(f.GetResult(), c.strWant);
    EXPECT_EQ(reports.Lines(), c.reports);
}

INSTANTIATE_TEST_SUITE_P(Conversions, StringFormatCases, ::testing::ValuesIn(kCases));

TEST(StringFormat, CountTargetGetsTheTextLengthSoFarAndANullOneIsSkipped) {
    int target = -1;
    CStringFormatter f("ab%ncd%5n", "StringFormatTest", 1);
    EXPECT_EQ(f.AddArg(&target).AddArg(nullptr).GetResult(), "abcd");
    EXPECT_EQ(target, 2);
}

TEST(StringFormat, BadIndexInvalidatesAndLaterResultsAreSilentlyEmpty) {
    RecordedReports reports;
    CStringFormatter f("%d", "StringFormatTest", 1);
    f.AddArg(1);
    ASSERT_EQ(f.GetFormatCount(), 1);
    EXPECT_TRUE(f.GetFormatType(-1) == nullptr && f.GetFormatType(1) == nullptr);
    EXPECT_FALSE(f.IsValid());
    EXPECT_EQ(f.GetResult(), "");
    EXPECT_EQ(reports.Lines(),
              (std::vector<std::string>{"3000 GetFormatType error", "3000 GetFormatType error"}));
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
    EXPECT_EQ(a.AddArg("a").GetResult() + b.GetResult() + c.GetResult(), "1-a1-b1-b");
    CStringFormatter d(a);  // copies the built text too
    EXPECT_EQ(d.AddArg(9).GetResult(), "1-a");
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
                for (int wp = 0; wp < 20; ++wp) {
                    const int width = widths[wp % 4], precision = precisions[wp / 4];
                    std::ostringstream want;
                    std::string format = std::string("%") + flags;
                    if (width >= 0) format += std::to_string(width);
                    if (precision >= 0) format += "." + std::to_string(precision);
                    format += conversion;
                    const std::string f = flags;
                    if (f.find('+') != std::string::npos) want.setf(std::ios::showpos);
                    if (f.find('-') != std::string::npos)
                        want.setf(std::ios::left, std::ios::adjustfield);
                    if (f.find('#') != std::string::npos) want.setf(std::ios::showpoint);
                    if (f.find('0') != std::string::npos) want.fill('0');
                    if (std::isupper(conversion)) want.setf(std::ios::uppercase);
                    if (conversion != 'g' && conversion != 'G') {
                        want.setf(conversion == 'f' ? std::ios::fixed : std::ios::scientific,
                                  std::ios::floatfield);
                    }
                    want.width(std::max(width, 0));
                    want.precision(precision >= 0 ? precision : 6);
                    want << value;
                    CStringFormatter formatter(format.c_str(), "StringFormatTest", 1);
                    ASSERT_EQ(formatter.AddArg(value).GetResult(), want.str())
                        << format << " of " << value;
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
    RecordedReports reports;
    int target = 0;
    EXPECT_TRUE(CheckArgs("%d %i %u %x %c %s %p %n %f %lld %I64u", 1, 2, 3u, 4, 'c', "s",
                          static_cast<void*>(&target), &target, 1.5, 5LL, 6ULL));
    EXPECT_TRUE(CheckArgs(nullptr) && reports.Lines().empty());
    const bool parsed[] = {CheckArgs("%5I64d", 5), CheckArgs("%*d", 5, 6),
                           CheckArgs("%ls", L"wide"), CheckArgs("%.*f", 1.5)};
    for (bool p : parsed) EXPECT_TRUE(p);  // the format parsed, whatever was found
    EXPECT_EQ(reports.Lines(),
              (std::vector<std::string>{kType + "a 64-bit integer", "2002 not enough arguments",
                                        "2003 wide-char string not supported yet",
                                        kType + "an integer"}));
    for (const FormatReport& r : reports.All()) {
        EXPECT_EQ(r.strFile + ":" + std::to_string(r.nLine), "StringFormat:1938");
    }
}

// The default handler keeps its key list for the whole process, so each test uses texts of its own.
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
    RecordedReports reports;
    CStringFormatter("%d|slot", "Slot.cpp", 1).GetResult();
    EXPECT_EQ(reports.Lines(), std::vector<std::string>{"2002 not enough arguments"});
    EXPECT_TRUE(log.Lines().empty());
}

}  // namespace

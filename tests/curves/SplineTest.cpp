// The messages of the monotone cubic and the least-squares fit, and the exits that end the process.
// Values, unsorted evaluation points and the constant fit included, are checked against SciPy and
// an exact solve in ReferenceTest.cpp.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pind/curves/spline.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(Pchip, MildFaultsReportAndReturn) {
    const double x[] = {0, 1}, f[] = {0, 1}, d[] = {1, 1}, xe[] = {-1.0, 1.0, 1.5, 2.0, 4.0};
    double fe[5] = {42.0};
    int next[2] = {7, 7};
    CaptureStderr();
    spline_pchip_val(2, x, f, d, 0, xe, fe);
    EXPECT_EQ(chfev(0, 1, 0, 1, 1, 1, -3, xe, fe, next), -1);
    EXPECT_EQ(chfev(2, 2, 0, 1, 1, 1, 1, xe, fe, next), -2);
    EXPECT_EQ(GetCapturedStderr(),
              "\nSPLINE_PCHIP_VAL - Fatal error!\n  Number of evaluation points less than 1.\n"
              "\nCHFEV - Fatal error!\n  Number of evaluation points is less than 1.\n  NE = -3\n"
              "\nCHFEV - Fatal error!\n  The interval [X1,X2] is of zero length.\n");
    EXPECT_EQ(fe[0], 42.0);
    EXPECT_EQ(next[0], 7);
    // Points outside [X1,X2] are counted on each side.
    ASSERT_EQ(chfev(1.0, 2.0, 5.0, -1.0, 0.5, 3.0, 5, xe, fe, next), 0);
    EXPECT_EQ(std::vector<int>(next, next + 2), (std::vector<int>{1, 1}));
}

// An exit with `code` as the platform reports it: the low byte on POSIX, the whole int on Windows.
bool ExitsWith(int code, int status) {
    return testing::ExitedWithCode(code)(status) || testing::ExitedWithCode(code & 0xFF)(status);
}

// Death-test regexes match the whole stderr text literally, in both gtest regex dialects.
std::string Exactly(const std::string& text) {
    std::string re = "^";
    for (char c : text) {
        re += std::string(std::string("\\^$.[]|()*+?{}").find(c) != std::string::npos, '\\') + c;
    }
    return re + "$";
}

struct ExitCase {
    const char* name;
    bool val;  // spline_pchip_val instead of spline_pchip_set
    int n;
    std::vector<double> x;
    int code;
    const char* message;
};

class PchipExit : public testing::TestWithParam<ExitCase> {};

TEST_P(PchipExit, WritesTheMessageAndEndsTheProcess) {
    const ExitCase& c = GetParam();
    const std::vector<double> x = c.x, f(x.size() + 1, 1.0), d(x.size() + 1, 1.0);
    double xe = 0.5, fe = 0.0;
    const int code = c.code;
    EXPECT_EXIT(
        c.val ? spline_pchip_val(c.n, x.data(), f.data(), d.data(), 1, &xe, &fe)
              : spline_pchip_set(c.n, x.data(), f.data(), const_cast<double*>(d.data())),
        [code](int status) { return ExitsWith(code, status); },
        Exactly(std::string("\n") + (c.val ? "SPLINE_PCHIP_VAL" : "SPLINE_PCHIP_SET") +
                " - Fatal error!\n" + c.message));
}

const char kTooFew[] = "  Number of data points less than 2.\n";
const char kNotIncreasing[] = "  X array not strictly increasing.\n";

INSTANTIATE_TEST_SUITE_P(
    Fatal, PchipExit,
    testing::Values(ExitCase{"set_one", false, 1, {3}, -1, kTooFew},
                    ExitCase{"set_equal", false, 3, {0, 1, 1}, -3, kNotIncreasing},
                    ExitCase{"val_late_drop", true, 4, {0, 1, 2, -1}, -3, kNotIncreasing}),
    [](const testing::TestParamInfo<ExitCase>& p) { return p.param.name; });

std::string Distinct(int nterms, int have) {
    return "\nLEAST_SET - Fatal error!\n  The number of distinct X values must be\n  at least "
           "NTERMS = " +
           std::to_string(nterms) + "\n  but the input data has only " + std::to_string(have) +
           "\n  distinct entries.\n";
}

std::string Weight(int i, const char* w) {
    return "\nLEAST_SET - Fatal error!\n  All weights W must be positive,\n  but weight " +
           std::to_string(i) + "\n  is " + w + "\n";
}

TEST(Least, RefusedFitsReportAndLeaveTheCoefficients) {
    std::vector<double> bcd(12, 9.0);
    const auto fit = [&bcd](std::vector<double> x, std::vector<double> w, int nterms) {
        const std::vector<double> f(x.size(), 1.0);
        least_set(static_cast<int>(x.size()), x.data(), f.data(), w.data(), nterms, bcd.data(),
                  bcd.data() + nterms, bcd.data() + 2 * nterms);
    };
    CaptureStderr();
    fit({1, 2, 1, 2, -0.0, 0.0}, {1, 1, 1, 1, 1, 1}, 4);  // -0 and 0 are one value
    fit({}, {}, 1);
    fit({0, 1, 2}, {1, 0, -1}, 2);
    fit({0, 1, 2}, {1, 2, -2.5e-5}, 3);
    fit({5, 5}, {0, 0}, 2);  // the distinct count comes first, even when a weight is bad too
    EXPECT_EQ(GetCapturedStderr(), Distinct(4, 3) + Distinct(1, 0) + Weight(1, "0") +
                                       Weight(2, "-2.5e-05") + Distinct(2, 1));
    EXPECT_EQ(bcd, std::vector<double>(12, 9.0));
}

}  // namespace

// The least-squares fit's own rules: constant and exact fits, and the checks that refuse a fit.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "pind/curves/spline.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

struct Fit {
    std::vector<double> b, c, d;
};

Fit FitOf(const std::vector<double>& x, const std::vector<double>& f, const std::vector<double>& w,
          int nterms) {
    Fit fit{std::vector<double>(nterms, 9.0), std::vector<double>(nterms, 9.0),
            std::vector<double>(nterms, 9.0)};
    least_set(static_cast<int>(x.size()), x.data(), f.data(), w.data(), nterms, fit.b.data(),
              fit.c.data(), fit.d.data());
    return fit;
}

double ValueOf(const Fit& fit, double x) {
    return least_val(static_cast<int>(fit.d.size()), fit.b.data(), fit.c.data(), fit.d.data(), x);
}

TEST(Least, OneTermIsTheWeightedMeanEverywhere) {
    const Fit fit = FitOf({0, 1, 2, 2}, {1, 2, 4, 8}, {1, 1, 2, 4}, 1);
    const double mean = (1 + 2 + 8 + 32) / 8.0;
    EXPECT_DOUBLE_EQ(fit.d[0], mean);
    EXPECT_EQ(fit.c[0], 0.0);
    for (double x : {-1e6, 0.0, 1.5, 1e6}) {
        EXPECT_DOUBLE_EQ(ValueOf(fit, x), mean) << x;
    }
}

TEST(Least, LinesAndCubicsAreReproduced) {
    const std::vector<double> x{-3, -1, 0, 0.5, 2, 4, 7}, w{1, 3, 1, 0.5, 2, 1, 1};
    std::vector<double> line, cubic;
    for (double v : x) {
        line.push_back(2.5 * v - 4.0);
        cubic.push_back(v * v * v - 2.0 * v + 1.0);
    }
    const Fit lineFit = FitOf(x, line, w, 2);
    const Fit cubicFit = FitOf(x, cubic, w, 5);  // one term more than needed
    for (double v : {-5.0, -3.0, 0.25, 3.0, 10.0}) {
        EXPECT_NEAR(ValueOf(lineFit, v), 2.5 * v - 4.0, 1e-12 * (1 + std::fabs(2.5 * v))) << v;
        const double want = v * v * v - 2.0 * v + 1.0;
        EXPECT_NEAR(ValueOf(cubicFit, v), want, 1e-11 * (1 + std::fabs(want))) << v;
    }
    EXPECT_EQ(lineFit.c[1], 0.0);
}

struct RefusedCase {
    const char* name;
    std::vector<double> x, w;
    int nterms;
    const char* message;
};

class LeastRefused : public testing::TestWithParam<RefusedCase> {};

TEST_P(LeastRefused, ReportsAndLeavesTheCoefficients) {
    const RefusedCase& c = GetParam();
    const std::vector<double> f(c.x.size(), 1.0);
    CaptureStderr();
    const Fit fit = FitOf(c.x, f, c.w, c.nterms);
    EXPECT_EQ(GetCapturedStderr(), c.message);
    for (const std::vector<double>* v : {&fit.b, &fit.c, &fit.d}) {
        EXPECT_EQ(*v, std::vector<double>(c.nterms, 9.0));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Checks, LeastRefused,
    testing::Values(
        RefusedCase{"repeated_x",
                    {1, 2, 1, 2, -0.0, 0.0},
                    {1, 1, 1, 1, 1, 1},
                    4,
                    "\nLEAST_SET - Fatal error!\n  The number of distinct X values must be\n"
                    "  at least NTERMS = 4\n  but the input data has only 3\n"
                    "  distinct entries.\n"},
        RefusedCase{"no_points",
                    {},
                    {},
                    1,
                    "\nLEAST_SET - Fatal error!\n  The number of distinct X values must be\n"
                    "  at least NTERMS = 1\n  but the input data has only 0\n"
                    "  distinct entries.\n"},
        RefusedCase{"zero_weight",
                    {0, 1, 2},
                    {1, 0, -1},
                    2,
                    "\nLEAST_SET - Fatal error!\n  All weights W must be positive,\n"
                    "  but weight 1\n  is 0\n"},
        RefusedCase{"tiny_negative_weight",
                    {0, 1, 2},
                    {1, 2, -2.5e-5},
                    3,
                    "\nLEAST_SET - Fatal error!\n  All weights W must be positive,\n"
                    "  but weight 2\n  is -2.5e-05\n"},
        // The distinct count comes first, even when a weight is bad too.
        RefusedCase{"both",
                    {5, 5},
                    {0, 0},
                    2,
                    "\nLEAST_SET - Fatal error!\n  The number of distinct X values must be\n"
                    "  at least NTERMS = 2\n  but the input data has only 1\n"
                    "  distinct entries.\n"}),
    [](const testing::TestParamInfo<RefusedCase>& p) { return p.param.name; });

TEST(Least, NanAbscissasCountAsDistinctAndNoTermsDoNothing) {
    const double nan = std::nan("");
    CaptureStderr();
    const Fit fit = FitOf({nan, nan, 1.0}, {1, 1, 1}, {1, 1, 1}, 3);
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_TRUE(std::isnan(ValueOf(fit, 0.0)));
    EXPECT_EQ(least_val(0, nullptr, nullptr, nullptr, 1.0), 0.0);
}

}  // namespace

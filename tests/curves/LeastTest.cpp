// The checks that refuse a least-squares fit. Fitted values, the constant fit included, are
// checked against an exact solve in ReferenceTest.cpp.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "pind/curves/spline.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

struct RefusedCase {
    const char* name;
    std::vector<double> x, w;
    int nterms;
    std::string message;
};

class LeastRefused : public testing::TestWithParam<RefusedCase> {};

TEST_P(LeastRefused, ReportsAndLeavesTheCoefficients) {
    const RefusedCase& c = GetParam();
    const std::vector<double> f(c.x.size(), 1.0);
    std::vector<double> bcd(3 * c.nterms, 9.0);
    CaptureStderr();
    least_set(static_cast<int>(c.x.size()), c.x.data(), f.data(), c.w.data(), c.nterms, bcd.data(),
              bcd.data() + c.nterms, bcd.data() + 2 * c.nterms);
    EXPECT_EQ(GetCapturedStderr(), c.message);
    EXPECT_EQ(bcd, std::vector<double>(3 * c.nterms, 9.0));
}

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

INSTANTIATE_TEST_SUITE_P(
    Checks, LeastRefused,
    testing::Values(
        RefusedCase{"repeated_x", {1, 2, 1, 2, -0.0, 0.0}, {1, 1, 1, 1, 1, 1}, 4, Distinct(4, 3)},
        RefusedCase{"no_points", {}, {}, 1, Distinct(1, 0)},
        RefusedCase{"zero_weight", {0, 1, 2}, {1, 0, -1}, 2, Weight(1, "0")},
        RefusedCase{"tiny_negative_weight", {0, 1, 2}, {1, 2, -2.5e-5}, 3, Weight(2, "-2.5e-05")},
        // The distinct count comes first, even when a weight is bad too.
        RefusedCase{"both", {5, 5}, {0, 0}, 2, Distinct(2, 1)}),
    [](const testing::TestParamInfo<RefusedCase>& p) { return p.param.name; });

}  // namespace

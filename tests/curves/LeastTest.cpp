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

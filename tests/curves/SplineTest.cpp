// The monotone cubic: its shape rules, its messages, and the exits that end the process.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "pind/curves/spline.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// An exit with `code` as the platform reports it: the low byte on POSIX, the whole int on Windows.
bool ExitsWith(int code, int status) {
    return testing::ExitedWithCode(code)(status) || testing::ExitedWithCode(code & 0xFF)(status);
}

// Death-test regexes match the whole stderr text literally, in both gtest regex dialects.
std::string Exactly(const std::string& text) {
    std::string re = "^";
    for (char c : text) {
        if (std::string("\\^$.[]|()*+?{}").find(c) != std::string::npos) {
            re += '\\';
        }
        re += c;
    }
    return re + "$";
}

std::vector<double> Derivatives(const std::vector<double>& x, const std::vector<double>& f) {
    std::vector<double> d(x.size());
    spline_pchip_set(static_cast<int>(x.size()), x.data(), f.data(), d.data());
    return d;
}

std::vector<double> Values(const std::vector<double>& x, const std::vector<double>& f,
                           const std::vector<double>& xe) {
    const std::vector<double> d = Derivatives(x, f);
    std::vector<double> fe(xe.size());
    spline_pchip_val(static_cast<int>(x.size()), x.data(), f.data(), d.data(),
                     static_cast<int>(xe.size()), xe.data(), fe.data());
    return fe;
}

TEST(Pchip, TwoPointsGiveTheChordEverywhere) {
    const std::vector<double> x{1.0, 5.0}, f{2.0, 4.0};
    EXPECT_EQ(Derivatives(x, f), (std::vector<double>{0.5, 0.5}));
    EXPECT_EQ(Values(x, f, {-3.0, 1.0, 2.0, 5.0, 9.0}),
              (std::vector<double>{0.0, 2.0, 2.5, 4.0, 6.0}));
}

struct ShapeCase {
    const char* name;
    std::vector<double> x, f;
    std::vector<int> zeroAt;  // points whose derivative must be exactly 0
};

class PchipShape : public testing::TestWithParam<ShapeCase> {};

// Between two data points the curve stays within their values: no overshoot, and flat
// stretches and extrema get zero slope.
TEST_P(PchipShape, KeepsMonotonePiecesAndFlattensExtrema) {
    const ShapeCase& c = GetParam();
    const std::vector<double> d = Derivatives(c.x, c.f);
    for (int i : c.zeroAt) {
        EXPECT_EQ(d[i], 0.0) << "point " << i;
    }
    for (size_t i = 1; i < c.x.size(); ++i) {
        std::vector<double> xe;
        for (int k = 0; k <= 64; ++k) {
            xe.push_back(c.x[i - 1] + (c.x[i] - c.x[i - 1]) * k / 64.0);
        }
        const double lo = std::min(c.f[i - 1], c.f[i]);
        const double hi = std::max(c.f[i - 1], c.f[i]);
        for (double v : Values(c.x, c.f, xe)) {
            EXPECT_GE(v, lo - 1e-12) << "interval " << i;
            EXPECT_LE(v, hi + 1e-12) << "interval " << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Edges, PchipShape,
    testing::Values(ShapeCase{"steps", {0, 1, 2, 3}, {0, 1, 1, 2}, {1, 2}},
                    ShapeCase{"peak", {0, 1, 2, 3, 4}, {0, 1, 3, 1, 0}, {2}},
                    ShapeCase{"valley_uneven", {0, 0.1, 2, 2.05, 5}, {5, 1, -2, 1, 1}, {2, 4}},
                    ShapeCase{"steep_then_flat", {0, 1, 1.01, 3}, {0, 0, 10, 10}, {0, 1, 2, 3}}),
    [](const testing::TestParamInfo<ShapeCase>& p) { return p.param.name; });

TEST(Pchip, ExtrapolatesWithTheEndIntervalsCubics) {
    const std::vector<double> x{0, 1, 2.5, 4}, f{1, 3, 2, 5};
    const std::vector<double> d = Derivatives(x, f);
    const std::vector<double> outside{-2.0, -1e3, 6.0, 1e3};
    const std::vector<double> got = Values(x, f, outside);
    double want[4];
    int next[2];
    ASSERT_EQ(chfev(x[0], x[1], f[0], f[1], d[0], d[1], 2, outside.data(), want, next), 0);
    EXPECT_EQ(next[0], 2);
    ASSERT_EQ(chfev(x[2], x[3], f[2], f[3], d[2], d[3], 2, outside.data() + 2, want + 2, next), 0);
    EXPECT_EQ(next[1], 2);
    EXPECT_EQ(got, std::vector<double>(want, want + 4));
}

// Unsorted points send the walk back; a large shuffled set must give the sorted set's values and
// finish quickly (a linear search per point would take minutes here).
TEST(Pchip, ShuffledEvaluationMatchesSorted) {
    const int n = 200000;
    std::vector<double> x(n), f(n), xe(n);
    for (int i = 0; i < n; ++i) {
        x[i] = i + 0.25 * std::sin(i);
        f[i] = std::cos(i * 0.01) * 10.0;
        xe[i] = -5.0 + (n + 10.0) * i / n;
    }
    const std::vector<double> sorted = Values(x, f, xe);
    std::vector<int> order(n);
    for (int i = 0; i < n; ++i) {
        order[i] = i;
    }
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    std::vector<double> shuffled(n);
    for (int i = 0; i < n; ++i) {
        shuffled[i] = xe[order[i]];
    }
    const std::vector<double> got = Values(x, f, shuffled);
    for (int i = 0; i < n; ++i) {
        ASSERT_EQ(got[i], sorted[order[i]]) << "at " << shuffled[i];
    }
}

// NaN and infinity flow through the arithmetic; they never end the process or hang the walk.
TEST(Pchip, NanAndInfinityNeitherExitNorHang) {
    const std::vector<double> xe{3.5,
                                 kNaN,
                                 -1.0,
                                 0.5,
                                 std::numeric_limits<double>::infinity(),
                                 2.5,
                                 -std::numeric_limits<double>::infinity()};
    std::vector<double> fe = Values({0, 1, kNaN, 3, 4}, {0, 1, 2, 3, 4}, xe);
    EXPECT_TRUE(std::isnan(fe[1]));
    EXPECT_EQ(fe[3], 0.5);
    fe = Values({0, 1, 2, 3}, {0, kNaN, 2, 3}, xe);
    EXPECT_TRUE(std::isnan(fe[3]));
    EXPECT_EQ(fe[0], 2.0);  // the NaN slope next door flattens the last interval
}

TEST(Pchip, NoEvaluationPointsOnlyReports) {
    const std::vector<double> x{0, 1}, f{0, 1}, d{1, 1};
    double fe = 42.0;
    CaptureStderr();
    spline_pchip_val(2, x.data(), f.data(), d.data(), 0, &fe, &fe);
    spline_pchip_val(2, x.data(), f.data(), d.data(), -4, &fe, &fe);
    const std::string message =
        "\nSPLINE_PCHIP_VAL - Fatal error!\n  Number of evaluation points less than 1.\n";
    EXPECT_EQ(GetCapturedStderr(), message + message);
    EXPECT_EQ(fe, 42.0);
}

TEST(Chfev, ReportsBadCountsAndEmptyIntervals) {
    double xe = 0.5, fe = 42.0;
    int next[2] = {7, 7};
    CaptureStderr();
    EXPECT_EQ(chfev(0, 1, 0, 1, 1, 1, 0, &xe, &fe, next), -1);
    EXPECT_EQ(chfev(0, 1, 0, 1, 1, 1, -3, &xe, &fe, next), -1);
    EXPECT_EQ(chfev(2, 2, 0, 1, 1, 1, 1, &xe, &fe, next), -2);
    EXPECT_EQ(GetCapturedStderr(),
              "\nCHFEV - Fatal error!\n  Number of evaluation points is less than 1.\n  NE = 0\n"
              "\nCHFEV - Fatal error!\n  Number of evaluation points is less than 1.\n  NE = -3\n"
              "\nCHFEV - Fatal error!\n  The interval [X1,X2] is of zero length.\n");
    EXPECT_EQ(fe, 42.0);
    EXPECT_EQ(next[0], 7);
}

TEST(Chfev, CountsPointsOnEachSideAndMatchesTheEndData) {
    const double xe[] = {-1.0, 1.0, 1.5, 2.0, 3.0, 4.0};
    double fe[6];
    int next[2];
    ASSERT_EQ(chfev(1.0, 2.0, 5.0, -1.0, 0.5, 3.0, 6, xe, fe, next), 0);
    EXPECT_EQ(next[0], 1);
    EXPECT_EQ(next[1], 2);
    EXPECT_EQ(fe[1], 5.0);
    EXPECT_DOUBLE_EQ(fe[3], -1.0);
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
    std::vector<double> x = c.x, f(x.size() + 1, 1.0), d(x.size() + 1, 1.0);
    x.push_back(0.0);
    double xe = 0.5, fe = 0.0;
    const std::string heading = c.val ? "SPLINE_PCHIP_VAL" : "SPLINE_PCHIP_SET";
    const int code = c.code;
    EXPECT_EXIT(
        {
            if (c.val) {
                spline_pchip_val(c.n, x.data(), f.data(), d.data(), 1, &xe, &fe);
            } else {
                spline_pchip_set(c.n, x.data(), f.data(), d.data());
            }
        },
        [code](int status) { return ExitsWith(code, status); },
        Exactly("\n" + heading + " - Fatal error!\n" + c.message));
}

const char kTooFew[] = "  Number of data points less than 2.\n";
const char kNotIncreasing[] = "  X array not strictly increasing.\n";

INSTANTIATE_TEST_SUITE_P(
    Fatal, PchipExit,
    testing::Values(ExitCase{"set_none", false, 0, {}, -1, kTooFew},
                    ExitCase{"set_one", false, 1, {3}, -1, kTooFew},
                    ExitCase{"set_negative", false, -5, {}, -1, kTooFew},
                    ExitCase{"set_equal", false, 3, {0, 1, 1}, -3, kNotIncreasing},
                    ExitCase{"set_decreasing", false, 2, {1, 0}, -3, kNotIncreasing},
                    ExitCase{"val_one", true, 1, {3}, -1, kTooFew},
                    ExitCase{"val_equal", true, 2, {2, 2}, -3, kNotIncreasing},
                    ExitCase{"val_late_drop", true, 4, {0, 1, 2, -1}, -3, kNotIncreasing}),
    [](const testing::TestParamInfo<ExitCase>& p) { return p.param.name; });

}  // namespace

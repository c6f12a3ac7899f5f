// The parabola and Bézier helpers: exact where the geometry is simple, the length against a dense
// polyline, and the assertion on a degenerate parabola.
#include <gtest/gtest.h>

#include <cmath>

#include "pind/curves/spline.h"
#include "support/RecordingClient.h"

namespace {

TEST(Parabola, ReproducesQuadraticsAndAssertsOnRepeatedAbscissas) {
    auto q = [](float x) { return 0.5f * x * x - 2.0f * x + 1.0f; };
    const Vec3f xs{0.0f, 2.0f, 8.0f}, ys{q(0.0f), q(2.0f), q(8.0f)};
    for (float x : {-4.0f, 2.0f, 5.0f, 12.0f}) {
        EXPECT_FLOAT_EQ(ParabolaValue3(xs, ys, x), q(x)) << x;
    }
    pind::test::RecordingDebug debug;
    EXPECT_EQ(ParabolaValue3({1.0f, 2.0f, 1.0f}, ys, 1.5f), ys.x);
    EXPECT_EQ(ParabolaValue3({1.0f, std::nanf(""), 3.0f}, ys, 1.5f), ys.x);
    ASSERT_EQ(debug.texts.size(), 2u);
    EXPECT_EQ(debug.texts[0].rfind("ASSERT(false) in ", 0), 0u) << debug.texts[0];
}

// A polyline of 2^18 chords (de Casteljau, in double) falls short of the length by far less than
// the 1e-6 asked.
double PolylineLength(const Vec3f p[4]) {
    auto at = [p](double t, float Vec3f::*axis) {
        double a = p[0].*axis, b = p[1].*axis, c = p[2].*axis, d = p[3].*axis;
        a += t * (b - a), b += t * (c - b), c += t * (d - c);
        a += t * (b - a), b += t * (c - b);
        return a + t * (b - a);
    };
    const int steps = 1 << 18;
    double total = 0.0;
    for (int i = 1; i <= steps; ++i) {
        const double t0 = double(i - 1) / steps, t1 = double(i) / steps;
        total +=
            std::hypot(at(t1, &Vec3f::x) - at(t0, &Vec3f::x), at(t1, &Vec3f::y) - at(t0, &Vec3f::y),
                       at(t1, &Vec3f::z) - at(t0, &Vec3f::z));
    }
    return total;
}

TEST(Bezier, LengthAgreesWithADensePolyline) {
    const Vec3f curves[][4] = {
        {{0, 0, 0}, {10, 0, 0}, {0, 0, 0}, {10, 0, 0}},              // stops and turns back
        {{0, 0, 0}, {0, 50, 0}, {100, -50, 5}, {1, 1, 1}},           // a wide swing
        {{-1e4f, 0, 0}, {-1e4f, 1, 0}, {1e4f, 1, 0}, {1e4f, 0, 0}},  // long and flat
    };
    for (const auto& p : curves) {
        const double want = PolylineLength(p);
        EXPECT_NEAR(BezierLength(p[0], p[1], p[2], p[3]), want, 1e-6 * want) << p[1].x;
    }
    EXPECT_EQ(BezierLength({5, 5, 5}, {5, 5, 5}, {5, 5, 5}, {5, 5, 5}), 0.0f);
    EXPECT_TRUE(std::isnan(BezierLength({0, 0, 0}, {std::nanf(""), 0, 0}, {1, 1, 1}, {2, 2, 2})));
}

}  // namespace

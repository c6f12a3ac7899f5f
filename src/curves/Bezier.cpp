// The three-point parabola and the cubic Bézier helpers of the curves area. They take and give
// floats but compute in double, so the float results are the correctly rounded ones more often.
#include <cmath>

#include "pind/curves/spline.h"
#include "pind/diag/Report.h"

namespace {

struct Vec3d {
    double x;
    double y;
    double z;
};

Vec3d Widen(const Vec3f& v) { return {v.x, v.y, v.z}; }

Vec3f Narrow(const Vec3d& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

// Neither equal nor unordered (a NaN).
bool Apart(double a, double b) { return a < b || a > b; }

struct Cubic {
    Vec3d p0, p1, p2, p3;
};

Vec3d Tangent(const Cubic& c, double t) {
    const double u = 1.0 - t;
    const double a = 3.0 * u * u;
    const double b = 6.0 * u * t;
    const double e = 3.0 * t * t;
    return {a * (c.p1.x - c.p0.x) + b * (c.p2.x - c.p1.x) + e * (c.p3.x - c.p2.x),
            a * (c.p1.y - c.p0.y) + b * (c.p2.y - c.p1.y) + e * (c.p3.y - c.p2.y),
            a * (c.p1.z - c.p0.z) + b * (c.p2.z - c.p1.z) + e * (c.p3.z - c.p2.z)};
}

double Speed(const Cubic& c, double t) {
    const Vec3d v = Tangent(c, t);
    return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
}

// Five-point Gauss-Legendre rule for the arc length over [a, b].
double GaussLength(const Cubic& c, double a, double b) {
    static const double kNodes[5] = {0.0, 0.5384693101056831, -0.5384693101056831,
                                     0.9061798459386640, -0.9061798459386640};
    static const double kWeights[5] = {0.5688888888888889, 0.4786286704993665, 0.4786286704993665,
                                       0.2369268850561891, 0.2369268850561891};
    const double mid = 0.5 * (a + b);
    const double half = 0.5 * (b - a);
    double sum = 0.0;
    for (int i = 0; i < 5; ++i) {
        sum += kWeights[i] * Speed(c, mid + half * kNodes[i]);
    }
    return sum * half;
}

// Halves [a, b] until the halves agree with the whole to `tol`; the depth bounds the work on
// curves with a cusp.
double AdaptiveLength(const Cubic& c, double a, double b, double whole, double tol, int depth) {
    const double mid = 0.5 * (a + b);
    const double left = GaussLength(c, a, mid);
    const double right = GaussLength(c, mid, b);
    if (depth == 0 || std::fabs(left + right - whole) <= tol) {
        return left + right;
    }
    return AdaptiveLength(c, a, mid, left, 0.5 * tol, depth - 1) +
           AdaptiveLength(c, mid, b, right, 0.5 * tol, depth - 1);
}

}  // namespace

float ParabolaValue3(const Vec3f& xs, const Vec3f& ys, float x) {
    const double x0 = xs.x;
    const double x1 = xs.y;
    const double x2 = xs.z;
    if (!Apart(x0, x1) || !Apart(x1, x2) || !Apart(x0, x2)) {
        pind::ReportAssert("false", __LINE__, "spline");
        return ys.x;
    }
    // Lagrange form: each point's basis polynomial is 1 there and 0 at the other two.
    const double l0 = (x - x1) * (x - x2) / ((x0 - x1) * (x0 - x2));
    const double l1 = (x - x0) * (x - x2) / ((x1 - x0) * (x1 - x2));
    const double l2 = (x - x0) * (x - x1) / ((x2 - x0) * (x2 - x1));
    return static_cast<float>(ys.x * l0 + ys.y * l1 + ys.z * l2);
}

Vec3f BezierPoint(const Vec3f& p0, const Vec3f& p1, const Vec3f& p2, const Vec3f& p3, float t) {
    const Vec3d a = Widen(p0);
    const Vec3d b = Widen(p1);
    const Vec3d c = Widen(p2);
    const Vec3d e = Widen(p3);
    const double s = t;
    const double u = 1.0 - s;
    const double w0 = u * u * u;
    const double w1 = 3.0 * u * u * s;
    const double w2 = 3.0 * u * s * s;
    const double w3 = s * s * s;
    return Narrow({w0 * a.x + w1 * b.x + w2 * c.x + w3 * e.x,
                   w0 * a.y + w1 * b.y + w2 * c.y + w3 * e.y,
                   w0 * a.z + w1 * b.z + w2 * c.z + w3 * e.z});
}

Vec3f BezierTangent(const Vec3f& p0, const Vec3f& p1, const Vec3f& p2, const Vec3f& p3, float t) {
    return Narrow(Tangent({Widen(p0), Widen(p1), Widen(p2), Widen(p3)}, t));
}

float BezierLength(const Vec3f& p0, const Vec3f& p1, const Vec3f& p2, const Vec3f& p3) {
    const Cubic c{Widen(p0), Widen(p1), Widen(p2), Widen(p3)};
    const double whole = GaussLength(c, 0.0, 1.0);
    if (!std::isfinite(whole)) {
        return static_cast<float>(whole);
    }
    // A tenth of the goal, since the halves' disagreement only estimates the error.
    return static_cast<float>(AdaptiveLength(c, 0.0, 1.0, whole, 1e-7 * whole, 18));
}

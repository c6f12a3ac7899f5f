// Curves: shape-preserving piecewise cubic interpolation (derivatives, then values), weighted
// least-squares polynomial fitting by discrete orthogonal polynomials, and small helpers on
// three-float points (a three-point parabola, cubic Bézier point, tangent and length).
//   spline_pchip_set(n, x, f, d);  spline_pchip_val(n, x, f, d, ne, xe, fe);
#ifndef PIND_CURVES_SPLINE_H_
#define PIND_CURVES_SPLINE_H_

#include "pind/platform/Export.h"

/// Writes into d[0..n-1] the monotone cubic's derivatives at the points (x strictly increasing).
/// Fewer than 2 points, or x not strictly increasing: a message on stderr, then the process exits
/// with -1 or -3 respectively. Two points give the chord slope at both ends.
PIND_API void spline_pchip_set(int n, const double x[], const double f[], double d[]);

/// Writes into fe[0..ne-1] the interpolant's values at xe (best mostly increasing); points outside
/// [x[0], x[n-1]] are extrapolated from the first or last interval. The checks of
/// spline_pchip_set end the process the same way; ne < 1 only writes a message and returns.
PIND_API void spline_pchip_val(int n, const double x[], const double f[], const double d[], int ne,
                               const double xe[], double fe[]);

/// Evaluates the Hermite cubic on [x1, x2] with end values f1, f2 and end derivatives d1, d2 at
/// xe[0..ne-1] into fe, counting points left of x1 in next[0] and right of x2 in next[1]; returns
/// 0. ne < 1 gives -1 and x1 == x2 gives -2, each with a message on stderr, nothing written.
PIND_API int chfev(double x1, double x2, double f1, double f2, double d1, double d2, int ne,
                   const double xe[], double fe[], int next[2]);

/// Computes the recurrence coefficients b, c and the fit coefficients d (nterms each) of the
/// weighted least-squares polynomial through the points. Fewer distinct x than nterms, or a
/// weight that is not positive: a message on stderr and b, c, d are left untouched. The last b
/// keeps its undivided sum (least_val never reads it).
PIND_API void least_set(int point_num, const double x[], const double f[], const double w[],
                        int nterms, double b[], double c[], double d[]);

/// The fitted value at x from least_set's coefficients; 0 when nterms < 1.
PIND_API double least_val(int nterms, const double b[], const double c[], const double d[],
                          double x);

/// Three floats: a point or a vector in space, or any three values that belong together.
struct Vec3f {
    float x;  ///< First value: the x coordinate of a point or vector.
    float y;  ///< Second value: the y coordinate.
    float z;  ///< Third value: the z coordinate.
};

/// The parabola through (xs.x, ys.x), (xs.y, ys.y), (xs.z, ys.z), evaluated at x. Two equal
/// abscissas (or a NaN one) report an assertion through the debug object and give ys.x.
PIND_API float ParabolaValue3(const Vec3f& xs, const Vec3f& ys, float x);

/// The cubic Bézier curve with control points p0..p3 at t (t = 0 gives p0, t = 1 gives p3; other
/// t extrapolate the same cubic).
PIND_API Vec3f BezierPoint(const Vec3f& p0, const Vec3f& p1, const Vec3f& p2, const Vec3f& p3,
                           float t);

/// The curve's derivative with respect to t (not normalised; zero where the curve stalls).
PIND_API Vec3f BezierTangent(const Vec3f& p0, const Vec3f& p1, const Vec3f& p2, const Vec3f& p3,
                             float t);

/// The curve's arc length for t in [0, 1], to about 1e-6 relative; 0 for a curve that is a point,
/// NaN or infinity when a control point is.
PIND_API float BezierLength(const Vec3f& p0, const Vec3f& p1, const Vec3f& p2, const Vec3f& p3);

#endif  // PIND_CURVES_SPLINE_H_

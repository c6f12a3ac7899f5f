#include "pind/curves/spline.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <vector>

namespace {

// The product of the signs of a and b (-1, 0 or +1); a NaN counts as zero.
int SignTest(double a, double b) {
    const int signA = (a > 0.0) - (a < 0.0);
    const int signB = (b > 0.0) - (b < 0.0);
    return signA * signB;
}

// One message group in one write (stderr is unbuffered), then the end of the process.
[[noreturn]] void Fatal(const char* heading, const char* text, int code) {
    std::fprintf(stderr, "\n%s - Fatal error!\n%s", heading, text);
    std::exit(code);
}

// Ends the process unless there are at least two points with x strictly increasing. Returns
// whether x is also free of NaN, which lets the evaluator search it by bisection.
bool CheckPoints(const char* heading, int n, const double x[]) {
    if (n < 2) {
        Fatal(heading, "  Number of data points less than 2.\n", -1);
    }
    bool ordered = true;
    for (int i = 1; i < n; ++i) {
        if (x[i - 1] >= x[i]) {
            Fatal(heading, "  X array not strictly increasing.\n", -3);
        }
        if (!(x[i - 1] < x[i])) {
            ordered = false;
        }
    }
    return ordered;
}

// With x sorted, free of NaN and x[ir] <= v: the first interval end ir' > ir with v < x[ir'],
// or `last`. Gallops first, so walking forward a few intervals costs a few comparisons.
std::ptrdiff_t SkipIntervals(const double x[], std::ptrdiff_t ir, std::ptrdiff_t last, double v) {
    std::ptrdiff_t lo = ir + 1;
    std::ptrdiff_t hi = lo;
    std::ptrdiff_t step = 1;
    while (hi < last && x[hi] <= v) {
        lo = hi + 1;
        step *= 2;
        hi = std::min(last, lo + step);
    }
    return std::upper_bound(x + lo, x + hi, v) - x;
}

}  // namespace

void spline_pchip_set(int n, const double x[], const double f[], double d[]) {
    CheckPoints("SPLINE_PCHIP_SET", n, x);

    double h1 = x[1] - x[0];
    double del1 = (f[1] - f[0]) / h1;
    if (n == 2) {
        d[0] = del1;
        d[1] = del1;
        return;
    }
    double h2 = x[2] - x[1];
    double del2 = (f[2] - f[1]) / h2;
    double hsum = h1 + h2;

    // Three-point formula at the first point, kept shape-preserving.
    d[0] = ((hsum + h1) / hsum) * del1 + (-h1 / hsum) * del2;
    if (SignTest(d[0], del1) <= 0) {
        d[0] = 0.0;
    } else if (SignTest(del1, del2) < 0 && std::fabs(d[0]) > std::fabs(3.0 * del1)) {
        d[0] = 3.0 * del1;
    }

    // Interior points: a weighted harmonic mean of the two slopes where they agree in sign.
    for (int i = 1; i <= n - 2; ++i) {
        if (i > 1) {
            h1 = h2;
            del1 = del2;
            h2 = x[i + 1] - x[i];
            del2 = (f[i + 1] - f[i]) / h2;
            hsum = h1 + h2;
        }
        d[i] = 0.0;
        if (SignTest(del1, del2) > 0) {
            const double w1 = (hsum + h1) / (3.0 * hsum);
            const double w2 = (hsum + h2) / (3.0 * hsum);
            const double abs1 = std::fabs(del1);
            const double abs2 = std::fabs(del2);
            const double dmax = abs1 > abs2 ? abs1 : abs2;
            const double dmin = abs1 < abs2 ? abs1 : abs2;
            d[i] = dmin / (w1 * del1 / dmax + w2 * del2 / dmax);
        }
    }

    // Three-point formula at the last point.
    d[n - 1] = (-h2 / hsum) * del1 + ((hsum + h2) / hsum) * del2;
    if (SignTest(d[n - 1], del2) <= 0) {
        d[n - 1] = 0.0;
    } else if (SignTest(del1, del2) < 0 && std::fabs(d[n - 1]) > std::fabs(3.0 * del2)) {
        d[n - 1] = 3.0 * del2;
    }
}

int chfev(double x1, double x2, double f1, double f2, double d1, double d2, int ne,
          const double xe[], double fe[], int next[2]) {
    if (ne < 1) {
        std::fprintf(stderr,
                     "\nCHFEV - Fatal error!\n  Number of evaluation points is less than 1.\n"
                     "  NE = %d\n",
                     ne);
        return -1;
    }
    if (x1 == x2) {
        std::fprintf(stderr, "\nCHFEV - Fatal error!\n  The interval [X1,X2] is of zero length.\n");
        return -2;
    }
    // The cubic in the local variable s = xe - x1: f1 + s*(d1 + s*(c2 + s*c3)).
    const double h = x2 - x1;
    const double delta = (f2 - f1) / h;
    const double del1 = (d1 - delta) / h;
    const double del2 = (d2 - delta) / h;
    const double c2 = -(del1 + del1 + del2);
    const double c3 = (del1 + del2) / h;
    next[0] = 0;
    next[1] = 0;
    for (int j = 0; j < ne; ++j) {
        if (xe[j] < x1) {
            ++next[0];
        }
        if (xe[j] > x2) {
            ++next[1];
        }
        const double s = xe[j] - x1;
        fe[j] = f1 + s * (d1 + s * (c2 + s * c3));
    }
    return 0;
}

void spline_pchip_val(int n, const double x[], const double f[], const double d[], int ne,
                      const double xe[], double fe[]) {
    static const char kHeading[] = "SPLINE_PCHIP_VAL";
    const bool ordered = CheckPoints(kHeading, n, x);
    if (ne < 1) {
        std::fprintf(stderr, "\n%s - Fatal error!\n  Number of evaluation points less than 1.\n",
                     kHeading);
        return;
    }

    // Interval [x[ir-1], x[ir]] takes the points from jfirst on that lie left of x[ir]; the last
    // interval takes all that remain. Unsorted points send the walk back to an earlier interval.
    const std::ptrdiff_t last = n - 1;
    std::ptrdiff_t ir = 1;
    std::ptrdiff_t jfirst = 0;
    while (jfirst < ne) {
        if (ordered && ir < last && x[ir] <= xe[jfirst]) {
            ir = SkipIntervals(x, ir, last, xe[jfirst]);
        }
        std::ptrdiff_t j = ne;
        if (ir < last) {
            for (j = jfirst; j < ne && !(x[ir] <= xe[j]); ++j) {
            }
        }
        if (j != jfirst) {
            int next[2] = {0, 0};
            const int status = chfev(x[ir - 1], x[ir], f[ir - 1], f[ir], d[ir - 1], d[ir],
                                     static_cast<int>(j - jfirst), xe + jfirst, fe + jfirst, next);
            if (status < 0) {
                Fatal(kHeading, "  Error return from CHFEV.\n", -5);
            }
            if (next[1] != 0 && ir < last) {
                Fatal(kHeading, "  IR < N.\n", -5);
            }
            if (next[0] != 0 && ir >= 2) {
                std::ptrdiff_t back = -1;
                for (std::ptrdiff_t i = jfirst; i < j; ++i) {
                    if (xe[i] < x[ir - 1]) {
                        back = i;
                        break;
                    }
                }
                if (back < 0) {
                    Fatal(kHeading, "  Could not bracket the data point.\n", -5);
                }
                // Restart at that point, on the interval that holds it.
                std::ptrdiff_t k = 0;
                if (ordered) {
                    k = std::upper_bound(x, x + ir - 1, xe[back]) - x;
                } else {
                    while (k < ir - 1 && !(xe[back] < x[k])) {
                        ++k;
                    }
                }
                jfirst = back;
                ir = std::max<std::ptrdiff_t>(1, k);
                continue;
            }
            jfirst = j;
        }
        if (++ir > last) {
            break;
        }
    }
}

namespace {

// How many distinct values x holds, but counting stops at `enough`. Values compare exactly
// (-0 equals 0); a NaN equals nothing, so each one counts.
int CountDistinct(int n, const double x[], int enough) {
    std::set<double> seen;
    int nans = 0;
    for (int i = 0; i < n && nans + static_cast<int>(seen.size()) < enough; ++i) {
        if (std::isnan(x[i])) {
            ++nans;
        } else {
            seen.insert(x[i]);
        }
    }
    return nans + static_cast<int>(seen.size());
}

}  // namespace

void least_set(int point_num, const double x[], const double f[], const double w[], int nterms,
               double b[], double c[], double d[]) {
    const int distinct = CountDistinct(point_num, x, nterms);
    if (distinct < nterms) {
        std::fprintf(stderr,
                     "\nLEAST_SET - Fatal error!\n  The number of distinct X values must be\n"
                     "  at least NTERMS = %d\n  but the input data has only %d\n"
                     "  distinct entries.\n",
                     nterms, distinct);
        return;
    }
    for (int i = 0; i < point_num; ++i) {
        if (w[i] <= 0.0) {
            std::fprintf(stderr,
                         "\nLEAST_SET - Fatal error!\n  All weights W must be positive,\n"
                         "  but weight %d\n  is %g\n",
                         i, w[i]);
            return;
        }
    }
    if (nterms < 1) {
        return;
    }

    // p and pPrev hold the current and previous orthogonal polynomials at every point.
    const std::size_t points = point_num > 0 ? static_cast<std::size_t>(point_num) : 0;
    std::vector<double> s(static_cast<std::size_t>(nterms), 0.0);
    std::vector<double> pPrev(points, 0.0);
    std::vector<double> p(points, 1.0);
    std::fill(b, b + nterms, 0.0);
    std::fill(c, c + nterms, 0.0);
    std::fill(d, d + nterms, 0.0);
    for (int k = 0; k < nterms; ++k) {
        double sumD = 0.0;
        double sumB = 0.0;
        double sumS = 0.0;
        for (std::size_t i = 0; i < points; ++i) {
            sumD = sumD + w[i] * f[i] * p[i];
            sumB = sumB + w[i] * x[i] * p[i] * p[i];
            sumS = sumS + w[i] * p[i] * p[i];
        }
        s[k] = sumS;
        d[k] = sumD / sumS;
        if (k == nterms - 1) {
            b[k] = sumB;
            c[k] = 0.0;
            break;
        }
        b[k] = sumB / sumS;
        c[k] = k == 0 ? 0.0 : s[k] / s[k - 1];
        for (std::size_t i = 0; i < points; ++i) {
            const double pNew = (x[i] - b[k]) * p[i] - c[k] * pPrev[i];
            pPrev[i] = p[i];
            p[i] = pNew;
        }
    }
}

double least_val(int nterms, const double b[], const double c[], const double d[], double x) {
    // Clenshaw's backward recurrence over the three-term recurrence of the fit's polynomials.
    double px = 0.0;
    double pxm1 = 0.0;
    double pxm2 = 0.0;
    for (int i = nterms - 1; i >= 0; --i) {
        pxm2 = pxm1;
        pxm1 = px;
        if (i == nterms - 1) {
            px = d[i];
        } else {
            px = d[i] + (x - b[i]) * pxm1 - c[i + 1] * pxm2;
        }
    }
    return px;
}

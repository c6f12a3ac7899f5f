// The curves against values computed independently: SciPy's PchipInterpolator for the monotone
// cubic and an exact rational least-squares solve for the fits (make_reference.py).
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "pind/curves/spline.h"

namespace {

struct PchipReference {
    const char* name;
    std::vector<double> x, f, d, xe, fe;
};

struct LeastReference {
    const char* name;
    int nterms;
    std::vector<double> x, f, w, xe, fe;
};

#include "reference_data.inc"

void ExpectClose(const std::vector<double>& got, const std::vector<double>& want,
                 const char* what) {
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < got.size(); ++i) {
        EXPECT_NEAR(got[i], want[i], 1e-12 * std::fabs(want[i])) << what << " [" << i << "]";
    }
}

TEST(CurvesReference, PchipDerivativesAndValuesMatch) {
    for (const PchipReference& r : kPchipReference) {
        SCOPED_TRACE(r.name);
        const int n = static_cast<int>(r.x.size());
        std::vector<double> d(r.x.size(), -99.0);
        spline_pchip_set(n, r.x.data(), r.f.data(), d.data());
        // Where the reference derivative is zero the rule sets it to exactly zero.
        ExpectClose(d, r.d, "d");
        std::vector<double> fe(r.xe.size(), -99.0);
        spline_pchip_val(n, r.x.data(), r.f.data(), d.data(), static_cast<int>(r.xe.size()),
                         r.xe.data(), fe.data());
        ExpectClose(fe, r.fe, "fe");
    }
}

TEST(CurvesReference, LeastSquaresValuesMatch) {
    for (const LeastReference& r : kLeastReference) {
        SCOPED_TRACE(r.name);
        std::vector<double> b(r.nterms), c(r.nterms), d(r.nterms);
        least_set(static_cast<int>(r.x.size()), r.x.data(), r.f.data(), r.w.data(), r.nterms,
                  b.data(), c.data(), d.data());
        std::vector<double> fe;
        for (double x : r.xe) {
            fe.push_back(least_val(r.nterms, b.data(), c.data(), d.data(), x));
        }
        ExpectClose(fe, r.fe, "fe");
    }
    EXPECT_EQ(least_val(0, nullptr, nullptr, nullptr, 1.0), 0.0);  // no terms
}

}  // namespace

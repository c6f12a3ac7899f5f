// Point lists in the `pind curve` text form: "x y" and "x y w" lines are data, single numbers are
// evaluation points. Data that would end the process (fewer than two points, x not increasing)
// is only fitted. Checks that the walk over unsorted evaluation points gives each point the
// value it gets in sorted order.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "pind/curves/spline.h"

namespace {

bool Same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::istringstream lines(text);
    std::vector<double> x, f, w, xe;
    for (std::string line; std::getline(lines, line);) {
        std::vector<double> v;
        const char* at = line.c_str();
        for (char* end = nullptr; *at != '\0'; at = end) {
            const double value = std::strtod(at, &end);
            if (end == at) {
                break;
            }
            v.push_back(value);
        }
        if (v.size() == 1) {
            xe.push_back(v[0]);
        } else if (v.size() == 2 || v.size() == 3) {
            x.push_back(v[0]);
            f.push_back(v[1]);
            w.push_back(v.size() == 3 ? v[2] : 1.0);
        }
    }
    const int n = static_cast<int>(x.size());

    const int terms = 1 + static_cast<int>(size % 6);
    std::vector<double> b(terms), c(terms), d(terms);
    least_set(n, x.data(), f.data(), w.data(), terms, b.data(), c.data(), d.data());
    for (double v : xe) {
        least_val(terms, b.data(), c.data(), d.data(), v);
    }

    bool increasing = n >= 2;
    bool finiteOrder = true;
    for (int i = 1; i < n; ++i) {
        increasing = increasing && !(x[i - 1] >= x[i]);
        finiteOrder = finiteOrder && x[i - 1] < x[i];
    }
    if (!increasing) {
        return 0;
    }
    std::vector<double> slopes(x.size());
    spline_pchip_set(n, x.data(), f.data(), slopes.data());
    if (xe.empty()) {
        return 0;
    }
    std::vector<double> fe(xe.size());
    spline_pchip_val(n, x.data(), f.data(), slopes.data(), static_cast<int>(xe.size()), xe.data(),
                     fe.data());
    if (!finiteOrder) {
        return 0;  // a NaN abscissa makes the interval a point lands in depend on the walk
    }
    std::vector<double> sorted;
    for (double v : xe) {
        if (!std::isnan(v)) {
            sorted.push_back(v);
        }
    }
    std::sort(sorted.begin(), sorted.end());
    if (sorted.empty()) {
        return 0;
    }
    std::vector<double> sortedFe(sorted.size());
    spline_pchip_val(n, x.data(), f.data(), slopes.data(), static_cast<int>(sorted.size()),
                     sorted.data(), sortedFe.data());
    for (size_t i = 0; i < xe.size(); ++i) {
        if (std::isnan(xe[i])) {
            continue;
        }
        const size_t k = std::lower_bound(sorted.begin(), sorted.end(), xe[i]) - sorted.begin();
        if (!Same(fe[i], sortedFe[k])) {
            std::abort();
        }
    }
    return 0;
}

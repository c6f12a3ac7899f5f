// The monotone cubic (derivatives, then values at as many sorted points) and the least-squares
// fit. The cost per point should stay flat as the counts grow: both walks are linear.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "pind/curves/spline.h"

namespace {

struct Data {
    std::vector<double> x, f, w, xe;
};

Data MakeData(int n) {
    Data data;
    for (int i = 0; i < n; ++i) {
        data.x.push_back(i + 0.3 * std::sin(i * 0.7));
        data.f.push_back(std::sin(i * 0.001) + 0.1 * std::cos(i * 0.37));
        data.w.push_back(1.0 + (i % 3));
        // Sorted evaluation points over the data and a little past both ends.
        data.xe.push_back(-2.0 + (n + 3.0) * i / n);
    }
    return data;
}

void Require(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "curves_bench: %s\n", what);
        std::abort();
    }
}

void BM_PchipSetAndVal(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const Data data = MakeData(n);
    std::vector<double> d(n), fe(n);
    // The curve passes through its data points.
    spline_pchip_set(n, data.x.data(), data.f.data(), d.data());
    spline_pchip_val(n, data.x.data(), data.f.data(), d.data(), n, data.x.data(), fe.data());
    for (int i = 0; i < n; ++i) {
        Require(std::fabs(fe[i] - data.f[i]) <= 1e-12, "the cubic misses a data point");
    }
    for (auto _ : state) {
        spline_pchip_set(n, data.x.data(), data.f.data(), d.data());
        spline_pchip_val(n, data.x.data(), data.f.data(), d.data(), n, data.xe.data(), fe.data());
        benchmark::DoNotOptimize(fe.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
    state.counters["per_point"] =
        benchmark::Counter(static_cast<double>(n), benchmark::Counter::kIsIterationInvariantRate |
                                                       benchmark::Counter::kInvert);
}
BENCHMARK(BM_PchipSetAndVal)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

void BM_LeastSet(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const int terms = static_cast<int>(state.range(1));
    const Data data = MakeData(n);
    std::vector<double> b(terms), c(terms), d(terms);
    least_set(n, data.x.data(), data.f.data(), data.w.data(), terms, b.data(), c.data(), d.data());
    Require(std::isfinite(least_val(terms, b.data(), c.data(), d.data(), n / 2.0)),
            "the fit is not finite");
    for (auto _ : state) {
        least_set(n, data.x.data(), data.f.data(), data.w.data(), terms, b.data(), c.data(),
                  d.data());
        benchmark::DoNotOptimize(d.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
    state.counters["per_point"] =
        benchmark::Counter(static_cast<double>(n), benchmark::Counter::kIsIterationInvariantRate |
                                                       benchmark::Counter::kInvert);
}
BENCHMARK(BM_LeastSet)->Args({100000, 8})->Unit(benchmark::kMicrosecond);

}  // namespace

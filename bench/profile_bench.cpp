// The cost of one profiler scope, off and on, beside what a hand-made timer costs: a pair of
// steady_clock reads, and that pair plus a std::map<std::string, ...> update per call.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

#include "pind/profile/Profiler.h"

namespace {

void Configure(bool on) {
    pind::ProfileRestart();
    pind::ProfileSettings settings;
    settings.nProfile = on ? 1 : 0;
    pind::ProfileConfigure(settings);
}

void BM_ScopeDisabled(benchmark::State& state) {
    Configure(false);
    for (auto _ : state) {
        PIND_PROFILE_SCOPE("CScene::Draw");
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_ScopeDisabled);

void BM_ScopeEnabled(benchmark::State& state) {
    Configure(true);
    {
        // Checked once: the scope counts.
        PIND_PROFILE_SCOPE("CScene::Draw");
    }
    for (auto _ : state) {
        PIND_PROFILE_SCOPE("CScene::Draw");
        benchmark::ClobberMemory();
    }
    Configure(false);
}
BENCHMARK(BM_ScopeEnabled);

void BM_SteadyClockPair(benchmark::State& state) {
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        benchmark::ClobberMemory();
        const auto end = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(end - start);
    }
}
BENCHMARK(BM_SteadyClockPair);

struct Stats {
    double ms = 0;
    uint32_t count = 0;
    double max = 0;
};

void BM_SteadyClockPairPlusMap(benchmark::State& state) {
    std::map<std::string, Stats> sections;
    // A map the size of a small game's section list, so the look-up is not a one-node walk.
    for (int i = 0; i < 32; ++i) {
        sections["CSection" + std::to_string(i)];
    }
    const char* name = "CScene::Draw";
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        benchmark::ClobberMemory();
        const auto end = std::chrono::steady_clock::now();
        const double ms = std::chrono::duration<double, std::milli>(end - start).count();
        Stats& s = sections[name];
        s.ms += ms;
        ++s.count;
        s.max = s.max < ms ? ms : s.max;
    }
    if (sections[name].count == 0) {
        state.SkipWithError("map not updated");
    }
}
BENCHMARK(BM_SteadyClockPairPlusMap);

}  // namespace

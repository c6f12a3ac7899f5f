// The runtime string helpers against the C library's nearest equivalents.
#include <benchmark/benchmark.h>
#include <strings.h>

#include <cstdio>
#include <cstring>

#include "pind/platform/CrtString.h"

namespace {

void BM_ItoaS(benchmark::State& state) {
    char buf[16];
    if (pind::platform::ItoaS(-123456789, buf, sizeof buf, 10) != 0 ||
        std::strcmp(buf, "-123456789") != 0) {
        state.SkipWithError("ItoaS gives a wrong result");
        return;
    }
    int32_t v = -123456789;
    for (auto _ : state) {
        benchmark::DoNotOptimize(pind::platform::ItoaS(v, buf, sizeof buf, 10));
        benchmark::DoNotOptimize(buf);
        ++v;
    }
}
BENCHMARK(BM_ItoaS);

void BM_Snprintf(benchmark::State& state) {
    char buf[16];
    int32_t v = -123456789;
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::snprintf(buf, sizeof buf, "%d", v));
        benchmark::DoNotOptimize(buf);
        ++v;
    }
}
BENCHMARK(BM_Snprintf);

const char kLeft[] = "Interface/Config/GameSetup.ini";
const char kRight[] = "interface/config/gamesetup.INI";

void BM_Stricmp(benchmark::State& state) {
    if (pind::platform::Stricmp(kLeft, kRight) != 0) {
        state.SkipWithError("Stricmp gives a wrong result");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(pind::platform::Stricmp(kLeft, kRight));
    }
}
BENCHMARK(BM_Stricmp);

void BM_Strcasecmp(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(strcasecmp(kLeft, kRight));
    }
}
BENCHMARK(BM_Strcasecmp);

}  // namespace

// The runtime string helpers against the C library's nearest equivalents.
#include <benchmark/benchmark.h>
#include <strings.h>

#include <cstdio>
#include <cstring>
#include <string>

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

// Case-blind compares against glibc's strcasecmp on the same pairs, a pair per argument: 0, two
// equal-but-for-case file paths (31 bytes); 1, the same with a difference at byte 12; 2, two
// equal-but-for-case 200-byte texts; 3, short names ("ini" / "INI"). Every call sees the same
// pointers, so both run from cache.
struct ComparePair {
    const char* left;
    const char* right;
};

const ComparePair& Pair(int64_t n) {
    static const std::string longLeft = [] {
        std::string text;
        while (text.size() < 200) {
            text += "Data/Interface/Config/";
        }
        return text.substr(0, 200);
    }();
    static const std::string longRight = [] {
        std::string text = longLeft;
        for (char& c : text) {
            c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
        }
        return text;
    }();
    static const ComparePair pairs[] = {
        {"Interface/Config/GameSetup.ini", "interface/config/gamesetup.INI"},
        {"Interface/Config/GameSetup.ini", "interface/cOnfig/gamesetup.INI"},
        {longLeft.c_str(), longRight.c_str()},
        {"ini", "INI"},
    };
    return pairs[n];
}

void BM_Stricmp(benchmark::State& state) {
    const ComparePair& pair = Pair(state.range(0));
    if ((pind::platform::Stricmp(pair.left, pair.right) == 0) !=
        (strcasecmp(pair.left, pair.right) == 0)) {
        state.SkipWithError("Stricmp gives a wrong result");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(pind::platform::Stricmp(pair.left, pair.right));
    }
}
BENCHMARK(BM_Stricmp)->DenseRange(0, 3);

void BM_Strcasecmp(benchmark::State& state) {
    const ComparePair& pair = Pair(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(strcasecmp(pair.left, pair.right));
    }
}
BENCHMARK(BM_Strcasecmp)->DenseRange(0, 3);

// Strnicmp against strncasecmp over the first 24 bytes of the same pairs.
void BM_Strnicmp(benchmark::State& state) {
    const ComparePair& pair = Pair(state.range(0));
    if ((pind::platform::Strnicmp(pair.left, pair.right, 24) == 0) !=
        (strncasecmp(pair.left, pair.right, 24) == 0)) {
        state.SkipWithError("Strnicmp gives a wrong result");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(pind::platform::Strnicmp(pair.left, pair.right, 24));
    }
}
BENCHMARK(BM_Strnicmp)->DenseRange(0, 3);

void BM_Strncasecmp(benchmark::State& state) {
    const ComparePair& pair = Pair(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(strncasecmp(pair.left, pair.right, 24));
    }
}
BENCHMARK(BM_Strncasecmp)->DenseRange(0, 3);

}  // namespace

// The checked parsers against strtol/strtoull on the same texts, and the safe-string helpers.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "pind/strings/Convert.h"
#include "pind/strings/SafeString.h"

namespace {

const std::vector<std::string>& Texts() {
    static const std::vector<std::string> texts = {
        "0",          "42",  "-17", "123456789", "0x1F", "0xdeadbeef", "2147483647", "-2147483648",
        "4000000000", "12a", "0x",  "99999",     "7",    "-100000",    "0xFFFF",     "31415926",
    };
    return texts;
}

template <typename Fn>
void Run(benchmark::State& state, Fn fn) {
    const std::vector<std::string>& texts = Texts();
    int64_t sum = 0;
    for (auto _ : state) {
        for (const std::string& text : texts) {
            sum += static_cast<int64_t>(fn(text));
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * texts.size()));
}

void BM_StrToInt(benchmark::State& state) {
    if (StrToInt("0x1F") != 31 || StrToInt("-17") != -17 || StrToInt("12a") != 0) {
        state.SkipWithError("StrToInt gives a wrong result");
        return;
    }
    Run(state, [](const std::string& t) { return StrToInt(t); });
}
BENCHMARK(BM_StrToInt);

void BM_Strtol(benchmark::State& state) {
    Run(state, [](const std::string& t) { return std::strtol(t.c_str(), nullptr, 0); });
}
BENCHMARK(BM_Strtol);

void BM_StrToUInt64(benchmark::State& state) {
    if (StrToUInt64("0xdeadbeef") != 0xdeadbeefu) {
        state.SkipWithError("StrToUInt64 gives a wrong result");
        return;
    }
    Run(state, [](const std::string& t) { return StrToUInt64(t); });
}
BENCHMARK(BM_StrToUInt64);

void BM_SzToUInt64(benchmark::State& state) {
    Run(state, [](const std::string& t) { return SzToUInt64(t.c_str()); });
}
BENCHMARK(BM_SzToUInt64);

void BM_Strtoull(benchmark::State& state) {
    Run(state, [](const std::string& t) { return std::strtoull(t.c_str(), nullptr, 0); });
}
BENCHMARK(BM_Strtoull);

void BM_SzToDouble(benchmark::State& state) {
    Run(state, [](const std::string& t) { return SzToDouble(t.c_str()); });
}
BENCHMARK(BM_SzToDouble);

void BM_Atof(benchmark::State& state) {
    Run(state, [](const std::string& t) { return std::atof(t.c_str()); });
}
BENCHMARK(BM_Atof);

void BM_HasGb2312Char(benchmark::State& state) {
    const std::string text(256, 'a');
    for (auto _ : state) {
        benchmark::DoNotOptimize(HasGb2312Char(text.c_str()));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 256);
}
BENCHMARK(BM_HasGb2312Char);

}  // namespace

// The checked formatter's whole job (construct, five appends, the text, destroy) against snprintf
// and fmt::format_to writing the same bytes for the same five fields. The %s text is a literal in
// one pair of runs and a heap string in another, since the pointer check costs differ by where
// the text lives.
#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "pind/format/StringFormat.h"

namespace {

constexpr const char* kFormat = "%5.3d|%-8s|%08.2f|%#x|%lld";
constexpr const char* kWant = "  007|hello   |00003.14|0xff|123456789012";
const int kInt = 7;
const double kReal = 3.14159;
const unsigned kHex = 255;
const long long kWide = 123456789012LL;

const char* Text(bool heap) {
    static const std::string s_heap(std::string("hello") + std::string(40, '\0'));  // not SSO
    return heap ? s_heap.c_str() : "hello";
}

std::string Ours(const char* text) {
    CStringFormatter f(kFormat, __FILE__, __LINE__);
    f.AddArg(kInt).AddArg(text).AddArg(kReal).AddArg(kHex).AddArg(kWide);
    return f.GetResult();
}

void Check(benchmark::State& state, const std::string& got) {
    if (got != kWant) {
        state.SkipWithError(("wrong text: " + got).c_str());
    }
}

void BM_CStringFormatter(benchmark::State& state) {
    const char* text = Text(state.range(0) != 0);
    Check(state, Ours(text));
    for (auto _ : state) {
        CStringFormatter f(kFormat, __FILE__, __LINE__);
        f.AddArg(kInt).AddArg(text).AddArg(kReal).AddArg(kHex).AddArg(kWide);
        benchmark::DoNotOptimize(f.GetResult().data());
    }
}

void BM_Snprintf(benchmark::State& state) {
    const char* text = Text(state.range(0) != 0);
    char buffer[128];
    std::snprintf(buffer, sizeof buffer, kFormat, kInt, text, kReal, kHex, kWide);
    Check(state, buffer);
    for (auto _ : state) {
        std::snprintf(buffer, sizeof buffer, kFormat, kInt, text, kReal, kHex, kWide);
        benchmark::DoNotOptimize(buffer);
        benchmark::ClobberMemory();
    }
}

// {fmt} has no minimum digit count for integers; "  {:03}" gives the same bytes for this value.
void BM_FmtFormatTo(benchmark::State& state) {
    const char* text = Text(state.range(0) != 0);
    auto write = [text](fmt::memory_buffer& out) {
        fmt::format_to(std::back_inserter(out), "  {:03}|{:<8}|{:08.2f}|{:#x}|{}", kInt, text,
                       kReal, kHex, kWide);
    };
    fmt::memory_buffer check;
    write(check);
    Check(state, fmt::to_string(check));
    for (auto _ : state) {
        fmt::memory_buffer out;
        write(out);
        benchmark::DoNotOptimize(out.data());
    }
}

}  // namespace

// Argument: 0 = literal text, 1 = heap text.
BENCHMARK(BM_CStringFormatter)->Arg(0)->Arg(1);
BENCHMARK(BM_Snprintf)->Arg(0)->Arg(1);
BENCHMARK(BM_FmtFormatTo)->Arg(0)->Arg(1);

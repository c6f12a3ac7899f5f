// JSON parse-and-free of a generated 4 MiB document and of one small server message, side by side
// with RapidJSON (Document::Parse, default allocator) and cJSON (cJSON_ParseWithLength +
// cJSON_Delete) on the same bytes; and ConvertServerString of a typical nested message.
#include <benchmark/benchmark.h>
#include <cJSON.h>
#include <rapidjson/document.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "pind/json/FmtJson.h"
#include "pind/servertext/ServerString.h"

namespace {

// Records of ints, 52-bit ints, decimals, exponents, escaped strings and nested arrays.
const std::string& LargeDocument() {
    static const std::string text = [] {
        std::string out = "[";
        out.reserve(4u << 20);
        char rec[512];
        uint64_t x = 0x9E3779B97F4A7C15ull;
        for (int i = 0; (out.size() < (4u << 20) - 600); ++i) {
            x ^= x << 13;
            x ^= x >> 7;
            x ^= x << 17;
            std::snprintf(rec, sizeof rec,
                          "%s{\"id\": %d, \"big\": %llu, \"price\": %u.%02u, \"ratio\": %.6e, "
                          "\"name\": \"item \\\"%d\\\"\\t\\u00e9\\u4e2d\\n\", \"tags\": [%d, [%d, "
                          "%d], [\"a\", [true, false, null]]], \"pos\": {\"x\": -%u, \"y\": %u.5}}",
                          i == 0 ? "" : ",\n", i,
                          static_cast<unsigned long long>(x & ((1ull << 52) - 1)),
                          static_cast<unsigned>(x % 100000), static_cast<unsigned>(x % 100),
                          static_cast<double>(x % 1000000) * 1.0e-9, i, i % 5, i % 7, i % 11,
                          static_cast<unsigned>(x % 4096), static_cast<unsigned>(x % 333));
            out += rec;
        }
        out += "]";
        return out;
    }();
    return text;
}

const std::string kSmall = R"(["@@1203", 5, "abc", ["@@77", 3], 1.5, 3000000000])";

const std::string& Input(int which) { return which == 0 ? LargeDocument() : kSmall; }

void Check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "json_bench: %s failed before the loop\n", what);
        std::abort();
    }
}

void BM_Pind(benchmark::State& state) {
    const std::string& text = Input(static_cast<int>(state.range(0)));
    JsonNode* probe = JsonParse(text.data(), text.size());
    Check(probe != nullptr && JsonArraySize(probe) > 0, "JsonParse");
    JsonFree(probe);
    for (auto _ : state) {
        JsonNode* root = JsonParse(text.data(), text.size());
        benchmark::DoNotOptimize(root);
        JsonFree(root);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_RapidJson(benchmark::State& state) {
    const std::string& text = Input(static_cast<int>(state.range(0)));
    {
        rapidjson::Document probe;
        probe.Parse(text.data(), text.size());
        Check(!probe.HasParseError() && probe.IsArray() && probe.Size() > 0, "RapidJSON");
    }
    for (auto _ : state) {
        rapidjson::Document doc;
        doc.Parse(text.data(), text.size());
        benchmark::DoNotOptimize(doc.IsArray());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void BM_CJson(benchmark::State& state) {
    const std::string& text = Input(static_cast<int>(state.range(0)));
    cJSON* probe = cJSON_ParseWithLength(text.data(), text.size());
    Check(probe != nullptr && cJSON_GetArraySize(probe) > 0, "cJSON");
    cJSON_Delete(probe);
    for (auto _ : state) {
        cJSON* root = cJSON_ParseWithLength(text.data(), text.size());
        benchmark::DoNotOptimize(root);
        cJSON_Delete(root);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

// Range 0: the 4 MiB document; 1: the small message.
BENCHMARK(BM_Pind)->Arg(0)->Arg(1);
BENCHMARK(BM_RapidJson)->Arg(0)->Arg(1);
BENCHMARK(BM_CJson)->Arg(0)->Arg(1);

const char* DemoTable(uint32_t id) {
    switch (id) {
        case 1002:
            return "{} found {} chests: {}";
        case 1003:
            return "{} gold";
        default:
            return "";
    }
}

void BM_ConvertServerString(benchmark::State& state) {
    SetStringIdCallback(DemoTable);
    const std::string message = R"(["@@1002", "Aria", 3, ["@@1003", 1500]])";
    std::string out;
    ConvertServerString(message, out);
    Check(out == "Aria found 3 chests: 1500 gold", "ConvertServerString");
    for (auto _ : state) {
        ConvertServerString(message, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    SetStringIdCallback(nullptr);
}
BENCHMARK(BM_ConvertServerString);

}  // namespace

// INI loading and look-ups against inih, on the same generated text in the same run.
// The text is 2,000 sections of about 40 `key_NN = words with spaces` lines, with `;` and `#`
// comment lines and some `value ; inline comment` lines, every line under 200 bytes, made from a
// fixed seed. Load is timed with the reader's destruction (the whole job a client pays for), from
// a package held in memory; inih's ini_parse_string runs over the same bytes, once with a handler
// that only counts (its floor) and once with one that keeps every pair in maps it then frees.
// The reader makes a section's ordered key table only when asked for it, so a second figure times
// a load whose every table is then made, against inih's maps.
#include <benchmark/benchmark.h>
#include <ini.h>

#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "pind/client/PackFileClient.h"
#include "pind/config/PindIni.h"
#include "pind/files/MemoryPackage.h"
#include "pind/files/PackFile.h"
#include "pind/platform/Package.h"

namespace {

constexpr int kKeys = 40;

// About `nBytes` of text: whole sections of kKeys key lines plus comments, from seed 1234.
std::string MakeIni(size_t nBytes) {
    static const char* const kWords[] = {"alpha", "bravo", "charlie", "delta", "echo",  "foxtrot",
                                         "golf",  "hotel", "india",   "julia", "kilo",  "lima",
                                         "mike",  "nov",   "oscar",   "papa",  "quebec"};
    std::mt19937 rng(1234);
    auto pick = [&rng](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    std::string out;
    out.reserve(nBytes + 4096);
    for (int s = 0; out.size() < nBytes; ++s) {
        out += "[section_" + std::to_string(s) + "]\n";
        for (int k = 0; k < kKeys; ++k) {
            if (pick(8) == 0) {
                out += pick(2) == 0 ? "; a comment about the next key\n" : "# another remark\n";
            }
            char key[16];
            std::snprintf(key, sizeof key, "key_%02d", k);
            out += key;
            out += " = ";
            for (int w = 1 + pick(8); w > 0; --w) {
                out += kWords[pick(17)];
                out += w > 1 ? " " : "";
            }
            if (pick(6) == 0) {
                out += " ; inline comment";
            }
            out += '\n';
        }
    }
    return out;
}

const std::string& IniText(size_t nMiB) {
    static std::map<size_t, std::string> texts;
    auto it = texts.find(nMiB);
    if (it == texts.end()) {
        it = texts.emplace(nMiB, MakeIni(nMiB << 20)).first;
    }
    return it->second;
}

int SectionsOf(const std::string& text) {
    int n = 0;
    for (size_t at = text.find("\n["); at != std::string::npos; at = text.find("\n[", at + 1)) {
        ++n;
    }
    return n + 1;
}

// Installs the host and a package serving `text` as "bench.ini" for one benchmark's life.
struct Served {
    explicit Served(const std::string& text) {
        package.AddFile("bench.ini", text);
        SetClient(&client);
        pind::platform::SetPackage(&package);
    }
    ~Served() {
        pind::platform::SetPackage(nullptr);
        SetClient(nullptr);
    }
    CPackFileClient client{/*bPackageFirst=*/true};
    CMemoryPackage package;
};

// The reader keeps the blank before '=' in the key (only tabs are trimmed), so keys are looked
// up as "key_NN ".
bool Loaded(const CPindIni& ini, const std::string& text) {
    return ini.GetSectionCount() == SectionsOf(text) &&
           ini.GetString("section_0", "key_00 ", nullptr) != nullptr &&
           ini.GetString("section_0", "key_39 ", nullptr) != nullptr;
}

// Ours: open from the package, parse, build the maps, and free them all.
void BM_IniLoad(benchmark::State& state) {
    const std::string& text = IniText(static_cast<size_t>(state.range(0)));
    Served served(text);
    {
        CPindIni ini;
        if (!ini.Load("bench.ini") || !Loaded(ini, text)) {
            state.SkipWithError("the generated file did not load as expected");
            return;
        }
    }
    for (auto _ : state) {
        CPindIni ini;
        benchmark::DoNotOptimize(ini.Load("bench.ini"));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_IniLoad)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);

// Ours with every key table made (GetSections), then freed: inih's maps job.
void BM_IniLoadAllTables(benchmark::State& state) {
    const std::string& text = IniText(static_cast<size_t>(state.range(0)));
    Served served(text);
    for (auto _ : state) {
        CPindIni ini;
        ini.Load("bench.ini");
        size_t nPairs = 0;
        for (const CPindIni::SectionRecord* pRecord : ini.GetSections()) {
            nPairs += pRecord->pKeys->size();
        }
        benchmark::DoNotOptimize(nPairs);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_IniLoadAllTables)->Arg(4)->Unit(benchmark::kMillisecond);

int CountHandler(void* user, const char*, const char*, const char*) {
    ++*static_cast<int*>(user);
    return 1;
}

// inih's floor: the same bytes parsed, each pair only counted.
void BM_InihCount(benchmark::State& state) {
    const std::string& text = IniText(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        int n = 0;
        benchmark::DoNotOptimize(ini_parse_string(text.c_str(), CountHandler, &n));
        benchmark::DoNotOptimize(n);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_InihCount)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);

using Tables = std::map<std::string, std::map<std::string, std::string, std::less<>>, std::less<>>;

int MapHandler(void* user, const char* section, const char* name, const char* value) {
    (*static_cast<Tables*>(user))[section][name] = value;
    return 1;
}

// inih doing our whole job: the same bytes parsed into section and key maps, then freed.
void BM_InihMaps(benchmark::State& state) {
    const std::string& text = IniText(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        Tables tables;
        benchmark::DoNotOptimize(ini_parse_string(text.c_str(), MapHandler, &tables));
        benchmark::DoNotOptimize(tables);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_InihMaps)->Arg(4)->Unit(benchmark::kMillisecond);

// 4,096 (section, key) pairs drawn from every section and key of the 4 MiB file, seed 99.
struct LookupSet {
    std::vector<std::string> sections;
    std::vector<std::string> keys;
};

LookupSet MakePairs(int nSections, const char* pszKeyFormat) {
    LookupSet set;
    std::mt19937 rng(99);
    char key[16];
    for (int i = 0; i < 4096; ++i) {
        set.sections.push_back("section_" +
                               std::to_string(rng() % static_cast<unsigned>(nSections)));
        std::snprintf(key, sizeof key, pszKeyFormat, rng() % kKeys);
        set.keys.emplace_back(key);
    }
    return set;
}

// GetString over the loaded 4 MiB reader, cycling through the first N pairs: 16 stay in cache,
// 4,096 reach all over the maps. The first pass is left out (warm-up).
void BM_IniGetString(benchmark::State& state) {
    const std::string& text = IniText(4);
    Served served(text);
    CPindIni ini;
    ini.Load("bench.ini");
    const LookupSet pairs = MakePairs(SectionsOf(text), "key_%02u ");
    const size_t nPairs = static_cast<size_t>(state.range(0));
    for (size_t i = 0; i < nPairs; ++i) {
        if (*ini.GetString(pairs.sections[i].c_str(), pairs.keys[i].c_str(), "") == '\0') {
            state.SkipWithError("a pair was missing");
            return;
        }
    }
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            ini.GetString(pairs.sections[i].c_str(), pairs.keys[i].c_str(), ""));
        i = i + 1 == nPairs ? 0 : i + 1;
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_IniGetString)->Arg(16)->Arg(4096);

// The same pairs looked up in the maps inih's handler built: the plain ordered-map cost.
void BM_MapsFind(benchmark::State& state) {
    const std::string& text = IniText(4);
    Tables tables;
    ini_parse_string(text.c_str(), MapHandler, &tables);
    const LookupSet pairs = MakePairs(SectionsOf(text), "key_%02u");
    const size_t nPairs = static_cast<size_t>(state.range(0));
    size_t i = 0;
    for (auto _ : state) {
        const auto itSection = tables.find(pairs.sections[i]);
        benchmark::DoNotOptimize(itSection->second.find(pairs.keys[i])->second.c_str());
        i = i + 1 == nPairs ? 0 : i + 1;
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_MapsFind)->Arg(16)->Arg(4096);

}  // namespace

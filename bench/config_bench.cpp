// INI loading and look-ups: Load of a generated 4 MiB file (2,000 sections x 40 keys) from a
// package in memory and from disk, GetInt/GetString on the loaded reader, and inih's
// ini_parse_string on the same text (with a counting handler and with one that builds maps).
#include <benchmark/benchmark.h>
#include <ini.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "pind/client/PindClient.h"
#include "pind/config/PindIni.h"
#include "pind/files/PackFile.h"
#include "pind/platform/Package.h"
#include "pind/platform/System.h"

namespace {

constexpr int kSections = 2000;
constexpr int kKeys = 40;

// Key lines are padded to 51 bytes so the whole file comes to about 4 MiB.
const std::string& IniText() {
    static const std::string text = [] {
        std::string out;
        out.reserve(4u << 20);
        char line[128];
        for (int s = 0; s < kSections; ++s) {
            std::snprintf(line, sizeof line, "[section_%04d]\n", s);
            out += line;
            for (int k = 0; k < kKeys; ++k) {
                int n = std::snprintf(line, sizeof line, "key_%02d=%d", k, s * kKeys + k);
                for (; n < 50; ++n) {
                    line[n] = n % 7 == 0 ? ' ' : 'v';
                }
                line[n++] = '\n';
                out.append(line, static_cast<size_t>(n));
            }
        }
        return out;
    }();
    return text;
}

class MemoryPackage : public pind::platform::IPindPackage {
public:
    size_t pos = 0;
    int Open(const char*, pind::platform::PackHandle* handle) override {
        pos = 0;
        *handle = this;
        return 0;
    }
    uint32_t GetLen(pind::platform::PackHandle) override {
        return static_cast<uint32_t>(IniText().size());
    }
    uint32_t Read(void* buffer, uint32_t size, uint32_t count,
                  pind::platform::PackHandle) override {
        const std::string& text = IniText();
        const size_t want = static_cast<size_t>(size) * count;
        const size_t n = want < text.size() - pos ? want : text.size() - pos;
        std::memcpy(buffer, text.data() + pos, n);
        pos += n;
        return static_cast<uint32_t>(n);
    }
    void Close(pind::platform::PackHandle) override {}
    int Exist(const char*, int) override { return 1; }
    int Dump(const char*, void**, int32_t*, int) override { return -1; }
    void Undump(void*) override {}
};

// Opens names with PackFOpen; `package` turns package-first mode on.
class BenchClient : public IPindClientNone {
public:
    explicit BenchClient(bool package) : m_package(package) {}
    bool IsPackageInUse() override { return m_package; }
    int GetPackageMode() override { return 1; }
    CPackFile* OpenFile(const char* name, const char* mode, bool) override {
        return PackFOpen(name, mode);
    }
    CPackFile* OpenFileEx(const char* name, const char* mode, bool, bool) override {
        return PackFOpen(name, mode);
    }

private:
    bool m_package;
};

// The generated text as a temp file, removed at exit.
struct DiskCopy {
    DiskCopy()
        : path(
              (std::filesystem::temp_directory_path() /
               ("pind-config-bench-" + std::to_string(pind::platform::CurrentProcessId()) + ".ini"))
                  .string()) {
        if (std::FILE* f = std::fopen(path.c_str(), "wb")) {
            std::fwrite(IniText().data(), 1, IniText().size(), f);
            std::fclose(f);
        }
    }
    ~DiskCopy() { std::remove(path.c_str()); }
    std::string path;
};

const std::string& DiskFile() {
    static const DiskCopy copy;
    return copy.path;
}

void CheckLoaded(benchmark::State& state, const CPindIni& ini) {
    if (ini.GetSectionCount() != kSections || ini.GetInt("section_1999", "key_39", -1) != 79999) {
        state.SkipWithError("the generated file did not load as expected");
    }
}

// Times Load alone; freeing the sections afterwards is left out of the figure.
void LoadOnce(benchmark::State& state, const char* name) {
    auto* ini = new CPindIni();
    benchmark::DoNotOptimize(ini->Load(name));
    state.PauseTiming();
    delete ini;
    state.ResumeTiming();
}

void BM_LoadPackage(benchmark::State& state) {
    BenchClient client(/*package=*/true);
    MemoryPackage package;
    SetClient(&client);
    pind::platform::SetPackage(&package);
    {
        CPindIni ini;
        ini.Load("bench.ini");
        CheckLoaded(state, ini);
    }
    for (auto _ : state) {
        LoadOnce(state, "bench.ini");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * IniText().size()));
    pind::platform::SetPackage(nullptr);
    SetClient(nullptr);
}
BENCHMARK(BM_LoadPackage)->Unit(benchmark::kMillisecond);

void BM_LoadDisk(benchmark::State& state) {
    BenchClient client(/*package=*/false);
    SetClient(&client);
    const std::string path = DiskFile();
    {
        CPindIni ini;
        ini.Load(path.c_str());
        CheckLoaded(state, ini);
    }
    for (auto _ : state) {
        LoadOnce(state, path.c_str());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * IniText().size()));
    SetClient(nullptr);
}
BENCHMARK(BM_LoadDisk)->Unit(benchmark::kMillisecond);

int CountHandler(void* user, const char*, const char*, const char*) {
    ++*static_cast<int*>(user);
    return 1;
}

void BM_InihParseStringCount(benchmark::State& state) {
    for (auto _ : state) {
        int n = 0;
        benchmark::DoNotOptimize(ini_parse_string(IniText().c_str(), CountHandler, &n));
        benchmark::DoNotOptimize(n);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * IniText().size()));
}
BENCHMARK(BM_InihParseStringCount)->Unit(benchmark::kMillisecond);

using Tables = std::map<std::string, std::map<std::string, std::string>>;

int MapHandler(void* user, const char* section, const char* name, const char* value) {
    (*static_cast<Tables*>(user))[section][name] = value;
    return 1;
}

void BM_InihParseStringMaps(benchmark::State& state) {
    for (auto _ : state) {
        Tables tables;
        benchmark::DoNotOptimize(ini_parse_string(IniText().c_str(), MapHandler, &tables));
        benchmark::DoNotOptimize(tables);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * IniText().size()));
}
BENCHMARK(BM_InihParseStringMaps)->Unit(benchmark::kMillisecond);

// Look-ups cycle through N (section, key) pairs spread over the whole file: 16 stay in the
// cache, 4096 reach most of the loaded maps.
struct LookupSet {
    std::vector<std::string> sections;
    std::vector<std::string> keys;
};

const LookupSet& Pairs() {
    static const LookupSet pairs = [] {
        LookupSet set;
        char text[32];
        uint32_t seed = 12345;
        for (int i = 0; i < 4096; ++i) {
            seed = seed * 1103515245u + 12345u;
            std::snprintf(text, sizeof text, "section_%04u", (seed >> 8) % kSections);
            set.sections.emplace_back(text);
            std::snprintf(text, sizeof text, "key_%02u", (seed >> 20) % kKeys);
            set.keys.emplace_back(text);
        }
        return set;
    }();
    return pairs;
}

template <typename Lookup>
void RunLookups(benchmark::State& state, Lookup lookup) {
    BenchClient client(/*package=*/true);
    MemoryPackage package;
    SetClient(&client);
    pind::platform::SetPackage(&package);
    CPindIni ini;
    ini.Load("bench.ini");
    CheckLoaded(state, ini);
    const LookupSet& pairs = Pairs();
    const size_t mask = static_cast<size_t>(state.range(0)) - 1;
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(lookup(ini, pairs.sections[i].c_str(), pairs.keys[i].c_str()));
        i = (i + 1) & mask;
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    pind::platform::SetPackage(nullptr);
    SetClient(nullptr);
}

void BM_GetInt(benchmark::State& state) {
    RunLookups(state, [](const CPindIni& ini, const char* s, const char* k) {
        return ini.GetInt(s, k, -1);
    });
}
BENCHMARK(BM_GetInt)->Arg(16)->Arg(4096);

void BM_GetString(benchmark::State& state) {
    RunLookups(state, [](const CPindIni& ini, const char* s, const char* k) {
        return ini.GetString(s, k, "");
    });
}
BENCHMARK(BM_GetString)->Arg(16)->Arg(4096);

void BM_GetIntMiss(benchmark::State& state) {
    RunLookups(state, [](const CPindIni& ini, const char* s, const char*) {
        return ini.GetInt(s, "absent", -1);
    });
}
BENCHMARK(BM_GetIntMiss)->Arg(16)->Arg(4096);

}  // namespace

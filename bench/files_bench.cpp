// Line reads through CPackFile in memory and disk mode against plain fgets on the same 4 MiB
// text, and ReadFirstFile of a 3,000,000-byte deflated entry against zlib's uncompress.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "pind/client/PindClient.h"
#include "pind/files/DirPackage.h"
#include "pind/files/PackFile.h"
#include "pind/files/ZipOperator.h"
#include "pind/files/ZipWriter.h"
#include "pind/platform/Package.h"
#include "pind/platform/System.h"

namespace {

class BenchClient : public IPindClientNone {
public:
    bool IsPackageInUse() override { return packageFirst; }
    int GetPackageMode() override { return packageFirst ? 1 : 0; }
    bool packageFirst = false;
};

std::string Folder() {
    static const std::string dir = [] {
        const auto path =
            std::filesystem::temp_directory_path() /
            ("pind-files-bench-" + std::to_string(pind::platform::CurrentProcessId()));
        std::filesystem::create_directories(path);
        return path.generic_string();
    }();
    return dir;
}

// 4 MiB of lines between 20 and 100 characters.
const std::string& TextPath() {
    static const std::string path = [] {
        std::string text;
        uint32_t state = 7;
        while (text.size() < (4u << 20)) {
            state = state * 1103515245u + 12345u;
            const size_t n = 20 + (state >> 16) % 81;
            for (size_t i = 0; i < n; ++i) {
                text += static_cast<char>('a' + (i * 7 + state) % 26);
            }
            text += '\n';
        }
        text.resize(4u << 20);
        const std::string file = Folder() + "/text.txt";
        std::ofstream(file, std::ios::binary) << text;
        return file;
    }();
    return path;
}

std::string Entry() {
    std::string bytes(3000000, '\0');
    uint32_t state = 12345;
    for (char& c : bytes) {
        state = state * 1103515245u + 12345u;
        c = static_cast<char>('a' + ((state >> 16) & 15));
    }
    return bytes;
}

int64_t ReadLines(CPackFile* f) {
    char line[256];
    int64_t lines = 0;
    PackFRewind(f);
    while (PackFGets(line, sizeof line, f) != nullptr) {
        ++lines;
    }
    return lines;
}

void PackFGetsMemory(benchmark::State& state) {
    BenchClient client;
    client.packageFirst = true;
    SetClient(&client);
    CDirPackage package(Folder());
    pind::platform::SetPackage(&package);
    TextPath();  // writes the file once
    CPackFile* f = PackFOpen("text.txt", "rb");
    if (f == nullptr || f->IsDiskMode()) {
        state.SkipWithError("package open failed");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadLines(f));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (4 << 20));
    PackFClose(f);
    pind::platform::SetPackage(nullptr);
    SetClient(nullptr);
}

void PackFGetsDisk(benchmark::State& state) {
    CPackFile* f = PackFOpen(TextPath().c_str(), "rb");
    if (f == nullptr || !f->IsDiskMode()) {
        state.SkipWithError("disk open failed");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadLines(f));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (4 << 20));
    PackFClose(f);
}

void Fgets(benchmark::State& state) {
    std::FILE* f = std::fopen(TextPath().c_str(), "rb");
    char line[256];
    for (auto _ : state) {
        std::rewind(f);
        int64_t lines = 0;
        while (std::fgets(line, sizeof line, f) != nullptr) {
            ++lines;
        }
        benchmark::DoNotOptimize(lines);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (4 << 20));
    std::fclose(f);
}

void ReadFirstFile(benchmark::State& state) {
    const std::string entry = Entry();
    const std::string archive = Folder() + "/entry.zip";
    pind::WriteZipArchive(archive, {{"entry.bin", entry, true}});
    CMyZipOperator zip;
    unsigned char* data = nullptr;
    if (zip.ReadFirstFile(archive.c_str(), &data) != entry.size() ||
        std::string(reinterpret_cast<char*>(data), entry.size()) != entry) {
        state.SkipWithError("ReadFirstFile gave other bytes");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(zip.ReadFirstFile(archive.c_str(), &data));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 3000000);
}

void ZlibUncompress(benchmark::State& state) {
    const std::string entry = Entry();
    std::vector<unsigned char> packed(pind::detail::ZlibCompressBound(entry.size()));
    unsigned long packedLen = packed.size();
    pind::detail::ZlibCompress(packed.data(), &packedLen,
                               reinterpret_cast<const unsigned char*>(entry.data()), entry.size());
    std::vector<unsigned char> out(entry.size());
    for (auto _ : state) {
        unsigned long outLen = out.size();
        benchmark::DoNotOptimize(
            pind::detail::ZlibUncompress(out.data(), &outLen, packed.data(), packedLen));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 3000000);
}

}  // namespace

BENCHMARK(PackFGetsMemory)->Unit(benchmark::kMillisecond);
BENCHMARK(PackFGetsDisk)->Unit(benchmark::kMillisecond);
BENCHMARK(Fgets)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadFirstFile)->Unit(benchmark::kMillisecond);
BENCHMARK(ZlibUncompress)->Unit(benchmark::kMillisecond);

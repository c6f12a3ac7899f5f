// Line reads through CPackFile in memory and disk mode against fgets on the same 4 MiB file,
// each timed from open to close (the open of a packaged file reads it whole); and ReadFirstFile
// of a 3,000,000-byte deflated entry (open, read, inflate, CRC-32 check, close) against zlib
// inflating the very deflate stream the archive holds, already in memory: raw and unchecked, and
// through uncompress, which checks an Adler-32.
#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "pind/client/PackFileClient.h"
#include "pind/files/DirPackage.h"
#include "pind/files/PackFile.h"
#include "pind/files/ZipOperator.h"
#include "pind/files/ZipWriter.h"
#include "pind/platform/Package.h"
#include "pind/platform/System.h"

namespace {

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

// Open, every line with a 256-byte buffer, close.
int64_t ReadLines(const char* name) {
    CPackFile* f = PackFOpen(name, "rb");
    if (f == nullptr) {
        return -1;
    }
    char line[256];
    int64_t lines = 0;
    while (PackFGets(line, sizeof line, f) != nullptr) {
        ++lines;
    }
    PackFClose(f);
    return lines;
}

int64_t FgetsLines(const char* name) {
    std::FILE* f = std::fopen(name, "rb");
    if (f == nullptr) {
        return -1;
    }
    char line[256];
    int64_t lines = 0;
    while (std::fgets(line, sizeof line, f) != nullptr) {
        ++lines;
    }
    std::fclose(f);
    return lines;
}

void PackFGetsMemory(benchmark::State& state) {
    CPackFileClient client(/*bPackageFirst=*/true);
    SetClient(&client);
    CDirPackage package(Folder());
    pind::platform::SetPackage(&package);
    const int64_t want = FgetsLines(TextPath().c_str());
    CPackFile* f = PackFOpen("text.txt", "rb");
    const bool memory = f != nullptr && !f->IsDiskMode();
    PackFClose(f);
    if (!memory || ReadLines("text.txt") != want) {
        state.SkipWithError("the packaged file did not read as fgets reads it");
    } else {
        for (auto _ : state) {
            benchmark::DoNotOptimize(ReadLines("text.txt"));
        }
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (4 << 20));
    }
    pind::platform::SetPackage(nullptr);
    SetClient(nullptr);
}

void PackFGetsDisk(benchmark::State& state) {
    const std::string& path = TextPath();
    if (ReadLines(path.c_str()) != FgetsLines(path.c_str())) {
        state.SkipWithError("the file did not read as fgets reads it");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadLines(path.c_str()));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (4 << 20));
}

void Fgets(benchmark::State& state) {
    const std::string& path = TextPath();
    for (auto _ : state) {
        benchmark::DoNotOptimize(FgetsLines(path.c_str()));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (4 << 20));
}

const std::string& ArchivePath() {
    static const std::string archive = [] {
        const std::string path = Folder() + "/entry.zip";
        pind::WriteZipArchive(path, {{"entry.bin", Entry(), true}});
        return path;
    }();
    return archive;
}

void ReadFirstFile(benchmark::State& state) {
    const std::string entry = Entry();
    CMyZipOperator zip;
    unsigned char* data = nullptr;
    if (zip.ReadFirstFile(ArchivePath().c_str(), &data) != entry.size() ||
        std::string(reinterpret_cast<char*>(data), entry.size()) != entry) {
        state.SkipWithError("ReadFirstFile gave other bytes");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(zip.ReadFirstFile(ArchivePath().c_str(), &data));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 3000000);
}

// The deflate stream as the archive stores it: the bytes after the first local header.
std::string StoredStream() {
    std::ifstream in(ArchivePath(), std::ios::binary);
    const std::string zip((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    auto field = [&zip](size_t at, int bytes) {
        size_t n = 0;
        for (int i = bytes - 1; i >= 0; --i) {
            n = (n << 8) | static_cast<unsigned char>(zip[at + static_cast<size_t>(i)]);
        }
        return n;
    };
    const size_t start = 30 + field(26, 2) + field(28, 2);
    return zip.substr(start, field(18, 4));
}

void ZlibInflate(benchmark::State& state) {
    const std::string entry = Entry();
    const std::string stream = StoredStream();
    std::vector<unsigned char> out(entry.size());
    auto inflateAll = [&stream, &out] {
        z_stream zs{};
        inflateInit2(&zs, -MAX_WBITS);
        zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.data()));
        zs.avail_in = static_cast<uInt>(stream.size());
        zs.next_out = out.data();
        zs.avail_out = static_cast<uInt>(out.size());
        const int result = inflate(&zs, Z_FINISH);
        inflateEnd(&zs);
        return result;
    };
    if (inflateAll() != Z_STREAM_END || std::memcmp(out.data(), entry.data(), entry.size()) != 0) {
        state.SkipWithError("the stored stream did not inflate to the entry");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(inflateAll());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 3000000);
}

// zlib's uncompress over the same deflate stream, wrapped as a zlib stream (a 2-byte header and
// the Adler-32 of the entry after it): like ReadFirstFile, it checks what it inflated.
void ZlibUncompress(benchmark::State& state) {
    const std::string entry = Entry();
    std::string wrapped = "\x78\x9c" + StoredStream();
    const uLong adler =
        adler32(adler32(0, nullptr, 0), reinterpret_cast<const Bytef*>(entry.data()),
                static_cast<uInt>(entry.size()));
    for (int shift = 24; shift >= 0; shift -= 8) {
        wrapped += static_cast<char>((adler >> shift) & 0xFF);
    }
    std::vector<unsigned char> out(entry.size());
    auto uncompressAll = [&wrapped, &out] {
        uLongf nOut = static_cast<uLongf>(out.size());
        return uncompress(out.data(), &nOut, reinterpret_cast<const Bytef*>(wrapped.data()),
                          static_cast<uLong>(wrapped.size()));
    };
    if (uncompressAll() != Z_OK || std::memcmp(out.data(), entry.data(), entry.size()) != 0) {
        state.SkipWithError("the wrapped stream did not uncompress to the entry");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(uncompressAll());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 3000000);
}

}  // namespace

BENCHMARK(PackFGetsMemory)->Unit(benchmark::kMillisecond);
BENCHMARK(PackFGetsDisk)->Unit(benchmark::kMillisecond);
BENCHMARK(Fgets)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadFirstFile)->Unit(benchmark::kMillisecond);
BENCHMARK(ZlibInflate)->Unit(benchmark::kMillisecond);
BENCHMARK(ZlibUncompress)->Unit(benchmark::kMillisecond);

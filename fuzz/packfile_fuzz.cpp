// Packaged files in memory mode: the input is the file's bytes, served by a one-file package;
// the first byte picks a line capacity and the script mixes gets, getc, ungetc, seek and scanf.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "pind/client/PindClient.h"
#include "pind/files/PackFile.h"
#include "pind/platform/Package.h"

namespace {

class OneFilePackage : public pind::platform::IPindPackage {
public:
    std::string bytes;
    size_t pos = 0;
    int Open(const char*, pind::platform::PackHandle* handle) override {
        pos = 0;
        *handle = this;
        return 0;
    }
    uint32_t GetLen(pind::platform::PackHandle) override {
        return static_cast<uint32_t>(bytes.size());
    }
    uint32_t Read(void* buffer, uint32_t size, uint32_t count,
                  pind::platform::PackHandle) override {
        const size_t want = static_cast<size_t>(size) * count;
        const size_t n = want < bytes.size() - pos ? want : bytes.size() - pos;
        std::memcpy(buffer, bytes.data() + pos, n);
        pos += n;
        return static_cast<uint32_t>(n);
    }
    void Close(pind::platform::PackHandle) override {}
    int Exist(const char*, int) override { return 1; }
    int Dump(const char*, void**, int32_t*, int) override { return -1; }
    void Undump(void*) override {}
};

class PackageClient : public IPindClientNone {
public:
    bool IsPackageInUse() override { return true; }
    int GetPackageMode() override { return 1; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static PackageClient client;
    static OneFilePackage package;
    SetClient(&client);
    pind::platform::SetPackage(&package);
    package.bytes.assign(reinterpret_cast<const char*>(data), size);

    CPackFile* f = PackFOpen("fuzz.txt", "r");
    if (f == nullptr) {
        return 0;  // an empty package file does not open
    }
    const int capacity = size > 0 ? 1 + data[0] % 64 : 1;
    char line[64];
    int a = 0;
    char word[16];
    for (int round = 0; round < 4; ++round) {
        while (PackFGets(line, capacity, f) != nullptr) {
            PackFUngetc(PackFGetc(f) & 0xFF, f);
            PackFGetc(f);
        }
        PackFSeek(f, -static_cast<int32_t>(size) / (round + 1), SEEK_END);
        PackFScanf(f, "%d %15s", &a, word);
        PackFSeek(f, round, SEEK_CUR);
        char buf[32];
        PackFRead(buf, 3, 10, f);
        PackFSeek64(f, static_cast<int64_t>(round) << 32 | static_cast<int64_t>(size / 2),
                    SEEK_SET);
    }
    PackFClose(f);
    return 0;
}

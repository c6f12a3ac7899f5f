// Packaged files in memory mode: the input is the file's bytes, served by an in-memory package;
// the first byte picks a line capacity and the script mixes gets, getc, ungetc, seek and scanf.
#include <cstdint>
#include <cstdio>
#include <string>

#include "FuzzInput.h"
#include "pind/files/PackFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    pind::fuzz::ServeAsPackagedFile("fuzz.txt", data, size);

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

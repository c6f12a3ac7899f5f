// GetPrivateProfileIntA's INI reading over arbitrary file contents.
#include <cstdint>
#include <cstdio>
#include <string>

#include "FuzzInput.h"
#include "pind/platform/System.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = pind::fuzz::WriteInputFile("profileint.ini", data, size);
    if (path.empty()) {
        return 0;
    }
    const char* keys[] = {"Profile", "ProfileInterval", "", " profile "};
    for (const char* key : keys) {
        pind::platform::PrivateProfileInt("FrameRate", key, 7, path.c_str());
        pind::platform::PrivateProfileInt("", key, -1, path.c_str());
    }
    std::remove(path.c_str());
    return 0;
}

// GetPrivateProfileIntA's INI reading over arbitrary file contents.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "pind/platform/System.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path =
        (std::filesystem::temp_directory_path() /
         ("pind-profileint-" + std::to_string(pind::platform::CurrentProcessId()) + ".ini"))
            .string();
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) {
        return 0;
    }
    if (size > 0) {
        std::fwrite(data, 1, size, f);
    }
    std::fclose(f);
    const char* keys[] = {"Profile", "ProfileInterval", "", " profile "};
    for (const char* key : keys) {
        pind::platform::PrivateProfileInt("FrameRate", key, 7, path.c_str());
        pind::platform::PrivateProfileInt("", key, -1, path.c_str());
    }
    std::remove(path.c_str());
    return 0;
}

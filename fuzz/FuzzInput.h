// For fuzz targets whose input must be a file: writes the bytes to a file of this process's own
// under the temp folder and returns its path, or "" when it cannot be written.
#ifndef PIND_FUZZ_FUZZINPUT_H_
#define PIND_FUZZ_FUZZINPUT_H_

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "pind/platform/System.h"

namespace pind::fuzz {

inline std::string WriteInputFile(const char* name, const uint8_t* data, size_t size) {
    const std::string path = (std::filesystem::temp_directory_path() /
                              ("pind-" + std::to_string(platform::CurrentProcessId()) + "-" + name))
                                 .string();
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) {
        return std::string();
    }
    const bool ok = size == 0 || std::fwrite(data, 1, size, f) == size;
    return std::fclose(f) == 0 && ok ? path : std::string();
}

}  // namespace pind::fuzz

#endif  // PIND_FUZZ_FUZZINPUT_H_

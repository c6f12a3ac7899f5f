// Ways to hand a fuzz input to the library: as a file on disk, or as a packaged file that a
// package-first host client opens in memory mode.
#ifndef PIND_FUZZ_FUZZINPUT_H_
#define PIND_FUZZ_FUZZINPUT_H_

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "pind/client/PackFileClient.h"
#include "pind/files/MemoryPackage.h"
#include "pind/files/PackFile.h"
#include "pind/platform/Package.h"
#include "pind/platform/System.h"

namespace pind::fuzz {

/// Writes the bytes to a file of this process's own under the temp folder; its path, or "" when
/// it cannot be written.
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

/// Installs a package-first host and an in-memory package holding the bytes as `name`; they stay
/// installed.
inline void ServeAsPackagedFile(const char* name, const uint8_t* data, size_t size) {
    static CPackFileClient s_client(/*bPackageFirst=*/true);
    static CMemoryPackage s_package;
    SetClient(&s_client);
    platform::SetPackage(&s_package);
    s_package.AddFile(
        name, std::string(data != nullptr ? reinterpret_cast<const char*>(data) : "", size));
}

}  // namespace pind::fuzz

#endif  // PIND_FUZZ_FUZZINPUT_H_

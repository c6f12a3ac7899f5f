// Zip archives: CMyZipOperator::ReadFirstFile and CZipPackage (index, open, read, dump) over
// arbitrary bytes written to a temporary archive.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "pind/files/ZipOperator.h"
#include "pind/files/ZipPackage.h"
#include "pind/platform/System.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path =
        (std::filesystem::temp_directory_path() /
         ("pind-zip-" + std::to_string(pind::platform::CurrentProcessId()) + ".zip"))
            .string();
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) {
        return 0;
    }
    if (size > 0) {
        std::fwrite(data, 1, size, f);
    }
    std::fclose(f);

    CMyZipOperator zip;
    unsigned char* out = nullptr;
    const unsigned int n = zip.ReadFirstFile(path.c_str(), &out);
    if (n > 0 && (out == nullptr || n > zip.GetCapacity())) {
        std::abort();
    }

    CZipPackage pack(path);
    for (const std::string& name : pack.List()) {
        pind::platform::PackHandle handle = nullptr;
        if (pack.Open(name.c_str(), &handle) == 0) {
            char buf[64];
            const uint32_t len = pack.GetLen(handle);
            uint32_t total = 0;
            for (uint32_t got; (got = pack.Read(buf, 1, sizeof buf, handle)) > 0;) {
                total += got;
            }
            if (total != len) {
                std::abort();
            }
            pack.Close(handle);
        }
        void* dumped = nullptr;
        int32_t length = 0;
        if (pack.Dump(name.c_str(), &dumped, &length, 0) == 0) {
            pack.Undump(dumped);
        }
        pack.Exist(name.c_str(), 0);
    }
    std::remove(path.c_str());
    return 0;
}

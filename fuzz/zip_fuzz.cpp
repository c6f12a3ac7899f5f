// Zip archives: CMyZipOperator::ReadFirstFile and CZipPackage (index, open, read, dump) over
// arbitrary bytes written to a temporary archive.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "FuzzInput.h"
#include "pind/files/ZipOperator.h"
#include "pind/files/ZipPackage.h"
#include "pind/platform/System.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = pind::fuzz::WriteInputFile("input.zip", data, size);
    if (path.empty()) {
        return 0;
    }

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

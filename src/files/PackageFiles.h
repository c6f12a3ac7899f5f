// What the shipped package backends share: checking the names asked for, and the files handed out
// (open handles and dumped buffers), so that a handle or buffer the backend never gave is ignored.
#ifndef PIND_SRC_FILES_PACKAGEFILES_H_
#define PIND_SRC_FILES_PACKAGEFILES_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "pind/platform/CriticalSection.h"
#include "pind/platform/Package.h"

namespace pind::detail {

/// The package name as lower-cased '/'-joined parts, '\\' read as '/' and empty parts dropped.
/// False for an empty name, a rooted one ("/x", "c:x") or one with a ".." part.
bool SplitPackName(const char* pszName, std::vector<std::string>* pParts);
std::string JoinPackName(const std::vector<std::string>& parts);

class PackageFiles {
public:
    platform::PackHandle Add(std::vector<uint8_t> bytes);
    /// 0 for an unknown handle.
    uint32_t GetLen(platform::PackHandle handle);
    /// Bytes copied: at most size × count and at most what is left.
    uint32_t Read(void* pBuffer, uint32_t nSize, uint32_t nCount, platform::PackHandle handle);
    void Close(platform::PackHandle handle);
    /// Copies `bytes` into a malloc'd buffer handed to the caller; 0 on success, -1 when it cannot.
    int Dump(const std::vector<uint8_t>& bytes, void** ppBuffer, int32_t* pLength);
    void Undump(void* pBuffer);
    ~PackageFiles();

private:
    struct Opened {
        std::vector<uint8_t> bytes;
        size_t pos = 0;
    };
    platform::CriticalSection m_cs;
    std::map<platform::PackHandle, std::unique_ptr<Opened>> m_opened;
    std::set<void*> m_dumped;
};

/// Files larger than this are refused: lengths travel as signed 32-bit values.
constexpr uint64_t kMaxPackFileSize = 0x7FFFFFFF;

/// Zeroed bytes a file object keeps past a packaged file's end. Backends reserve this much room
/// beyond a file they load, so the file object takes their buffer without moving it.
constexpr size_t kFilePad = 16;

}  // namespace pind::detail

#endif  // PIND_SRC_FILES_PACKAGEFILES_H_

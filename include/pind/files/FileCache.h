// A process-wide cache that reads a packaged file whole with one call and serves it by bytes or
// lines through a numeric handle. When the package will not hand a file over whole, the same
// handle reads through a CPackFile instead, so callers never see which way was taken.
//   uint64_t h = CacheOpen("ini/items.txt", "r", 0);
//   char line[256]; while (CacheGets(line, sizeof line, h)) { ... } CacheClose(h);
#ifndef PIND_FILES_FILECACHE_H_
#define PIND_FILES_FILECACHE_H_

#include <cstdint>
#include <map>

#include "pind/platform/Export.h"

/// One cached file: the package's whole-file buffer, its length and the read position. The
/// fallback marker (null buffer, length and position kFallbackMark) stands for a CPackFile whose
/// address is the handle.
struct FileCacheEntry {
    static constexpr int32_t kFallbackMark = -999999;  ///< length and position of a fallback entry

    void* pBuffer = nullptr;  ///< the package's whole-file buffer
    int32_t nLength = 0;      ///< bytes in the buffer
    int32_t nPos = 0;         ///< the read position

    /// True for the fallback marker.
    bool IsFallback() const { return nLength == kFallbackMark && nPos == kFallbackMark; }
};

/// The handles and their entries. Memory handles count 1, 2, 3 ... and are never reused; fallback
/// handles are file-object addresses. Unlocked: meant for one thread.
struct PIND_API FileCache {
    std::map<uint64_t, FileCacheEntry> mapEntries;  ///< open entries by handle
    uint64_t nIssued = 0;                           ///< the last memory handle given out
};

/// The process-wide cache, made on first use and destroyed at exit (open buffers are not freed).
PIND_API FileCache& FileCacheInstance();

/// A handle for the whole file from VoFDump(name, ..., flag), else one over PackFOpen(name, mode);
/// 0 when neither opens it.
PIND_API uint64_t CacheOpen(const char* pszName, const char* pszMode, int nFlag);
/// Bytes copied from a memory entry: count × size, or what is left when position + count passes
/// the length, and never past the entry's end. A fallback handle returns the items PackFRead
/// gives. 0 at end, for an unknown handle, a null buffer or a negative size.
PIND_API int CacheRead(void* pBuffer, int nSize, int nCount, uint64_t nHandle);
/// One line ending after '\n' or capacity - 1 bytes; a 0xFF byte ends the data and is left
/// unread. Null at end, for an unknown handle, for capacity < 2 (a capacity of 1 stores "").
PIND_API char* CacheGets(char* pszBuffer, int nCapacity, uint64_t nHandle);
/// Gives the buffer back to the package (or closes the file object) and forgets the handle;
/// unknown handles are ignored.
PIND_API void CacheClose(uint64_t nHandle);

#endif  // PIND_FILES_FILECACHE_H_

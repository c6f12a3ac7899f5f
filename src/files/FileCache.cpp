#include "pind/files/FileCache.h"

#include <cstring>

#include "pind/files/PackFile.h"
#include "pind/platform/Package.h"

namespace {

CPackFile* FileOf(uint64_t nHandle) {
    return reinterpret_cast<CPackFile*>(static_cast<uintptr_t>(nHandle));
}

// The entry under `nHandle`, or null; a handle of 0 is dropped on sight.
FileCacheEntry* Find(uint64_t nHandle) {
    auto& entries = FileCacheInstance().mapEntries;
    const auto it = entries.find(nHandle);
    if (it == entries.end()) {
        return nullptr;
    }
    if (nHandle == 0) {
        entries.erase(it);
        return nullptr;
    }
    return &it->second;
}

}  // namespace

FileCache& FileCacheInstance() {
    static FileCache cache;
    return cache;
}

uint64_t CacheOpen(const char* pszName, const char* pszMode, int nFlag) {
    FileCache& cache = FileCacheInstance();
    void* pBuffer = nullptr;
    int32_t nLength = 0;
    if (pind::platform::VoFDump(pszName, &pBuffer, &nLength, nFlag) == 0) {
        const uint64_t nHandle = ++cache.nIssued;
        cache.mapEntries[nHandle] = FileCacheEntry{pBuffer, nLength, 0};
        return nHandle;
    }
    CPackFile* pFile = PackFOpen(pszName, pszMode);
    if (pFile == nullptr) {
        return 0;
    }
    const auto nHandle = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(pFile));
    cache.mapEntries[nHandle] =
        FileCacheEntry{nullptr, FileCacheEntry::kFallbackMark, FileCacheEntry::kFallbackMark};
    return nHandle;
}

int CacheRead(void* pBuffer, int nSize, int nCount, uint64_t nHandle) {
    FileCacheEntry* pEntry = Find(nHandle);
    if (pEntry == nullptr || pBuffer == nullptr || nSize < 0 || nCount < 0) {
        return 0;
    }
    if (pEntry->IsFallback()) {
        return static_cast<int>(PackFRead(pBuffer, static_cast<size_t>(nSize),
                                          static_cast<size_t>(nCount), FileOf(nHandle)));
    }
    if (pEntry->nPos < 0 || pEntry->nPos >= pEntry->nLength || pEntry->pBuffer == nullptr) {
        return 0;
    }
    const int64_t nLeft = static_cast<int64_t>(pEntry->nLength) - pEntry->nPos;
    // The bound compares position + count (not count × size) with the length, as callers expect;
    // the copy itself never passes the end.
    int64_t nBytes = static_cast<int64_t>(pEntry->nPos) + nCount > pEntry->nLength
                         ? nLeft
                         : static_cast<int64_t>(nCount) * nSize;
    if (nBytes > nLeft) {
        nBytes = nLeft;
    }
    std::memcpy(pBuffer, static_cast<const char*>(pEntry->pBuffer) + pEntry->nPos,
                static_cast<size_t>(nBytes));
    pEntry->nPos += static_cast<int32_t>(nBytes);
    return static_cast<int>(nBytes);
}

char* CacheGets(char* pszBuffer, int nCapacity, uint64_t nHandle) {
    FileCacheEntry* pEntry = Find(nHandle);
    if (pEntry == nullptr || pszBuffer == nullptr) {
        return nullptr;
    }
    if (pEntry->IsFallback()) {
        return PackFGets(pszBuffer, nCapacity, FileOf(nHandle));
    }
    if (pEntry->nPos < 0 || pEntry->nPos >= pEntry->nLength || pEntry->pBuffer == nullptr) {
        return nullptr;
    }
    if (nCapacity - 1 < 1) {
        if (nCapacity >= 1) {
            pszBuffer[0] = '\0';
        }
        return nullptr;
    }
    const auto* pData = static_cast<const char*>(pEntry->pBuffer);
    int nStored = 0;
    bool bStoppedAtMark = false;
    while (pEntry->nPos < pEntry->nLength) {
        const char c = pData[pEntry->nPos];
        if (static_cast<signed char>(c) == -1) {
            bStoppedAtMark = true;
            break;
        }
        pszBuffer[nStored++] = c;
        ++pEntry->nPos;
        if (c == '\n' || nStored == nCapacity - 1) {
            break;
        }
    }
    pszBuffer[nStored] = '\0';
    return (bStoppedAtMark && nStored == 0) ? nullptr : pszBuffer;
}

void CacheClose(uint64_t nHandle) {
    auto& entries = FileCacheInstance().mapEntries;
    const auto it = entries.find(nHandle);
    if (it == entries.end()) {
        return;
    }
    if (!it->second.IsFallback()) {
        pind::platform::VoFUndump(it->second.pBuffer);
    } else if (nHandle != 0) {
        PackFClose(FileOf(nHandle));
    }
    entries.erase(it);
}

#include "pind/profile/ProfileObjects.h"

#include <algorithm>
#include <map>
#include <string>

#include "pind/files/PackFile.h"
#include "pind/platform/TimeZone.h"

namespace {

struct ObjectCount {
    int32_t nCount;
    int32_t nSize;
};

std::map<std::string, ObjectCount>& Objects() {
    static auto* s_objects = new std::map<std::string, ObjectCount>;
    return *s_objects;
}

// The report's stamp: UTC with 8 hours added to the hour alone (20:30 prints as 28:30, same day).
pind::platform::SystemTime Stamp() {
    pind::platform::SystemTime t{};
    pind::platform::GetSystemTime(&t);
    return t;
}

}  // namespace

void AddProfileObject(const char* pszClassName, int32_t nSize) {
    if (pszClassName == nullptr) {
        return;
    }
    auto [it, added] = Objects().try_emplace(pszClassName, ObjectCount{1, nSize});
    if (!added) {
        ++it->second.nCount;
    }
}

void RemoveProfileObject(const char* pszClassName) {
    if (pszClassName == nullptr) {
        return;
    }
    const auto it = Objects().find(pszClassName);
    if (it != Objects().end()) {
        --it->second.nCount;
    }
}

void PrintfProfileObjectCountInfo() {
    CPackFile* file = PackFOpen("Profile/PrintfProfileObjectCountInfo.txt", "a+");
    if (file == nullptr) {
        return;
    }
    const pind::platform::SystemTime t = Stamp();
    PackFPrintf(file, "==========PrintfProfileObjectCountInfo[%d-%d-%d %d:%d:%d]=============\n",
                t.wYear, t.wMonth, t.wDay, t.wHour + 8, t.wMinute, t.wSecond);
    int64_t total = 0;
    for (const auto& [name, record] : Objects()) {
        // The product is a 32-bit signed value, as the client's table keeps it.
        const auto use = static_cast<int32_t>(static_cast<uint32_t>(record.nCount) *
                                              static_cast<uint32_t>(record.nSize));
        PackFPrintf(file, "ClassName[%-16s], Size[%-8dB], Count[%-8d],  UseMemory[%-8dk]\n",
                    name.c_str(), record.nSize, record.nCount, use / 1024);
        total += use;
    }
    PackFPrintf(file, "TotalUseMemory[%dk]\n", static_cast<int32_t>(total / 1024));
    PackFClose(file);
}

namespace pind {

HeapTotals SumHeapEntries(platform::HeapHandle hHeap,
                          const std::vector<platform::HeapEntry>& entries) {
    HeapTotals sums{0, 0, 0};
    for (size_t i = 0; i < entries.size(); ++i) {
        const platform::HeapEntry& e = entries[i];
        if (i == 0) {
            sums.nTotal = sums.nCommitted =
                static_cast<int64_t>(e.firstBlock - reinterpret_cast<uintptr_t>(hHeap));
        }
        if (e.flags == platform::kHeapEntryBusy && i + 1 < entries.size()) {
            const auto span = static_cast<int64_t>(entries[i + 1].data - e.data);
            sums.nTotal += span;
            sums.nCommitted += span;
        } else if (e.flags == 0) {
            sums.nTotal += e.dataSize;
            sums.nCommitted += e.dataSize;
        } else if (e.flags == platform::kHeapEntryUncommitted) {
            sums.nTotal += e.dataSize;
            sums.nUncommitted += e.dataSize;
        }
    }
    return sums;
}

}  // namespace pind

void PrintHeapInfo() {
    // The backslash is the client's own path text; Windows reads it as a folder separator.
    CPackFile* file = PackFOpen("profile\\PrintHeapInfo.txt", "a+");
    if (file == nullptr) {
        return;
    }
    const pind::platform::SystemTime t = Stamp();
    PackFPrintf(file, "\n\n==========PrintHeapInfo[%d-%d-%d %d:%d:%d]=============\n", t.wYear,
                t.wMonth, t.wDay, t.wHour + 8, t.wMinute, t.wSecond);
    constexpr uint32_t kMaxHeaps = 255;
    pind::platform::HeapHandle handles[kMaxHeaps] = {};
    const uint32_t count = std::min(kMaxHeaps, pind::platform::ProcessHeaps(kMaxHeaps, handles));
    pind::HeapTotals all{0, 0, 0};
    std::vector<pind::platform::HeapEntry> entries;
    for (uint32_t i = 0; i < count; ++i) {
        entries.clear();
        pind::platform::WalkHeap(handles[i], &entries);
        const pind::HeapTotals sums = pind::SumHeapEntries(handles[i], entries);
        PackFPrintf(file,
                    "[%2d]HeapAddress: %p Total: %7dKB  Total Committed: %7dKB  Total UnCommitted: "
                    "%7dKB   EntryCount: %10d\n",
                    static_cast<int>(i), handles[i], static_cast<int>(sums.nTotal / 1024),
                    static_cast<int>(sums.nCommitted / 1024),
                    static_cast<int>(sums.nUncommitted / 1024), static_cast<int>(entries.size()));
        all.nTotal += sums.nTotal;
        all.nCommitted += sums.nCommitted;
        all.nUncommitted += sums.nUncommitted;
    }
    PackFPrintf(file,
                "HeapUseInfo Total: %7dKB  Total Committed: %7dKB  Total UnCommitted: %7dKB\n",
                static_cast<int>(all.nTotal >> 10), static_cast<int>(all.nCommitted >> 10),
                static_cast<int>(all.nUncommitted >> 10));
    PackFClose(file);
}

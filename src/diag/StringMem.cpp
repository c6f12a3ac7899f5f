#include "pind/diag/StringMem.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

#include "pind/files/PackFile.h"
#include "pind/platform/System.h"

namespace {

struct Registry {
    std::map<uint64_t, char*> tags;
    // Copies replaced by a re-tag: never freed, as the client's tracker leaks them, but kept
    // reachable so leak checkers see a deliberate hold rather than a lost block.
    std::vector<char*> replaced;
    int64_t total = 0;
};

Registry& Tags() {
    static auto* s_registry = new Registry;
    return *s_registry;
}

uint64_t Key(const void* p) { return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(p)); }

}  // namespace

void StringMemAdd(const void* pAddress, const char* pszText) {
    if (pszText == nullptr || *pszText == '\0') {
        return;
    }
    const size_t length = std::strlen(pszText);
    auto* copy = static_cast<char*>(std::malloc(length + 1));
    if (copy == nullptr) {
        return;
    }
    std::memcpy(copy, pszText, length + 1);
    Registry& r = Tags();
    // A re-tagged address drops its old copy without freeing it: the client's tracker leaks here.
    char*& slot = r.tags[Key(pAddress)];
    if (slot != nullptr) {
        r.replaced.push_back(slot);
    }
    slot = copy;
    r.total += static_cast<int64_t>(length) + 1;
}

void StringMemAdd(const void* pAddress, const std::string& strText) {
    StringMemAdd(pAddress, strText.c_str());
}

void StringMemRemove(const void* pAddress) {
    Registry& r = Tags();
    const auto it = r.tags.find(Key(pAddress));
    if (it == r.tags.end()) {
        return;
    }
    // Takes off the length without the + 1 the add counted: the total drifts up one per pair.
    r.total -= static_cast<int64_t>(std::strlen(it->second));
    std::free(it->second);
    r.tags.erase(it);
}

const void* StringMemRetag(const void* pAddress, const char* pszText) {
    if (pszText != nullptr) {
        StringMemRemove(pAddress);
        StringMemAdd(pAddress, pszText);
    }
    return pAddress;
}

const void* StringMemCopyTag(const void* pNew, const void* pOld) {
    Registry& r = Tags();
    const auto it = r.tags.find(Key(pOld));
    StringMemAdd(pNew, it != r.tags.end() ? it->second : "");
    return pNew;
}

void StringMemDump() {
    pind::platform::MakeDir("profile");
    CPackFile* file = PackFOpen("profile/StringExMemory.txt", "w");
    if (file == nullptr) {
        return;
    }
    Registry& r = Tags();
    PackFPrintf(file, "=====TotalSize: %d======\n", static_cast<int32_t>(r.total));
    for (const auto& [address, text] : r.tags) {
        PackFPrintf(file, "%p  =  %-4d     %s\n",
                    reinterpret_cast<void*>(static_cast<uintptr_t>(address)),
                    static_cast<int>(std::strlen(text)), text);
    }
    PackFClose(file);
}

namespace pind {
int32_t StringMemTotal() { return static_cast<int32_t>(Tags().total); }
}  // namespace pind

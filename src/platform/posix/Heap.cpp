// The Win32 heap walk, answered from glibc's malloc arenas: each arena is one "heap".
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "pind/platform/System.h"

namespace pind::platform {
namespace {

struct Arena {
    uint64_t free = 0;         // bytes in the arena's bins (fast and rest)
    uint64_t current = 0;      // bytes the arena has from the system now
    uint64_t reserved = 0;     // address space reserved for it
    uint64_t committed = 0;    // of which made accessible
};

constexpr uintptr_t kHandleStride = 0x10000;
constexpr uintptr_t kHeaderSize = 64;

uint64_t Attribute(const std::string& tag, const char* name) {
    const std::string key = std::string(name) + "=\"";
    const size_t at = tag.find(key);
    return at == std::string::npos ? 0 : std::strtoull(tag.c_str() + at + key.size(), nullptr, 10);
}

bool HasType(const std::string& tag, const char* type) {
    return tag.find(std::string("type=\"") + type + "\"") != std::string::npos;
}

std::vector<Arena> ReadArenas() {
    std::vector<Arena> arenas;
#if defined(__GLIBC__)
    char* text = nullptr;
    size_t size = 0;
    std::FILE* f = open_memstream(&text, &size);
    if (f == nullptr) {
        return arenas;
    }
    const int rc = malloc_info(0, f);
    std::fclose(f);
    if (rc == 0 && text != nullptr) {
        const std::string xml(text, size);
        size_t at = 0;
        while ((at = xml.find("<heap nr=", at)) != std::string::npos) {
            const size_t end = xml.find("</heap>", at);
            if (end == std::string::npos) {
                break;
            }
            Arena arena;
            size_t tagAt = at;
            // Only the arena's summary tags follow its <sizes> table.
            const size_t sizesEnd = xml.find("</sizes>", at);
            if (sizesEnd != std::string::npos && sizesEnd < end) {
                tagAt = sizesEnd;
            }
            while ((tagAt = xml.find('<', tagAt + 1)) != std::string::npos && tagAt < end) {
                const std::string tag = xml.substr(tagAt, xml.find('>', tagAt) - tagAt);
                if (tag.compare(0, 6, "<total") == 0 &&
                    (HasType(tag, "fast") || HasType(tag, "rest"))) {
                    arena.free += Attribute(tag, "size");
                } else if (tag.compare(0, 7, "<system") == 0 && HasType(tag, "current")) {
                    arena.current = Attribute(tag, "size");
                } else if (tag.compare(0, 7, "<aspace") == 0 && HasType(tag, "total")) {
                    arena.reserved = Attribute(tag, "size");
                } else if (tag.compare(0, 7, "<aspace") == 0 && HasType(tag, "mprotect")) {
                    arena.committed = Attribute(tag, "size");
                }
            }
            arenas.push_back(arena);
            at = end;
        }
    }
    std::free(text);
#endif
    return arenas;
}

uint32_t Clamp32(uint64_t v) { return v > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<uint32_t>(v); }

}  // namespace

uint32_t ProcessHeaps(uint32_t maxHeaps, HeapHandle* handles) {
    const std::vector<Arena> arenas = ReadArenas();
    for (uint32_t i = 0; i < arenas.size() && i < maxHeaps && handles != nullptr; ++i) {
        handles[i] = reinterpret_cast<HeapHandle>((i + 1) * kHandleStride);
    }
    return static_cast<uint32_t>(arenas.size());
}

bool WalkHeap(HeapHandle heap, std::vector<HeapEntry>* entries) {
    const uintptr_t h = reinterpret_cast<uintptr_t>(heap);
    if (entries == nullptr || h == 0 || h % kHandleStride != 0) {
        return false;
    }
    const std::vector<Arena> arenas = ReadArenas();
    const size_t index = h / kHandleStride - 1;
    if (index >= arenas.size()) {
        return false;
    }
    const Arena& a = arenas[index];
    const uint64_t freeBytes = a.free < a.current ? a.free : a.current;
    const uint64_t used = a.current - freeBytes;
    const uint64_t busy = used > kHeaderSize ? used - kHeaderSize : 0;
    const uint64_t uncommitted = a.reserved > a.committed ? a.reserved - a.committed : 0;

    entries->clear();
    HeapEntry region{};
    region.data = h;
    region.flags = kHeapEntryRegion;
    region.committedSize = Clamp32(a.current);
    region.uncommittedSize = Clamp32(uncommitted);
    region.firstBlock = h + kHeaderSize;
    region.lastBlock = h + static_cast<uintptr_t>(a.current + uncommitted);
    entries->push_back(region);

    HeapEntry inUse{};
    inUse.data = h + kHeaderSize;
    inUse.dataSize = Clamp32(busy);
    inUse.flags = kHeapEntryBusy;
    entries->push_back(inUse);

    HeapEntry freeBlock{};
    freeBlock.data = inUse.data + static_cast<uintptr_t>(busy);
    freeBlock.dataSize = Clamp32(freeBytes);
    entries->push_back(freeBlock);

    if (uncommitted > 0) {
        HeapEntry range{};
        range.data = h + static_cast<uintptr_t>(a.current);
        range.dataSize = Clamp32(uncommitted);
        range.flags = kHeapEntryUncommitted;
        entries->push_back(range);
    }
    return true;
}

}  // namespace pind::platform

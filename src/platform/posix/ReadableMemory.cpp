#include "platform/posix/ReadableMemory.h"

#include <cstdint>

#if defined(__linux__) && defined(__GLIBC__)
#include <link.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <vector>

namespace pind::platform::detail {
namespace {

struct Range {
    uintptr_t begin;
    uintptr_t end;
};

size_t SpanIn(uintptr_t address, uintptr_t begin, uintptr_t end) {
    return address >= begin && address < end ? static_cast<size_t>(end - address) : 0;
}

// The calling thread's stack from the current frame up is mapped for as long as the thread runs.
size_t StackSpan(uintptr_t address) {
    thread_local uintptr_t t_top = 0;
    if (t_top == 0) {
        pthread_attr_t attr;
        if (pthread_getattr_np(pthread_self(), &attr) != 0) {
            return 0;
        }
        void* base = nullptr;
        size_t size = 0;
        if (pthread_attr_getstack(&attr, &base, &size) == 0) {
            t_top = reinterpret_cast<uintptr_t>(base) + size;
        }
        pthread_attr_destroy(&attr);
    }
    const auto frame = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
    return SpanIn(address, frame, t_top);
}

// Readable load segments of every module, rebuilt whenever the loader's load or unload counters
// move, so an unloaded module never stays in the list.
struct ModuleRanges {
    unsigned long long adds = 0;
    unsigned long long subs = 0;
    bool known = false;
    std::vector<Range> ranges;
};

bool HasCounters(size_t size) {
    return size >= offsetof(dl_phdr_info, dlpi_subs) + sizeof(dl_phdr_info::dlpi_subs);
}

int ReadCounters(dl_phdr_info* info, size_t size, void* data) {
    auto* counters = static_cast<unsigned long long*>(data);
    if (HasCounters(size)) {
        counters[0] = info->dlpi_adds;
        counters[1] = info->dlpi_subs;
        counters[2] = 1;
    }
    return 1;  // the first module carries the counters; stop there
}

int CollectRanges(dl_phdr_info* info, size_t, void* data) {
    auto* ranges = static_cast<std::vector<Range>*>(data);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& ph = info->dlpi_phdr[i];
        if (ph.p_type == PT_LOAD && (ph.p_flags & PF_R) != 0 && ph.p_memsz != 0) {
            const uintptr_t begin = info->dlpi_addr + ph.p_vaddr;
            ranges->push_back({begin, begin + ph.p_memsz});
        }
    }
    return 0;
}

// The main program and this library stay loaded while this code runs, so their ranges need no
// check against the loader's counters.
struct LastingRanges {
    uintptr_t self;
    bool first = true;
    std::vector<Range> ranges;
};

int CollectLasting(dl_phdr_info* info, size_t size, void* data) {
    auto* lasting = static_cast<LastingRanges*>(data);
    std::vector<Range> module;
    CollectRanges(info, size, &module);
    bool keep = lasting->first;
    for (const Range& r : module) {
        keep = keep || SpanIn(lasting->self, r.begin, r.end) != 0;
    }
    if (keep) {
        lasting->ranges.insert(lasting->ranges.end(), module.begin(), module.end());
    }
    lasting->first = false;
    return 0;
}

const std::vector<Range>& Lasting() {
    static const std::vector<Range> s_ranges = [] {
        LastingRanges lasting;
        lasting.self = reinterpret_cast<uintptr_t>(&KnownReadableSpan);
        dl_iterate_phdr(CollectLasting, &lasting);
        return lasting.ranges;
    }();
    return s_ranges;
}

size_t ModuleSpan(uintptr_t address) {
    for (const Range& r : Lasting()) {
        if (const size_t span = SpanIn(address, r.begin, r.end)) {
            return span;
        }
    }
    thread_local ModuleRanges t_modules;
    unsigned long long counters[3] = {0, 0, 0};
    dl_iterate_phdr(ReadCounters, counters);
    if (counters[2] == 0) {
        return 0;
    }
    if (!t_modules.known || counters[0] != t_modules.adds || counters[1] != t_modules.subs) {
        t_modules.ranges.clear();
        dl_iterate_phdr(CollectRanges, &t_modules.ranges);
        t_modules.adds = counters[0];
        t_modules.subs = counters[1];
        t_modules.known = true;
    }
    for (const Range& r : t_modules.ranges) {
        if (const size_t span = SpanIn(address, r.begin, r.end)) {
            return span;
        }
    }
    return 0;
}

// The main heap's start never moves; its end is the break, which glibc keeps without a system call.
uintptr_t HeapStart() {
    static const uintptr_t s_start = [] {
        uintptr_t start = 0;
        if (std::FILE* maps = std::fopen("/proc/self/maps", "r")) {
            char line[512];
            while (std::fgets(line, sizeof line, maps) != nullptr) {
                unsigned long begin = 0;
                unsigned long end = 0;
                if (std::strstr(line, "[heap]") != nullptr &&
                    std::sscanf(line, "%lx-%lx", &begin, &end) == 2) {
                    start = begin;
                    break;
                }
            }
            std::fclose(maps);
        }
        // No heap line yet: the break has not moved from where the heap will start.
        return start != 0 ? start : reinterpret_cast<uintptr_t>(sbrk(0));
    }();
    return s_start;
}

size_t HeapSpan(uintptr_t address) {
    const uintptr_t start = HeapStart();
    void* brk = sbrk(0);
    if (start == 0 || brk == reinterpret_cast<void*>(-1)) {
        return 0;
    }
    return SpanIn(address, start, reinterpret_cast<uintptr_t>(brk));
}

}  // namespace

size_t KnownReadableSpan(const void* p) {
    const auto address = reinterpret_cast<uintptr_t>(p);
    if (const size_t span = StackSpan(address)) {
        return span;
    }
    if (const size_t span = HeapSpan(address)) {
        return span;
    }
    return ModuleSpan(address);
}

}  // namespace pind::platform::detail

#else

namespace pind::platform::detail {
size_t KnownReadableSpan(const void*) { return 0; }
}  // namespace pind::platform::detail

#endif

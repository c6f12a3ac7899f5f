#include "pind/platform/System.h"

#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <stdlib.h>

#include "pind/platform/WinTypes.h"

namespace pind::platform {

uint32_t ModuleFileName(char* buffer, uint32_t size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    const DWORD n = ::GetModuleFileNameA(nullptr, buffer, size);
    // Windows XP (and Wine) leave a cut name unterminated; Vista and later terminate it.
    if (n >= size) {
        buffer[size - 1] = '\0';
        return size;
    }
    return n;
}

uint32_t CurrentProcessId() { return ::GetProcessId(::GetCurrentProcess()); }

bool SetEnv(const char* name, const char* value) {
    if (name == nullptr) {
        return false;
    }
    return _putenv_s(name, value != nullptr ? value : "") == 0;
}

int MakeDir(const char* path) { return path != nullptr ? _mkdir(path) : -1; }

long FileLength(int fd) { return fd >= 0 ? _filelength(fd) : -1L; }
int64_t FileLength64(int fd) { return fd >= 0 ? _filelengthi64(fd) : -1; }
int FileNo(std::FILE* stream) { return stream != nullptr ? _fileno(stream) : -1; }

int Seek64(std::FILE* stream, int64_t offset, int whence) {
    return stream != nullptr && _fseeki64(stream, offset, whence) == 0 ? 0 : -1;
}

int64_t Tell64(std::FILE* stream) { return stream != nullptr ? _ftelli64(stream) : -1; }

bool SetBinaryMode(std::FILE* stream) {
    return stream != nullptr && _setmode(_fileno(stream), _O_BINARY) != -1;
}

uint32_t FileAttributes(const char* path) {
    return path != nullptr ? ::GetFileAttributesA(path) : kInvalidFileAttributes;
}

uint32_t PrivateProfileInt(const char* section, const char* key, int defaultValue,
                           const char* fileName) {
    if (section == nullptr || key == nullptr || fileName == nullptr) {
        return static_cast<uint32_t>(defaultValue);
    }
    return ::GetPrivateProfileIntA(section, key, defaultValue, fileName);
}

bool GetThreadTimes(ThreadTimes* out) {
    if (out == nullptr) {
        return false;
    }
    out->kernel = 0;
    out->user = 0;
    FILETIME creation, exit, kernel, user;
    if (!::GetThreadTimes(::GetCurrentThread(), &creation, &exit, &kernel, &user)) {
        return false;
    }
    out->kernel = (static_cast<int64_t>(kernel.dwHighDateTime) << 32) | kernel.dwLowDateTime;
    out->user = (static_cast<int64_t>(user.dwHighDateTime) << 32) | user.dwLowDateTime;
    return true;
}

uint32_t ProcessHeaps(uint32_t maxHeaps, HeapHandle* handles) {
    if (handles == nullptr) {
        maxHeaps = 0;
    }
    return ::GetProcessHeaps(maxHeaps, reinterpret_cast<PHANDLE>(handles));
}

bool WalkHeap(HeapHandle heap, std::vector<HeapEntry>* entries) {
    if (entries == nullptr || heap == nullptr) {
        return false;
    }
    entries->clear();
    PROCESS_HEAP_ENTRY e{};
    e.lpData = nullptr;
    while (::HeapWalk(static_cast<HANDLE>(heap), &e)) {
        HeapEntry out{};
        out.data = reinterpret_cast<uintptr_t>(e.lpData);
        out.dataSize = e.cbData;
        out.overhead = e.cbOverhead;
        out.regionIndex = e.iRegionIndex;
        out.flags = e.wFlags;
        if ((e.wFlags & PROCESS_HEAP_REGION) != 0) {
            out.committedSize = e.Region.dwCommittedSize;
            out.uncommittedSize = e.Region.dwUnCommittedSize;
            out.firstBlock = reinterpret_cast<uintptr_t>(e.Region.lpFirstBlock);
            out.lastBlock = reinterpret_cast<uintptr_t>(e.Region.lpLastBlock);
        }
        entries->push_back(out);
    }
    return ::GetLastError() == ERROR_NO_MORE_ITEMS;
}

bool IsReadableString(const char* text, size_t maxChars) {
    if (text == nullptr) {
        return false;
    }
    return ::IsBadStringPtrA(text, static_cast<UINT_PTR>(maxChars)) == 0;
}

}  // namespace pind::platform

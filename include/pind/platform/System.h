// Process, file-system and diagnostics services of the operating system, with the Windows
// functions' results: module path, process id, `_mkdir`, `_filelength`, `GetFileAttributesA`,
// `GetPrivateProfileIntA`, `GetThreadTimes`, the heap walk and the readable-string probe.
//   char path[256]; pind::platform::ModuleFileName(path, sizeof path);
#ifndef PIND_PLATFORM_SYSTEM_H_
#define PIND_PLATFORM_SYSTEM_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "pind/platform/Export.h"

namespace pind::platform {

/// As `GetModuleFileNameA(nullptr, ...)`: the running executable's full path, cut to size - 1
/// characters and zero-terminated. Returns the characters copied (size when cut), 0 on failure.
/// POSIX paths keep their '/' separators.
PIND_API uint32_t ModuleFileName(char* buffer, uint32_t size);

/// `GetProcessId(GetCurrentProcess())`.
PIND_API uint32_t CurrentProcessId();

/// Sets (or, for a null value, removes) a variable of the C runtime's environment, the one its
/// time-zone code reads (`TZ`). False on failure or a null name.
PIND_API bool SetEnv(const char* name, const char* value);

/// `_mkdir`: 0 when created; -1 otherwise (errno EEXIST when it already exists).
PIND_API int MakeDir(const char* path);

/// `_filelength` of an open descriptor; -1 on error.
PIND_API long FileLength(int fd);
/// `_filelengthi64` of an open descriptor; -1 on error.
PIND_API int64_t FileLength64(int fd);
/// `_fileno`; -1 for a null stream.
PIND_API int FileNo(std::FILE* stream);
/// `_fseeki64`: 0 on success, -1 on failure.
PIND_API int Seek64(std::FILE* stream, int64_t offset, int whence);
/// `_ftelli64`: the position, -1 on failure.
PIND_API int64_t Tell64(std::FILE* stream);
/// `_setmode(_fileno(stream), _O_BINARY)`: no newline translation on the stream (a no-op on POSIX).
/// False for a null stream or when the mode cannot be set.
PIND_API bool SetBinaryMode(std::FILE* stream);

constexpr uint32_t kInvalidFileAttributes = 0xFFFFFFFFu;  ///< INVALID_FILE_ATTRIBUTES
constexpr uint32_t kFileAttributeReadonly = 0x01;   ///< FILE_ATTRIBUTE_READONLY
constexpr uint32_t kFileAttributeDirectory = 0x10;  ///< FILE_ATTRIBUTE_DIRECTORY
constexpr uint32_t kFileAttributeNormal = 0x80;     ///< FILE_ATTRIBUTE_NORMAL

/// `GetFileAttributesA`: kInvalidFileAttributes when the path does not exist (or is null).
PIND_API uint32_t FileAttributes(const char* path);

/// `GetPrivateProfileIntA`: the integer under [section] key= in an INI file; section and key match
/// ignoring ASCII case and surrounding blanks. A missing file, section or key, or an empty value,
/// gives `defaultValue`. The value is read as Windows reads it: leading blanks, a sign, a 0x/0o/0b
/// base prefix, then digits up to the first other character ("12abc" is 12, "abc" is 0).
PIND_API uint32_t PrivateProfileInt(const char* section, const char* key, int defaultValue,
                                    const char* fileName);

/// `GetThreadTimes` of the calling thread, in 100-nanosecond units.
struct ThreadTimes {
    int64_t kernel;  ///< time in the kernel
    int64_t user;    ///< time in user code
};
/// False (and zeros) when the platform cannot tell.
PIND_API bool GetThreadTimes(ThreadTimes* out);

/// Heaps in the shape of `GetProcessHeaps` / `HeapWalk` (PROCESS_HEAP_ENTRY).
using HeapHandle = void*;
constexpr uint16_t kHeapEntryRegion = 0x0001;       ///< PROCESS_HEAP_REGION
constexpr uint16_t kHeapEntryUncommitted = 0x0002;  ///< PROCESS_HEAP_UNCOMMITTED_RANGE
constexpr uint16_t kHeapEntryBusy = 0x0004;         ///< PROCESS_HEAP_ENTRY_BUSY

/// One step of a heap walk, the fields of PROCESS_HEAP_ENTRY.
struct HeapEntry {
    uintptr_t data;        ///< lpData
    uint32_t dataSize;     ///< cbData
    uint8_t overhead;      ///< cbOverhead
    uint8_t regionIndex;   ///< iRegionIndex
    uint16_t flags;        ///< wFlags
    // Region part, meaningful when flags has kHeapEntryRegion.
    uint32_t committedSize;    ///< Region.dwCommittedSize
    uint32_t uncommittedSize;  ///< Region.dwUnCommittedSize
    uintptr_t firstBlock;  ///< lpFirstBlock
    uintptr_t lastBlock;   ///< lpLastBlock
};

/// Fills up to `maxHeaps` handles and returns the number of heaps the process has (which may be
/// larger than `maxHeaps`, as GetProcessHeaps does). On Windows these are the Win32 heaps. On glibc
/// each malloc arena is one heap; its handle is a stable pseudo-address, not a pointer to use.
PIND_API uint32_t ProcessHeaps(uint32_t maxHeaps, HeapHandle* handles);

/// Every entry of one heap, in walk order; false for an unknown handle. On glibc an arena is
/// reported as a region entry (firstBlock = handle + 64, standing for its header), one busy entry
/// with the bytes in use, one free entry (flags 0) with the bytes in its bins, and, where the arena
/// has reserved more address space than it uses, an uncommitted range. Summed as the heap report
/// sums them, header + busy + free is the arena's current size.
PIND_API bool WalkHeap(HeapHandle heap, std::vector<HeapEntry>* entries);

/// `!IsBadStringPtrA(text, maxChars)`: true when the text can be read up to its terminating zero
/// or `maxChars` characters, whichever comes first, without a fault. Null is not readable.
PIND_API bool IsReadableString(const char* text, size_t maxChars);

}  // namespace pind::platform

#endif  // PIND_PLATFORM_SYSTEM_H_

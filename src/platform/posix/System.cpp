#include "pind/platform/System.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/posix/ReadableMemory.h"

namespace pind::platform {

uint32_t ModuleFileName(char* buffer, uint32_t size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    char path[4096];
    const ssize_t n = readlink("/proc/self/exe", path, sizeof path);
    if (n <= 0) {
        buffer[0] = '\0';
        return 0;
    }
    const size_t length = static_cast<size_t>(n);
    if (length >= size) {
        std::memcpy(buffer, path, size - 1);
        buffer[size - 1] = '\0';
        return size;
    }
    std::memcpy(buffer, path, length);
    buffer[length] = '\0';
    return static_cast<uint32_t>(length);
}

uint32_t CurrentProcessId() { return static_cast<uint32_t>(getpid()); }

bool SetEnv(const char* name, const char* value) {
    if (name == nullptr) {
        return false;
    }
    return (value != nullptr ? setenv(name, value, 1) : unsetenv(name)) == 0;
}

int MakeDir(const char* path) {
    if (path == nullptr) {
        errno = EINVAL;
        return -1;
    }
    return mkdir(path, 0755) == 0 ? 0 : -1;
}

long FileLength(int fd) {
    struct stat st {};
    return fstat(fd, &st) == 0 ? static_cast<long>(st.st_size) : -1L;
}

int64_t FileLength64(int fd) {
    struct stat st {};
    return fstat(fd, &st) == 0 ? static_cast<int64_t>(st.st_size) : -1;
}

int FileNo(std::FILE* stream) { return stream != nullptr ? fileno(stream) : -1; }

bool SetBinaryMode(std::FILE* stream) { return stream != nullptr; }

int Seek64(std::FILE* stream, int64_t offset, int whence) {
    if (stream == nullptr) {
        return -1;
    }
    return fseeko(stream, static_cast<off_t>(offset), whence) == 0 ? 0 : -1;
}

int64_t Tell64(std::FILE* stream) {
    if (stream == nullptr) {
        return -1;
    }
    return static_cast<int64_t>(ftello(stream));
}

uint32_t FileAttributes(const char* path) {
    struct stat st {};
    if (path == nullptr || stat(path, &st) != 0) {
        return kInvalidFileAttributes;
    }
    const uint32_t readOnly = access(path, W_OK) == 0 ? 0u : kFileAttributeReadonly;
    if (S_ISDIR(st.st_mode)) {
        return kFileAttributeDirectory | readOnly;
    }
    return readOnly != 0 ? readOnly : kFileAttributeNormal;
}

bool GetThreadTimes(ThreadTimes* out) {
    if (out == nullptr) {
        return false;
    }
    out->kernel = 0;
    out->user = 0;
#if defined(RUSAGE_THREAD)
    rusage usage{};
    if (getrusage(RUSAGE_THREAD, &usage) != 0) {
        return false;
    }
    // 100-nanosecond units, as FILETIME counts.
    out->kernel = static_cast<int64_t>(usage.ru_stime.tv_sec) * 10000000 +
                  static_cast<int64_t>(usage.ru_stime.tv_usec) * 10;
    out->user = static_cast<int64_t>(usage.ru_utime.tv_sec) * 10000000 +
                static_cast<int64_t>(usage.ru_utime.tv_usec) * 10;
    return true;
#else
    return false;
#endif
}

namespace {

// Copies [p, p + n) out of our own address space through the kernel, which answers EFAULT instead
// of faulting when a page is not readable.
bool ProbeCopy(const char* p, char* out, size_t n) {
#if defined(__linux__)
    iovec local{out, n};
    iovec remote{const_cast<char*>(p), n};
    const ssize_t got = process_vm_readv(getpid(), &local, 1, &remote, 1, 0);
    if (got >= 0) {
        return static_cast<size_t>(got) == n;
    }
    if (errno != ENOSYS && errno != EPERM) {
        return false;
    }
#endif
    // Without process_vm_readv: a pipe write reads the bytes in the kernel and fails with EFAULT.
    int fds[2];
    if (pipe(fds) != 0) {
        return false;
    }
    const ssize_t written = write(fds[1], p, n);
    bool ok = written == static_cast<ssize_t>(n);
    if (ok) {
        ok = read(fds[0], out, n) == static_cast<ssize_t>(n);
    }
    close(fds[0]);
    close(fds[1]);
    return ok;
}

}  // namespace

bool IsReadableString(const char* text, size_t maxChars) {
    if (text == nullptr) {
        return false;
    }
    // Most texts live where the process knows it can read; only the rest costs a kernel probe.
    if (const size_t known = detail::KnownReadableSpan(text)) {
        if (known >= maxChars || std::memchr(text, '\0', known) != nullptr) {
            return true;
        }
    }
    const uintptr_t kPage = 4096;
    char chunk[4096];
    const char* p = text;
    size_t left = maxChars;
    while (left > 0) {
        // Probe up to the end of the page: a page is readable or not as a whole.
        const uintptr_t address = reinterpret_cast<uintptr_t>(p);
        size_t n = static_cast<size_t>(kPage - (address % kPage));
        if (n > left) {
            n = left;
        }
        if (!ProbeCopy(p, chunk, n)) {
            return false;
        }
        if (std::memchr(chunk, '\0', n) != nullptr) {
            return true;
        }
        p += n;
        left -= n;
    }
    return true;
}

}  // namespace pind::platform

// Memory this process can read without asking the kernel, so that the readable-string probe stays
// cheap for the usual texts: the calling thread's stack above the current frame, the readable
// segments of the loaded modules, and the main heap below the program break.
#ifndef PIND_SRC_PLATFORM_POSIX_READABLEMEMORY_H_
#define PIND_SRC_PLATFORM_POSIX_READABLEMEMORY_H_

#include <cstddef>

namespace pind::platform::detail {

/// How many bytes from `p` on are known to be readable right now; 0 when `p` lies in none of the
/// known ranges (which says nothing either way).
size_t KnownReadableSpan(const void* p);

}  // namespace pind::platform::detail

#endif  // PIND_SRC_PLATFORM_POSIX_READABLEMEMORY_H_

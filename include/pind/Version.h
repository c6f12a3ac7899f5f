// The library's version, for `pind --version` and for hosts that check what they loaded.
//   std::printf("%s\n", pind::Version());
#ifndef PIND_VERSION_H_
#define PIND_VERSION_H_

#include "pind/platform/Export.h"

#define PIND_VERSION_MAJOR 0
#define PIND_VERSION_MINOR 1
#define PIND_VERSION_PATCH 0

namespace pind {
/// "major.minor.patch" of the library that is loaded (which may differ from the header's).
PIND_API const char* Version();
}  // namespace pind

#endif  // PIND_VERSION_H_

// The library's version, for `pind --version` and for hosts that check what they loaded.
//   std::printf("%s\n", pind::Version());
#ifndef PIND_VERSION_H_
#define PIND_VERSION_H_

#include "pind/VersionNumbers.h"  // PIND_VERSION_MAJOR/_MINOR/_PATCH/_STRING, made by the build
#include "pind/platform/Export.h"

namespace pind {
/// "major.minor.patch" of the library that is loaded (which may differ from the header's).
PIND_API const char* Version();
}  // namespace pind

#endif  // PIND_VERSION_H_

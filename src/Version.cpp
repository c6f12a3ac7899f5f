#include "pind/Version.h"

#define PIND_STR2(x) #x
#define PIND_STR(x) PIND_STR2(x)

namespace pind {
const char* Version() {
    return PIND_STR(PIND_VERSION_MAJOR) "." PIND_STR(PIND_VERSION_MINOR) "." PIND_STR(
        PIND_VERSION_PATCH);
}
}  // namespace pind

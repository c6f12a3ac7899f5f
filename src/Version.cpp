#include "pind/Version.h"

namespace pind {
const char* Version() { return PIND_VERSION_STRING; }
}  // namespace pind

#include "pind/diag/Report.h"

#include <cstdarg>
#include <cstdio>

#include "pind/client/PindClient.h"
#include "pind/platform/EngineLog.h"

namespace pind {

void LogMessage(const char* format, ...) {
    if (format == nullptr) {
        return;
    }
    char buffer[kLogMessageCapacity];
    va_list args;
    va_start(args, format);
    const int n = std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    if (n > 0 && buffer[0] != '\0') {
        platform::PindLogMsg("%s", buffer);
    }
}

void ReportIfNot(const char* expression, const char* file, int line) {
    LogMessage("IF_NOT(%s) in %s, %d", expression != nullptr ? expression : "",
               file != nullptr ? file : "", line);
}

void ReportAssert(const char* expression, int line, const char* file) {
    GetDebug()->DebugPrintf("ASSERT(%s) in %d line of %s", expression != nullptr ? expression : "",
                            line, file != nullptr ? file : "");
}

}  // namespace pind

// The library's diagnostic lines: the printf-style log-message function that forwards to the
// engine log, and the precondition and assertion reports built on it.
//   if (!pszFile) { pind::ReportIfNot("pszIniFile", "PindIni", 278); return false; }
#ifndef PIND_DIAG_REPORT_H_
#define PIND_DIAG_REPORT_H_

#include "pind/platform/Export.h"

namespace pind {

/// Capacity of the log-message function's local buffer; longer texts are cut to 4095 bytes.
constexpr int kLogMessageCapacity = 4096;

/// Formats into a local buffer and passes the text to the engine log (PindLogMsg) unless it is
/// empty. A null format does nothing.
PIND_API void LogMessage(const char* format, ...) PIND_PRINTF(1, 2);

/// "IF_NOT(<expression>) in <file>, <line>" through LogMessage.
PIND_API void ReportIfNot(const char* expression, const char* file, int line);

/// "ASSERT(<expression>) in <line> line of <file>" through the current debug object's DebugPrintf.
PIND_API void ReportAssert(const char* expression, int line, const char* file);

}  // namespace pind

#endif  // PIND_DIAG_REPORT_H_

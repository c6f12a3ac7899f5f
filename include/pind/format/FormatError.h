// The formatter error channel: every fault of the checked formatter arrives here as a numbered
// report. A handler the host puts in the slot receives them all; otherwise the default handler
// writes one engine-log line per distinct report, remembering the last 11.
//   g_pfnFormatErrorHandler = [](int nCode, const char* pszMsg, const char*, int) { ...; return 0;
//   };
#ifndef PIND_FORMAT_FORMATERROR_H_
#define PIND_FORMAT_FORMATERROR_H_

#include "pind/platform/Export.h"

/// Receives (code, message, source file, source line) of one report; the result is ignored.
using FormatErrorHandler = int (*)(int nCode, const char* pszMessage, const char* pszFile,
                                   int nLine);

/// Identifier of the string being formatted, printed in every default report. The library never
/// writes it; 0 until the host does.
extern PIND_API int g_nErrorStrId;
/// The handler slot: when not null it receives every report instead of the default handler. The
/// library never writes it.
extern PIND_API FormatErrorHandler g_pfnFormatErrorHandler;

/// Sends (code, message) with the file and line of the last formatter built (or of the last
/// CheckFormatArgs call) to the slot's handler, or to DefaultFormatErrorHandler when it is empty.
PIND_API void ReportFormatError(int nCode, const char* pszMessage);

/// Logs "StringFormat error.format string:..." through the engine log unless the same report
/// (format text, message, string id and file; not code or line) is among the last 11 written.
/// A null message stands as "(empty)", a null file as "(unknown)". Returns 0.
PIND_API int DefaultFormatErrorHandler(int nCode, const char* pszMessage, const char* pszFile,
                                       int nLine);

#endif  // PIND_FORMAT_FORMATERROR_H_

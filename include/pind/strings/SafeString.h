// Null-safe wrappers of the C runtime's string routines for GBK byte strings: a null pointer never
// crashes the caller; it gives a neutral result and one line in the engine log
// ("SafeStrlen param is null", ...). Valid calls log nothing.
//   char buf[16]; SafeSprintf(buf, sizeof buf, "%d/%d", 3, 4);  // true, "3/4"
#ifndef PIND_STRINGS_SAFESTRING_H_
#define PIND_STRINGS_SAFESTRING_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "pind/platform/Export.h"

/// `strlen` of the text; 0 for null (logged).
PIND_API size_t SafeStrlen(const char* pszText);
/// `strstr`: the first occurrence of the pattern, or null; null (logged) when either is null.
PIND_API const char* SafeStrstr(const char* pszText, const char* pszPattern);
/// `strchr`: the first `nChar` (0 finds the terminator), or null; null (logged) for a null text.
PIND_API const char* SafeStrchr(const char* pszText, int nChar);
/// `strrchr`: the last `nChar`, or null; null (logged) for a null text.
PIND_API const char* SafeStrrchr(const char* pszText, int nChar);

/// `_itoa_s(*pnValue, ...)`: 0 on success or the Windows runtime's error code (22 for size 0 or a
/// radix outside 2..36, 34 when the digits do not fit; see pind/platform/CrtString.h); -1 (logged)
/// for a null buffer. The value pointer is not checked.
PIND_API int SafeItoA(const int32_t* pnValue, char* pszBuffer, size_t nSize, int nRadix);
/// `_i64toa_s`, `_ui64toa_s`, `_ltoa_s` and `_ultoa_s` (32-bit long, as on Windows) of the value
/// behind the pointer, with the runtime's error codes; -1 without a log line for a null buffer.
/// The value pointer is not checked.
PIND_API int SafeI64toA(const int64_t* pnValue, char* pszBuffer, size_t nSize, int nRadix);
/// `_ui64toa_s` of the value behind the pointer, as SafeI64toA.
PIND_API int SafeUi64toA(const uint64_t* pnValue, char* pszBuffer, size_t nSize, int nRadix);
/// `_ltoa_s` of the value behind the pointer, as SafeI64toA.
PIND_API int SafeLtoA(const int32_t* pnValue, char* pszBuffer, size_t nSize, int nRadix);
/// `_ultoa_s` of the value behind the pointer, as SafeI64toA.
PIND_API int SafeUltoA(const uint32_t* pnValue, char* pszBuffer, size_t nSize, int nRadix);

/// `strtoul` with Windows' 32-bit unsigned long: a '-' negates modulo 2^32, a magnitude above
/// 0xFFFFFFFF gives 0xFFFFFFFF. 0 (logged) for a null text; `ppszEnd` may be null.
PIND_API uint32_t SafeStrtoul(const char* pszText, char** ppszEnd, int nBase);
/// `strtol` with Windows' 32-bit long: out-of-range values give INT32_MAX or INT32_MIN. 0 (logged)
/// for a null text; `ppszEnd` may be null.
PIND_API int32_t SafeStrtol(const char* pszText, char** ppszEnd, int nBase);
/// `_atoi64`; 0 (logged as "...null or empty") for a null or empty text.
PIND_API int64_t SafeAtoi64(const char* pszText);
/// `_stricmp` (ASCII case folded); -1 (logged) when either is null, which a caller cannot tell from
/// "less than".
PIND_API int SafeStricmp(const char* pszLeft, const char* pszRight);
/// `_strnicmp` over at most `nCount` bytes; -1 (logged) when either is null.
PIND_API int SafeStrnicmp(const char* pszLeft, const char* pszRight, size_t nCount);

/// Bounded printf into the buffer, then byte `nSize - 1` is zeroed whatever was printed, so a long
/// text is cut. False for a null buffer or format or a size below 1 (nothing is written then).
PIND_API bool SafeSprintf(char* pszBuffer, int32_t nSize, const char* pszFormat, ...)
    PIND_PRINTF(3, 4);
/// Zeroes the whole buffer, then prints the value with "%llu" through SafeSprintf. False for a null
/// buffer, a size below 1 or (where the runtime would fault) a null value pointer.
PIND_API bool SafeUi64ToStr(char* pszBuffer, int32_t nSize, const uint64_t* pnValue);

/// The part after the last '.' of the path, folders not considered ("a.b/c" gives "b/c"); empty
/// when the path has no '.' or ends with one.
PIND_API std::string GetFileExt(const std::string& strPath);

/// True when, walking lead bytes from the start, some position with three bytes left holds
/// 1110xxxx 10xxxxxx 10xxxxxx (a GBK text can match by chance). False for null or no match.
PIND_API bool HasUtf8ThreeByte(const char* pszText);
/// True when some byte pair, at any offset, is 0xB0..0xF7 followed by 0xA1..0xFE. False for null.
PIND_API bool HasGb2312Char(const char* pszText);

#endif  // PIND_STRINGS_SAFESTRING_H_

// Checked number parsing (the whole text must be a number, else 0), wide text to UTF-8, and
// in-place byte masking. A text is hexadecimal when it is at least 3 long and starts with "0x"
// (lower-case x); otherwise a '-' may lead a text at least 2 long; every other byte must be a digit
// (0-9, plus a-f/A-F in hexadecimal). An empty text passes and gives 0. Longs are 32-bit, as on
// Windows.
//   StrToInt("0x1F") == 31;  StrToInt("12a") == 0;  SzToInt("0x1F") == 0 (atol of a hex text)
#ifndef PIND_STRINGS_CONVERT_H_
#define PIND_STRINGS_CONVERT_H_

#include <cstdint>
#include <string>
#include <type_traits>

#include "pind/platform/Export.h"

/// `atoi` of a checked decimal text (saturating), or `strtoul` base 16 of a checked hexadecimal
/// text taken as signed ("0xFFFFFFFF" is -1); 0 when the check fails ("0X1F", "-", "0-5").
PIND_API int32_t StrToInt(const std::string& strText);
/// `strtoul` base 10 or 16 of a checked text (32-bit: "-1" gives 0xFFFFFFFF, larger magnitudes
/// saturate at 0xFFFFFFFF); 0 when the check fails.
PIND_API uint32_t StrToUInt(const std::string& strText);
/// `strtoull` base 10 or 16 of a checked text ("-1" gives 2^64 - 1); 0 when the check fails.
PIND_API uint64_t StrToUInt64(const std::string& strText);

/// As StrToUInt64 on a zero-terminated text; 0 for null.
PIND_API uint64_t SzToUInt64(const char* pszText);
/// `atol` (32-bit, saturating) of a checked text, decimal or hexadecimal alike, so a hexadecimal
/// text passes the check and gives 0; 0 for null or a failed check.
PIND_API int32_t SzToInt(const char* pszText);
/// `atof` of a text checked with '.' also allowed anywhere ("1.2.3" gives 1.2, "1e5" gives 0.0);
/// 0.0 for null or a failed check.
PIND_API double SzToDouble(const char* pszText);

/// UTF-8 of 16-bit units up to the terminator, each unit encoded alone in 1 to 3 bytes; empty for
/// null. Throws std::range_error("bad conversion") for a surrogate half (0xD800..0xDFFF).
PIND_API std::string WideToUtf8(const char16_t* pwszText);
/// UTF-8 of one 16-bit unit ("\0" for unit 0); throws std::range_error as above.
PIND_API std::string WideToUtf8(char16_t wch);

/// The same for wchar_t text where wchar_t is 16-bit (Windows).
template <typename W, typename = std::enable_if_t<std::is_same_v<W, wchar_t> && sizeof(W) == 2>>
std::string WideToUtf8(const W* pwszText) {
    return WideToUtf8(reinterpret_cast<const char16_t*>(pwszText));
}
/// The same for one wchar_t unit where wchar_t is 16-bit (Windows).
template <typename W, typename = std::enable_if_t<std::is_same_v<W, wchar_t> && sizeof(W) == 2>>
std::string WideToUtf8(W wch) {
    return WideToUtf8(static_cast<char16_t>(wch));
}

/// XORs byte i of the buffer with key byte i mod strlen(key), in place. False for a null buffer or
/// key; true without touching anything for a length of 0 or less. An empty key with a positive
/// length would divide by zero: the buffer is left unchanged and the result is false.
PIND_API bool MaskWithKey(void* pBuffer, int32_t nLength, const char* pszKey);
/// XORs each byte with a running value that starts at `nStart` mod 256 and grows by 1 per byte,
/// stopping as soon as a masked byte becomes 0 (the rest is left as it was). False for null; true
/// otherwise. Applying it twice restores the text only when no byte became 0.
PIND_API bool MaskRunning(char* pszText, uint32_t nStart);

#endif  // PIND_STRINGS_CONVERT_H_

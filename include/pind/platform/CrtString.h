// The Microsoft C runtime's string and number functions, with the Windows runtime's results and
// error codes on every platform: `_itoa_s` and its kin, `_stricmp`, `_strnicmp`, `_atoi64`.
//   char buf[8]; int err = pind::platform::ItoaS(-12, buf, sizeof buf, 10);  // 0, "-12"
#ifndef PIND_PLATFORM_CRTSTRING_H_
#define PIND_PLATFORM_CRTSTRING_H_

#include <cstddef>
#include <cstdint>

#include "pind/platform/Export.h"

namespace pind::platform {

constexpr int kErrInvalid = 22;             ///< EINVAL
constexpr int kErrRange = 34;               ///< ERANGE
constexpr int kNlsCompareError = 0x7FFFFFFF;  ///< _NLSCMPERROR

/// `_itoa_s` (and `_ltoa_s`, whose long is 32-bit on Windows). Digits are lower-case; only radix 10
/// prints a '-', other radixes print the value's 32-bit two's complement. Returns 0 on success;
/// kErrInvalid for a null buffer or size 0 (buffer untouched); otherwise buffer[0] is set to 0
/// first, then kErrRange when size <= 1 (<= 2 for a negative decimal), kErrInvalid for a radix
/// outside 2..36, and kErrRange (buffer[0] = 0) when the digits and terminator do not fit.
/// No invalid-parameter handler is ever invoked.
PIND_API int ItoaS(int32_t value, char* buffer, size_t size, int radix);
/// `_ltoa_s`: exactly ItoaS, long being 32-bit on Windows.
PIND_API int LtoaS(int32_t value, char* buffer, size_t size, int radix);
/// `_ultoa_s`: as ItoaS, never negative.
PIND_API int UltoaS(uint32_t value, char* buffer, size_t size, int radix);
/// `_i64toa_s` / `_ui64toa_s`: as ItoaS over 64 bits.
PIND_API int I64toaS(int64_t value, char* buffer, size_t size, int radix);
/// `_ui64toa_s`: as ItoaS over 64 bits, never negative.
PIND_API int Ui64toaS(uint64_t value, char* buffer, size_t size, int radix);

/// `_stricmp`: compares after mapping ASCII A-Z to a-z; returns the difference of the first
/// differing bytes (as unsigned chars), 0 when equal, kNlsCompareError when either is null.
PIND_API int Stricmp(const char* lhs, const char* rhs);
/// `_strnicmp` over at most `count` bytes; count 0 gives 0 (nulls still give kNlsCompareError).
PIND_API int Strnicmp(const char* lhs, const char* rhs, size_t count);

/// `_atoi64`: leading white space, an optional sign, decimal digits up to the first other
/// character; no digits gives 0; out of range gives INT64_MAX / INT64_MIN. Null gives 0.
PIND_API int64_t Atoi64(const char* text);

}  // namespace pind::platform

#endif  // PIND_PLATFORM_CRTSTRING_H_

// The runtime's `strtol`, `strtoul`, `atoi` and `atol` as the Windows runtime computes them, with a
// 32-bit long, whatever the size of long where the library is built.
#ifndef PIND_SRC_STRINGS_LONG32_H_
#define PIND_SRC_STRINGS_LONG32_H_

#include <cerrno>
#include <cstdint>
#include <cstdlib>

namespace pind::detail {

/// Windows `strtol`: out-of-range values saturate at INT32_MIN / INT32_MAX.
inline int32_t Strtol32(const char* text, char** end, int base) {
    errno = 0;
    const long long value = std::strtoll(text, end, base);
    if (value > INT32_MAX) {
        return INT32_MAX;
    }
    if (value < INT32_MIN) {
        return INT32_MIN;
    }
    return static_cast<int32_t>(value);
}

/// Windows `strtoul`: a '-' negates modulo 2^32; a magnitude above 0xFFFFFFFF gives 0xFFFFFFFF.
inline uint32_t Strtoul32(const char* text, char** end, int base) {
    const char* p = text;
    while (*p == ' ' || (*p >= '\t' && *p <= '\r')) {
        ++p;
    }
    const bool negative = *p == '-';
    errno = 0;
    const unsigned long long value = std::strtoull(text, end, base);
    if (errno == ERANGE) {
        return UINT32_MAX;
    }
    // strtoull already negated a '-' text modulo 2^64; undo that to see the magnitude.
    const unsigned long long magnitude = negative ? 0 - value : value;
    if (magnitude > UINT32_MAX) {
        return UINT32_MAX;
    }
    return static_cast<uint32_t>(value);
}

/// Windows `atoi` / `atol` (both 32-bit there): decimal, saturating.
inline int32_t Atol32(const char* text) { return Strtol32(text, nullptr, 10); }

}  // namespace pind::detail

#endif  // PIND_SRC_STRINGS_LONG32_H_

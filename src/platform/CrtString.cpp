#include "pind/platform/CrtString.h"

#include <cstdint>
#include <limits>

// Written here rather than forwarded to the runtime on Windows: the results are the Windows
// runtime's, but a bad argument must come back as an error code instead of reaching the runtime's
// invalid-parameter handler, which ends the process.
namespace pind::platform {
namespace {

int ToText(uint64_t magnitude, bool negative, char* buffer, size_t size, int radix) {
    if (buffer == nullptr || size == 0) {
        return kErrInvalid;
    }
    buffer[0] = '\0';
    if (size <= (negative ? 2u : 1u)) {
        return kErrRange;
    }
    if (radix < 2 || radix > 36) {
        return kErrInvalid;
    }
    char digits[65];
    size_t count = 0;
    do {
        const unsigned digit = static_cast<unsigned>(magnitude % static_cast<unsigned>(radix));
        magnitude /= static_cast<unsigned>(radix);
        digits[count++] = static_cast<char>(digit > 9 ? digit - 10 + 'a' : digit + '0');
    } while (magnitude > 0);
    const size_t length = count + (negative ? 1 : 0);
    if (length >= size) {
        return kErrRange;
    }
    char* out = buffer;
    if (negative) {
        *out++ = '-';
    }
    while (count > 0) {
        *out++ = digits[--count];
    }
    *out = '\0';
    return 0;
}

int SignedToText(int64_t value, uint64_t twosComplement, char* buffer, size_t size, int radix) {
    const bool negative = radix == 10 && value < 0;
    const uint64_t magnitude = negative ? 0 - static_cast<uint64_t>(value) : twosComplement;
    return ToText(magnitude, negative, buffer, size, radix);
}

unsigned char Lower(unsigned char c) { return (c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c; }

}  // namespace

int ItoaS(int32_t value, char* buffer, size_t size, int radix) {
    return SignedToText(value, static_cast<uint32_t>(value), buffer, size, radix);
}

int LtoaS(int32_t value, char* buffer, size_t size, int radix) {
    return ItoaS(value, buffer, size, radix);
}

int UltoaS(uint32_t value, char* buffer, size_t size, int radix) {
    return ToText(value, false, buffer, size, radix);
}

int I64toaS(int64_t value, char* buffer, size_t size, int radix) {
    return SignedToText(value, static_cast<uint64_t>(value), buffer, size, radix);
}

int Ui64toaS(uint64_t value, char* buffer, size_t size, int radix) {
    return ToText(value, false, buffer, size, radix);
}

int Stricmp(const char* lhs, const char* rhs) {
    if (lhs == nullptr || rhs == nullptr) {
        return kNlsCompareError;
    }
    const auto* a = reinterpret_cast<const unsigned char*>(lhs);
    const auto* b = reinterpret_cast<const unsigned char*>(rhs);
    int f = 0;
    int l = 0;
    do {
        f = Lower(*a++);
        l = Lower(*b++);
    } while (f != 0 && f == l);
    return f - l;
}

int Strnicmp(const char* lhs, const char* rhs, size_t count) {
    if (lhs == nullptr || rhs == nullptr) {
        return kNlsCompareError;
    }
    if (count == 0) {
        return 0;
    }
    const auto* a = reinterpret_cast<const unsigned char*>(lhs);
    const auto* b = reinterpret_cast<const unsigned char*>(rhs);
    int f = 0;
    int l = 0;
    do {
        f = Lower(*a++);
        l = Lower(*b++);
    } while (--count > 0 && f != 0 && f == l);
    return f - l;
}

int64_t Atoi64(const char* text) {
    if (text == nullptr) {
        return 0;
    }
    const char* p = text;
    while (*p == ' ' || (*p >= '\t' && *p <= '\r')) {
        ++p;
    }
    bool negative = false;
    if (*p == '+' || *p == '-') {
        negative = *p == '-';
        ++p;
    }
    // Accumulate as a negative number: its range holds INT64_MIN.
    constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
    int64_t value = 0;
    bool overflow = false;
    for (; *p >= '0' && *p <= '9'; ++p) {
        const int digit = *p - '0';
        if (value < (kMin + digit) / 10) {
            overflow = true;
        } else {
            value = value * 10 - digit;
        }
    }
    if (overflow) {
        return negative ? kMin : std::numeric_limits<int64_t>::max();
    }
    if (negative) {
        return value;
    }
    return value == kMin ? std::numeric_limits<int64_t>::max() : -value;
}

}  // namespace pind::platform

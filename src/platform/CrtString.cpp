#include "pind/platform/CrtString.h"

#include <cstdint>
#include <cstring>
#include <limits>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

#if defined(__clang__) || defined(__GNUC__)
#define PIND_NO_SANITIZE_ADDRESS __attribute__((no_sanitize_address))
#else
#define PIND_NO_SANITIZE_ADDRESS
#endif

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

int Lower(unsigned char c) { return (c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c; }

// The case-blind compares look at a block of bytes at a time while the blocks match. A block read
// may run past the terminator, but never into another page, so it cannot fault; the sanitizer is
// told so, as it cannot know.
constexpr uintptr_t kPageSize = 4096;
#if defined(__SSE2__) || defined(_M_X64)
constexpr unsigned kBlock = 16;
#else
constexpr unsigned kBlock = 8;
#endif

// Whole blocks both texts can be read in before either reaches the end of its page.
size_t SafeBlocks(const unsigned char* a, const unsigned char* b) {
    const uintptr_t nLeftA = kPageSize - (reinterpret_cast<uintptr_t>(a) & (kPageSize - 1));
    const uintptr_t nLeftB = kPageSize - (reinterpret_cast<uintptr_t>(b) & (kPageSize - 1));
    return (nLeftA < nLeftB ? nLeftA : nLeftB) / kBlock;
}

#if defined(__SSE2__) || defined(_M_X64)
// 'A'..'Z' moved to the bottom of the signed range is one compare.
inline __m128i LowerBlock(__m128i x) {
    const __m128i shifted = _mm_add_epi8(x, _mm_set1_epi8(static_cast<char>(0x80 - 'A')));
    const __m128i upper = _mm_cmplt_epi8(shifted, _mm_set1_epi8(static_cast<char>(0x80 + 26)));
    return _mm_add_epi8(x, _mm_and_si128(upper, _mm_set1_epi8('a' - 'A')));
}

// Index of the first byte where the blocks differ after case mapping or `a` ends; kBlock if none.
inline PIND_NO_SANITIZE_ADDRESS unsigned FirstStop(const unsigned char* a, const unsigned char* b) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a));
    const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
    const __m128i same = _mm_cmpeq_epi8(LowerBlock(x), LowerBlock(y));
    const __m128i end = _mm_cmpeq_epi8(x, _mm_setzero_si128());
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_andnot_si128(end, same)));
    return mask == 0xFFFFu ? kBlock : static_cast<unsigned>(__builtin_ctz(~mask));
}
#else
constexpr uint64_t kOnes = 0x0101010101010101ull;
constexpr uint64_t kHighs = 0x8080808080808080ull;

uint64_t LowerBlock(uint64_t x) {
    const uint64_t low7 = x & ~kHighs;
    const uint64_t atLeastA = low7 + kOnes * (0x80 - 'A');
    const uint64_t aboveZ = low7 + kOnes * (0x80 - 'Z' - 1);
    return x | ((atLeastA & ~aboveZ & ~x & kHighs) >> 2);
}

inline PIND_NO_SANITIZE_ADDRESS unsigned FirstStop(const unsigned char* a, const unsigned char* b) {
    uint64_t x = 0;
    uint64_t y = 0;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    const bool bEnds = ((x - kOnes) & ~x & kHighs) != 0;
    if (!bEnds && LowerBlock(x) == LowerBlock(y)) {
        return kBlock;
    }
    unsigned i = 0;
    while (a[i] != 0 && Lower(a[i]) == Lower(b[i])) {
        ++i;
    }
    return i;
}
#endif

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

PIND_NO_SANITIZE_ADDRESS int Stricmp(const char* lhs, const char* rhs) {
    if (lhs == nullptr || rhs == nullptr) {
        return kNlsCompareError;
    }
    const auto* a = reinterpret_cast<const unsigned char*>(lhs);
    const auto* b = reinterpret_cast<const unsigned char*>(rhs);
    for (;;) {
        for (size_t nBlocks = SafeBlocks(a, b); nBlocks > 0; --nBlocks) {
            const unsigned nStop = FirstStop(a, b);
            if (nStop != kBlock) {
                return Lower(a[nStop]) - Lower(b[nStop]);
            }
            a += kBlock;
            b += kBlock;
        }
        const int f = Lower(*a++);
        const int l = Lower(*b++);
        if (f == 0 || f != l) {
            return f - l;
        }
    }
}

PIND_NO_SANITIZE_ADDRESS int Strnicmp(const char* lhs, const char* rhs, size_t count) {
    if (lhs == nullptr || rhs == nullptr) {
        return kNlsCompareError;
    }
    const auto* a = reinterpret_cast<const unsigned char*>(lhs);
    const auto* b = reinterpret_cast<const unsigned char*>(rhs);
    while (count > 0) {
        size_t nBlocks = SafeBlocks(a, b);
        nBlocks = nBlocks < count / kBlock ? nBlocks : count / kBlock;
        for (; nBlocks > 0; --nBlocks) {
            const unsigned nStop = FirstStop(a, b);
            if (nStop != kBlock) {
                return Lower(a[nStop]) - Lower(b[nStop]);
            }
            a += kBlock;
            b += kBlock;
            count -= kBlock;
        }
        if (count == 0) {
            return 0;
        }
        if (count < kBlock && SafeBlocks(a, b) > 0) {
            // The last few bytes in one block; what lies beyond `count` is ignored.
            const unsigned nStop = FirstStop(a, b);
            return nStop < count ? Lower(a[nStop]) - Lower(b[nStop]) : 0;
        }
        const int f = Lower(*a++);
        const int l = Lower(*b++);
        if (--count == 0 || f == 0 || f != l) {
            return f - l;
        }
    }
    return 0;
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

#include "pind/platform/CrtString.h"

#include <cstdint>
#include <cstring>
#include <limits>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#include <immintrin.h>
#endif

#if defined(__clang__) || defined(__GNUC__)
#define PIND_NO_SANITIZE_ADDRESS __attribute__((no_sanitize_address))
#define PIND_NOINLINE __attribute__((noinline))
// The compares are short calls: a function that starts near the end of a cache line costs them
// a measurable share, depending on where the linker happens to put it.
#define PIND_LINE_ALIGNED __attribute__((aligned(64)))
#else
#define PIND_NO_SANITIZE_ADDRESS
#define PIND_NOINLINE
#define PIND_LINE_ALIGNED
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

// True when `nBytes` read at `a` or at `b` could reach into the next page.
inline bool NearPageEnd(const unsigned char* a, const unsigned char* b, unsigned nBytes) {
    const uintptr_t limit = kPageSize - nBytes;
    return ((reinterpret_cast<uintptr_t>(a) & (kPageSize - 1)) > limit) |
           ((reinterpret_cast<uintptr_t>(b) & (kPageSize - 1)) > limit);
}

#if defined(__SSE2__) || defined(_M_X64)
// One bit per byte of the block where the texts differ after case mapping or `a` ends; 0 if none.
inline PIND_NO_SANITIZE_ADDRESS unsigned StopMask(const unsigned char* a, const unsigned char* b) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a));
    const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
    // 'A'..'Z' moved to the bottom of the signed range makes the range test one compare; each
    // side is lowered on its own, so the two chains run side by side.
    const __m128i shift = _mm_set1_epi8(static_cast<char>(0x80 - 'A'));
    const __m128i limit = _mm_set1_epi8(static_cast<char>(0x80 + 26));
    const __m128i caseBit = _mm_set1_epi8(0x20);
    const __m128i lowX =
        _mm_or_si128(x, _mm_and_si128(_mm_cmplt_epi8(_mm_add_epi8(x, shift), limit), caseBit));
    const __m128i lowY =
        _mm_or_si128(y, _mm_and_si128(_mm_cmplt_epi8(_mm_add_epi8(y, shift), limit), caseBit));
    // The minimum is zero where the bytes differ and where `a` ends.
    const __m128i stop =
        _mm_cmpeq_epi8(_mm_min_epu8(_mm_cmpeq_epi8(lowX, lowY), x), _mm_setzero_si128());
    return static_cast<unsigned>(_mm_movemask_epi8(stop));
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

inline PIND_NO_SANITIZE_ADDRESS unsigned StopMask(const unsigned char* a, const unsigned char* b) {
    uint64_t x = 0;
    uint64_t y = 0;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    const bool bEnds = ((x - kOnes) & ~x & kHighs) != 0;
    if (!bEnds && LowerBlock(x) == LowerBlock(y)) {
        return 0;
    }
    unsigned i = 0;
    while (a[i] != 0 && Lower(a[i]) == Lower(b[i])) {
        ++i;
    }
    return 1u << i;
}
#endif

#if (defined(__x86_64__) || defined(_M_X64)) && (defined(__GNUC__) || defined(__clang__))
#define PIND_COMPARE_AVX2 1
// StopMask over 32 bytes in one register, where the processor has AVX2.
__attribute__((target("avx2"))) inline PIND_NO_SANITIZE_ADDRESS uint32_t
WideStopMask(const unsigned char* a, const unsigned char* b) {
    const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a));
    const __m256i y = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b));
    const __m256i shift = _mm256_set1_epi8(static_cast<char>(0x80 - 'A'));
    const __m256i limit = _mm256_set1_epi8(static_cast<char>(0x80 + 26));
    const __m256i caseBit = _mm256_set1_epi8(0x20);
    const __m256i lowX = _mm256_or_si256(
        x, _mm256_and_si256(_mm256_cmpgt_epi8(limit, _mm256_add_epi8(x, shift)), caseBit));
    const __m256i lowY = _mm256_or_si256(
        y, _mm256_and_si256(_mm256_cmpgt_epi8(limit, _mm256_add_epi8(y, shift)), caseBit));
    const __m256i stop = _mm256_cmpeq_epi8(_mm256_min_epu8(_mm256_cmpeq_epi8(lowX, lowY), x),
                                           _mm256_setzero_si256());
    return static_cast<uint32_t>(_mm256_movemask_epi8(stop));
}
#endif

// StopMask over two blocks: one test per 2 × kBlock bytes while the texts match.
inline PIND_NO_SANITIZE_ADDRESS uint32_t PairStopMask(const unsigned char* a,
                                                      const unsigned char* b) {
    return StopMask(a, b) | StopMask(a + kBlock, b + kBlock) << kBlock;
}

// The lowest `nBytes` bits set, for 1 <= nBytes <= 32.
inline uint32_t LowBits(size_t nBytes) { return static_cast<uint32_t>((2ull << (nBytes - 1)) - 1); }

// Result of CompareBytes when the bytes matched and `a` did not end.
constexpr int kNoStop = std::numeric_limits<int>::min();

// The compare over `nBytes` bytes one at a time, near a page end; kNoStop when it did not stop.
// Kept out of line so the block loops keep their registers.
PIND_NOINLINE int CompareBytes(const unsigned char* a, const unsigned char* b, size_t nBytes) {
    for (size_t i = 0; i < nBytes; ++i) {
        const int f = Lower(a[i]);
        const int l = Lower(b[i]);
        if (f == 0 || f != l) {
            return f - l;
        }
    }
    return kNoStop;
}

// The compare result at the first stop of a nonzero mask.
inline int DiffAt(const unsigned char* a, const unsigned char* b, uint32_t mask) {
    // A table lookup is fewer instructions than the range test, and these calls are short.
    static constexpr struct LowerTable {
        unsigned char bytes[256];
        constexpr LowerTable() : bytes() {
            for (int c = 0; c < 256; ++c) {
                bytes[c] = static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
            }
        }
    } kLower;
    const auto i = static_cast<unsigned>(__builtin_ctz(mask));
    return kLower.bytes[a[i]] - kLower.bytes[b[i]];
}

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

namespace {
// Stricmp's step near a page end, one block or byte at a time: true, with the result, when the
// compare stopped.
inline PIND_NO_SANITIZE_ADDRESS bool StepNearPageEnd(const unsigned char*& a,
                                                     const unsigned char*& b, int* pResult) {
    if (NearPageEnd(a, b, kBlock)) {
        *pResult = CompareBytes(a, b, kBlock);
        if (*pResult != kNoStop) {
            return true;
        }
    } else if (const uint32_t mask = StopMask(a, b)) {
        *pResult = DiffAt(a, b, mask);
        return true;
    }
    a += kBlock;
    b += kBlock;
    return false;
}

// Stricmp on SSE2 blocks, two at a time while they match.
PIND_LINE_ALIGNED PIND_NO_SANITIZE_ADDRESS int NarrowStricmp(const unsigned char* a,
                                                             const unsigned char* b) {
    for (int nResult = 0;;) {
        if (NearPageEnd(a, b, 2 * kBlock)) {
            if (StepNearPageEnd(a, b, &nResult)) {
                return nResult;
            }
        } else if (const uint32_t mask = PairStopMask(a, b)) {
            return DiffAt(a, b, mask);
        } else {
            a += 2 * kBlock;
            b += 2 * kBlock;
        }
    }
}

// Strnicmp's test after a step over 2 × kBlock bytes whose stop bits are `mask`: true, with the
// result, when the compare ends there. What lies beyond `count` was read, but is masked off.
inline bool EndsInStep(const unsigned char* a, const unsigned char* b, uint32_t mask, size_t count,
                       int* pResult) {
    if (count < 2 * kBlock) {
        mask &= LowBits(count);
    }
    if (mask != 0) {
        *pResult = DiffAt(a, b, mask);
        return true;
    }
    return count <= 2 * kBlock;  // with *pResult left 0
}

// Strnicmp on SSE2 blocks.
PIND_LINE_ALIGNED PIND_NO_SANITIZE_ADDRESS int NarrowStrnicmp(const unsigned char* a,
                                                              const unsigned char* b,
                                                              size_t count) {
    while (count > 0) {
        if (!NearPageEnd(a, b, 2 * kBlock)) {
            int nResult = 0;
            if (EndsInStep(a, b, PairStopMask(a, b), count, &nResult)) {
                return nResult;
            }
            a += 2 * kBlock;
            b += 2 * kBlock;
            count -= 2 * kBlock;
            continue;
        }
        const size_t nBytes = count < kBlock ? count : kBlock;
        if (NearPageEnd(a, b, kBlock)) {
            const int nResult = CompareBytes(a, b, nBytes);
            if (nResult != kNoStop) {
                return nResult;
            }
        } else if (const uint32_t mask = StopMask(a, b) & LowBits(nBytes)) {
            return DiffAt(a, b, mask);
        }
        a += nBytes;
        b += nBytes;
        count -= nBytes;
    }
    return 0;
}

#ifdef PIND_COMPARE_AVX2
// Stricmp where the processor has AVX2: 32 bytes a step. Near a page end, which is rare, the
// narrow loop takes over as a tail call: a call that returned here would keep every vector
// register live across it.
__attribute__((target("avx2"))) PIND_LINE_ALIGNED PIND_NO_SANITIZE_ADDRESS int WideStricmp(
    const unsigned char* a, const unsigned char* b) {
    for (;;) {
        if (NearPageEnd(a, b, 2 * kBlock)) {
            return NarrowStricmp(a, b);
        }
        if (const uint32_t mask = WideStopMask(a, b)) {
            return DiffAt(a, b, mask);
        }
        a += 2 * kBlock;
        b += 2 * kBlock;
    }
}

// Strnicmp 32 bytes a step, where the processor has AVX2; near a page end as WideStricmp.
__attribute__((target("avx2"))) PIND_LINE_ALIGNED PIND_NO_SANITIZE_ADDRESS int WideStrnicmp(
    const unsigned char* a, const unsigned char* b, size_t count) {
    while (count > 0) {
        if (NearPageEnd(a, b, 2 * kBlock)) {
            return NarrowStrnicmp(a, b, count);
        }
        int nResult = 0;
        if (EndsInStep(a, b, WideStopMask(a, b), count, &nResult)) {
            return nResult;
        }
        a += 2 * kBlock;
        b += 2 * kBlock;
        count -= 2 * kBlock;
    }
    return 0;
}
const bool g_bWide = __builtin_cpu_supports("avx2") != 0;
#endif
}  // namespace

PIND_LINE_ALIGNED PIND_NO_SANITIZE_ADDRESS int Stricmp(const char* lhs, const char* rhs) {
    if (lhs == nullptr || rhs == nullptr) {
        return kNlsCompareError;
    }
    const auto* a = reinterpret_cast<const unsigned char*>(lhs);
    const auto* b = reinterpret_cast<const unsigned char*>(rhs);
#ifdef PIND_COMPARE_AVX2
    if (g_bWide) {
        return WideStricmp(a, b);
    }
#endif
    return NarrowStricmp(a, b);
}

PIND_LINE_ALIGNED PIND_NO_SANITIZE_ADDRESS int Strnicmp(const char* lhs, const char* rhs,
                                                        size_t count) {
    if (lhs == nullptr || rhs == nullptr) {
        return kNlsCompareError;
    }
    const auto* a = reinterpret_cast<const unsigned char*>(lhs);
    const auto* b = reinterpret_cast<const unsigned char*>(rhs);
#ifdef PIND_COMPARE_AVX2
    if (g_bWide) {
        return WideStrnicmp(a, b, count);
    }
#endif
    return NarrowStrnicmp(a, b, count);
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

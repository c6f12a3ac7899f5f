#include "files/Crc32.h"

#include <zlib.h>

// Carry-less multiplication folds 64 bytes at a time into four 128-bit lanes, then into one, and a
// Barrett reduction gives the 32-bit remainder; the constants are powers of x modulo the zip
// polynomial (bit-reflected). The processor is asked at run time, as x86-64 does not promise it.
#if (defined(__x86_64__) || defined(_M_X64)) && (defined(__GNUC__) || defined(__clang__))
#include <immintrin.h>
#define PIND_CRC_CLMUL 1
#define PIND_TARGET_CLMUL __attribute__((target("pclmul,sse2")))
#endif

namespace pind::detail {
namespace {

uint32_t ZlibCrc(uint32_t crc, const uint8_t* pData, size_t nSize) {
    // zlib takes at most a uInt at a time.
    while (nSize > 0) {
        const size_t nStep = nSize < (1u << 30) ? nSize : (1u << 30);
        crc = static_cast<uint32_t>(::crc32(crc, pData, static_cast<uInt>(nStep)));
        pData += nStep;
        nSize -= nStep;
    }
    return crc;
}

#ifdef PIND_CRC_CLMUL
// `x` carried 128 bits on by the constants in `k`, plus the next block.
PIND_TARGET_CLMUL inline __m128i Fold(__m128i x, __m128i k, __m128i next) {
    const __m128i lo = _mm_clmulepi64_si128(x, k, 0x00);
    const __m128i hi = _mm_clmulepi64_si128(x, k, 0x11);
    return _mm_xor_si128(_mm_xor_si128(hi, lo), next);
}

inline __m128i Load(const uint8_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// The folded remainder of `nSize` bytes (a multiple of 16, at least 64) with `crc` the
// unnegated running value.
PIND_TARGET_CLMUL uint32_t FoldCrc(uint32_t crc, const uint8_t* p, size_t nSize) {
    const __m128i k1k2 = _mm_set_epi64x(0x01c6e41596, 0x0154442bd4);
    const __m128i k3k4 = _mm_set_epi64x(0x00ccaa009e, 0x01751997d0);
    const __m128i k5 = _mm_set_epi64x(0, 0x0163cd6124);
    const __m128i poly = _mm_set_epi64x(0x01f7011641, 0x01db710641);
    const __m128i low32 = _mm_setr_epi32(~0, 0, ~0, 0);
    __m128i x1 = _mm_xor_si128(Load(p), _mm_cvtsi32_si128(static_cast<int>(crc)));
    __m128i x2 = Load(p + 16);
    __m128i x3 = Load(p + 32);
    __m128i x4 = Load(p + 48);
    p += 64;
    nSize -= 64;
    for (; nSize >= 64; p += 64, nSize -= 64) {
        x1 = Fold(x1, k1k2, Load(p));
        x2 = Fold(x2, k1k2, Load(p + 16));
        x3 = Fold(x3, k1k2, Load(p + 32));
        x4 = Fold(x4, k1k2, Load(p + 48));
    }
    x1 = Fold(x1, k3k4, x2);
    x1 = Fold(x1, k3k4, x3);
    x1 = Fold(x1, k3k4, x4);
    for (; nSize >= 16; p += 16, nSize -= 16) {
        x1 = Fold(x1, k3k4, Load(p));
    }
    // 128 bits to 64, then Barrett reduction to 32.
    __m128i x2r = _mm_clmulepi64_si128(x1, k3k4, 0x10);
    x1 = _mm_xor_si128(_mm_srli_si128(x1, 8), x2r);
    x2r = _mm_srli_si128(x1, 4);
    x1 = _mm_xor_si128(_mm_clmulepi64_si128(_mm_and_si128(x1, low32), k5, 0x00), x2r);
    x2r = _mm_clmulepi64_si128(_mm_and_si128(x1, low32), poly, 0x10);
    x2r = _mm_clmulepi64_si128(_mm_and_si128(x2r, low32), poly, 0x00);
    x1 = _mm_xor_si128(x1, x2r);
    return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(x1, 4)));
}

bool HasClmul() {
    static const bool bHas = __builtin_cpu_supports("pclmul") != 0;
    return bHas;
}
#endif

}  // namespace

uint32_t Crc32(uint32_t crc, const uint8_t* pData, size_t nSize) {
#ifdef PIND_CRC_CLMUL
    if (nSize >= 64 && HasClmul()) {
        const size_t nFolded = nSize & ~size_t{15};
        crc = ~FoldCrc(~crc, pData, nFolded);
        pData += nFolded;
        nSize -= nFolded;
    }
#endif
    return ZlibCrc(crc, pData, nSize);
}

}  // namespace pind::detail

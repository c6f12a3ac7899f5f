#include "pind/crypto/ClientCryptor.h"

#include <atomic>
#include <cstring>
#include <new>

#include "crypto/CryptorSimd.h"

// The tables depend on the position only: within a run of positions that share the high byte, the
// A and P bytes are consecutive and B and Q are constants, so 16 or 32 bytes go through at once.
// SSE2 is part of x86-64; AVX2 is chosen at run time where the compiler can target it per function.
#if defined(__x86_64__) || defined(_M_X64)
#include <emmintrin.h>
#define PIND_CRYPT_SSE2 1
#if defined(__GNUC__) || defined(__clang__)
#include <immintrin.h>
#define PIND_CRYPT_AVX2 1
#define PIND_TARGET_AVX2 __attribute__((target("avx2")))
#endif
#endif

namespace {

// One run: `count` bytes at positions whose low bytes start at the tables' `a` and `p` and whose
// high byte gives `bh` and `qh`; count <= 256 - low byte, so the tables are never overrun.
using RunKernel = void (*)(const uint8_t* a, const uint8_t* p, uint8_t bh, uint8_t qh,
                           uint8_t* buffer, int count);

inline uint8_t SwapNibbles(uint8_t b) { return static_cast<uint8_t>((b << 4) | (b >> 4)); }

void EncryptBytes(const uint8_t* a, const uint8_t* p, uint8_t bh, uint8_t qh, uint8_t* buffer,
                  int count) {
    for (int i = 0; i < count; ++i) {
        uint8_t b = buffer[i];
        b = static_cast<uint8_t>((b ^ a[i]) + p[i]);
        b = static_cast<uint8_t>((b ^ bh) + qh);
        buffer[i] = SwapNibbles(b);
    }
}

void DecryptBytes(const uint8_t* a, const uint8_t* p, uint8_t bh, uint8_t qh, uint8_t* buffer,
                  int count) {
    for (int i = 0; i < count; ++i) {
        uint8_t b = SwapNibbles(buffer[i]);
        b = static_cast<uint8_t>((b - qh) ^ bh);
        b = static_cast<uint8_t>((b - p[i]) ^ a[i]);
        buffer[i] = b;
    }
}

#if defined(PIND_CRYPT_SSE2)

inline __m128i SwapNibbles128(__m128i v) {
    const __m128i low = _mm_set1_epi8(0x0F);
    return _mm_or_si128(_mm_andnot_si128(low, _mm_slli_epi16(v, 4)),
                        _mm_and_si128(low, _mm_srli_epi16(v, 4)));
}

void EncryptSse2(const uint8_t* a, const uint8_t* p, uint8_t bh, uint8_t qh, uint8_t* buffer,
                 int count) {
    const __m128i vb = _mm_set1_epi8(static_cast<char>(bh));
    const __m128i vq = _mm_set1_epi8(static_cast<char>(qh));
    int i = 0;
    for (; i + 16 <= count; i += 16) {
        auto* out = reinterpret_cast<__m128i*>(buffer + i);
        __m128i v = _mm_loadu_si128(out);
        v = _mm_xor_si128(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + i)));
        v = _mm_add_epi8(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i)));
        v = _mm_add_epi8(_mm_xor_si128(v, vb), vq);
        _mm_storeu_si128(out, SwapNibbles128(v));
    }
    EncryptBytes(a + i, p + i, bh, qh, buffer + i, count - i);
}

void DecryptSse2(const uint8_t* a, const uint8_t* p, uint8_t bh, uint8_t qh, uint8_t* buffer,
                 int count) {
    const __m128i vb = _mm_set1_epi8(static_cast<char>(bh));
    const __m128i vq = _mm_set1_epi8(static_cast<char>(qh));
    int i = 0;
    for (; i + 16 <= count; i += 16) {
        auto* out = reinterpret_cast<__m128i*>(buffer + i);
        __m128i v = SwapNibbles128(_mm_loadu_si128(out));
        v = _mm_xor_si128(_mm_sub_epi8(v, vq), vb);
        v = _mm_sub_epi8(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i)));
        v = _mm_xor_si128(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + i)));
        _mm_storeu_si128(out, v);
    }
    DecryptBytes(a + i, p + i, bh, qh, buffer + i, count - i);
}

#endif  // PIND_CRYPT_SSE2

#if defined(PIND_CRYPT_AVX2)

PIND_TARGET_AVX2 inline __m256i SwapNibbles256(__m256i v) {
    const __m256i low = _mm256_set1_epi8(0x0F);
    return _mm256_or_si256(_mm256_andnot_si256(low, _mm256_slli_epi16(v, 4)),
                           _mm256_and_si256(low, _mm256_srli_epi16(v, 4)));
}

PIND_TARGET_AVX2 void EncryptAvx2(const uint8_t* a, const uint8_t* p, uint8_t bh, uint8_t qh,
                                  uint8_t* buffer, int count) {
    const __m256i vb = _mm256_set1_epi8(static_cast<char>(bh));
    const __m256i vq = _mm256_set1_epi8(static_cast<char>(qh));
    int i = 0;
    for (; i + 32 <= count; i += 32) {
        auto* out = reinterpret_cast<__m256i*>(buffer + i);
        __m256i v = _mm256_loadu_si256(out);
        v = _mm256_xor_si256(v, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + i)));
        v = _mm256_add_epi8(v, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i)));
        v = _mm256_add_epi8(_mm256_xor_si256(v, vb), vq);
        _mm256_storeu_si256(out, SwapNibbles256(v));
    }
    // Clean upper halves before SSE code runs, or every SSE instruction pays for the switch.
    _mm256_zeroupper();
    EncryptSse2(a + i, p + i, bh, qh, buffer + i, count - i);
}

PIND_TARGET_AVX2 void DecryptAvx2(const uint8_t* a, const uint8_t* p, uint8_t bh, uint8_t qh,
                                  uint8_t* buffer, int count) {
    const __m256i vb = _mm256_set1_epi8(static_cast<char>(bh));
    const __m256i vq = _mm256_set1_epi8(static_cast<char>(qh));
    int i = 0;
    for (; i + 32 <= count; i += 32) {
        auto* out = reinterpret_cast<__m256i*>(buffer + i);
        __m256i v = SwapNibbles256(_mm256_loadu_si256(out));
        v = _mm256_xor_si256(_mm256_sub_epi8(v, vq), vb);
        v = _mm256_sub_epi8(v, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i)));
        v = _mm256_xor_si256(v, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + i)));
        _mm256_storeu_si256(out, v);
    }
    _mm256_zeroupper();
    DecryptSse2(a + i, p + i, bh, qh, buffer + i, count - i);
}

#endif  // PIND_CRYPT_AVX2

// The highest level this processor and build offer.
int BestLevel() {
    static const int best = [] {
#if defined(PIND_CRYPT_AVX2)
        if (__builtin_cpu_supports("avx2")) {
            return 2;
        }
#endif
#if defined(PIND_CRYPT_SSE2)
        return 1;
#else
        return 0;
#endif
    }();
    return best;
}

// -1 until a test asks for a level: then the best level is used.
std::atomic<int> g_nRequestedLevel{-1};

struct Kernels {
    RunKernel encrypt;
    RunKernel decrypt;
};

Kernels CurrentKernels() {
    const int requested = g_nRequestedLevel.load(std::memory_order_relaxed);
    const int level = requested < 0 ? BestLevel() : requested;
    switch (level) {
#if defined(PIND_CRYPT_AVX2)
        case 2:
            return {EncryptAvx2, DecryptAvx2};
#endif
#if defined(PIND_CRYPT_SSE2)
        case 1:
            return {EncryptSse2, DecryptSse2};
#endif
        default:
            return {EncryptBytes, DecryptBytes};
    }
}

// Feeds the buffer to `kernel` in runs that end where the position's low byte wraps.
void Transform(RunKernel kernel, const uint8_t* tableA, const uint8_t* tableP,
               const uint8_t* tableB, const uint8_t* tableQ, uint16_t& position, uint8_t* buffer,
               int length) {
    while (length > 0) {
        const int lo = position & 0xFF;
        const int hi = position >> 8;
        const int run = length < 256 - lo ? length : 256 - lo;
        kernel(tableA + lo, tableP + lo, tableB[hi], tableQ[hi], buffer, run);
        buffer += run;
        length -= run;
        position = static_cast<uint16_t>(position + run);
    }
}

void BuildTable(uint8_t* table, uint8_t multiplier, uint8_t addend1, uint8_t addend2,
                uint8_t seed) {
    uint8_t x = seed;
    for (int i = 0; i < 256; ++i) {
        table[i] = x;
        const auto t = static_cast<uint8_t>(multiplier * x + addend1);
        x = static_cast<uint8_t>(t * x + addend2);
    }
}

}  // namespace

CClientCryptor::CClientCryptor(uint8_t byMultiplierA, uint8_t byAddendA1, uint8_t byAddendA2,
                               uint8_t bySeedA, uint8_t byMultiplierB, uint8_t byAddendB1,
                               uint8_t byAddendB2, uint8_t bySeedB)
    : m_keyA{byMultiplierA, bySeedA, byAddendA1, byAddendA2},
      m_keyB{byMultiplierB, bySeedB, byAddendB1, byAddendB2} {
    uint32_t saved = 0;
    std::memcpy(&saved, &m_keyA, sizeof saved);
    m_adwSavedKeyA[0] = saved;
    m_adwSavedKeyA[1] = saved;
    BuildTables();
}

void CClientCryptor::BuildTables() {
    BuildTable(m_abyTableA, m_keyA.byMultiplier, m_keyA.byAddend1, m_keyA.byAddend2, m_keyA.bySeed);
    BuildTable(m_abyTableB, m_keyB.byMultiplier, m_keyB.byAddend1, m_keyB.byAddend2, m_keyB.bySeed);
    for (int i = 0; i < 256; ++i) {
        m_abyTableP[i] = static_cast<uint8_t>(m_abyTableA[i] ^ m_abyTableB[i]);
        m_abyTableQ[i] = static_cast<uint8_t>(m_abyTableA[i] & m_abyTableB[i]);
    }
}

int CClientCryptor::Reset() {
    m_wEncryptPos = 0;
    m_wDecryptPos = 0;
    return 0;
}

int CClientCryptor::Release() {
    delete this;
    return 1;
}

void CClientCryptor::Encrypt(uint8_t* pBuffer, int nLength) {
    if (pBuffer == nullptr) {
        return;
    }
    Transform(CurrentKernels().encrypt, m_abyTableA, m_abyTableP, m_abyTableB, m_abyTableQ,
              m_wEncryptPos, pBuffer, nLength);
}

void CClientCryptor::Decrypt(uint8_t* pBuffer, int nLength) {
    if (pBuffer == nullptr) {
        return;
    }
    Transform(CurrentKernels().decrypt, m_abyTableA, m_abyTableP, m_abyTableB, m_abyTableQ,
              m_wDecryptPos, pBuffer, nLength);
}

void CClientCryptor::EncryptEx(uint8_t* pBuffer, int nLength) { Encrypt(pBuffer, nLength); }

void CClientCryptor::Reserved() {}

void CClientCryptor::ChangeCode(uint32_t dwCode) {
    const uint32_t lo16 = dwCode & 0xFFFF;
    const uint32_t hi16 = dwCode >> 16;
    const uint32_t maskA = lo16 * lo16;
    const uint32_t maskB = hi16 * hi16;
    // The tables are 64 little-endian words each; byte k of a word takes byte k of the mask.
    for (int i = 0; i < 256; ++i) {
        const int shift = 8 * (i % 4);
        m_abyTableA[i] = static_cast<uint8_t>(m_abyTableA[i] ^ (maskA >> shift));
        m_abyTableB[i] = static_cast<uint8_t>(m_abyTableB[i] ^ (maskB >> shift));
        m_abyTableP[i] = static_cast<uint8_t>(m_abyTableA[i] ^ m_abyTableB[i]);
        m_abyTableQ[i] = static_cast<uint8_t>(m_abyTableA[i] & m_abyTableB[i]);
    }
}

IEncryptor* CClientCryptor::Duplicate() { return new (std::nothrow) CClientCryptor(*this); }

const uint8_t* CClientCryptor::GetTable(int nIndex) const {
    switch (nIndex) {
        case 0:
            return m_abyTableA;
        case 1:
            return m_abyTableB;
        case 2:
            return m_abyTableP;
        case 3:
            return m_abyTableQ;
        default:
            return nullptr;
    }
}

IEncryptor* CreateClientCryptor(uint8_t byMultiplierA, uint8_t byAddendA1, uint8_t byAddendA2,
                                uint8_t bySeedA, uint8_t byMultiplierB, uint8_t byAddendB1,
                                uint8_t byAddendB2, uint8_t bySeedB) {
    return new (std::nothrow) CClientCryptor(byMultiplierA, byAddendA1, byAddendA2, bySeedA,
                                             byMultiplierB, byAddendB1, byAddendB2, bySeedB);
}

namespace pind::detail {

int SetCryptorSimdLevel(int level) {
    const int best = BestLevel();
    const int used = level < 0 ? best : (level < best ? level : best);
    g_nRequestedLevel.store(level < 0 ? -1 : used, std::memory_order_relaxed);
    return used;
}

}  // namespace pind::detail

#include "pind/files/PackFile.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "files/PackageFiles.h"
#include "pind/client/PindClient.h"
#include "pind/diag/Report.h"
#include "pind/files/WholeFilePackage.h"
#include "pind/platform/CrtString.h"
#include "pind/platform/Package.h"
#include "pind/platform/System.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#include <immintrin.h>
#define PIND_LINE_BLOCKS 1
#endif

namespace {

std::atomic<bool> g_bPackForceDisk{false};

constexpr int kScanLineCapacity = 2048;

bool HasWriteMode(const char* pszMode) {
    return std::strchr(pszMode, 'w') != nullptr || std::strchr(pszMode, 'a') != nullptr ||
           std::strchr(pszMode, '+') != nullptr;
}

void LowerAscii(std::string& text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
}

std::string BaseDir() {
    const char* pszBase = GetClient()->GetBaseDir();
    return pszBase != nullptr ? pszBase : "";
}

// Adds the terminator counts of a line just read and drops the '\r' of "...\r\n". `pszSource`
// holds the same first nLen bytes as the line; memory mode passes the package data, which reads
// faster than the bytes just copied into the caller's buffer.
void HandleTerminator(CPackFile* pFile, char* pszLine, const char* pszSource, size_t nLen) {
    if (nLen >= 1 && pszSource[nLen - 1] == '\n') {
        pFile->AddLineEnds(1);
    }
    if (nLen >= 2 && pszSource[nLen - 2] == '\r') {
        pFile->AddLineEnds(1);
        if (nLen >= 3) {
            pszLine[nLen - 2] = '\0';
        }
    }
}

// One line by the mode's rules; `*pLength` gets its text length.
char* RawLine(CPackFile* pFile, char* pszBuffer, int nCapacity, size_t* pLength) {
    if (pFile->IsDiskMode()) {
        pFile->ResetLineEnds();
        char* pszLine = std::fgets(pszBuffer, nCapacity, pFile->GetStream());
        *pLength = pszLine != nullptr ? std::strlen(pszLine) : 0;
        return pszLine;
    }
    return pFile->ReadLine(pszBuffer, nCapacity, pLength);
}

// Where a memory line ends: after '\n', before a 0xFF byte (the stdio EOF value read as a signed
// char, which stands for the end of the data), or at the window's end. Also finds the first zero
// byte, where the line's text ends for strlen.
struct LineScan {
    enum Stop { kWindow, kNewline, kMark };
    size_t length;
    size_t firstZero;
    Stop stop;
};

LineScan ScanLine(const uint8_t* pData, size_t nWindow, bool bPlain) {
    if (bPlain) {
        // No 0x00 or 0xFF byte in the window: only the newline can end the line.
        const void* pNewline = std::memchr(pData, '\n', nWindow);
        if (pNewline == nullptr) {
            return {nWindow, SIZE_MAX, LineScan::kWindow};
        }
        const auto nAt = static_cast<size_t>(static_cast<const uint8_t*>(pNewline) - pData);
        return {nAt + 1, SIZE_MAX, LineScan::kNewline};
    }
    LineScan scan{nWindow, SIZE_MAX, LineScan::kWindow};
    for (size_t i = 0; i < nWindow; ++i) {
        const uint8_t c = pData[i];
        if (c == 0xFF) {
            scan.length = i;
            scan.stop = LineScan::kMark;
            break;
        }
        if (c == '\n') {
            scan.length = i + 1;
            scan.stop = LineScan::kNewline;
            break;
        }
        if (c == 0 && scan.firstZero == SIZE_MAX) {
            scan.firstZero = i;
        }
    }
    return scan;
}

// Bytes allocated past the packaged data, zeroed: a line read may then load whole 16-byte blocks
// up to 15 bytes past the data's end, and an empty file still owns a buffer.
constexpr size_t kDataPad = pind::detail::kFilePad;

#if defined(PIND_LINE_BLOCKS) && (defined(__GNUC__) || defined(__clang__))
// Where the processor has AVX2, the whole-file scan and the line reads take 32 bytes at a time.
#define PIND_LINE_AVX2 1
const bool g_bWideLines = __builtin_cpu_supports("avx2") != 0;

// Zero exactly at the 0x00 and 0xFF bytes of the 32 at `p` (see FirstSpecialByte).
__attribute__((target("avx2"))) inline __m256i WideSpecial(const uint8_t* p) {
    const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    return _mm256_min_epu8(x, _mm256_add_epi8(x, _mm256_set1_epi8(1)));
}

// FirstSpecialByte's block loop over 128 bytes a step: the offset where it stopped, a multiple
// of 128 at or before the first special byte.
__attribute__((target("avx2"))) uint32_t WideSpecialScan(const uint8_t* pData, uint32_t nSize) {
    uint32_t nAt = 0;
    for (; nSize - nAt >= 128; nAt += 128) {
        const __m256i m = _mm256_min_epu8(
            _mm256_min_epu8(WideSpecial(pData + nAt), WideSpecial(pData + nAt + 32)),
            _mm256_min_epu8(WideSpecial(pData + nAt + 64), WideSpecial(pData + nAt + 96)));
        if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(m, _mm256_setzero_si256())) != 0) {
            break;
        }
    }
    return nAt;
}
#endif

// Offset of the first 0x00 or 0xFF byte, or `nSize`.
uint32_t FirstSpecialByte(const uint8_t* pData, uint32_t nSize) {
#ifdef PIND_LINE_BLOCKS
    // One pass for both bytes: adding 1 turns 0xFF into 0x00 and 0x00 into 0x01, so the minimum
    // of a byte and its successor is zero exactly at those two.
    const __m128i one = _mm_set1_epi8(1);
    auto special = [&one](const uint8_t* p) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        return _mm_min_epu8(x, _mm_add_epi8(x, one));
    };
    uint32_t nAt = 0;
#ifdef PIND_LINE_AVX2
    if (g_bWideLines) {
        nAt = WideSpecialScan(pData, nSize);
    }
#endif
    for (; nSize - nAt >= 64; nAt += 64) {
        const __m128i m =
            _mm_min_epu8(_mm_min_epu8(special(pData + nAt), special(pData + nAt + 16)),
                         _mm_min_epu8(special(pData + nAt + 32), special(pData + nAt + 48)));
        if (_mm_movemask_epi8(_mm_cmpeq_epi8(m, _mm_setzero_si128())) != 0) {
            break;
        }
    }
    for (; nAt < nSize; ++nAt) {
        if (pData[nAt] == 0x00 || pData[nAt] == 0xFF) {
            break;
        }
    }
    return nAt;
#else
    uint32_t nFirst = nSize;
    for (const int c : {0x00, 0xFF}) {
        if (const void* p = std::memchr(pData, c, nFirst)) {
            nFirst = static_cast<uint32_t>(static_cast<const uint8_t*>(p) - pData);
        }
    }
    return nFirst;
#endif
}

// Copies the line's `nLen` bytes and zeroes the rest of the buffer, as callers may rely on.
// `nWindow` bytes of the source may be read. A short line is copied as a fixed 128 bytes, which
// the compiler inlines; the zeroing then overwrites the excess.
inline void CopyLine(char* pszBuffer, int nCapacity, const uint8_t* pSource, size_t nLen,
                     size_t nWindow) {
    constexpr size_t kShortLine = 128;
    if (nLen <= kShortLine && nWindow >= kShortLine) {
        std::memcpy(pszBuffer, pSource, kShortLine);
    } else if (nLen > 0) {
        std::memcpy(pszBuffer, pSource, nLen);
    }
    std::memset(pszBuffer + nLen, 0, static_cast<size_t>(nCapacity) - nLen);
}

#ifdef PIND_LINE_BLOCKS
// Lines are first looked for in this many bytes at once, when the window and buffer hold them.
constexpr size_t kWideLine = 128;

// The length of a line whose newline bits over the first 128 bytes are `nLow` (bytes 0-63) and
// `nHigh` (64-127), not both zero. Bit 63 stands in for an empty low half, whose count then
// continues into the high half: arithmetic rather than a choice, which would be a branch that
// mispredicts on most lines.
inline size_t WideLineLength(uint64_t nLow, uint64_t nHigh) {
    const auto nAtLow = static_cast<size_t>(__builtin_ctzll(nLow | (1ull << 63)));
    const auto nAtHigh = static_cast<size_t>(__builtin_ctzll(nHigh | (1ull << 63)));
    const size_t nLowEmpty = nLow == 0 ? ~size_t{0} : 0;
    return nAtLow + (nLowEmpty & (nAtHigh + 1)) + 1;
}

// CopyPlainLine after the first 128 bytes held no newline, or when the window is shorter: 16
// bytes a step from the line's start.
inline size_t CopyPlainLineBlocks(char* pszBuffer, size_t nCapacity, const uint8_t* pSource,
                                  size_t nWindow) {
    const __m128i newline = _mm_set1_epi8('\n');
    for (size_t n = 0;; n += 16) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSource + n));
        const auto nNewlines = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(x, newline)));
        const size_t nRest = nWindow - n;
        if (nNewlines == 0 && nRest > 16) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pszBuffer + n), x);
            continue;
        }
        size_t nTake = nNewlines != 0 ? static_cast<size_t>(__builtin_ctz(nNewlines)) + 1 : 16;
        nTake = nTake < nRest ? nTake : nRest;
        if (n + 16 <= nCapacity) {
            const __m128i index =
                _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
            const __m128i keep = _mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(nTake)), index);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pszBuffer + n), _mm_and_si128(x, keep));
            std::memset(pszBuffer + n + 16, 0, nCapacity - n - 16);
        } else {
            std::memcpy(pszBuffer + n, pSource + n, nTake);
            std::memset(pszBuffer + n + nTake, 0, nCapacity - n - nTake);
        }
        return n + nTake;
    }
}
#endif

// The line at `pSource` when only a newline can end it: up to and with the first '\n' among the
// first `nWindow` bytes (0 < nWindow < nCapacity), the rest of the buffer zeroed; returns its
// length. Looks for the newline and copies in one pass over 16-byte blocks, reading up to 15 bytes
// past the window, which the data's padding keeps inside the allocation.
inline size_t CopyPlainLine(char* pszBuffer, size_t nCapacity, const uint8_t* pSource,
                            size_t nWindow) {
#ifdef PIND_LINE_BLOCKS
    if (nWindow >= kWideLine) {
        // All eight blocks are compared and copied, so a line shorter than 128 bytes is found
        // without a branch on its length; the zeroing then overwrites what follows the line.
        const __m128i newline = _mm_set1_epi8('\n');
        uint64_t nLow = 0;
        uint64_t nHigh = 0;
        for (unsigned i = 0; i < 8; ++i) {
            const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pSource + 16 * i));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(pszBuffer + 16 * i), x);
            const auto nHits = static_cast<uint64_t>(
                static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(x, newline))));
            (i < 4 ? nLow : nHigh) |= nHits << (16 * (i % 4));
        }
        if ((nLow | nHigh) != 0) {
            const size_t nLen = WideLineLength(nLow, nHigh);
            std::memset(pszBuffer + nLen, 0, nCapacity - nLen);
            return nLen;
        }
    }
    return CopyPlainLineBlocks(pszBuffer, nCapacity, pSource, nWindow);
#else
    const void* pNewline = std::memchr(pSource, '\n', nWindow);
    const size_t nLen =
        pNewline != nullptr
            ? static_cast<size_t>(static_cast<const uint8_t*>(pNewline) - pSource) + 1
            : nWindow;
    CopyLine(pszBuffer, static_cast<int>(nCapacity), pSource, nLen, nWindow);
    return nLen;
#endif
}

#ifdef PIND_LINE_AVX2
// CopyPlainLine with the first 128 bytes taken 32 at a time, where the processor has AVX2.
__attribute__((target("avx2"))) size_t WideCopyPlainLine(char* pszBuffer, size_t nCapacity,
                                                         const uint8_t* pSource, size_t nWindow) {
    if (nWindow >= kWideLine) {
        const __m256i newline = _mm256_set1_epi8('\n');
        uint64_t nHalves[2] = {0, 0};
        for (unsigned i = 0; i < 4; ++i) {
            const __m256i x =
                _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pSource + 32 * i));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(pszBuffer + 32 * i), x);
            const auto nHits = static_cast<uint64_t>(
                static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(x, newline))));
            nHalves[i / 2] |= nHits << (32 * (i % 2));
        }
        if ((nHalves[0] | nHalves[1]) != 0) {
            const size_t nLen = WideLineLength(nHalves[0], nHalves[1]);
            std::memset(pszBuffer + nLen, 0, nCapacity - nLen);
            return nLen;
        }
    }
    return CopyPlainLineBlocks(pszBuffer, nCapacity, pSource, nWindow);
}
#endif

// The memory line read over (data, size) from `*pPos`; see CPackFile::ReadLine.
inline char* MemLine(const uint8_t* pData, uint32_t uSize, uint32_t uFirstSpecial, uint32_t* pPos,
                     char* pszBuffer, int nCapacity, size_t* pLength) {
    if (nCapacity < 1) {
        return nullptr;
    }
    const uint32_t uPos = *pPos;
    const size_t nLeft = uPos < uSize ? uSize - uPos : 0;
    const size_t nMax = static_cast<size_t>(nCapacity) - 1;
    const size_t nWindow = nLeft < nMax ? nLeft : nMax;
    // A cursor seeked past the end reads nothing; no pointer is formed beyond the data.
    const uint8_t* pAt = nLeft > 0 ? pData + uPos : pData;
    const LineScan scan = ScanLine(pAt, nWindow, nLeft > 0 && uPos + nWindow <= uFirstSpecial);
    const bool bEnded =
        scan.stop == LineScan::kMark || (scan.stop == LineScan::kWindow && nWindow == nLeft);
    CopyLine(pszBuffer, nCapacity, pAt, scan.length, nWindow);
    *pPos = uPos + static_cast<uint32_t>(scan.length);
    if (pLength != nullptr) {
        *pLength = scan.firstZero < scan.length ? scan.firstZero : scan.length;
    }
    return (scan.length > 0 || !bEnded) ? pszBuffer : nullptr;
}

}  // namespace

namespace pind::detail {

bool IsPackageFirst() {
    IPindClient* pClient = GetClient();
    return pClient->IsPackageInUse() && !g_bPackForceDisk.load() && pClient->GetPackageMode() == 1;
}

std::string NormalisePackPath(const char* pszPath) {
    std::string strPath = pszPath != nullptr ? pszPath : "";
    if (GetClient()->IsPackageInUse() && IsPackageFirst()) {
        const size_t nLua = strPath.find(".lua");
        if (nLua != std::string::npos) {
            strPath.replace(nLua, 4, ".dat");
        }
    }
    size_t nAt = strPath.find(".//");
    if (nAt != std::string::npos) {
        strPath.erase(nAt, 3);
    } else if ((nAt = strPath.find("./")) != std::string::npos) {
        strPath.erase(nAt, 2);
    }
    return strPath;
}

}  // namespace pind::detail

void SetPackForceDisk(bool bForceDisk) { g_bPackForceDisk.store(bForceDisk); }
bool GetPackForceDisk() { return g_bPackForceDisk.load(); }

CPackFile::CPackFile(const char* pszPath, const char* pszMode)
    : m_strName(pind::detail::NormalisePackPath(pszPath)) {
    if (pszMode == nullptr) {
        return;
    }
    if (!GetClient()->IsPackageInUse() || HasWriteMode(pszMode)) {
        OpenDisk(pszMode);
    } else if (pind::detail::IsPackageFirst()) {
        if (!OpenPackage(pszPath)) {
            OpenDisk(pszMode);
        }
    } else {
        OpenDisk(pszMode);
        OpenPackage(pszPath);
    }
}

CPackFile::~CPackFile() { Close(); }

void CPackFile::Close() {
    if (m_pStream != nullptr) {
        std::fclose(m_pStream);
        m_pStream = nullptr;
    }
    std::vector<uint8_t>().swap(m_vecData);
    m_pData = nullptr;
    m_uSize = 0;
    m_uPos = 0;
    m_strName.clear();
}

void CPackFile::OpenDisk(const char* pszMode) {
    if (m_pStream != nullptr) {
        return;
    }
    if (m_strName.empty()) {
        m_pStream = std::tmpfile();
        return;
    }
    m_pStream = std::fopen(m_strName.c_str(), pszMode);
    if (m_pStream == nullptr) {
        // An empty base names no folder: retrying at the file-system root would reach outside the
        // game's tree.
        const std::string strBase = BaseDir();
        if (!strBase.empty()) {
            m_pStream = std::fopen((strBase + "/" + m_strName).c_str(), pszMode);
        }
    }
}

bool CPackFile::OpenPackage(const char* pszCallerPath) {
    if (m_pStream != nullptr) {
        return true;
    }
    if (m_strName.empty()) {
        return false;
    }
    std::string strLower = m_strName;
    LowerAscii(strLower);
    // The second name tried: the path under the client's base folder, '/'-separated.
    auto retryName = [&strLower](char(&szRetry)[1024]) {
        std::snprintf(szRetry, sizeof szRetry, "%s/%s", BaseDir().c_str(), strLower.c_str());
        for (char* p = szRetry; *p != '\0'; ++p) {
            if (*p == '\\') {
                *p = '/';
            }
        }
        return szRetry;
    };
    char szRetry[1024];
    // A whole-file package's Open, GetLen, Read and Close are final and together hand over what
    // its LoadFile gives, so those bytes are taken as they are rather than copied.
    if (CWholeFilePackage* pWhole = CWholeFilePackage::Find(pind::platform::GetPackage())) {
        if (!TakeWholeFile(pWhole, strLower.c_str()) &&
            !TakeWholeFile(pWhole, retryName(szRetry))) {
            return false;
        }
    } else {
        pind::platform::PackHandle hPack = nullptr;
        if (pind::platform::VoFOpen(strLower.c_str(), &hPack) != 0 &&
            pind::platform::VoFOpen(retryName(szRetry), &hPack) != 0) {
            return false;
        }
        const uint32_t uSize = pind::platform::VoFGetLen(hPack);
        try {
            m_vecData.resize(static_cast<size_t>(uSize) + kDataPad);
        } catch (const std::bad_alloc&) {
            // A length the memory cannot hold fails the open, as a failed allocation always has.
            pind::platform::VoFClose(hPack);
            return false;
        }
        m_uSize = uSize;
        const uint32_t uRead = pind::platform::VOFRead(m_vecData.data(), 1, uSize, hPack);
        if (uRead != uSize) {
            // The buffer is kept, zeros in place of what was not read.
            pind::LogMessage("VOFRead pack error, pack_name = %s",
                             pszCallerPath != nullptr ? pszCallerPath : "");
        }
        pind::platform::VoFClose(hPack);
    }
    m_pData = m_vecData.data();
    m_uPos = 0;
    m_uFirstSpecial = FirstSpecialByte(m_pData, m_uSize);
    return true;
}

bool CPackFile::TakeWholeFile(CWholeFilePackage* pPackage, const char* pszName) {
    m_vecData.clear();
    if (!pPackage->LoadFile(pszName, &m_vecData)) {
        m_vecData.clear();
        return false;
    }
    // GetLen gives the length in 32 bits, and Read stops there.
    m_uSize = static_cast<uint32_t>(m_vecData.size());
    m_vecData.resize(m_uSize);
    m_vecData.resize(static_cast<size_t>(m_uSize) + kDataPad);
    return true;
}

size_t CPackFile::MemRead(void* pBuffer, size_t nSize, size_t nCount) {
    if (m_uPos >= m_uSize || nSize == 0 || nCount == 0) {
        return 0;
    }
    const size_t nLeft = m_uSize - m_uPos;
    const size_t nBytes = nCount > nLeft / nSize ? nLeft : nSize * nCount;
    std::memcpy(pBuffer, m_pData + m_uPos, nBytes);
    m_uPos += static_cast<uint32_t>(nBytes);
    return nBytes / nSize;
}

int32_t CPackFile::MemGetc() {
    if (m_uPos >= m_uSize) {
        return -1;
    }
    return static_cast<int32_t>(0xFFFFFF00u | m_pData[m_uPos++]);
}

int CPackFile::MemUngetc(int nChar) {
    if (m_uPos >= m_uSize) {
        return -1;
    }
    if (m_uPos > 0) {
        --m_uPos;
    }
    m_pData[m_uPos] = static_cast<uint8_t>(nChar);
    if (m_pData[m_uPos] == 0x00 || m_pData[m_uPos] == 0xFF) {
        m_uFirstSpecial = m_uPos < m_uFirstSpecial ? m_uPos : m_uFirstSpecial;
    }
    return static_cast<uint8_t>(nChar);
}

char* CPackFile::ReadLine(char* pszBuffer, int nCapacity, size_t* pLength) {
    m_nLineEnds = 0;
    return MemLine(m_pData, m_uSize, m_uFirstSpecial, &m_uPos, pszBuffer, nCapacity, pLength);
}

int CPackFile::MemSeek(int32_t nOffset, int nWhence) {
    switch (nWhence) {
        case SEEK_SET:
            if (nOffset < 0 || static_cast<uint32_t>(nOffset) > m_uSize) {
                return -1;
            }
            m_uPos = static_cast<uint32_t>(nOffset);
            return 0;
        case SEEK_CUR: {
            const int64_t nTarget = static_cast<int64_t>(m_uPos) + nOffset;
            if (nTarget < 0 || (nOffset > 0 && nTarget > static_cast<int64_t>(m_uSize))) {
                return -1;
            }
            m_uPos = static_cast<uint32_t>(nTarget);
            return 0;
        }
        case SEEK_END:
            if (nOffset > 0) {
                return -1;
            }
            m_uPos = m_uSize + static_cast<uint32_t>(nOffset);
            return 0;
        default:
            return -1;
    }
}

CPackFile* PackFOpen(const char* pszPath, const char* pszMode) {
    if (pszPath == nullptr || pszMode == nullptr) {
        return nullptr;
    }
    std::string strTranslated = pszPath;
    GetClient()->TranslatePath(pszPath, strTranslated);
    auto* pFile = new CPackFile(strTranslated.c_str(), pszMode);
    if (!pFile->IsOpened()) {
        delete pFile;
        return nullptr;
    }
    return pFile;
}

CPackFile* PackFTmpFile() {
    auto* pFile = new CPackFile("", "wb+");
    if (!pFile->IsOpened()) {
        delete pFile;
        return nullptr;
    }
    return pFile;
}

CPackFile* PackFReopen(const char* pszPath, const char* pszMode, CPackFile* pFile) {
    if (pszPath == nullptr || pszMode == nullptr || pFile == nullptr) {
        return nullptr;
    }
    if (!pFile->IsDiskMode()) {
        return pFile;
    }
    delete pFile;
    return PackFOpen(pszPath, pszMode);
}

void PackFClose(CPackFile* pFile) { delete pFile; }

size_t PackFRead(void* pBuffer, size_t nSize, size_t nCount, CPackFile* pFile) {
    if (pFile == nullptr || pBuffer == nullptr) {
        return 0;
    }
    if (pFile->IsDiskMode()) {
        return std::fread(pBuffer, nSize, nCount, pFile->GetStream());
    }
    return pFile->MemRead(pBuffer, nSize, nCount);
}

int32_t PackFGetc(CPackFile* pFile) {
    if (pFile == nullptr) {
        return -1;
    }
    if (pFile->IsDiskMode()) {
        uint8_t byte = 0;
        if (std::fread(&byte, 1, 1, pFile->GetStream()) != 1) {
            return -1;
        }
        return static_cast<int32_t>(0xFFFFFF00u | byte);
    }
    return pFile->MemGetc();
}

int PackFUngetc(int nChar, CPackFile* pFile) {
    if (pFile == nullptr || nChar == -1) {
        return -1;
    }
    if (pFile->IsDiskMode()) {
        return std::ungetc(nChar, pFile->GetStream());
    }
    return pFile->MemUngetc(nChar);
}

char* PackFGets(char* pszBuffer, int nCapacity, CPackFile* pFile) {
    if (pFile == nullptr || pszBuffer == nullptr || nCapacity < 1) {
        return nullptr;
    }
    size_t nLen = 0;
    char* pszLine;
    const char* pszSource;
    pFile->m_nLineEnds = 0;
    if (pFile->m_pStream != nullptr) {
        pszLine = std::fgets(pszBuffer, nCapacity, pFile->m_pStream);
        nLen = pszLine != nullptr ? std::strlen(pszLine) : 0;
        pszSource = pszLine;
    } else {
        const uint32_t uPos = pFile->m_uPos;
        const size_t nLeft = uPos < pFile->m_uSize ? pFile->m_uSize - uPos : 0;
        const size_t nWindow =
            nLeft < static_cast<size_t>(nCapacity) - 1 ? nLeft : static_cast<size_t>(nCapacity) - 1;
        if (nWindow > 0 && uPos + nWindow <= pFile->m_uFirstSpecial) {
            // Only a newline can end a line here, and the line is never empty-and-ended: this is
            // MemLine's plain case, written out because line reads are the hot path.
            const uint8_t* pSource = pFile->m_pData + uPos;
#ifdef PIND_LINE_AVX2
            nLen =
                g_bWideLines
                    ? WideCopyPlainLine(pszBuffer, static_cast<size_t>(nCapacity), pSource, nWindow)
                    : CopyPlainLine(pszBuffer, static_cast<size_t>(nCapacity), pSource, nWindow);
#else
            nLen = CopyPlainLine(pszBuffer, static_cast<size_t>(nCapacity), pSource, nWindow);
#endif
            pFile->m_uPos = uPos + static_cast<uint32_t>(nLen);
            HandleTerminator(pFile, pszBuffer, reinterpret_cast<const char*>(pSource), nLen);
            return pszBuffer;
        }
        pszLine = MemLine(pFile->m_pData, pFile->m_uSize, pFile->m_uFirstSpecial, &pFile->m_uPos,
                          pszBuffer, nCapacity, &nLen);
        pszSource = pszLine != nullptr && nLen > 0
                        ? reinterpret_cast<const char*>(pFile->m_pData) + uPos
                        : pszLine;
    }
    if (pszLine != nullptr) {
        HandleTerminator(pFile, pszLine, pszSource, nLen);
    }
    return pszLine;
}

int PackFVScanf(CPackFile* pFile, const char* pszFormat, va_list args) {
    if (pFile == nullptr || pszFormat == nullptr || *pszFormat == '\0') {
        return -1;
    }
    const bool bDisk = pFile->IsDiskMode();
    const long nStart = bDisk ? std::ftell(pFile->GetStream()) : static_cast<long>(pFile->GetPos());
    char szLine[kScanLineCapacity];
    for (;;) {
        size_t nLen = 0;
        if (RawLine(pFile, szLine, kScanLineCapacity, &nLen) == nullptr) {
            return -1;
        }
        if (pind::platform::Stricmp(szLine, "\n") != 0 &&
            pind::platform::Stricmp(szLine, "\r\n") != 0) {
            break;
        }
    }
    va_list copy;
    va_copy(copy, args);
    const int nFields = std::vsscanf(szLine, pszFormat, copy);
    va_end(copy);
    if (nFields >= 1) {
        return nFields;
    }
    if (bDisk) {
        std::fseek(pFile->GetStream(), nStart, SEEK_SET);
    } else if (nStart >= 0 && static_cast<unsigned long>(nStart) <= pFile->GetSize()) {
        pFile->SetPos(static_cast<uint32_t>(nStart));
    }
    return 0;
}

int PackFScanf(CPackFile* pFile, const char* pszFormat, ...) {
    va_list args;
    va_start(args, pszFormat);
    const int nFields = PackFVScanf(pFile, pszFormat, args);
    va_end(args);
    return nFields;
}

int PackFVPrintf(CPackFile* pFile, const char* pszFormat, va_list args) {
    if (pFile == nullptr || pszFormat == nullptr || !pFile->IsDiskMode()) {
        return -1;
    }
    return std::vfprintf(pFile->GetStream(), pszFormat, args);
}

int PackFPrintf(CPackFile* pFile, const char* pszFormat, ...) {
    va_list args;
    va_start(args, pszFormat);
    const int nWritten = PackFVPrintf(pFile, pszFormat, args);
    va_end(args);
    return nWritten;
}

int PackFPuts(const char* pszText, CPackFile* pFile) {
    if (pFile == nullptr || pszText == nullptr || !pFile->IsDiskMode()) {
        return -1;
    }
    return std::fputs(pszText, pFile->GetStream());
}

int PackFPutc(int nChar, CPackFile* pFile) {
    if (pFile == nullptr || !pFile->IsDiskMode()) {
        return -1;
    }
    return std::fputc(nChar, pFile->GetStream());
}

size_t PackFWrite(const void* pBuffer, size_t nSize, size_t nCount, CPackFile* pFile) {
    if (pFile == nullptr || pBuffer == nullptr || !pFile->IsDiskMode()) {
        return 0;
    }
    return std::fwrite(pBuffer, nSize, nCount, pFile->GetStream());
}

int PackFFlush(CPackFile* pFile) {
    if (pFile == nullptr || !pFile->IsDiskMode()) {
        return -1;
    }
    return std::fflush(pFile->GetStream());
}

int PackFSeek(CPackFile* pFile, int32_t nOffset, int nWhence) {
    if (pFile == nullptr) {
        return -1;
    }
    if (pFile->IsDiskMode()) {
        return std::fseek(pFile->GetStream(), nOffset, nWhence);
    }
    return pFile->MemSeek(nOffset, nWhence);
}

int PackFSeek64(CPackFile* pFile, int64_t nOffset, int nWhence) {
    if (pFile == nullptr) {
        return -1;
    }
    // Large offsets are deliberately unsupported: only the low 32 bits count.
    const auto nLow = static_cast<int32_t>(static_cast<uint32_t>(nOffset & 0xFFFFFFFF));
    if (pFile->IsDiskMode()) {
        return static_cast<int32_t>(pind::platform::Seek64(pFile->GetStream(), nLow, nWhence));
    }
    return pFile->MemSeek(nLow, nWhence);
}

int32_t PackFTell(CPackFile* pFile) {
    if (pFile == nullptr) {
        return -1;
    }
    if (pFile->IsDiskMode()) {
        return static_cast<int32_t>(std::ftell(pFile->GetStream()));
    }
    return static_cast<int32_t>(pFile->GetPos());
}

int64_t PackFTell64(CPackFile* pFile) {
    if (pFile == nullptr) {
        return -1;
    }
    if (pFile->IsDiskMode()) {
        return pind::platform::Tell64(pFile->GetStream());
    }
    return pFile->GetPos();
}

int32_t PackFGetLen(CPackFile* pFile) {
    if (pFile == nullptr) {
        return -1;
    }
    if (pFile->IsDiskMode()) {
        return static_cast<int32_t>(
            pind::platform::FileLength(pind::platform::FileNo(pFile->GetStream())));
    }
    return static_cast<int32_t>(pFile->GetSize());
}

int64_t PackFGetLen64(CPackFile* pFile) {
    if (pFile == nullptr) {
        return -1;
    }
    if (pFile->IsDiskMode()) {
        return pind::platform::FileLength64(pind::platform::FileNo(pFile->GetStream()));
    }
    return pFile->GetSize();
}

void PackFRewind(CPackFile* pFile) {
    if (pFile == nullptr) {
        return;
    }
    if (pFile->IsDiskMode()) {
        std::rewind(pFile->GetStream());
    } else {
        pFile->SetPos(0);
    }
}

int PackFEof(CPackFile* pFile) {
    if (pFile == nullptr) {
        return -1;
    }
    if (pFile->IsDiskMode()) {
        return std::feof(pFile->GetStream());
    }
    return pFile->GetPos() < pFile->GetSize() ? 0 : -1;
}

int PackFError(CPackFile* pFile) {
    if (pFile == nullptr) {
        return -1;
    }
    return pFile->IsDiskMode() ? std::ferror(pFile->GetStream()) : 0;
}

void PackFClearErr(CPackFile* pFile) {
    if (pFile != nullptr && pFile->IsDiskMode()) {
        std::clearerr(pFile->GetStream());
    }
}

// The record's leading 64-bit value is the position on Windows (where fpos_t is __int64) and the
// offset field of glibc's struct, so memory mode reads and writes it there.
static_assert(sizeof(std::fpos_t) >= sizeof(int64_t), "fpos_t must hold a 64-bit position");

int PackFGetPos(CPackFile* pFile, std::fpos_t* pPos) {
    if (pFile == nullptr || pPos == nullptr) {
        return -1;
    }
    if (pFile->IsDiskMode()) {
        return std::fgetpos(pFile->GetStream(), pPos);
    }
    const int64_t nPos = pFile->GetPos();
    std::memset(static_cast<void*>(pPos), 0, sizeof *pPos);
    std::memcpy(static_cast<void*>(pPos), &nPos, sizeof nPos);
    return 0;
}

int PackFSetPos(CPackFile* pFile, const std::fpos_t* pPos) {
    if (pFile == nullptr || pPos == nullptr) {
        return -1;
    }
    if (pFile->IsDiskMode()) {
        return std::fsetpos(pFile->GetStream(), pPos);
    }
    int64_t nPos = 0;
    std::memcpy(&nPos, static_cast<const void*>(pPos), sizeof nPos);
    pFile->SetPos(static_cast<uint32_t>(nPos & 0xFFFFFFFF));
    return 0;
}

bool PackFExist(const char* pszPath) {
    if (pszPath == nullptr) {
        return false;
    }
    std::string strPath = pind::detail::NormalisePackPath(pszPath);
    LowerAscii(strPath);
    if (strPath.empty()) {
        return false;
    }
    if (pind::platform::VoFExist(strPath.c_str(), 0) != 0) {
        return true;
    }
    if (GetClient()->IsFileExist(strPath.c_str())) {
        return true;
    }
    return pind::platform::FileAttributes(strPath.c_str()) !=
           pind::platform::kInvalidFileAttributes;
}

void TrimLineEnd(char* pszLine) {
    if (pszLine == nullptr) {
        return;
    }
    const size_t nLen = std::strlen(pszLine);
    if (nLen >= 1 && pszLine[nLen - 1] == '\n') {
        pszLine[nLen - 1] = '\0';
    }
    if (nLen >= 2 && pszLine[nLen - 2] == '\r') {
        pszLine[nLen - 2] = '\0';
    }
}

bool IsCommentLine(const char* pszLine) {
    if (pszLine == nullptr || pszLine[0] == '\0' || pszLine[0] == '\n' || pszLine[0] == ';') {
        return true;
    }
    if (pszLine[1] == '\0') {
        return false;
    }
    return (pszLine[0] == '/' && pszLine[1] == '/') || (pszLine[0] == '\r' && pszLine[1] == '\n');
}

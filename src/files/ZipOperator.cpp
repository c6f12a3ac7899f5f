#include "pind/files/ZipOperator.h"

#include <unzip.h>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>

#include "files/Crc32.h"
#include "files/ZipEntry.h"
#include "pind/platform/System.h"

namespace {

// The first entry's name is read into a 256-byte buffer; the name is not used.
constexpr size_t kNameCapacity = 255;

std::shared_ptr<unsigned char> AllocateZeroed(uint32_t nSize) {
    auto* p = static_cast<unsigned char*>(std::calloc(nSize, 1));
    if (p == nullptr) {
        return nullptr;
    }
    return std::shared_ptr<unsigned char>(p, [](unsigned char* q) { std::free(q); });
}

// Closes the archive on every way out of ReadFirstFile.
struct ArchiveCloser {
    unzFile archive;
    ~ArchiveCloser() { unzClose(archive); }
};

// The buffer being filled and the operator's staging chunk.
struct Output {
    unsigned char* pBuffer;
    size_t nCapacity;
    unsigned char* pChunk;
};

// Reads from `nTotal` on by the chunk rule: read a chunk, stop when the read gives less than one
// byte or would not fit, else append it. Returns the bytes kept; `*pFailed` tells a read failed.
size_t ReadChunks(unzFile archive, const Output& out, size_t nTotal, bool* pFailed) {
    for (;;) {
        // A chunk that fits whole is read in place, which gives the same bytes as staging it.
        const bool bFits = nTotal + CMyZipOperator::kChunkSize <= out.nCapacity;
        unsigned char* pTarget = bFits ? out.pBuffer + nTotal : out.pChunk;
        const int nRead = unzReadCurrentFile(archive, pTarget, CMyZipOperator::kChunkSize);
        if (nRead < 0) {
            *pFailed = true;
        }
        if (nRead < 1 || nTotal + static_cast<size_t>(nRead) > out.nCapacity) {
            return nTotal;
        }
        if (!bFits) {
            std::memcpy(out.pBuffer + nTotal, out.pChunk, static_cast<size_t>(nRead));
        }
        nTotal += static_cast<size_t>(nRead);
    }
}

// The chunk rule, faster: while whole chunks fit, many are read at once, so that zlib copies
// matches out of the output rather than its window. An intact entry yields the same bytes and
// stops at the same place; `*pFailed` tells a read failed, after which the result is not the chunk
// rule's.
size_t ReadSpans(unzFile archive, const Output& out, bool* pFailed) {
    // Well inside the int a read returns; larger spans gain nothing more.
    constexpr size_t kSpan = size_t{CMyZipOperator::kChunkSize} * 128;
    size_t nTotal = 0;
    for (;;) {
        const size_t nRoom =
            (out.nCapacity - nTotal) / CMyZipOperator::kChunkSize * CMyZipOperator::kChunkSize;
        if (nRoom == 0) {
            return ReadChunks(archive, out, nTotal, pFailed);
        }
        const auto nAsk = static_cast<unsigned>(nRoom < kSpan ? nRoom : kSpan);
        const int nRead = unzReadCurrentFile(archive, out.pBuffer + nTotal, nAsk);
        if (nRead < 0) {
            *pFailed = true;
        }
        if (nRead < 1) {
            return nTotal;
        }
        nTotal += static_cast<size_t>(nRead);
    }
}

// The whole entry in one inflate call over the output, its compressed bytes read from the archive
// file in one piece: zlib then copies matches out of the output and never keeps a window. True
// only when the stream ends at exactly `nSize` bytes whose CRC-32 is the entry's; any other entry
// goes through minizip, which gives the same bytes for an intact entry.
bool InflateWhole(unzFile archive, const char* pszZipPath, const pind::detail::ZipEntry& entry,
                  unsigned char* pOut, size_t nSize) {
    int nMethod = 0;
    int nLevel = 0;
    if (entry.nPacked > 0xFFFFFFFFu || nSize > 0xFFFFFFFFu ||
        unzOpenCurrentFile2(archive, &nMethod, &nLevel, /*raw=*/1) != UNZ_OK) {
        return false;
    }
    const auto nStart = static_cast<int64_t>(unzGetCurrentFileZStreamPos64(archive));
    unzCloseCurrentFile(archive);
    std::FILE* pFile = std::fopen(pszZipPath, "rb");
    if (pFile == nullptr) {
        return false;
    }
    // A stream that claims more bytes than the file holds is read to the file's end.
    int64_t nEnd = -1;
    if (pind::platform::Seek64(pFile, 0, SEEK_END) == 0) {
        nEnd = pind::platform::Tell64(pFile);
    }
    const uint64_t nHeld = nEnd > nStart ? static_cast<uint64_t>(nEnd - nStart) : 0;
    const auto nPacked = static_cast<size_t>(entry.nPacked < nHeld ? entry.nPacked : nHeld);
    std::unique_ptr<unsigned char, decltype(&std::free)> pIn(
        static_cast<unsigned char*>(std::malloc(nPacked > 0 ? nPacked : 1)), &std::free);
    const bool bRead = pIn != nullptr && nEnd >= 0 &&
                       pind::platform::Seek64(pFile, nStart, SEEK_SET) == 0 &&
                       std::fread(pIn.get(), 1, nPacked, pFile) == nPacked;
    std::fclose(pFile);
    z_stream zs{};
    if (!bRead || inflateInit2(&zs, -MAX_WBITS) != Z_OK) {
        return false;
    }
    zs.next_in = pIn.get();
    zs.avail_in = static_cast<uInt>(nPacked);
    zs.next_out = pOut;
    zs.avail_out = static_cast<uInt>(nSize);
    const bool bWhole = inflate(&zs, Z_FINISH) == Z_STREAM_END && zs.total_out == nSize;
    inflateEnd(&zs);
    return bWhole && pind::detail::Crc32(0, pOut, nSize) == entry.nCrc;
}

}  // namespace

CMyZipOperator::CMyZipOperator() { std::memset(m_chunk, 0, sizeof m_chunk); }

CMyZipOperator::CMyZipOperator(const CMyZipOperator& other)
    : m_pBuffer(other.m_pBuffer), m_nCapacity(other.m_nCapacity) {
    std::memcpy(m_chunk, other.m_chunk, sizeof m_chunk);
}

CMyZipOperator& CMyZipOperator::operator=(const CMyZipOperator& other) {
    if (this != &other) {
        m_pBuffer = other.m_pBuffer;
        m_nCapacity = other.m_nCapacity;
        std::memcpy(m_chunk, other.m_chunk, sizeof m_chunk);
    }
    return *this;
}

CMyZipOperator::~CMyZipOperator() = default;

bool CMyZipOperator::Reserve(uint32_t nSize) {
    std::shared_ptr<unsigned char> pNew = AllocateZeroed(nSize);
    if (!pNew) {
        return false;
    }
    m_pBuffer = std::move(pNew);
    m_nCapacity = nSize;
    return true;
}

unsigned int CMyZipOperator::ReadFirstFile(const char* pszZipPath, unsigned char** ppData) {
    if (!m_pBuffer) {
        Reserve(kInitialCapacity);
    }
    if (pszZipPath == nullptr || *pszZipPath == '\0') {
        return 0;
    }
    unzFile archive = unzOpen64(pszZipPath);
    if (archive == nullptr) {
        return 0;
    }
    ArchiveCloser closer{archive};
    unz_global_info64 global;
    if (ppData == nullptr || unzGetGlobalInfo64(archive, &global) != UNZ_OK ||
        global.number_entry == 0) {
        return 0;
    }
    pind::detail::ZipEntry entry;
    if (!pind::detail::ReadZipEntry(archive, kNameCapacity, &entry) ||
        !pind::detail::IsPlainEntry(entry)) {
        return 0;
    }
    const uint64_t nDeclared = entry.nSize;
    // Deflate cannot expand data more than 1032-fold, and the compressed data lies within the
    // archive: a size beyond that is a lie no buffer should be grown for.
    std::error_code ec;
    const uint64_t nArchive = std::filesystem::file_size(pszZipPath, ec);
    const uint64_t nPacked = ec || entry.nPacked < nArchive ? entry.nPacked : nArchive;
    const uint64_t nReachable = nPacked * 1032 + 1024;
    if (nDeclared > 0xFFFFFFFFu || nDeclared > nReachable) {
        return 0;
    }
    if (nDeclared > kInitialCapacity && nDeclared > m_nCapacity) {
        if (!Reserve(static_cast<uint32_t>(nDeclared))) {
            return 0;
        }
    }
    if (!m_pBuffer) {
        return 0;
    }
    unsigned char* pOut = m_pBuffer.get();
    *ppData = pOut;
    const Output out{pOut, m_nCapacity, m_chunk};
    bool bFailed = false;
    size_t nTotal = 0;
    if (entry.nMethod == Z_DEFLATED && nDeclared > 0 &&
        InflateWhole(archive, pszZipPath, entry, pOut, static_cast<size_t>(nDeclared))) {
        nTotal = static_cast<size_t>(nDeclared);
    } else if (unzOpenCurrentFile(archive) == UNZ_OK) {
        nTotal = ReadSpans(archive, out, &bFailed);
    } else {
        std::memset(pOut, 0, m_nCapacity);
        return 0;
    }
    if (bFailed) {
        // Where a damaged entry stops depends on how its reads were cut: read it again from the
        // start, one chunk at a time.
        unzCloseCurrentFile(archive);
        nTotal = unzOpenCurrentFile(archive) == UNZ_OK ? ReadChunks(archive, out, 0, &bFailed) : 0;
    }
    // Zeroing only what no read wrote leaves the buffer as zeroing all of it first would.
    std::memset(pOut + nTotal, 0, m_nCapacity - nTotal);
    unzCloseCurrentFile(archive);
    return static_cast<unsigned int>(nDeclared);
}

std::string CMyZipOperator::UnsupportedFirstEntry(const char* pszZipPath) {
    unzFile archive = pszZipPath != nullptr ? unzOpen64(pszZipPath) : nullptr;
    if (archive == nullptr) {
        return std::string();
    }
    ArchiveCloser closer{archive};
    pind::detail::ZipEntry entry;
    unz_global_info64 global;
    if (unzGetGlobalInfo64(archive, &global) != UNZ_OK || global.number_entry == 0 ||
        !pind::detail::ReadZipEntry(archive, kNameCapacity, &entry)) {
        return std::string();
    }
    return pind::detail::UnsupportedEntryReason(entry);
}

std::string CMyZipOperator::FirstEntryFailure(const char* pszZipPath) {
    unzFile archive = pszZipPath != nullptr ? unzOpen64(pszZipPath) : nullptr;
    if (archive == nullptr) {
        return "not a zip archive that can be read, or one with no entries";
    }
    ArchiveCloser closer{archive};
    pind::detail::ZipEntry entry;
    unz_global_info64 global;
    if (unzGetGlobalInfo64(archive, &global) != UNZ_OK || global.number_entry == 0) {
        return "the archive holds no entries";
    }
    if (!pind::detail::ReadZipEntry(archive, kNameCapacity, &entry)) {
        return "the first entry's header cannot be read";
    }
    std::string why = pind::detail::UnsupportedEntryReason(entry);
    if (!why.empty()) {
        return why;
    }
    if (!entry.strName.empty() && entry.strName.back() == '/') {
        return "first entry " + entry.strName + " is a folder";
    }
    if (entry.nSize == 0) {
        return std::string();
    }
    return "first entry " + entry.strName + " declares " + std::to_string(entry.nSize) +
           " bytes, more than its data can hold";
}

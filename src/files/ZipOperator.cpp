#include "pind/files/ZipOperator.h"

#include <unzip.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>

namespace {

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
    unzFile archive = unzOpen(pszZipPath);
    if (archive == nullptr) {
        return 0;
    }
    ArchiveCloser closer{archive};
    unz_global_info global;
    if (ppData == nullptr || unzGetGlobalInfo(archive, &global) != UNZ_OK ||
        global.number_entry == 0) {
        return 0;
    }
    unz_file_info info;
    char szName[256];
    if (unzGetCurrentFileInfo(archive, &info, szName, sizeof szName, nullptr, 0, nullptr, 0) !=
        UNZ_OK) {
        return 0;
    }
    const unsigned long nDeclared = info.uncompressed_size;
    // Deflate cannot expand data more than 1032-fold, and the compressed data lies within the
    // archive: a size beyond that is a lie no buffer should be grown for.
    std::error_code ec;
    const uint64_t nArchive = std::filesystem::file_size(pszZipPath, ec);
    const uint64_t nPacked =
        ec || info.compressed_size < nArchive ? info.compressed_size : nArchive;
    const uint64_t nReachable = nPacked * 1032 + 1024;
    if (nDeclared > 0xFFFFFFFFul || nDeclared > nReachable) {
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
    std::memset(pOut, 0, m_nCapacity);
    *ppData = pOut;
    if (unzOpenCurrentFile(archive) != UNZ_OK) {
        return 0;
    }
    size_t nTotal = 0;
    for (;;) {
        std::memset(m_chunk, 0, sizeof m_chunk);
        const int nRead = unzReadCurrentFile(archive, m_chunk, sizeof m_chunk);
        if (nRead < 1 || nTotal + static_cast<size_t>(nRead) > m_nCapacity) {
            break;
        }
        std::memcpy(pOut + nTotal, m_chunk, static_cast<size_t>(nRead));
        nTotal += static_cast<size_t>(nRead);
    }
    unzCloseCurrentFile(archive);
    return static_cast<unsigned int>(nDeclared);
}

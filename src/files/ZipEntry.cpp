#include "files/ZipEntry.h"

#include <cstring>
#include <vector>

namespace pind::detail {

namespace {

constexpr uint32_t kZip64Marker = 0xFFFFFFFFu;
constexpr uint16_t kZip64ExtraId = 0x0001;
constexpr unsigned long kStored = 0;
constexpr unsigned long kDeflated = 8;

uint64_t LittleEndian(const unsigned char* p, int nBytes) {
    uint64_t n = 0;
    for (int i = nBytes - 1; i >= 0; --i) {
        n = (n << 8) | p[i];
    }
    return n;
}

// The Zip64 record holds, in this order, only the fields whose 32-bit header value is the marker.
void ApplyZip64(const unsigned char* pExtra, size_t nExtra, ZipEntry* pEntry) {
    const bool bSize = pEntry->nSize == kZip64Marker;
    const bool bPacked = pEntry->nPacked == kZip64Marker;
    for (size_t at = 0; at + 4 <= nExtra;) {
        const auto nId = static_cast<uint16_t>(LittleEndian(pExtra + at, 2));
        const auto nLen = static_cast<size_t>(LittleEndian(pExtra + at + 2, 2));
        const unsigned char* pField = pExtra + at + 4;
        if (at + 4 + nLen > nExtra) {
            return;
        }
        if (nId == kZip64ExtraId) {
            size_t nUsed = 0;
            if (bSize && nUsed + 8 <= nLen) {
                pEntry->nSize = LittleEndian(pField + nUsed, 8);
                nUsed += 8;
            }
            if (bPacked && nUsed + 8 <= nLen) {
                pEntry->nPacked = LittleEndian(pField + nUsed, 8);
            }
            return;
        }
        at += 4 + nLen;
    }
}

const char* MethodName(unsigned long nMethod) {
    switch (nMethod) {
        case 1:
            return "shrink";
        case 6:
            return "implode";
        case 9:
            return "deflate64";
        case 12:
            return "bzip2";
        case 14:
            return "LZMA";
        case 93:
            return "zstd";
        case 95:
            return "xz";
        case 98:
            return "PPMd";
        case 99:
            return "AES";
        default:
            return nullptr;
    }
}

}  // namespace

bool ReadZipEntry(unzFile archive, size_t nNameCapacity, ZipEntry* pEntry) {
    unz_file_info64 info;
    std::vector<char> name(nNameCapacity + 1, '\0');
    if (unzGetCurrentFileInfo64(archive, &info, name.data(), static_cast<uLong>(nNameCapacity),
                                nullptr, 0, nullptr, 0) != UNZ_OK) {
        return false;
    }
    pEntry->strName = name.data();
    pEntry->nPacked = info.compressed_size;
    pEntry->nSize = info.uncompressed_size;
    pEntry->nCrc = static_cast<uint32_t>(info.crc);
    pEntry->nMethod = info.compression_method;
    pEntry->bEncrypted = (info.flag & 1u) != 0;
    // The extra field is read only when a size needs it: a damaged one is then no reason to fail.
    if ((pEntry->nSize == kZip64Marker || pEntry->nPacked == kZip64Marker) &&
        info.size_file_extra > 0) {
        std::vector<unsigned char> extra(info.size_file_extra);
        if (unzGetCurrentFileInfo64(archive, &info, nullptr, 0, extra.data(),
                                    static_cast<uLong>(extra.size()), nullptr, 0) == UNZ_OK) {
            ApplyZip64(extra.data(), extra.size(), pEntry);
        }
    }
    return true;
}

bool IsPlainEntry(const ZipEntry& entry) {
    return !entry.bEncrypted && (entry.nMethod == kStored || entry.nMethod == kDeflated);
}

std::string UnsupportedEntryReason(const ZipEntry& entry) {
    if (entry.bEncrypted) {
        return "entry " + entry.strName + ": encrypted entries are not supported";
    }
    if (IsPlainEntry(entry)) {
        return std::string();
    }
    const char* pszMethod = MethodName(entry.nMethod);
    return "entry " + entry.strName + ": compression method " + std::to_string(entry.nMethod) +
           (pszMethod != nullptr ? std::string(" (") + pszMethod + ")" : std::string()) +
           " is not supported";
}

}  // namespace pind::detail

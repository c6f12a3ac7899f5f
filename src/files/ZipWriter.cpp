#include "pind/files/ZipWriter.h"

#include <zip.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace pind {

bool WriteZipArchive(const std::string& path, const std::vector<ZipSource>& entries) {
    zipFile archive = zipOpen(path.c_str(), APPEND_STATUS_CREATE);
    if (archive == nullptr) {
        return false;
    }
    bool bOk = true;
    for (const ZipSource& entry : entries) {
        zip_fileinfo info{};
        const int nMethod = entry.bDeflate ? Z_DEFLATED : 0;
        const int nLevel = entry.bDeflate ? Z_DEFAULT_COMPRESSION : 0;
        if (zipOpenNewFileInZip(archive, entry.name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr,
                                nMethod, nLevel) != ZIP_OK) {
            bOk = false;
            break;
        }
        if (!entry.bytes.empty() &&
            zipWriteInFileInZip(archive, entry.bytes.data(),
                                static_cast<unsigned>(entry.bytes.size())) != ZIP_OK) {
            bOk = false;
        }
        if (zipCloseFileInZip(archive) != ZIP_OK) {
            bOk = false;
        }
        if (!bOk) {
            break;
        }
    }
    return zipClose(archive, nullptr) == ZIP_OK && bOk;
}

bool ZipFolder(const std::string& folder, const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code ec;
    std::vector<ZipSource> entries;
    for (fs::recursive_directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        if (!it->is_regular_file(ec)) {
            continue;
        }
        std::ifstream in(it->path(), std::ios::binary);
        ZipSource source;
        source.name = it->path().lexically_relative(folder).generic_string();
        source.bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        entries.push_back(std::move(source));
    }
    if (ec) {
        return false;
    }
    std::sort(entries.begin(), entries.end(),
              [](const ZipSource& a, const ZipSource& b) { return a.name < b.name; });
    return WriteZipArchive(path, entries);
}

}  // namespace pind

namespace pind::detail {

int ZlibCompress(unsigned char* pDest, unsigned long* pDestLen, const unsigned char* pSrc,
                 unsigned long nSrcLen) {
    return compress(pDest, pDestLen, pSrc, nSrcLen);
}

int ZlibUncompress(unsigned char* pDest, unsigned long* pDestLen, const unsigned char* pSrc,
                   unsigned long nSrcLen) {
    return uncompress(pDest, pDestLen, pSrc, nSrcLen);
}

unsigned long ZlibCompressBound(unsigned long nSrcLen) { return compressBound(nSrcLen); }

}  // namespace pind::detail

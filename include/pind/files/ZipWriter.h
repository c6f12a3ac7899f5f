// Writes small zip archives with minizip's zip layer: the tool's demo packs a folder with it and
// tests make their archives with it.
//   pind::WriteZipArchive("out.zip", {{"a.txt", "hello", /*bDeflate=*/true}});
#ifndef PIND_FILES_ZIPWRITER_H_
#define PIND_FILES_ZIPWRITER_H_

#include <string>
#include <vector>

#include "pind/platform/Export.h"

namespace pind {

/// One entry to write: its name inside the archive, its bytes, stored or deflated.
struct ZipSource {
    std::string name;       ///< the path inside the archive, with '/' between folders
    std::string bytes;      ///< the entry's contents
    bool bDeflate = true;   ///< deflated when true, stored when false
};

/// Creates (or replaces) `path` holding `entries` in order; an empty list makes an empty archive.
/// False when the archive cannot be written.
PIND_API bool WriteZipArchive(const std::string& path, const std::vector<ZipSource>& entries);

/// Every regular file below `folder` (names relative, '/'-separated, sorted), deflated. False when
/// the folder cannot be read or the archive written.
PIND_API bool ZipFolder(const std::string& folder, const std::string& path);

}  // namespace pind

namespace pind::detail {
/// zlib's compress/uncompress, exported for the benchmarks' comparison. zlib result codes.
PIND_API int ZlibCompress(unsigned char* pDest, unsigned long* pDestLen, const unsigned char* pSrc,
                          unsigned long nSrcLen);
PIND_API int ZlibUncompress(unsigned char* pDest, unsigned long* pDestLen,
                            const unsigned char* pSrc, unsigned long nSrcLen);
PIND_API unsigned long ZlibCompressBound(unsigned long nSrcLen);
}  // namespace pind::detail

#endif  // PIND_FILES_ZIPWRITER_H_

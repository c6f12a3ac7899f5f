// The current entry of an open unzip handle as both zip readers need it: its name, its sizes with
// the Zip64 extra field applied (minizip leaves 0xFFFFFFFF in place on LP64 systems), its method
// and whether it is encrypted.
#ifndef PIND_SRC_FILES_ZIPENTRY_H_
#define PIND_SRC_FILES_ZIPENTRY_H_

#include <unzip.h>

#include <cstdint>
#include <string>

namespace pind::detail {

struct ZipEntry {
    std::string strName;
    uint64_t nPacked = 0;
    uint64_t nSize = 0;
    uint32_t nCrc = 0;
    unsigned long nMethod = 0;
    bool bEncrypted = false;
};

/// The current entry's header, the name cut to `nNameCapacity` bytes; false when minizip fails.
bool ReadZipEntry(unzFile archive, size_t nNameCapacity, ZipEntry* pEntry);

/// True for a stored or deflated entry that is not encrypted.
bool IsPlainEntry(const ZipEntry& entry);

/// Why the entry's bytes cannot be read as plain data ("entry a.txt: compression method 12
/// (bzip2) is not supported"), or "" when it is stored or deflated and not encrypted.
std::string UnsupportedEntryReason(const ZipEntry& entry);

}  // namespace pind::detail

#endif  // PIND_SRC_FILES_ZIPENTRY_H_

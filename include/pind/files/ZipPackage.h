// A package backend over a zip archive: the archive is opened once and its entries indexed by
// lower-cased name; an open inflates the whole entry. Damaged entries fail to open, and so do
// encrypted ones and those neither stored nor deflated. Zip64 archives are read.
//   CZipPackage pack("assets.zip"); pind::platform::SetPackage(&pack);
//   CPackFile* f = PackFOpen("ini/setup.ini", "r");
#ifndef PIND_FILES_ZIPPACKAGE_H_
#define PIND_FILES_ZIPPACKAGE_H_

#include <memory>
#include <string>
#include <vector>

#include "pind/files/WholeFilePackage.h"
#include "pind/platform/Export.h"

/// The entries of a zip archive, served as a package.
class PIND_API CZipPackage : public CWholeFilePackage {
public:
    /// Opens and indexes `archive`; an archive that does not open serves no files.
    explicit CZipPackage(const std::string& archive);
    ~CZipPackage() override;
    CZipPackage(const CZipPackage&) = delete;
    CZipPackage& operator=(const CZipPackage&) = delete;

    /// True when the archive could be opened and read (it may still have no entries).
    bool IsOpen() const;
    /// The file entries' names as the archive stores them, in archive order. Folders and names
    /// with a ".." part or a root are left out.
    std::vector<std::string> List() const;
    /// Why entry `name` cannot be opened although it is listed ("entry a.txt: compression method
    /// 12 (bzip2) is not supported"); "" when it can or there is no such entry.
    std::string UnsupportedEntry(const char* name);

protected:
    /// Names match entries ignoring ASCII case, with '\\' read as '/'.
    bool HasFile(const char* name) override;
    bool LoadFile(const char* name, std::vector<uint8_t>* bytes) override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

#endif  // PIND_FILES_ZIPPACKAGE_H_

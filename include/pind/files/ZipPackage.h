// A package backend over a zip archive: the archive is opened once and its entries indexed by
// lower-cased name; an open inflates the whole entry. Damaged entries fail to open.
//   CZipPackage pack("assets.zip"); pind::platform::SetPackage(&pack);
//   CPackFile* f = PackFOpen("ini/setup.ini", "r");
#ifndef PIND_FILES_ZIPPACKAGE_H_
#define PIND_FILES_ZIPPACKAGE_H_

#include <memory>
#include <string>
#include <vector>

#include "pind/platform/Export.h"
#include "pind/platform/Package.h"

class PIND_API CZipPackage : public pind::platform::IPindPackage {
public:
    explicit CZipPackage(const std::string& archive);
    ~CZipPackage() override;
    CZipPackage(const CZipPackage&) = delete;
    CZipPackage& operator=(const CZipPackage&) = delete;

    /// True when the archive could be opened and read (it may still have no entries).
    bool IsOpen() const;
    /// The file entries' names as the archive stores them, in archive order. Folders and names
    /// with a ".." part or a root are left out.
    std::vector<std::string> List() const;

    /// Names match entries ignoring ASCII case, with '\\' read as '/'.
    int Open(const char* name, pind::platform::PackHandle* handle) override;
    uint32_t GetLen(pind::platform::PackHandle handle) override;
    uint32_t Read(void* buffer, uint32_t size, uint32_t count,
                  pind::platform::PackHandle handle) override;
    void Close(pind::platform::PackHandle handle) override;
    int Exist(const char* name, int flag) override;
    int Dump(const char* name, void** buffer, int32_t* length, int flag) override;
    void Undump(void* buffer) override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

#endif  // PIND_FILES_ZIPPACKAGE_H_

// A package backend over a folder: serves the files below `root` to the library's package calls,
// so package mode works without the engine's archive. Names match the files ignoring ASCII case.
//   CDirPackage pack("assets"); pind::platform::SetPackage(&pack);
//   CPackFile* f = PackFOpen("Ini/Setup.ini", "r");  // reads assets/ini/setup.ini whole
#ifndef PIND_FILES_DIRPACKAGE_H_
#define PIND_FILES_DIRPACKAGE_H_

#include <memory>
#include <string>
#include <vector>

#include "pind/platform/Export.h"
#include "pind/platform/Package.h"

class PIND_API CDirPackage : public pind::platform::IPindPackage {
public:
    explicit CDirPackage(const std::string& root);
    ~CDirPackage() override;
    CDirPackage(const CDirPackage&) = delete;
    CDirPackage& operator=(const CDirPackage&) = delete;

    /// True when `root` is a folder.
    bool IsOpen() const;
    /// Every regular file below the root, '/'-separated relative paths as on disk, sorted; empty
    /// when the root cannot be read.
    std::vector<std::string> List() const;

    /// Names are package names: relative, '/' or '\\' separated; rooted names and ".." parts fail.
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

#endif  // PIND_FILES_DIRPACKAGE_H_

// A package backend over a folder: serves the files below `root` to the library's package calls,
// so package mode works without the engine's archive. Names match the files ignoring ASCII case.
//   CDirPackage pack("assets"); pind::platform::SetPackage(&pack);
//   CPackFile* f = PackFOpen("Ini/Setup.ini", "r");  // reads assets/ini/setup.ini whole
#ifndef PIND_FILES_DIRPACKAGE_H_
#define PIND_FILES_DIRPACKAGE_H_

#include <memory>
#include <string>
#include <vector>

#include "pind/files/WholeFilePackage.h"
#include "pind/platform/Export.h"

/// The files below a folder, served as a package.
class PIND_API CDirPackage : public CWholeFilePackage {
public:
    /// Serves the files below `root`; nothing is read until a file is opened.
    explicit CDirPackage(const std::string& root);
    ~CDirPackage() override;
    CDirPackage(const CDirPackage&) = delete;
    CDirPackage& operator=(const CDirPackage&) = delete;

    /// True when `root` is a folder.
    bool IsOpen() const;
    /// Every regular file below the root, '/'-separated relative paths as on disk, sorted; empty
    /// when the root cannot be read.
    std::vector<std::string> List() const;

protected:
    /// Names are package names: relative, '/' or '\\' separated; rooted names and ".." parts fail.
    bool HasFile(const char* name) override;
    bool LoadFile(const char* name, std::vector<uint8_t>* bytes) override;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

#endif  // PIND_FILES_DIRPACKAGE_H_

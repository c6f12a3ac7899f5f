// A package backend over files held in memory: the host (or a test, a fuzzer, a benchmark) adds
// named byte strings and the library's package calls serve them, in memory mode.
//   CMemoryPackage pack; pack.AddFile("ini/a.ini", "[s]\nk=1\n");
//   pind::platform::SetPackage(&pack);
#ifndef PIND_FILES_MEMORYPACKAGE_H_
#define PIND_FILES_MEMORYPACKAGE_H_

#include <map>
#include <string>
#include <vector>

#include "pind/files/WholeFilePackage.h"
#include "pind/platform/CriticalSection.h"
#include "pind/platform/Export.h"

/// Named byte strings held in memory, served as a package.
class PIND_API CMemoryPackage : public CWholeFilePackage {
public:
    /// Adds or replaces a file. False (nothing added) for a name a package cannot hold: empty,
    /// rooted, with a ".." part, or longer than 2^31 - 1 bytes.
    bool AddFile(const std::string& name, std::string bytes);
    /// False when there was no such file.
    bool RemoveFile(const std::string& name);
    /// The files' names, lower-cased and '/'-joined, in byte order.
    std::vector<std::string> List() const;

protected:
    /// Names match ignoring ASCII case, with '\\' read as '/'.
    bool HasFile(const char* name) override;
    bool LoadFile(const char* name, std::vector<uint8_t>* bytes) override;

private:
    mutable pind::platform::CriticalSection m_cs;
    std::map<std::string, std::string> m_files;  ///< by normalised name
};

#endif  // PIND_FILES_MEMORYPACKAGE_H_

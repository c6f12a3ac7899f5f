// The shape both shipped package backends share: a file is read whole when it is opened or dumped,
// and the handles and dumped buffers it hands out are tracked here, so a handle or buffer the
// package never gave is ignored. A backend says only how to find and read one file.
//   class CMyPackage : public CWholeFilePackage { /* HasFile, LoadFile */ };
#ifndef PIND_FILES_WHOLEFILEPACKAGE_H_
#define PIND_FILES_WHOLEFILEPACKAGE_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "pind/platform/Export.h"
#include "pind/platform/Package.h"

namespace pind::detail {
class PackageFiles;
}

/// A package that reads each file whole and tracks the handles and buffers it gives out.
class PIND_API CWholeFilePackage : public pind::platform::IPindPackage {
public:
    CWholeFilePackage();
    ~CWholeFilePackage() override;
    CWholeFilePackage(const CWholeFilePackage&) = delete;
    CWholeFilePackage& operator=(const CWholeFilePackage&) = delete;

    /// -1 when the file cannot be loaded or `handle` is null.
    int Open(const char* name, pind::platform::PackHandle* handle) final;
    /// 0 for a handle this package did not give out.
    uint32_t GetLen(pind::platform::PackHandle handle) final;
    /// At most size × count bytes, and at most what is left of the file.
    uint32_t Read(void* buffer, uint32_t size, uint32_t count,
                  pind::platform::PackHandle handle) final;
    void Close(pind::platform::PackHandle handle) final;
    /// 1 when HasFile says so, else 0.
    int Exist(const char* name, int flag) final;
    /// The whole file in a buffer the caller gives back with Undump; -1 when it cannot be loaded.
    int Dump(const char* name, void** buffer, int32_t* length, int flag) final;
    void Undump(void* buffer) final;

protected:
    /// Whether `name` (a package name, possibly null) stands for a file of this package.
    virtual bool HasFile(const char* name) = 0;
    /// Reads the whole file into `bytes` (given empty); false when there is none or it cannot be
    /// read. At most 2^31 - 1 bytes. A file object opening the file keeps the vector as its
    /// buffer, with 16 zero bytes added: capacity for them saves it a copy.
    virtual bool LoadFile(const char* name, std::vector<uint8_t>* bytes) = 0;

private:
    // A file object takes LoadFile's bytes as they are: Open, GetLen, Read and Close, being final,
    // would hand over the same bytes through a copy.
    friend class CPackFile;
    /// `package` as a whole-file package; null when it is another kind (or null).
    static CWholeFilePackage* Find(pind::platform::IPindPackage* package);

    std::unique_ptr<pind::detail::PackageFiles> m_files;
};

#endif  // PIND_FILES_WHOLEFILEPACKAGE_H_

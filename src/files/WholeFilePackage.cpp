#include "pind/files/WholeFilePackage.h"

#include <set>

#include "files/PackageFiles.h"
#include "pind/platform/CriticalSection.h"

namespace {
// The whole-file packages alive, by the address the engine calls see. A client's own package may
// be built without RTTI, so the file object cannot ask dynamic_cast which kind a package is.
struct LivePackages {
    pind::platform::CriticalSection cs;
    std::set<const pind::platform::IPindPackage*> packages;
};
// Never destroyed: a package that is itself a static may end after any other static.
LivePackages& Live() {
    static auto* live = new LivePackages;
    return *live;
}
}  // namespace

CWholeFilePackage::CWholeFilePackage() : m_files(std::make_unique<pind::detail::PackageFiles>()) {
    pind::platform::CriticalSectionGuard guard(Live().cs);
    Live().packages.insert(this);
}

CWholeFilePackage::~CWholeFilePackage() {
    pind::platform::CriticalSectionGuard guard(Live().cs);
    Live().packages.erase(this);
}

CWholeFilePackage* CWholeFilePackage::Find(pind::platform::IPindPackage* package) {
    pind::platform::CriticalSectionGuard guard(Live().cs);
    return Live().packages.count(package) != 0 ? static_cast<CWholeFilePackage*>(package)
                                               : nullptr;
}

int CWholeFilePackage::Open(const char* name, pind::platform::PackHandle* handle) {
    std::vector<uint8_t> bytes;
    if (handle == nullptr || !LoadFile(name, &bytes)) {
        return -1;
    }
    *handle = m_files->Add(std::move(bytes));
    return 0;
}

uint32_t CWholeFilePackage::GetLen(pind::platform::PackHandle handle) {
    return m_files->GetLen(handle);
}

uint32_t CWholeFilePackage::Read(void* buffer, uint32_t size, uint32_t count,
                                 pind::platform::PackHandle handle) {
    return m_files->Read(buffer, size, count, handle);
}

void CWholeFilePackage::Close(pind::platform::PackHandle handle) { m_files->Close(handle); }

int CWholeFilePackage::Exist(const char* name, int) { return HasFile(name) ? 1 : 0; }

int CWholeFilePackage::Dump(const char* name, void** buffer, int32_t* length, int) {
    std::vector<uint8_t> bytes;
    if (buffer == nullptr || length == nullptr || !LoadFile(name, &bytes)) {
        return -1;
    }
    return m_files->Dump(bytes, buffer, length);
}

void CWholeFilePackage::Undump(void* buffer) { m_files->Undump(buffer); }

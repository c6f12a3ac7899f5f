#include "pind/platform/Package.h"

#include <atomic>

namespace pind::platform {
namespace {
std::atomic<IPindPackage*> g_package{nullptr};
}  // namespace

IPindPackage::~IPindPackage() = default;

IPindPackage* SetPackage(IPindPackage* package) { return g_package.exchange(package); }
IPindPackage* GetPackage() { return g_package.load(); }

int VoFOpen(const char* name, PackHandle* handle) {
    IPindPackage* package = GetPackage();
    if (package == nullptr || name == nullptr || handle == nullptr) {
        return -1;
    }
    return package->Open(name, handle);
}

uint32_t VoFGetLen(PackHandle handle) {
    IPindPackage* package = GetPackage();
    return package != nullptr ? package->GetLen(handle) : 0;
}

uint32_t VOFRead(void* buffer, uint32_t size, uint32_t count, PackHandle handle) {
    IPindPackage* package = GetPackage();
    if (package == nullptr || buffer == nullptr) {
        return 0;
    }
    return package->Read(buffer, size, count, handle);
}

void VoFClose(PackHandle handle) {
    if (IPindPackage* package = GetPackage()) {
        package->Close(handle);
    }
}

int VoFExist(const char* name, int flag) {
    IPindPackage* package = GetPackage();
    if (package == nullptr || name == nullptr) {
        return 0;
    }
    return package->Exist(name, flag);
}

int VoFDump(const char* name, void** buffer, int32_t* length, int flag) {
    IPindPackage* package = GetPackage();
    if (package == nullptr || name == nullptr || buffer == nullptr || length == nullptr) {
        return -1;
    }
    return package->Dump(name, buffer, length, flag);
}

void VoFUndump(void* buffer) {
    IPindPackage* package = GetPackage();
    if (package != nullptr && buffer != nullptr) {
        package->Undump(buffer);
    }
}

}  // namespace pind::platform

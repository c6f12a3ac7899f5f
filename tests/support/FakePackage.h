// Package fakes for tests: an installer that puts any package in place for one scope, a package
// that serves named byte strings and records what it was asked, and a package-first client.
//   pind::test::FakePackage pack; pack.files["ini/a.ini"] = "[s]\nk=1\n";  // installed
#ifndef PIND_TESTS_SUPPORT_FAKEPACKAGE_H_
#define PIND_TESTS_SUPPORT_FAKEPACKAGE_H_

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "pind/platform/Package.h"
#include "support/RecordingClient.h"

namespace pind::test {

/// Installs `package` for one scope and puts the previous one back.
class ScopedPackage {
public:
    explicit ScopedPackage(platform::IPindPackage* package)
        : m_previous(platform::SetPackage(package)) {}
    ~ScopedPackage() { platform::SetPackage(m_previous); }
    ScopedPackage(const ScopedPackage&) = delete;
    ScopedPackage& operator=(const ScopedPackage&) = delete;

private:
    platform::IPindPackage* m_previous;
};

/// A client with packages in use and package-first mode on.
struct PackageFirstClient : RecordingClient {
    PackageFirstClient() {
        packageInUse = true;
        packageMode = 1;
    }
};

/// A package that serves named byte strings, records the names asked for, and can be told to
/// come up short on reads or to refuse Dump. Installs itself while it lives.
class FakePackage : public platform::IPindPackage {
public:
    FakePackage() : m_scope(this) {}

    std::map<std::string, std::string> files;
    std::vector<std::string> opened;   // names passed to Open
    std::vector<std::string> existed;  // names passed to Exist
    uint32_t shortBy = 0;              // Read returns this many bytes fewer
    bool refuseDump = false;
    int closes = 0;
    int undumps = 0;

    int Open(const char* name, platform::PackHandle* handle) override {
        opened.emplace_back(name);
        const auto it = files.find(name);
        *handle = it == files.end() ? nullptr : &it->second;
        return it == files.end() ? -1 : 0;
    }
    uint32_t GetLen(platform::PackHandle handle) override {
        return static_cast<uint32_t>(Bytes(handle).size());
    }
    uint32_t Read(void* buffer, uint32_t size, uint32_t count,
                  platform::PackHandle handle) override {
        const std::string& bytes = Bytes(handle);
        uint32_t n = size * count < bytes.size() ? size * count : uint32_t(bytes.size());
        n = n > shortBy ? n - shortBy : 0;
        std::memcpy(buffer, bytes.data(), n);
        return n;
    }
    void Close(platform::PackHandle) override { ++closes; }
    int Exist(const char* name, int) override {
        existed.emplace_back(name);
        return files.count(name) != 0 ? 1 : 0;
    }
    int Dump(const char* name, void** buffer, int32_t* length, int) override {
        const auto it = files.find(name);
        if (refuseDump || it == files.end()) {
            return -1;
        }
        *buffer = std::malloc(it->second.size() + 1);
        std::memcpy(*buffer, it->second.data(), it->second.size());
        *length = static_cast<int32_t>(it->second.size());
        return 0;
    }
    void Undump(void* buffer) override {
        ++undumps;
        std::free(buffer);
    }

private:
    static const std::string& Bytes(platform::PackHandle h) {
        return *static_cast<std::string*>(h);
    }
    ScopedPackage m_scope;
};

}  // namespace pind::test

#endif  // PIND_TESTS_SUPPORT_FAKEPACKAGE_H_

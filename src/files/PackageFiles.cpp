#include "files/PackageFiles.h"

#include <cstdlib>
#include <cstring>

namespace pind::detail {

bool SplitPackName(const char* pszName, std::vector<std::string>* pParts) {
    pParts->clear();
    if (pszName == nullptr || *pszName == '\0' || *pszName == '/' || *pszName == '\\') {
        return false;
    }
    std::string part;
    for (const char* p = pszName;; ++p) {
        const char c = *p;
        if (c == '/' || c == '\\' || c == '\0') {
            if (part == "..") {
                return false;
            }
            if (!part.empty() && part != ".") {
                pParts->push_back(part);
            }
            part.clear();
            if (c == '\0') {
                break;
            }
        } else if (c == ':') {
            return false;
        } else {
            part += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
        }
    }
    return !pParts->empty();
}

std::string JoinPackName(const std::vector<std::string>& parts) {
    std::string name;
    for (const std::string& part : parts) {
        if (!name.empty()) {
            name += '/';
        }
        name += part;
    }
    return name;
}

// Dumped buffers belong to their takers until Undump, so they outlive the backend.
PackageFiles::~PackageFiles() = default;

platform::PackHandle PackageFiles::Add(std::vector<uint8_t> bytes) {
    auto opened = std::make_unique<Opened>();
    opened->bytes = std::move(bytes);
    platform::PackHandle handle = opened.get();
    platform::CriticalSectionGuard guard(m_cs);
    m_opened.emplace(handle, std::move(opened));
    return handle;
}

uint32_t PackageFiles::GetLen(platform::PackHandle handle) {
    platform::CriticalSectionGuard guard(m_cs);
    const auto it = m_opened.find(handle);
    return it != m_opened.end() ? static_cast<uint32_t>(it->second->bytes.size()) : 0;
}

uint32_t PackageFiles::Read(void* pBuffer, uint32_t nSize, uint32_t nCount,
                            platform::PackHandle handle) {
    platform::CriticalSectionGuard guard(m_cs);
    const auto it = m_opened.find(handle);
    if (it == m_opened.end() || pBuffer == nullptr) {
        return 0;
    }
    Opened& file = *it->second;
    const uint64_t nWant = static_cast<uint64_t>(nSize) * nCount;
    const uint64_t nLeft = file.bytes.size() - file.pos;
    const size_t nBytes = static_cast<size_t>(nWant < nLeft ? nWant : nLeft);
    if (nBytes > 0) {
        std::memcpy(pBuffer, file.bytes.data() + file.pos, nBytes);
    }
    file.pos += nBytes;
    return static_cast<uint32_t>(nBytes);
}

void PackageFiles::Close(platform::PackHandle handle) {
    platform::CriticalSectionGuard guard(m_cs);
    m_opened.erase(handle);
}

int PackageFiles::Dump(const std::vector<uint8_t>& bytes, void** ppBuffer, int32_t* pLength) {
    // One spare byte so that an empty file still hands over a buffer.
    void* p = std::malloc(bytes.size() + 1);
    if (p == nullptr) {
        return -1;
    }
    if (!bytes.empty()) {
        std::memcpy(p, bytes.data(), bytes.size());
    }
    platform::CriticalSectionGuard guard(m_cs);
    m_dumped.insert(p);
    *ppBuffer = p;
    *pLength = static_cast<int32_t>(bytes.size());
    return 0;
}

void PackageFiles::Undump(void* pBuffer) {
    platform::CriticalSectionGuard guard(m_cs);
    if (m_dumped.erase(pBuffer) != 0) {
        std::free(pBuffer);
    }
}

}  // namespace pind::detail

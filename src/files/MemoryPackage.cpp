#include "pind/files/MemoryPackage.h"

#include "files/PackageFiles.h"

namespace {
// The name as the package index keeps it; false for names a package cannot hold.
bool Normalise(const char* pszName, std::string* pOut) {
    std::vector<std::string> parts;
    if (!pind::detail::SplitPackName(pszName, &parts)) {
        return false;
    }
    *pOut = pind::detail::JoinPackName(parts);
    return true;
}
}  // namespace

bool CMemoryPackage::AddFile(const std::string& name, std::string bytes) {
    std::string key;
    if (!Normalise(name.c_str(), &key) || bytes.size() > pind::detail::kMaxPackFileSize) {
        return false;
    }
    pind::platform::CriticalSectionGuard guard(m_cs);
    m_files[key] = std::move(bytes);
    return true;
}

bool CMemoryPackage::RemoveFile(const std::string& name) {
    std::string key;
    pind::platform::CriticalSectionGuard guard(m_cs);
    return Normalise(name.c_str(), &key) && m_files.erase(key) > 0;
}

std::vector<std::string> CMemoryPackage::List() const {
    pind::platform::CriticalSectionGuard guard(m_cs);
    std::vector<std::string> names;
    names.reserve(m_files.size());
    for (const auto& file : m_files) {
        names.push_back(file.first);
    }
    return names;
}

bool CMemoryPackage::HasFile(const char* name) {
    std::string key;
    pind::platform::CriticalSectionGuard guard(m_cs);
    return Normalise(name, &key) && m_files.count(key) != 0;
}

bool CMemoryPackage::LoadFile(const char* name, std::vector<uint8_t>* bytes) {
    std::string key;
    if (!Normalise(name, &key)) {
        return false;
    }
    pind::platform::CriticalSectionGuard guard(m_cs);
    const auto it = m_files.find(key);
    if (it == m_files.end()) {
        return false;
    }
    bytes->clear();
    bytes->reserve(it->second.size() + pind::detail::kFilePad);
    bytes->assign(it->second.begin(), it->second.end());
    return true;
}

#include "pind/files/ZipPackage.h"

#include <unzip.h>

#include <algorithm>
#include <map>

#include "files/PackageFiles.h"
#include "files/ZipEntry.h"

namespace {

constexpr size_t kReadChunk = 64 * 1024;
constexpr size_t kNameCapacity = 1023;

}  // namespace

struct CZipPackage::Impl {
    unzFile archive = nullptr;
    std::map<std::string, unz64_file_pos> index;  // lower-cased joined name -> entry
    std::vector<std::string> names;               // as stored, archive order
    pind::platform::CriticalSection cs;           // guards the archive's current-entry state

    void BuildIndex() {
        for (int nAt = unzGoToFirstFile(archive); nAt == UNZ_OK; nAt = unzGoToNextFile(archive)) {
            pind::detail::ZipEntry entry;
            if (!pind::detail::ReadZipEntry(archive, kNameCapacity, &entry)) {
                break;
            }
            const std::string& stored = entry.strName;
            std::vector<std::string> parts;
            if (stored.empty() || stored.back() == '/' || stored.back() == '\\' ||
                !pind::detail::SplitPackName(stored.c_str(), &parts)) {
                continue;
            }
            unz64_file_pos pos;
            if (unzGetFilePos64(archive, &pos) != UNZ_OK) {
                break;
            }
            if (index.emplace(pind::detail::JoinPackName(parts), pos).second) {
                names.push_back(stored);
            }
        }
    }

    const unz64_file_pos* Find(const char* pszName) const {
        std::vector<std::string> parts;
        if (!pind::detail::SplitPackName(pszName, &parts)) {
            return nullptr;
        }
        const auto it = index.find(pind::detail::JoinPackName(parts));
        return it != index.end() ? &it->second : nullptr;
    }

    // The entry's header, with the archive positioned on it; false when it is missing.
    bool GoTo(const char* pszName, pind::detail::ZipEntry* pEntry) {
        const unz64_file_pos* pPos = archive != nullptr ? Find(pszName) : nullptr;
        if (pPos == nullptr) {
            return false;
        }
        unz64_file_pos pos = *pPos;
        return unzGoToFilePos64(archive, &pos) == UNZ_OK &&
               pind::detail::ReadZipEntry(archive, kNameCapacity, pEntry);
    }

    // Inflates the whole entry; false for a missing or damaged one (bad data or checksum), and
    // for one whose bytes are not plain (encrypted, or another method than stored or deflate).
    bool Load(const char* pszName, std::vector<uint8_t>* pBytes) {
        pind::platform::CriticalSectionGuard guard(cs);
        pind::detail::ZipEntry info;
        if (!GoTo(pszName, &info) || !pind::detail::IsPlainEntry(info) ||
            info.nSize > pind::detail::kMaxPackFileSize || unzOpenCurrentFile(archive) != UNZ_OK) {
            return false;
        }
        // The declared size only sizes the first reservation; a lying header cannot make us
        // allocate more than the data really inflates to. The last read needs a chunk's room.
        pBytes->clear();
        pBytes->reserve(static_cast<size_t>(std::min<uint64_t>(info.nSize, 16u << 20)) +
                        kReadChunk);
        bool bOk = true;
        for (;;) {
            const size_t nAt = pBytes->size();
            pBytes->resize(nAt + kReadChunk);
            const int nRead = unzReadCurrentFile(archive, pBytes->data() + nAt,
                                                 static_cast<unsigned>(kReadChunk));
            pBytes->resize(nAt + static_cast<size_t>(nRead > 0 ? nRead : 0));
            if (nRead < 0 || pBytes->size() > pind::detail::kMaxPackFileSize) {
                bOk = false;
                break;
            }
            if (nRead == 0) {
                break;
            }
        }
        if (unzCloseCurrentFile(archive) != UNZ_OK) {
            bOk = false;
        }
        return bOk;
    }
};

CZipPackage::CZipPackage(const std::string& archive) : m_impl(std::make_unique<Impl>()) {
    m_impl->archive = unzOpen64(archive.c_str());
    if (m_impl->archive != nullptr) {
        m_impl->BuildIndex();
    }
}

CZipPackage::~CZipPackage() {
    if (m_impl->archive != nullptr) {
        unzClose(m_impl->archive);
    }
}

bool CZipPackage::IsOpen() const { return m_impl->archive != nullptr; }

std::vector<std::string> CZipPackage::List() const { return m_impl->names; }

bool CZipPackage::HasFile(const char* name) {
    pind::platform::CriticalSectionGuard guard(m_impl->cs);
    return m_impl->Find(name) != nullptr;
}

bool CZipPackage::LoadFile(const char* name, std::vector<uint8_t>* bytes) {
    return m_impl->Load(name, bytes);
}

std::string CZipPackage::UnsupportedEntry(const char* name) {
    pind::platform::CriticalSectionGuard guard(m_impl->cs);
    pind::detail::ZipEntry entry;
    return m_impl->GoTo(name, &entry) ? pind::detail::UnsupportedEntryReason(entry) : std::string();
}

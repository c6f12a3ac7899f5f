#include "pind/files/DirPackage.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "files/PackageFiles.h"

namespace fs = std::filesystem;

namespace {

std::string Lower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

}  // namespace

struct CDirPackage::Impl {
    fs::path root;

    // The file a package name stands for, matching each part ignoring case; empty when none.
    fs::path Resolve(const char* pszName) const {
        std::vector<std::string> parts;
        if (!pind::detail::SplitPackName(pszName, &parts)) {
            return {};
        }
        std::error_code ec;
        fs::path at = root;
        for (const std::string& part : parts) {
            fs::path next = at / part;
            if (!fs::exists(next, ec)) {
                next.clear();
                for (fs::directory_iterator it(at, ec), end; !ec && it != end; it.increment(ec)) {
                    if (Lower(it->path().filename().string()) == part) {
                        next = it->path();
                        break;
                    }
                }
                if (next.empty()) {
                    return {};
                }
            }
            at = std::move(next);
        }
        return fs::is_regular_file(at, ec) ? at : fs::path();
    }

    bool Load(const char* pszName, std::vector<uint8_t>* pBytes) const {
        const fs::path path = Resolve(pszName);
        if (path.empty()) {
            return false;
        }
        std::error_code ec;
        const uintmax_t nSize = fs::file_size(path, ec);
        if (ec || nSize > pind::detail::kMaxPackFileSize) {
            return false;
        }
        std::ifstream in(path, std::ios::binary);
        if (!in) {
            return false;
        }
        pBytes->clear();
        pBytes->reserve(static_cast<size_t>(nSize) + pind::detail::kFilePad);
        pBytes->resize(static_cast<size_t>(nSize));
        in.read(reinterpret_cast<char*>(pBytes->data()), static_cast<std::streamsize>(nSize));
        pBytes->resize(static_cast<size_t>(in.gcount()));
        return true;
    }
};

CDirPackage::CDirPackage(const std::string& root) : m_impl(std::make_unique<Impl>()) {
    m_impl->root = root;
}

CDirPackage::~CDirPackage() = default;

bool CDirPackage::IsOpen() const {
    std::error_code ec;
    return fs::is_directory(m_impl->root, ec);
}

std::vector<std::string> CDirPackage::List() const {
    std::vector<std::string> names;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(m_impl->root, ec), end; !ec && it != end;
         it.increment(ec)) {
        if (it->is_regular_file(ec)) {
            names.push_back(it->path().lexically_relative(m_impl->root).generic_string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool CDirPackage::HasFile(const char* name) { return !m_impl->Resolve(name).empty(); }

bool CDirPackage::LoadFile(const char* name, std::vector<uint8_t>* bytes) {
    return m_impl->Load(name, bytes);
}

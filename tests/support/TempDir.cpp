#include "support/TempDir.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "pind/platform/System.h"
#include "pind/platform/TimeZone.h"

namespace fs = std::filesystem;

namespace pind::test {
namespace {
std::atomic<int> g_serial{0};

std::string Generic(const fs::path& p) { return p.generic_string(); }

}  // namespace

TempDir::TempDir() {
    const fs::path base = fs::temp_directory_path();
    for (;;) {
        const fs::path candidate =
            base / ("pind-test-" + std::to_string(platform::CurrentProcessId()) + "-" +
                    std::to_string(g_serial++));
        std::error_code ec;
        if (fs::create_directory(candidate, ec)) {
            m_path = Generic(candidate);
            return;
        }
    }
}

TempDir::~TempDir() {
    std::error_code ec;
    fs::remove_all(m_path, ec);
}

std::string TempDir::Write(const std::string& name, const std::string& bytes) const {
    const fs::path path = fs::path(m_path) / name;
    std::error_code ec;
    fs::create_directories(path.parent_path(), ec);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return Generic(path);
}

std::string TempDir::Read(const std::string& name) const {
    std::ifstream in(fs::path(m_path) / name, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

ScopedTz::ScopedTz(const char* tz) {
    const char* old = std::getenv("TZ");
    m_had = old != nullptr;
    m_old = old != nullptr ? old : "";
    platform::SetEnv("TZ", tz);
    platform::TzSet();
}

ScopedTz::~ScopedTz() {
    platform::SetEnv("TZ", m_had ? m_old.c_str() : nullptr);
    platform::TzSet();
}

ScopedCurrentDir::ScopedCurrentDir(const std::string& path) : m_old(fs::current_path().string()) {
    fs::current_path(path);
}

ScopedCurrentDir::~ScopedCurrentDir() {
    std::error_code ec;
    fs::current_path(m_old, ec);
}

}  // namespace pind::test

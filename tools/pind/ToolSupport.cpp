// Shared exit-status, usage and checked-output helpers of the pind commands.
#include "ToolSupport.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "pind/platform/System.h"

namespace pind::tool {

bool WantsHelp(int argc, char** argv) {
    return argc >= 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0);
}

int PrintUsage(const char* usage) {
    return WriteOut(usage) && WriteOut("\n", 1) && FlushOut() ? kExitOk : kExitFailure;
}

int UsageError(const char* command, const char* usage, const std::string& why) {
    if (!why.empty()) {
        std::fprintf(stderr, "pind: %s: %s\n", command, why.c_str());
    }
    std::fprintf(stderr, "%s\n", usage);
    return kExitUsage;
}

int Fail(const char* command, const std::string& what) {
    std::fprintf(stderr, "pind: %s: %s\n", command, what.c_str());
    return kExitFailure;
}

namespace {
bool g_outFailed = false;

void NoteOutFailure() {
    if (!g_outFailed) {
        g_outFailed = true;
        std::fprintf(stderr, "pind: cannot write to standard output\n");
    }
}
}  // namespace

bool WriteOut(const void* data, std::size_t size) {
    if (size != 0 && std::fwrite(data, 1, size, stdout) != size) {
        NoteOutFailure();
    }
    return !g_outFailed;
}

bool WriteOut(const std::string& text) { return WriteOut(text.data(), text.size()); }

bool FlushOut() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        NoteOutFailure();
    }
    return !g_outFailed;
}

HostScope::HostScope(platform::IPindPackage* package)
    : m_host(/*bPackageFirst=*/package != nullptr), m_previous(platform::SetPackage(package)) {
    SetClient(&m_host);
}

HostScope::~HostScope() {
    SetClient(nullptr);
    platform::SetPackage(m_previous);
}

std::string TempPathBeside(const std::string& target) {
    return target + ".pind-" + std::to_string(platform::CurrentProcessId()) + ".tmp";
}

bool ReplaceWith(const std::string& temp, const std::string& target, std::string* why) {
    std::error_code ec;
    std::filesystem::rename(temp, target, ec);
    if (!ec) {
        return true;
    }
    *why = ec.message();
    std::filesystem::remove(temp, ec);
    return false;
}

std::string UnreadableFileReason(const std::string& path) {
    std::error_code ec;
    const std::filesystem::file_status status = std::filesystem::status(path, ec);
    if (status.type() == std::filesystem::file_type::not_found) {
        return "no such file";
    }
    if (ec) {
        return ec.message();
    }
    if (status.type() == std::filesystem::file_type::directory) {
        return "is a folder";
    }
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) {
        return std::strerror(errno);
    }
    std::fclose(f);
    return std::string();
}

}  // namespace pind::tool

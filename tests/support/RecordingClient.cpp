#include "support/RecordingClient.h"

#include <cstdarg>
#include <cstdio>

#include "pind/files/PackFile.h"

namespace pind::test {
namespace {
std::string Format(const char* format, va_list args) {
    if (format == nullptr) {
        return std::string();
    }
    va_list again;
    va_copy(again, args);
    const int n = std::vsnprintf(nullptr, 0, format, args);
    std::string text(n > 0 ? static_cast<size_t>(n) : 0, '\0');
    if (n > 0) {
        std::vsnprintf(&text[0], text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}
}  // namespace

RecordingClient::RecordingClient() { SetClient(this); }

RecordingClient::~RecordingClient() {
    if (GetClient() == this) {
        SetClient(nullptr);
    }
}

bool RecordingClient::IsFileExist(const char* path) {
    return path != nullptr && existing.count(path) != 0;
}

void RecordingClient::TranslatePath(const char* path, std::string& translated) {
    if (path != nullptr && translations.count(path) != 0) {
        translated = translations.at(path);
    }
}

CPackFile* RecordingClient::OpenFile(const char* name, const char* mode, bool flag) {
    opens.push_back({name ? name : "", mode ? mode : "", flag, false});
    return Serve(name, mode);
}

CPackFile* RecordingClient::OpenFileEx(const char* name, const char* mode, bool flag, bool) {
    opens.push_back({name ? name : "", mode ? mode : "", flag, true});
    return Serve(name, mode);
}

CPackFile* RecordingClient::Serve(const char* name, const char* mode) {
    if (m_folder.empty() || name == nullptr || mode == nullptr) {
        return nullptr;
    }
    return PackFOpen((m_folder + "/" + name).c_str(), mode);
}

void RecordingClient::GetDescription(char* buffer) {
    if (buffer != nullptr) {
        std::snprintf(buffer, 256, "%s", description.c_str());
    }
}

void RecordingClient::DebugText(const char* format, ...) {
    va_list args;
    va_start(args, format);
    debugTexts.push_back(Format(format, args));
    va_end(args);
}

RecordingDebug::RecordingDebug() { SetDebug(this); }

RecordingDebug::~RecordingDebug() {
    if (GetDebug() == this) {
        SetDebug(nullptr);
    }
}

void RecordingDebug::DebugPrintf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    texts.push_back(Format(format, args));
    va_end(args);
}

}  // namespace pind::test

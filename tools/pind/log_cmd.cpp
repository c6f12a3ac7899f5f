// `pind log`: one record through the default logger; and the logging demo step.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "Commands.h"
#include "pind/logging/Logger.h"
#include "pind/platform/System.h"
#include "pind/platform/TimeZone.h"

namespace pind::tool {
namespace {

// -digits -> 64-bit number (kind 10), true/false -> boolean, anything else (and digits that do
// not fit 64 bits) -> text.
_log::LogValue ParseValue(const std::string& text) {
    const size_t start = (!text.empty() && text[0] == '-') ? 1 : 0;
    if (text.size() > start && text.find_first_not_of("0123456789", start) == std::string::npos) {
        errno = 0;
        const long long n = std::strtoll(text.c_str(), nullptr, 10);
        if (errno == 0) {
            return _log::LogValue(n);
        }
    }
    if (text == "true" || text == "false") {
        return _log::LogValue(text == "true");
    }
    return _log::LogValue(text);
}

// A level name in any case, or its number.
bool ParseLevel(const char* name, uint32_t* level) {
    std::string upper(name);
    for (char& c : upper) {
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    }
    for (uint32_t i = 0; i < 6; ++i) {
        if (upper == _log::LevelName(i) || upper == std::to_string(i)) {
            *level = i;
            return true;
        }
    }
    return false;
}

class PrintingCallback : public _log::ILogCallback {
public:
    void OnLog(uint32_t level, const char* text) override {
        std::printf("  callback got level %u: %s\n", level, text);
    }
};

}  // namespace

int RunLog(int argc, char** argv) {
    uint32_t level = _log::LOG_INFO;
    const char* cate = nullptr;
    const char* folder = nullptr;
    const char* message = nullptr;
    _log::LogAttributes attrs;
    for (int i = 1; i < argc; ++i) {
        const char* arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--level") == 0 && hasValue) {
            if (!ParseLevel(argv[++i], &level)) {
                std::fprintf(stderr, "pind: log: %s: unknown level (TRACE..FATAL or 0..5)\n",
                             argv[i]);
                return 2;
            }
        } else if (std::strcmp(arg, "--cate") == 0 && hasValue) {
            cate = argv[++i];
        } else if (std::strcmp(arg, "--folder") == 0 && hasValue) {
            folder = argv[++i];
        } else if (message == nullptr && std::strncmp(arg, "--", 2) != 0) {
            message = arg;
        } else if (message != nullptr && std::strchr(arg, '=') != nullptr) {
            const char* eq = std::strchr(arg, '=');
            attrs.emplace_back(std::string(arg, eq), ParseValue(eq + 1));
        } else {
            std::fprintf(stderr, "pind: log: %s: unexpected argument\n", arg);
            return 2;
        }
    }
    if (message == nullptr) {
        std::fprintf(stderr,
                     "usage: pind log [--level NAME] [--cate C] [--folder F] MESSAGE "
                     "[key=value ...]\n");
        return 2;
    }
    if (cate != nullptr) {
        attrs.emplace_back("cate", _log::LogValue(cate));
    }
    _log::ILoggerFactory* factory = _log::GetLoggerFactory();
    factory->SetLogFolder(folder);
    _log::ILogger* logger = factory->GetDefaultLogger();
    logger->Log(level, message, attrs);
    auto* concrete = dynamic_cast<_log::CLogger*>(logger);
    const std::string path = concrete != nullptr ? concrete->Writer()->LastPath() : std::string();
    if (path.empty()) {
        std::fprintf(stderr, "pind: log: level %s is below the minimum, nothing written\n",
                     _log::LevelName(level));
        return 1;
    }
    if (!std::filesystem::is_regular_file(path)) {
        std::fprintf(stderr, "pind: log: %s: cannot write\n", path.c_str());
        return 1;
    }
    std::printf("%s\n", path.c_str());
    return 0;
}

void DemoLogging(const DemoContext& ctx) {
    DemoHeading("logging");
    // The log folder is always below the current folder, so the demo logs from its scratch folder.
    const std::filesystem::path previous = std::filesystem::current_path();
    std::filesystem::current_path(ctx.workDir);
    // A fixed zone (UTC+8) shows the pairing: "logtime" is UTC's wall clock with the zone's text,
    // the line time in front is local.
    const char* oldTz = std::getenv("TZ");
    const std::string savedTz = oldTz != nullptr ? oldTz : "";
    platform::SetEnv("TZ", "CST-8");
    platform::TzSet();
    std::printf("  zone UTC+8; records at INFO and above are written\n");

    _log::ILoggerFactory* factory = _log::GetLoggerFactory();
    PrintingCallback callback;
    factory->SetCallback(&callback);
    factory->SetLogFolder("demo-logs");
    factory->AddCategoryName("combat", "verbose");

    _log::ILogger* logger = factory->GetDefaultLogger();
    logger->Log(_log::LOG_INFO, "login ok", {{"uid", _log::LogValue(42)}});
    logger->Log(_log::LOG_WARN, "slow frame",
                {{"ms", _log::LogValue(48.5)},
                 {"_", _log::LogValue::Source("Frame.cpp", 120)},
                 {"vsync", _log::LogValue(true)}});
    // "\xb5\xc7\xc2\xbc" is GBK for "login" (登录): bytes pass through unescaped.
    logger->Log(_log::LOG_ERROR, "\xb5\xc7\xc2\xbc \"gate\"\tfailed",
                {{"code", _log::LogValue(-3)}});
    logger->Log(_log::LOG_DEBUG, "below the INFO minimum: dropped");
    logger->Log(_log::LOG_INFO, "combat is off until 'verbose' is enabled",
                {{"cate", _log::LogValue("combat")}});
    factory->EnableName("verbose");
    logger->Log(_log::LOG_INFO, "hit", {{"cate", _log::LogValue("combat")}, {"dmg", 17}});
    logger->Log(_log::LOG_INFO, "only to the callback", {{"__out__", _log::LogValue(true)}});
    logger->Log(_log::LOG_INFO, "only to the file", {{"__cb__", _log::LogValue(true)}});
    logger->Log(_log::LOG_INFO, "login ok", {{"uid", _log::LogValue(42)}});  // same second: once

    factory->SetCallback(nullptr);
    auto* concrete = dynamic_cast<_log::CLogger*>(logger);
    const std::string path = concrete->Writer()->LastPath();
    std::printf("  %s holds:\n", path.c_str());
    if (std::FILE* file = std::fopen(path.c_str(), "r")) {
        char line[1024];
        while (std::fgets(line, sizeof line, file) != nullptr) {
            std::printf("    %s", line);
        }
        std::fclose(file);
    }
    std::printf("  (the ERROR message starts with GBK bytes, written unchanged)\n");
    platform::SetEnv("TZ", oldTz != nullptr ? savedTz.c_str() : nullptr);
    platform::TzSet();
    std::filesystem::current_path(previous);
}

}  // namespace pind::tool

// `pind log`: one record through the default logger; and the logging demo step.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "ToolSupport.h"
#include "pind/logging/Logger.h"
#include "pind/platform/Clock.h"
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

// "./<log folder>/<year>_<month>_<day><suffix>" for the local day now, as the writer builds it.
std::string DayFilePath(const std::string& suffix) {
    std::tm local{};
    platform::LocalTime64(platform::Time64(), &local);
    return "./" + pind::detail::GetLogFolderName() + "/" + std::to_string(local.tm_year + 1900) +
           "_" + std::to_string(local.tm_mon + 1) + "_" + std::to_string(local.tm_mday) + suffix;
}

// Why a line could not be appended to `path`: the first part of it that is missing, not a folder
// or not writable, in the system's words.
std::string WriteFailureReason(const std::string& path) {
    const std::filesystem::path file(path);
    std::error_code ec;
    const std::filesystem::file_status folder = std::filesystem::status(file.parent_path(), ec);
    if (ec) {
        return file.parent_path().generic_string() + ": " + ec.message();
    }
    if (folder.type() != std::filesystem::file_type::directory) {
        return file.parent_path().generic_string() + ": not a folder";
    }
    const std::filesystem::file_status status = std::filesystem::status(file, ec);
    if (status.type() == std::filesystem::file_type::directory) {
        return "is a folder";
    }
    if (status.type() == std::filesystem::file_type::not_found) {
        return "cannot create files in " + file.parent_path().generic_string();
    }
    // Opened for update only, so that asking creates nothing.
    std::FILE* f = std::fopen(path.c_str(), "r+b");
    if (f == nullptr) {
        return std::strerror(errno);
    }
    std::fclose(f);
    return "the line did not reach the file";
}

class PrintingCallback : public _log::ILogCallback {
public:
    void OnLog(uint32_t level, const char* text) override {
        std::printf("  callback got level %u: %s\n", level, text);
    }
};

}  // namespace

const char kLogUsage[] =
    "usage: pind log [--level NAME] [--cate C] [--folder F] MESSAGE [key=value ...]\n"
    "  writes one record through the default logger to ./F/<year>_<month>_<day>_x64.log (F is\n"
    "  debug by default; always below the current folder) and prints the file's path.\n"
    "  NAME: TRACE DEBUG INFO WARN ERROR FATAL or 0-5 (default INFO); key=value adds attributes\n"
    "  (-digits: a number, true/false: a boolean, else text).";

int RunLog(int argc, char** argv) {
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kLogUsage);
    }
    uint32_t level = _log::LOG_INFO;
    const char* cate = nullptr;
    const char* folder = nullptr;
    const char* message = nullptr;
    _log::LogAttributes attrs;
    bool noFile = false;
    for (int i = 1; i < argc; ++i) {
        const char* arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--level") == 0 && hasValue) {
            if (!ParseLevel(argv[++i], &level)) {
                return UsageError("log", kLogUsage,
                                  std::string(argv[i]) + ": unknown level (TRACE..FATAL or 0..5)");
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
            noFile = noFile || attrs.back().strKey == "__out__";
        } else {
            return UsageError("log", kLogUsage, std::string(arg) + ": unexpected argument");
        }
    }
    if (message == nullptr) {
        return UsageError("log", kLogUsage);
    }
    // The writer puts the folder below "./" whatever it is, so a rooted one would land elsewhere.
    if (folder != nullptr && (*folder == '\0' || std::filesystem::path(folder).has_root_path())) {
        return UsageError("log", kLogUsage,
                          std::string("--folder ") + folder +
                              ": give a folder below the current one (the log always goes there)");
    }
    if (cate != nullptr) {
        attrs.emplace_back("cate", _log::LogValue(cate));
    }
    _log::ILoggerFactory* factory = _log::GetLoggerFactory();
    factory->SetLogFolder(folder);
    auto* logger = dynamic_cast<_log::CLogger*>(factory->GetDefaultLogger());
    if (logger == nullptr) {
        return Fail("log", "the default logger is not the library's own");
    }
    const _log::LoggerConfig& config = logger->Writer()->Config();
    if (level < config.nMinLevel) {
        return Fail("log", std::string("level ") + _log::LevelName(level) +
                               " is below the minimum " + _log::LevelName(config.nMinLevel) +
                               ": nothing written");
    }
    if (noFile) {
        return Fail("log", "__out__ keeps the record out of the file: nothing written");
    }
    // The day's file as the writer will name it; its size shows whether the line went in.
    const std::string expected = DayFilePath(config.strFileSuffix);
    std::error_code ec;
    const uintmax_t before = std::filesystem::file_size(expected, ec);
    const uintmax_t sizeBefore = ec ? 0 : before;

    logger->Log(level, message, attrs);
    const std::string path = logger->Writer()->LastPath();
    if (path.empty()) {
        return Fail("log", "the record went to no file");
    }
    const uintmax_t after = std::filesystem::file_size(path, ec);
    if (ec || after <= (path == expected ? sizeBefore : 0)) {
        return Fail("log", path + ": cannot write: " + WriteFailureReason(path));
    }
    return WriteOut(path + "\n") && FlushOut() ? kExitOk : kExitFailure;
}

void DemoLogging(const DemoContext& ctx) {
    DemoHeading("logging");
    // The log folder is always below the current folder, so the demo logs from its scratch folder.
    std::error_code ec;
    const std::filesystem::path previous = std::filesystem::current_path(ec);
    if (ec || (std::filesystem::current_path(ctx.workDir, ec), ec)) {
        DemoFail("logging: cannot work in " + ctx.workDir + ": " + ec.message());
        return;
    }
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
    } else {
        DemoFail("logging: " + path + ": no log file was written");
    }
    std::printf("  (the ERROR message starts with GBK bytes, written unchanged)\n");
    platform::SetEnv("TZ", oldTz != nullptr ? savedTz.c_str() : nullptr);
    platform::TzSet();
    std::filesystem::current_path(previous, ec);
}

}  // namespace pind::tool

#include "pind/logging/LoggerWriter.h"

#include <atomic>
#include <cstring>
#include <ctime>
#include <unordered_set>

#include "pind/platform/Clock.h"
#include "pind/platform/System.h"
#include "pind/platform/TimeZone.h"

namespace _log {
namespace {

// State every writer shares. Writers hold only their own lock, and two loggers may write the same
// daily file at once, so this state has a lock of its own, taken inside a writer lock and never
// together with the factory lock.
struct SharedWriterState {
    pind::platform::CriticalSection cs;
    std::string strFolder = "debug";
    uint32_t nProcessId = pind::platform::CurrentProcessId();
    std::string strModule = pind::detail::DefaultModuleName();
    std::unordered_set<std::string> setWritten;
};

SharedWriterState& Shared() {
    static SharedWriterState* s_pState = new SharedWriterState;  // lives until the process ends
    return *s_pState;
}

std::atomic<ILogCallback*> g_pCallback{nullptr};

}  // namespace

LoggerConfig::LoggerConfig() : strModule(pind::detail::DefaultModuleName()) {}

ILogCallback::~ILogCallback() = default;
ILoggerWriter::~ILoggerWriter() = default;

CLoggerWriterDirctToFile::CLoggerWriterDirctToFile(const LoggerConfig& config) : m_config(config) {}

CLoggerWriterDirctToFile::~CLoggerWriterDirctToFile() {
    if (m_pFile != nullptr) {
        std::fclose(m_pFile);
    }
}

std::string CLoggerWriterDirctToFile::LastPath() {
    pind::platform::CriticalSectionGuard guard(m_cs);
    return m_strPath;
}

void CLoggerWriterDirctToFile::Write(int32_t nLevel, const LogRecord& record, bool bToFile,
                                     bool bToCallback) {
    // Compared as signed numbers, so a negative level is below every minimum.
    if (static_cast<int64_t>(nLevel) < static_cast<int64_t>(m_config.nMinLevel)) {
        return;
    }
    pind::platform::CriticalSectionGuard guard(m_cs);
    const int64_t now = pind::platform::Time64();
    LogAttributes header;
    MakeHeader(static_cast<uint32_t>(nLevel), m_config.strSource, now, &header);
    std::string text;
    FormatRecordText(header, record, &text);

    if (bToCallback) {
        if (ILogCallback* pCallback = g_pCallback.load()) {
            pCallback->OnLog(static_cast<uint32_t>(nLevel), text.c_str());
        }
    }
    if (!bToFile) {
        return;
    }

    std::tm local{};
    pind::platform::LocalTime64(now, &local);
    char date[256];
    std::snprintf(date, sizeof date, "%u_%u_%u", static_cast<unsigned>(local.tm_year + 1900),
                  static_cast<unsigned>(local.tm_mon + 1), static_cast<unsigned>(local.tm_mday));

    SharedWriterState& shared = Shared();
    pind::platform::CriticalSectionGuard sharedGuard(shared.cs);
    const std::string folder = "./" + shared.strFolder;
    m_strPath = folder + "/" + date + m_config.strFileSuffix;
    if (m_pFile != nullptr) {
        std::fclose(m_pFile);
    }
    // The folder is made only when the file cannot be opened: the same outcome as making it before
    // every line (an existing folder is no error), without a system call per line.
    m_pFile = std::fopen(m_strPath.c_str(), "a+");
    if (m_pFile == nullptr) {
        pind::platform::MakeDir(folder.c_str());
        m_pFile = std::fopen(m_strPath.c_str(), "a+");
    }
    if (m_pFile == nullptr) {
        return;
    }
    // Identical texts (same second, same content) are written once per process.
    if (shared.setWritten.insert(text).second) {
        char lineTime[64];
        const size_t n = std::strftime(lineTime, sizeof lineTime, "%Y-%m-%d %H:%M:%S", &local);
        lineTime[n] = '\0';
        std::fprintf(m_pFile, "%s %s \n", lineTime, text.c_str());
    }
    std::fclose(m_pFile);
    m_pFile = nullptr;
}

}  // namespace _log

namespace pind::detail {

void SetLogCallback(_log::ILogCallback* pCallback) { _log::g_pCallback.store(pCallback); }

_log::ILogCallback* GetLogCallback() { return _log::g_pCallback.load(); }

void SetLogFolderName(const char* pszFolder) {
    if (pszFolder == nullptr || *pszFolder == '\0') {
        return;
    }
    _log::SharedWriterState& shared = _log::Shared();
    platform::CriticalSectionGuard guard(shared.cs);
    shared.strFolder = pszFolder;
}

std::string GetLogFolderName() {
    _log::SharedWriterState& shared = _log::Shared();
    platform::CriticalSectionGuard guard(shared.cs);
    return shared.strFolder;
}

std::string ModuleNameFromPath(const char* pszPath) {
    if (pszPath == nullptr) {
        return std::string();
    }
    const char* pName = pszPath;
    // Cut after the last backslash, and also after the last '/' (POSIX paths).
    if (const char* p = std::strrchr(pName, '\\')) {
        pName = p + 1;
    }
    if (const char* p = std::strrchr(pName, '/')) {
        pName = p + 1;
    }
    const char* pDot = std::strrchr(pName, '.');
    return pDot != nullptr ? std::string(pName, pDot) : std::string(pName);
}

std::string DefaultModuleName() {
    char path[256];
    if (platform::ModuleFileName(path, sizeof path) == 0) {
        return std::string();
    }
    return ModuleNameFromPath(path);
}

void ClearWrittenTexts() {
    _log::SharedWriterState& shared = _log::Shared();
    platform::CriticalSectionGuard guard(shared.cs);
    shared.setWritten.clear();
}

size_t WrittenTextCount() {
    _log::SharedWriterState& shared = _log::Shared();
    platform::CriticalSectionGuard guard(shared.cs);
    return shared.setWritten.size();
}

size_t WrittenTextBytes() {
    _log::SharedWriterState& shared = _log::Shared();
    platform::CriticalSectionGuard guard(shared.cs);
    // A node holds the next link, the string object and the cached hash; a string longer than its
    // in-place buffer adds its heap block (capacity + terminator).
    size_t bytes = shared.setWritten.bucket_count() * sizeof(void*);
    for (const std::string& s : shared.setWritten) {
        bytes += sizeof(void*) + sizeof(std::string) + sizeof(size_t);
        const char* pObject = reinterpret_cast<const char*>(&s);
        if (s.data() < pObject || s.data() >= pObject + sizeof s) {
            bytes += s.capacity() + 1;
        }
    }
    return bytes;
}

}  // namespace pind::detail

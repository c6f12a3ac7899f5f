#include "pind/logging/LoggerWriter.h"

#include <atomic>
#include <charconv>
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

// "YYYY-mm-dd HH:MM:SS" and the blank after it.
constexpr size_t kLineTimeRoom = 20;

void AppendUnsigned(std::string* pOut, unsigned n) {
    char buf[16];
    const std::to_chars_result r = std::to_chars(buf, buf + sizeof buf, n);
    pOut->append(buf, r.ptr);
}

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
    // The file line is built in one buffer, so that it goes out in one write: room for the line
    // time and its blank (known only later), then the text, then " \n".
    std::string line;
    line.reserve(256);
    line.append(kLineTimeRoom, ' ');
    pind::detail::AppendWriterText(static_cast<uint32_t>(nLevel), m_config.strSource, now, record,
                                   &line);

    if (bToCallback) {
        if (ILogCallback* pCallback = g_pCallback.load()) {
            pCallback->OnLog(static_cast<uint32_t>(nLevel), line.c_str() + kLineTimeRoom);
        }
    }
    if (!bToFile) {
        return;
    }

    std::tm local{};
    pind::platform::LocalTime64(now, &local);

    SharedWriterState& shared = Shared();
    pind::platform::CriticalSectionGuard sharedGuard(shared.cs);
    // "./<folder>/" then the date "%u_%u_%u" and the suffix, built in place of the last path.
    m_strPath.assign("./", 2);
    m_strPath.append(shared.strFolder);
    const size_t nFolderEnd = m_strPath.size();
    m_strPath.push_back('/');
    AppendUnsigned(&m_strPath, static_cast<unsigned>(local.tm_year + 1900));
    m_strPath.push_back('_');
    AppendUnsigned(&m_strPath, static_cast<unsigned>(local.tm_mon + 1));
    m_strPath.push_back('_');
    AppendUnsigned(&m_strPath, static_cast<unsigned>(local.tm_mday));
    m_strPath.append(m_config.strFileSuffix);
    if (m_pFile != nullptr) {
        std::fclose(m_pFile);
    }
    // The folder is made only when the file cannot be opened: the same outcome as making it before
    // every line (an existing folder is no error), without a system call per line.
    m_pFile = std::fopen(m_strPath.c_str(), "a+");
    if (m_pFile == nullptr) {
        pind::platform::MakeDir(m_strPath.substr(0, nFolderEnd).c_str());
        m_pFile = std::fopen(m_strPath.c_str(), "a+");
    }
    if (m_pFile == nullptr) {
        return;
    }
    // Identical texts (same second, same content) are written once per process.
    if (shared.setWritten.insert(line.substr(kLineTimeRoom)).second) {
        char lineTime[64];
        const size_t nTime = pind::detail::FormatLineTime(local, lineTime);
        if (nTime + 1 == kLineTimeRoom) {
            std::memcpy(&line[0], lineTime, nTime);
        } else {
            line.replace(0, kLineTimeRoom - 1, lineTime, nTime);
        }
        // As with fprintf("%s %s \n"), the text ends at its first zero byte.
        line.resize(std::strlen(line.c_str()));
        line.append(" \n", 2);
        // Unbuffered: the line is one block already, and stdio need not size a buffer for it.
        std::setvbuf(m_pFile, nullptr, _IONBF, 0);
        std::fwrite(line.data(), 1, line.size(), m_pFile);
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

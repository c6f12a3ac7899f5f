// The logger configuration record, the client's log callback and the daily file writer: a record
// becomes one text, goes to the callback, and is appended as one line to the day's file,
// `<folder>/<y>_<m>_<d><suffix>` under the working folder (opened and closed per line; a text
// already written is written once per process).
//   _log::CLoggerWriterDirctToFile writer(config); writer.Write(2, record, true, true);
#ifndef PIND_LOGGING_LOGGERWRITER_H_
#define PIND_LOGGING_LOGGERWRITER_H_

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>

#include "pind/logging/LogRecord.h"
#include "pind/platform/CriticalSection.h"
#include "pind/platform/Export.h"

namespace _log {

/// A logger's configuration. The factory, each logger and each writer hold their own copy.
struct PIND_API LoggerConfig {
    /// The defaults; the module name is the running executable's file name without folder and
    /// extension.
    LoggerConfig();

    LogAttributes vecFixedAttrs;  ///< added to every record's context attributes
    /// The configuration's version; always 1.
    uint32_t nVersion = 1;
    std::string strName = "DEFAULT";  ///< the logger's key and default category
    /// The running executable's file name without folder and extension, unless set.
    std::string strModule;
    std::string strSource;  ///< printed as "src"
    /// Appended to the day's date to make the file name.
    std::string strFileSuffix = "_x64.log";
    uint32_t nRecordKind = 0;  ///< 0 structured, 1 plain
    /// Records below this level are dropped.
    uint32_t nMinLevel = LOG_INFO;
    ///@{
    /// Options kept with their defaults for the client's layout; nothing reads them.
    uint32_t nOption1 = 1;
    uint32_t nOption2 = 4;
    uint32_t nOption3 = 2;
    ///@}
    ///@{
    /// Room for size-based rolling; nothing reads these yet.
    uint32_t nReserved = 0;
    uint32_t nBufferSize = 1024;
    uint32_t nFlags = 0;
    uint32_t nMaxFileSize = 10485760;
    uint32_t nMaxFiles = 10;
    ///@}
    /// Further named options; nothing reads them yet.
    std::map<std::string, std::string> mapOptions;
};

/// The client's sink for record texts; called inside the writer's lock, so it must not block on
/// another thread that is logging.
class PIND_API ILogCallback {
public:
    virtual ~ILogCallback();
    /// Receives one record's text at its level.
    virtual void OnLog(uint32_t nLevel, const char* pszText) = 0;
};

/// Turns records into lines and delivers them.
class PIND_API ILoggerWriter {
public:
    virtual ~ILoggerWriter();
    /// Does nothing: every line is on disk when Write returns.
    virtual void Flush() {}
    /// Writes the record at the level, to the file and to the callback as asked.
    virtual void Write(int32_t nLevel, const LogRecord& record, bool bToFile, bool bToCallback) = 0;
};

/// Writes each record as one line of the day's file, opened and closed per line.
class PIND_API CLoggerWriterDirctToFile : public ILoggerWriter {
public:
    /// A writer with its own copy of `config`.
    explicit CLoggerWriterDirctToFile(const LoggerConfig& config);
    ~CLoggerWriterDirctToFile() override;
    CLoggerWriterDirctToFile(const CLoggerWriterDirctToFile&) = delete;
    CLoggerWriterDirctToFile& operator=(const CLoggerWriterDirctToFile&) = delete;

    /// Drops levels below the configured minimum; otherwise builds the text, hands it to the
    /// callback (when asked and one is set) and appends it to the day's file (when asked). A folder
    /// or file that cannot be created drops the line silently.
    void Write(int32_t nLevel, const LogRecord& record, bool bToFile, bool bToCallback) override;

    /// The writer's copy of its configuration.
    const LoggerConfig& Config() const { return m_config; }
    /// The path of the last file this writer opened, "" before the first.
    std::string LastPath();

private:
    LoggerConfig m_config;
    std::string m_strPath;
    pind::platform::CriticalSection m_cs;
    std::FILE* m_pFile = nullptr;
};

}  // namespace _log

namespace pind::detail {

/// The process-wide callback (null: none) and log folder, as the factory sets them.
PIND_API void SetLogCallback(_log::ILogCallback* pCallback);
PIND_API _log::ILogCallback* GetLogCallback();
/// An empty name changes nothing.
PIND_API void SetLogFolderName(const char* pszFolder);
PIND_API std::string GetLogFolderName();

/// The module name the configuration defaults to: the executable's file name without folder and
/// extension.
PIND_API std::string DefaultModuleName();
/// The same cut applied to any path: after the last '\\' or '/', before the last '.'.
PIND_API std::string ModuleNameFromPath(const char* pszPath);

/// Forgets every text written so far (tests only: the process never forgets).
PIND_API void ClearWrittenTexts();
/// Texts remembered, and an estimate of the bytes the remembering takes (strings, nodes, buckets).
PIND_API size_t WrittenTextCount();
PIND_API size_t WrittenTextBytes();

}  // namespace pind::detail

#endif  // PIND_LOGGING_LOGGERWRITER_H_

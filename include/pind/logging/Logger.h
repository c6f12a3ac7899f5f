// Loggers and the process-wide logger factory. A logger sorts the caller's attributes into a record
// (category, source location, the "__out__"/"__cb__" switches), checks the category with the
// factory and hands the record to its own file writer; everything happens before Log returns.
//   _log::GetLoggerFactory()->GetDefaultLogger()->Log(_log::LOG_INFO, "login ok", {{"uid", 42}});
#ifndef PIND_LOGGING_LOGGER_H_
#define PIND_LOGGING_LOGGER_H_

#include <atomic>
#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "pind/logging/LogRecord.h"
#include "pind/logging/LoggerWriter.h"
#include "pind/platform/CriticalSection.h"
#include "pind/platform/Export.h"

namespace _log {

/// A logger as the client calls it: a level, fixed attributes, and Log.
class PIND_API ILogger {
public:
    virtual ~ILogger();
    /// Stores the level in the logger's own copy only; the writer keeps filtering with the level
    /// the logger was created with.
    virtual void SetLevel(uint32_t nLevel) = 0;
    /// Replaces the value of a fixed attribute with the same key, else appends the attribute.
    virtual void SetAttribute(const LogAttribute& attr) = 0;
    /// Writes one record. Keys "cate" (category), "_" (a kind-16 source location; other kinds are
    /// dropped), "__out__" (not to the file) and "__cb__" (not to the callback) are taken out; a
    /// record of a disabled category is dropped.
    virtual void Log(uint32_t nLevel, const std::string& strMsg, const LogAttributes& attrs) = 0;
    /// Log with no attributes.
    virtual void Log(uint32_t nLevel, const std::string& strMsg) = 0;
};

/// The library's logger: sorts attributes into a record and hands it to its own file writer.
class PIND_API CLogger : public ILogger {
public:
    /// A logger with its own copy of `config` and a writer made from it.
    explicit CLogger(const LoggerConfig& config);
    ~CLogger() override;
    CLogger(const CLogger&) = delete;
    CLogger& operator=(const CLogger&) = delete;

    void SetLevel(uint32_t nLevel) override;
    void SetAttribute(const LogAttribute& attr) override;
    void Log(uint32_t nLevel, const std::string& strMsg, const LogAttributes& attrs) override;
    void Log(uint32_t nLevel, const std::string& strMsg) override;

    /// The logger's copy of its configuration.
    const LoggerConfig& Config() const { return m_config; }
    /// The logger's file writer; owned by the logger.
    CLoggerWriterDirctToFile* Writer() { return m_pWriter; }

private:
    // The client's layout has a pointer-sized field first, always zero; nothing reads it.
    [[maybe_unused]] void* m_pReserved = nullptr;
    LoggerConfig m_config;
    CLoggerWriterDirctToFile* m_pWriter;
};

/// Makes and keeps the loggers, and decides which categories are enabled.
class PIND_API ILoggerFactory {
public:
    virtual ~ILoggerFactory();
    /// Replaces the configuration and passes its fixed attributes to the default logger, if any.
    virtual void SetConfig(const LoggerConfig& config) = 0;
    /// Replace-or-append in the configuration, and in the default logger if it exists.
    virtual void SetAttribute(const LogAttribute& attr) = 0;
    /// The default logger, created from the factory's configuration on first use.
    virtual ILogger* GetDefaultLogger() = 0;
    /// The process-wide log folder (default "debug"); an empty or null name changes nothing.
    virtual void SetLogFolder(const char* pszFolder) = 0;
    /// The logger filed under the configuration's name, created from `config` if there is none (an
    /// existing logger is returned whatever the rest of `config` says). Never null.
    virtual ILogger* GetLogger(const LoggerConfig& config) = 0;
    /// The process-wide callback; null switches it off.
    virtual void SetCallback(ILogCallback* pCallback) = 0;
    /// Maps category `strCate` to the name `strName` that EnableName switches on.
    virtual void AddCategoryName(const std::string& strCate, const std::string& strName) = 0;
    /// Maps category `strCate` to the id `nId` that EnableId switches on.
    virtual void AddCategoryId(const std::string& strCate, uint32_t nId) = 0;
    /// Enables every category mapped to `nId`.
    virtual void EnableId(uint32_t nId) = 0;
    /// Enables every category mapped to `strName`.
    virtual void EnableName(const std::string& strName) = 0;
    /// True for an untagged category, or when one of its names or numbers is active.
    virtual bool IsCategoryEnabled(const std::string& strCate) = 0;
};

/// The category tables are not locked: fill them at start-up, before threads log.
class PIND_API CLoggerFactory : public ILoggerFactory {
public:
    CLoggerFactory();
    /// Destroys the default logger; the other loggers are let go, not destroyed.
    ~CLoggerFactory() override;
    CLoggerFactory(const CLoggerFactory&) = delete;
    CLoggerFactory& operator=(const CLoggerFactory&) = delete;

    void SetConfig(const LoggerConfig& config) override;
    void SetAttribute(const LogAttribute& attr) override;
    ILogger* GetDefaultLogger() override;
    void SetLogFolder(const char* pszFolder) override;
    ILogger* GetLogger(const LoggerConfig& config) override;
    void SetCallback(ILogCallback* pCallback) override;
    void AddCategoryName(const std::string& strCate, const std::string& strName) override;
    void AddCategoryId(const std::string& strCate, uint32_t nId) override;
    void EnableId(uint32_t nId) override;
    void EnableName(const std::string& strName) override;
    bool IsCategoryEnabled(const std::string& strCate) override;

private:
    LoggerConfig m_config;
    std::atomic<ILogger*> m_pDefaultLogger{nullptr};
    std::map<std::string, ILogger*> m_mapLoggers;
    pind::platform::CriticalSection m_cs;
    std::map<std::string, std::set<uint32_t>> m_mapCateIds;
    std::map<std::string, std::set<std::string>> m_mapCateNames;
    std::set<uint32_t> m_setActiveIds;
    std::set<std::string> m_setActiveNames;
};

/// An extension point for clients; nothing in the library calls it.
class PIND_API ILoggerExpand {
public:
    virtual ~ILoggerExpand();
    /// Whatever the client makes of it.
    virtual void Expand() = 0;
};

/// The process-wide factory, created on the first call and never destroyed.
PIND_API ILoggerFactory* GetLoggerFactory();

}  // namespace _log

#endif  // PIND_LOGGING_LOGGER_H_

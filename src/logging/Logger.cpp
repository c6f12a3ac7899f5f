#include "pind/logging/Logger.h"

namespace _log {
namespace {

const std::string kKeyCate = "cate";
const std::string kKeySource = "_";
const std::string kKeyNoFile = "__out__";
const std::string kKeyNoCallback = "__cb__";
const std::string kKeyFile = "file";
const std::string kKeyLine = "line";

// Appends key = value in place: one copy of the value, where constructing a LogAttribute from a
// temporary copies it twice more.
void AppendAttribute(LogAttributes* pAttrs, const std::string& strKey, const LogValue& value) {
    LogAttribute& a = pAttrs->emplace_back();
    a.strKey = strKey;
    a.value = value;
}

void ReplaceOrAppend(LogAttributes* pAttrs, const LogAttribute& attr) {
    for (LogAttribute& a : *pAttrs) {
        if (a.strKey == attr.strKey) {
            a.value = attr.value;
            return;
        }
    }
    pAttrs->push_back(attr);
}

}  // namespace

ILogger::~ILogger() = default;
ILoggerFactory::~ILoggerFactory() = default;
ILoggerExpand::~ILoggerExpand() = default;

CLogger::CLogger(const LoggerConfig& config)
    : m_config(config), m_pWriter(new CLoggerWriterDirctToFile(config)) {}

CLogger::~CLogger() { delete m_pWriter; }

void CLogger::SetLevel(uint32_t nLevel) { m_config.nMinLevel = nLevel; }

void CLogger::SetAttribute(const LogAttribute& attr) {
    ReplaceOrAppend(&m_config.vecFixedAttrs, attr);
}

void CLogger::Log(uint32_t nLevel, const std::string& strMsg) { Log(nLevel, strMsg, {}); }

void CLogger::Log(uint32_t nLevel, const std::string& strMsg, const LogAttributes& attrs) {
    bool bToFile = true;
    bool bToCallback = true;
    bool bHasCate = false;
    std::string strCate;
    LogAttributes context;
    LogAttributes top;
    context.reserve(attrs.size() + m_config.vecFixedAttrs.size());
    for (const LogAttribute& a : attrs) {
        if (a.strKey == kKeyCate) {
            bHasCate = true;
            strCate.clear();
            a.value.AppendPlain(&strCate);
            AppendAttribute(&top, kKeyCate, LogValue(strCate));
        } else if (a.strKey == kKeySource) {
            if (a.value.Kind() == LogValue::kSource) {
                AppendAttribute(&top, kKeyFile, LogValue(a.value.Text()));
                AppendAttribute(&top, kKeyLine, LogValue(a.value.Number32()));
            }
        } else if (a.strKey == kKeyNoFile) {
            bToFile = false;
        } else if (a.strKey == kKeyNoCallback) {
            bToCallback = false;
        } else if (!a.strKey.empty()) {
            context.push_back(a);
        }
    }
    if (!bHasCate) {
        AppendAttribute(&top, kKeyCate, LogValue(m_config.strName));
    }
    if (bHasCate && !GetLoggerFactory()->IsCategoryEnabled(strCate)) {
        return;
    }
    for (const LogAttribute& a : m_config.vecFixedAttrs) {
        if (!a.strKey.empty()) {
            context.push_back(a);
        }
    }
    const LogRecord record(m_config.nRecordKind, strMsg, std::move(context), std::move(top));
    m_pWriter->Write(static_cast<int32_t>(nLevel), record, bToFile, bToCallback);
}

CLoggerFactory::CLoggerFactory() = default;

CLoggerFactory::~CLoggerFactory() {
    delete m_pDefaultLogger.load();
    m_mapLoggers.clear();
}

void CLoggerFactory::SetConfig(const LoggerConfig& config) {
    m_config = config;
    if (ILogger* pDefault = m_pDefaultLogger.load()) {
        for (const LogAttribute& a : m_config.vecFixedAttrs) {
            pDefault->SetAttribute(a);
        }
    }
}

void CLoggerFactory::SetAttribute(const LogAttribute& attr) {
    ReplaceOrAppend(&m_config.vecFixedAttrs, attr);
    if (ILogger* pDefault = m_pDefaultLogger.load()) {
        pDefault->SetAttribute(attr);
    }
}

ILogger* CLoggerFactory::GetDefaultLogger() {
    if (ILogger* pDefault = m_pDefaultLogger.load()) {
        return pDefault;
    }
    pind::platform::CriticalSectionGuard guard(m_cs);
    ILogger* pDefault = m_pDefaultLogger.load();
    if (pDefault == nullptr) {
        pDefault = GetLogger(m_config);
        m_pDefaultLogger.store(pDefault);
    }
    return pDefault;
}

void CLoggerFactory::SetLogFolder(const char* pszFolder) {
    pind::detail::SetLogFolderName(pszFolder);
}

ILogger* CLoggerFactory::GetLogger(const LoggerConfig& config) {
    pind::platform::CriticalSectionGuard guard(m_cs);
    auto it = m_mapLoggers.find(config.strName);
    if (it != m_mapLoggers.end()) {
        return it->second;
    }
    ILogger* pLogger = new CLogger(config);
    m_mapLoggers.emplace(config.strName, pLogger);
    return pLogger;
}

void CLoggerFactory::SetCallback(ILogCallback* pCallback) {
    pind::detail::SetLogCallback(pCallback);
}

void CLoggerFactory::AddCategoryName(const std::string& strCate, const std::string& strName) {
    m_mapCateNames[strCate].insert(strName);
}

void CLoggerFactory::AddCategoryId(const std::string& strCate, uint32_t nId) {
    m_mapCateIds[strCate].insert(nId);
}

void CLoggerFactory::EnableId(uint32_t nId) { m_setActiveIds.insert(nId); }

void CLoggerFactory::EnableName(const std::string& strName) { m_setActiveNames.insert(strName); }

bool CLoggerFactory::IsCategoryEnabled(const std::string& strCate) {
    const auto itNames = m_mapCateNames.find(strCate);
    const auto itIds = m_mapCateIds.find(strCate);
    if (itNames == m_mapCateNames.end() && itIds == m_mapCateIds.end()) {
        return true;
    }
    if (itNames != m_mapCateNames.end()) {
        for (const std::string& name : m_setActiveNames) {
            if (itNames->second.count(name) != 0) {
                return true;
            }
        }
    }
    if (itIds != m_mapCateIds.end()) {
        for (uint32_t id : m_setActiveIds) {
            if (itIds->second.count(id) != 0) {
                return true;
            }
        }
    }
    return false;
}

ILoggerFactory* GetLoggerFactory() {
    static CLoggerFactory* s_pFactory = new CLoggerFactory;  // never destroyed
    return s_pFactory;
}

}  // namespace _log

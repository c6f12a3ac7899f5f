#include "pind/config/PindIni.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "pind/client/PindClient.h"
#include "pind/diag/Report.h"
#include "pind/files/PackFile.h"
#include "pind/platform/CrtString.h"

namespace {

constexpr const char* kSourceName = "PindIni";
constexpr size_t kPlainLineCapacity = 2048;
constexpr size_t kScrambledLineCapacity = 1024;
constexpr const char* kKeyedShortRead = "nLen == fread(szLine, sizeof(char), nLen, fp)";
constexpr const char* kScrambledShortRead = "nLen == fread(szLine, sizeof(BYTE), nLen, fp)";

// First bytes that never start a key line.
bool IsKeyLineStart(char c) {
    switch (c) {
        case '\t':
        case '\n':
        case '\r':
        case ' ':
        case '/':
        case ';':
        case '=':
        case '\\':
            return false;
        default:
            return true;
    }
}

CPackFile* OpenThroughClient(const char* pszName, const char* pszMode, bool bFlag, bool bExtended) {
    IPindClient* pClient = GetClient();
    return bExtended ? pClient->OpenFileEx(pszName, pszMode, bFlag, true)
                     : pClient->OpenFile(pszName, pszMode, bFlag);
}

// Reads one length-prefixed record into `pszLine` (capacity + 1 bytes, zeroed here): at most
// `nCapacity` bytes are kept, the rest of the record is read and dropped so the next length stays
// aligned. False at the end of the file or for a negative length.
bool ReadRecord(CPackFile* pFile, char* pszLine, size_t nCapacity, const char* pszKey,
                size_t nKeyLen, const char* pszAssert, int nAssertLine) {
    int32_t nLen = 0;
    if (PackFRead(&nLen, sizeof nLen, 1, pFile) != 1 || nLen < 0) {
        return false;
    }
    std::memset(pszLine, 0, nCapacity + 1);
    const size_t nWant = static_cast<size_t>(nLen);
    const size_t nKept = nWant < nCapacity ? nWant : nCapacity;
    size_t nGot = PackFRead(pszLine, 1, nKept, pFile);
    if (nGot == nKept) {
        char szDrop[4096];
        for (size_t nLeft = nWant - nKept; nLeft > 0;) {
            const size_t nChunk = nLeft < sizeof szDrop ? nLeft : sizeof szDrop;
            const size_t nRead = PackFRead(szDrop, 1, nChunk, pFile);
            nGot += nRead;
            nLeft -= nRead;
            if (nRead < nChunk) {
                break;
            }
        }
    }
    if (nGot < nWant) {
        pind::ReportAssert(pszAssert, nAssertLine, kSourceName);
    }
    // The XOR covers the record's declared length, a short read's zeros included.
    if (nKeyLen > 0) {
        for (size_t i = 0; i < nKept; ++i) {
            pszLine[i] = static_cast<char>(pszLine[i] ^ pszKey[i % nKeyLen]);
        }
    }
    return true;
}

}  // namespace

// The line rules shared by the three forms: comments, headers, key lines and the duplicates.
struct CPindIni::Parser {
    CPindIni& ini;
    // The scrambled form gives every header a key table at once.
    bool bTableOnHeader;
    std::string strSection;
    std::unique_ptr<KeyTable> pKeys;

    void Commit() {
        if (!strSection.empty()) {
            ini.AdoptSection(strSection, pKeys.release());
        }
        pKeys.reset();
    }

    // `pszLine` holds `n` bytes before its first zero; the byte at n is zero.
    void Line(char* pszLine, size_t n) {
        if (n < 3 || pszLine[0] == ';' || (pszLine[0] == '/' && pszLine[1] == '/')) {
            return;
        }
        if (pszLine[n - 1] == '\n') {
            pszLine[--n] = '\0';
        }
        if (pszLine[0] == '[') {
            for (size_t i = n - 1; i >= 1; --i) {
                if (pszLine[i] == ']') {
                    Commit();
                    strSection.assign(pszLine + 1, i - 1);
                    if (bTableOnHeader) {
                        pKeys = std::make_unique<KeyTable>();
                    }
                    return;
                }
            }
        }
        if (strSection.empty() || n < 3 || !IsKeyLineStart(pszLine[0])) {
            return;
        }
        const char* pszEq = static_cast<const char*>(std::memchr(pszLine, '=', n));
        if (pszEq == nullptr) {
            return;
        }
        const char* pszKeyEnd = pszEq;
        while (pszKeyEnd > pszLine && pszKeyEnd[-1] == '\t') {
            --pszKeyEnd;
        }
        const char* pszValue = pszEq + 1;
        while (*pszValue == '\t') {
            ++pszValue;
        }
        const char* pszValueEnd = pszValue;
        while (*pszValueEnd != '\0' && *pszValueEnd != '\t' && *pszValueEnd != '\n' &&
               *pszValueEnd != '\r') {
            ++pszValueEnd;
        }
        if (!pKeys) {
            pKeys = std::make_unique<KeyTable>();
        }
        auto it = pKeys->try_emplace(std::string(pszLine, static_cast<size_t>(pszKeyEnd - pszLine)))
                      .first;
        it->second.assign(pszValue, pszValueEnd);
    }
};

CPindIni::CPindIni() = default;

CPindIni::CPindIni(bool bReportMissing) : m_bReportMissing(bReportMissing) {}

CPindIni::CPindIni(const char* pszIniFile, bool bReportMissing) : m_bReportMissing(bReportMissing) {
    Load(pszIniFile, nullptr, false);
    m_strFileName = pszIniFile != nullptr ? pszIniFile : "";
}

CPindIni::CPindIni(const CPindIni& other)
    : m_nCursor(other.m_nCursor),
      m_bReportMissing(other.m_bReportMissing),
      m_strFileName(other.m_strFileName) {
    CopyFrom(other);
}

CPindIni& CPindIni::operator=(const CPindIni& other) {
    if (this != &other) {
        Clear();
        CopyFrom(other);
        m_nCursor = other.m_nCursor;
        m_bReportMissing = other.m_bReportMissing;
        m_strFileName = other.m_strFileName;
    }
    return *this;
}

CPindIni::~CPindIni() {
    Clear();
    PackFClose(m_pWriteFile);
}

void CPindIni::CopyFrom(const CPindIni& other) {
    std::map<const KeyTable*, KeyTable*> copies;
    m_vecSections.reserve(other.m_vecSections.size());
    for (const SectionRecord* pRecord : other.m_vecSections) {
        KeyTable* pKeys = pRecord->pKeys != nullptr ? new KeyTable(*pRecord->pKeys) : nullptr;
        copies[pRecord->pKeys] = pKeys;
        m_vecSections.push_back(new SectionRecord{pRecord->strName, pKeys});
    }
    for (const auto& [strName, pKeys] : other.m_mapSections) {
        m_mapSections.emplace(strName, copies[pKeys]);
    }
}

CPindIni* CPindIni::Create(const char* pszIniFile, bool bReportMissing, const char* pszKey) {
    if (pszIniFile == nullptr) {
        pind::ReportIfNot("pszIniFile", kSourceName, 726);
        return nullptr;
    }
    auto* pMyIni = new (std::nothrow) CPindIni(bReportMissing);
    if (pMyIni == nullptr) {
        pind::ReportIfNot("pMyIni", kSourceName, 730);
        return nullptr;
    }
    if (!pMyIni->Load(pszIniFile, pszKey, false)) {
        delete pMyIni;
        return nullptr;
    }
    return pMyIni;
}

bool CPindIni::Load(const char* pszIniFile, const char* pszKey, bool bUseExtendedOpen) {
    if (pszIniFile == nullptr) {
        if (m_pWriteFile == nullptr) {
            pind::ReportIfNot("pszIniFile", kSourceName, 278);
            return false;
        }
        Clear();
        return LoadFrom(m_pWriteFile, pszKey);
    }
    m_strFileName = pszIniFile;
    CPackFile* pFile =
        OpenThroughClient(pszIniFile, pszKey != nullptr ? "rb" : "r", true, bUseExtendedOpen);
    Clear();
    if (pFile == nullptr) {
        return false;
    }
    const bool bLoaded = LoadFrom(pFile, pszKey);
    PackFClose(pFile);
    return bLoaded;
}

bool CPindIni::LoadEx(const char* pszIniFile, const char* pszKey, bool) {
    return Load(pszIniFile, pszKey, true);
}

bool CPindIni::LoadFrom(CPackFile* pFile, const char* pszKey) {
    PackFSeek(pFile, 0, SEEK_SET);
    Parser parser{*this, false, std::string(), nullptr};
    // One spare byte past the buffer stays zero, so a full buffer still ends in a terminator.
    char szLine[kPlainLineCapacity + 1];
    szLine[kPlainLineCapacity] = '\0';
    if (pszKey == nullptr) {
        while (PackFGets(szLine, static_cast<int>(kPlainLineCapacity), pFile) != nullptr) {
            parser.Line(szLine, std::strlen(szLine));
        }
    } else {
        const size_t nKeyLen = std::strlen(pszKey);
        while (
            ReadRecord(pFile, szLine, kPlainLineCapacity, pszKey, nKeyLen, kKeyedShortRead, 302)) {
            parser.Line(szLine, std::strlen(szLine));
        }
    }
    parser.Commit();
    return true;
}

bool CPindIni::LoadScrambled(const char* pszIniFile) {
    if (pszIniFile == nullptr) {
        pind::ReportIfNot("pszIniFile", kSourceName, 414);
        return false;
    }
    Clear();
    m_strFileName = pszIniFile;
    CPackFile* pFile = GetClient()->OpenFile(pszIniFile, "rb", true);
    if (pFile == nullptr) {
        return false;
    }
    uint8_t header[7] = {};
    int32_t nKeyLen = -1;
    if (PackFRead(header, 1, sizeof header, pFile) == sizeof header && header[0] == 0xFF &&
        header[1] == 0xFF && header[2] == 0) {
        std::memcpy(&nKeyLen, header + 3, sizeof nKeyLen);
    }
    const int64_t nStart = PackFTell64(pFile);
    const int64_t nRest = PackFGetLen64(pFile) - nStart;
    if (nKeyLen < 0 || nKeyLen > nRest) {
        PackFClose(pFile);
        return false;
    }
    std::string strKey(static_cast<size_t>(nKeyLen), '\0');
    PackFRead(&strKey[0], 1, strKey.size(), pFile);
    uint8_t xorValue = static_cast<uint8_t>(nStart);
    for (char& c : strKey) {
        if (c == '\0') {
            break;
        }
        c = static_cast<char>(c ^ xorValue++);
    }
    const size_t nEffective = std::strlen(strKey.c_str());

    Parser parser{*this, true, std::string(), nullptr};
    char szLine[kScrambledLineCapacity + 1];
    while (ReadRecord(pFile, szLine, kScrambledLineCapacity, strKey.c_str(), nEffective,
                      kScrambledShortRead, 462)) {
        parser.Line(szLine, std::strlen(szLine));
    }
    parser.Commit();
    PackFClose(pFile);
    return true;
}

void CPindIni::AdoptSection(const std::string& strName, KeyTable* pKeys) {
    m_mapSections.insert_or_assign(strName, pKeys);
    m_vecSections.push_back(new SectionRecord{strName, pKeys});
}

void CPindIni::Clear() {
    for (SectionRecord* pRecord : m_vecSections) {
        delete pRecord->pKeys;
        delete pRecord;
    }
    m_vecSections.clear();
    m_mapSections.clear();
    m_nCursor = 0;
}

void CPindIni::ReportSection(const char* pszSection) const {
    if (m_bReportMissing) {
        GetClient()->DebugText("section[%s] not found in %s!", pszSection, m_strFileName.c_str());
    }
}

void CPindIni::ReportKey(const char* pszSection, const char* pszKey) const {
    if (m_bReportMissing) {
        GetClient()->DebugText("section[%s], index[%s] not found in %s!", pszSection, pszKey,
                               m_strFileName.c_str());
    }
}

const std::string* CPindIni::Lookup(const char* pszSection, const char* pszKey, int nLine) const {
    if (pszSection == nullptr || pszKey == nullptr) {
        if (nLine > 0) {
            pind::ReportIfNot("pszSection && pszIndex", kSourceName, nLine);
        }
        return nullptr;
    }
    const auto itSection = m_mapSections.find(std::string_view(pszSection));
    if (itSection == m_mapSections.end() || itSection->second == nullptr) {
        ReportSection(pszSection);
        return nullptr;
    }
    const auto itKey = itSection->second->find(std::string_view(pszKey));
    if (itKey == itSection->second->end()) {
        ReportKey(pszSection, pszKey);
        return nullptr;
    }
    return &itKey->second;
}

const char* CPindIni::GetString(const char* pszSection, const char* pszKey,
                                const char* pszDefault) const {
    const std::string* pValue = Lookup(pszSection, pszKey, 668);
    return pValue != nullptr ? pValue->c_str() : pszDefault;
}

int CPindIni::GetInt(const char* pszSection, const char* pszKey, int nDefault) const {
    const std::string* pValue = Lookup(pszSection, pszKey, 555);
    return pValue != nullptr ? std::atoi(pValue->c_str()) : nDefault;
}

unsigned CPindIni::GetUInt(const char* pszSection, const char* pszKey, unsigned uDefault) const {
    const std::string* pValue = Lookup(pszSection, pszKey, 582);
    return pValue != nullptr ? static_cast<unsigned>(std::strtoul(pValue->c_str(), nullptr, 10))
                             : uDefault;
}

int64_t CPindIni::GetInt64(const char* pszSection, const char* pszKey, int64_t nDefault) const {
    const std::string* pValue = Lookup(pszSection, pszKey, 641);
    return pValue != nullptr ? pind::platform::Atoi64(pValue->c_str()) : nDefault;
}

double CPindIni::GetDouble(const char* pszSection, const char* pszKey, double dDefault) const {
    // No precondition line of its own: a null argument is a silent miss.
    const std::string* pValue = Lookup(pszSection, pszKey, 0);
    return pValue != nullptr ? std::atof(pValue->c_str()) : dDefault;
}

CPindIni::KeyTable* CPindIni::GetSection(const char* pszSection) const {
    if (pszSection == nullptr) {
        return nullptr;
    }
    const auto it = m_mapSections.find(std::string_view(pszSection));
    if (it == m_mapSections.end() || it->second == nullptr) {
        ReportSection(pszSection);
        return nullptr;
    }
    return it->second;
}

bool CPindIni::HasSection(const char* pszSection) const {
    return pszSection != nullptr && m_mapSections.count(std::string_view(pszSection)) != 0;
}

bool CPindIni::HasKey(const char* pszSection, const char* pszKey) const {
    if (pszSection == nullptr || pszKey == nullptr) {
        return false;
    }
    const auto it = m_mapSections.find(std::string_view(pszSection));
    return it != m_mapSections.end() && it->second != nullptr &&
           it->second->count(std::string_view(pszKey)) != 0;
}

int CPindIni::TableGetInt(const KeyTable* pTable, const char* pszKey, int nDefault) {
    const char* pszValue = TableGetString(pTable, pszKey);
    return pszValue != nullptr ? std::atoi(pszValue) : nDefault;
}

const char* CPindIni::TableGetString(const KeyTable* pTable, const char* pszKey) {
    if (pTable == nullptr || pszKey == nullptr) {
        return nullptr;
    }
    const auto it = pTable->find(std::string_view(pszKey));
    return it != pTable->end() ? it->second.c_str() : nullptr;
}

const char* CPindIni::TableGetString(const KeyTable* pTable, const char* pszKey,
                                     const char* pszDefault) {
    const char* pszValue = TableGetString(pTable, pszKey);
    return pszValue != nullptr ? pszValue : pszDefault;
}

namespace {
// The reader-bound look-ups print the table where the section name would stand: its address's
// bytes, which end at a zero byte inside the table object on every platform we build for.
const char* TableAsName(const CPindIni::KeyTable* pTable) {
    return pTable != nullptr ? reinterpret_cast<const char*>(pTable) : "(null)";
}
}  // namespace

int CPindIni::GetInt(const KeyTable* pTable, const char* pszKey, int nDefault) const {
    const char* pszValue = TableGetString(pTable, pszKey);
    if (pszValue == nullptr) {
        ReportKey(TableAsName(pTable), pszKey != nullptr ? pszKey : "");
        return nDefault;
    }
    return std::atoi(pszValue);
}

int64_t CPindIni::GetInt64(const KeyTable* pTable, const char* pszKey, int64_t nDefault) const {
    const char* pszValue = TableGetString(pTable, pszKey);
    if (pszValue == nullptr) {
        ReportKey(TableAsName(pTable), pszKey != nullptr ? pszKey : "");
        return nDefault;
    }
    return pind::platform::Atoi64(pszValue);
}

const char* CPindIni::GetString(const KeyTable* pTable, const char* pszKey,
                                const char* pszDefault) const {
    const char* pszValue = TableGetString(pTable, pszKey);
    if (pszValue == nullptr) {
        ReportKey(TableAsName(pTable), pszKey != nullptr ? pszKey : "");
        return pszDefault;
    }
    return pszValue;
}

bool CPindIni::FirstSection() {
    m_nCursor = 0;
    return !m_vecSections.empty();
}

bool CPindIni::NextSection() {
    ++m_nCursor;
    return m_nCursor < m_vecSections.size();
}

const char* CPindIni::GetCurrentSectionName() const {
    return m_nCursor < m_vecSections.size() ? m_vecSections[m_nCursor]->strName.c_str() : nullptr;
}

CPindIni::SectionRecord* CPindIni::GetCurrentSection() const {
    return m_nCursor < m_vecSections.size() ? m_vecSections[m_nCursor] : nullptr;
}

const char* CPindIni::GetCurrentValue(const char* pszKey) const {
    if (pszKey == nullptr) {
        pind::ReportIfNot("pszIndex", kSourceName, 71);
        return "";
    }
    const SectionRecord* pRecord = GetCurrentSection();
    if (pRecord == nullptr) {
        return "";
    }
    const char* pszValue = TableGetString(pRecord->pKeys, pszKey);
    if (pszValue == nullptr) {
        ReportKey(pRecord->strName.c_str(), pszKey);
        return "";
    }
    return pszValue;
}

bool CPindIni::OpenForWrite(const char* pszIniFile, bool bUseExtendedOpen) {
    PackFClose(m_pWriteFile);
    m_pWriteFile = nullptr;
    if (pszIniFile == nullptr) {
        return false;
    }
    m_pWriteFile = OpenThroughClient(pszIniFile, "wb", false, bUseExtendedOpen);
    return m_pWriteFile != nullptr;
}

bool CPindIni::IsWriteFileEmpty() {
    if (m_pWriteFile == nullptr) {
        return true;
    }
    const int64_t nPos = PackFTell64(m_pWriteFile);
    PackFSeek(m_pWriteFile, 0, SEEK_END);
    const int64_t nLen = PackFTell64(m_pWriteFile);
    PackFSeek64(m_pWriteFile, nPos, SEEK_SET);
    return nLen == 0;
}

void CPindIni::Write(const std::string& strText) {
    if (m_pWriteFile != nullptr && m_pWriteFile->IsDiskMode()) {
        PackFWrite(strText.data(), 1, strText.size(), m_pWriteFile);
    }
}

void CPindIni::WriteSection(const char* pszName) {
    Write("[" + std::string(pszName != nullptr ? pszName : "") + "]\n");
}

void CPindIni::WriteSection(int nNumber) { Write("[" + std::to_string(nNumber) + "]\n"); }

void CPindIni::WriteKey(const char* pszKey, const char* pszValue) {
    Write(std::string(pszKey != nullptr ? pszKey : "") + "=" +
          (pszValue != nullptr ? pszValue : "") + "\n");
}

void CPindIni::WriteKey(const char* pszKey, int nValue, bool bWriteZero) {
    if (nValue != 0 || bWriteZero) {
        Write(std::string(pszKey != nullptr ? pszKey : "") + "=" + std::to_string(nValue) + "\n");
    }
}

void CPindIni::WriteNewLine() { Write("\n"); }

bool CPindIni::SetValue(const char* pszIniFile, const char* pszSection, const char* pszKey,
                        const char* pszValue) {
    return SetValue(pszIniFile, pszSection, pszKey, pszValue, true);
}

bool CPindIni::SetValue(const char* pszIniFile, const char* pszSection, const char* pszKey,
                        const char* pszValue, bool bUseExtendedOpen) {
    if (!Load(pszIniFile, nullptr, bUseExtendedOpen)) {
        if (OpenForWrite(pszIniFile, bUseExtendedOpen)) {
            WriteSection(pszSection);
            WriteKey(pszKey, pszValue);
            PackFFlush(m_pWriteFile);
        }
        return true;
    }
    if (pszSection == nullptr || pszKey == nullptr) {
        pind::ReportIfNot("pszSection && pszKey", kSourceName, 898);
        return false;
    }
    if (*pszKey == '\0') {
        return false;
    }
    const auto it = m_mapSections.find(std::string_view(pszSection));
    if (it == m_mapSections.end()) {
        auto* pKeys = new KeyTable();
        pKeys->emplace(pszKey, pszValue != nullptr ? pszValue : "");
        AdoptSection(pszSection, pKeys);
    } else {
        if (it->second == nullptr) {
            // The last record of the name is the one the index stands for; it owns the new table.
            it->second = new KeyTable();
            for (auto rit = m_vecSections.rbegin(); rit != m_vecSections.rend(); ++rit) {
                if ((*rit)->strName == pszSection) {
                    (*rit)->pKeys = it->second;
                    break;
                }
            }
        }
        auto itKey = it->second->find(std::string_view(pszKey));
        if (itKey == it->second->end()) {
            it->second->emplace(pszKey, pszValue != nullptr ? pszValue : "");
        } else if (pszValue != nullptr) {
            itKey->second = pszValue;
        }
    }
    if (OpenForWrite(pszIniFile, bUseExtendedOpen)) {
        for (const auto& [strName, pKeys] : m_mapSections) {
            WriteSection(strName.c_str());
            if (pKeys != nullptr) {
                for (const auto& [strKey, strValue] : *pKeys) {
                    WriteKey(strKey.c_str(), strValue.c_str());
                }
            }
        }
        PackFFlush(m_pWriteFile);
    }
    return true;
}

void CPindIni::Scramble(char* pBuffer, int nLength, const char* pszKey) {
    if (pBuffer == nullptr || pszKey == nullptr) {
        return;
    }
    const size_t nKeyLen = std::strlen(pszKey);
    if (nKeyLen == 0) {
        return;
    }
    for (int i = 0; i < nLength; ++i) {
        pBuffer[i] = static_cast<char>(pBuffer[i] ^ pszKey[static_cast<size_t>(i) % nKeyLen]);
    }
}

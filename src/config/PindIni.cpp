#include "pind/config/PindIni.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
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

// The line numbers the client's reports give for each check; logs are matched against them.
enum ReportLine : int {
    kLineNoLookupLine = 0,  // GetDouble: a null argument is a silent miss
    kLineCurrentValue = 71,
    kLineLoadName = 278,
    kLineKeyedShortRead = 302,
    kLineScrambledName = 414,
    kLineScrambledShortRead = 462,
    kLineGetInt = 555,
    kLineGetUInt = 582,
    kLineGetInt64 = 641,
    kLineGetString = 668,
    kLineCreateName = 726,
    kLineCreateAlloc = 730,
    kLineSetValue = 898,
};

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
    return bExtended ? pClient->OpenFileEx(pszName, pszMode, bFlag, /*extended=*/true)
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

// Open addressing over every (section, key) pair of the section index, each slot pointing at the
// text of the value string inside the maps (stable while the maps are unchanged); the pair's names
// are kept beside it, so a look-up reads one slot and one short run of bytes.
struct CPindIni::LookupIndex {
    struct Slot {
        uint32_t nHash;
        uint32_t nNames;       // offset of "section\0key\0" in `names`
        const char* pszValue;  // the value's text, read without touching its map node
    };
    std::vector<Slot> slots;
    size_t nMask = 0;
    std::string names;

    static uint64_t Hash(const char* p, size_t n, uint64_t h) {
        for (; n >= 8; p += 8, n -= 8) {
            uint64_t w;
            std::memcpy(&w, p, 8);
            h = (h ^ w) * 0x9E3779B97F4A7C15ull;
            h ^= h >> 29;
        }
        uint64_t w = 0;
        std::memcpy(&w, p, n);
        h = (h ^ w ^ (uint64_t{n} << 59)) * 0x9E3779B97F4A7C15ull;
        return h ^ (h >> 32);
    }
    static uint64_t PairHash(const char* pSection, size_t nSection, const char* pKey, size_t nKey) {
        return Hash(pKey, nKey, Hash(pSection, nSection, 0x243F6A8885A308D3ull));
    }

    explicit LookupIndex(const SectionIndex& sections) {
        size_t nPairs = 0;
        for (const auto& entry : sections) {
            nPairs += entry.second != nullptr ? entry.second->size() : 0;
        }
        size_t nSlots = 16;
        while (nSlots < nPairs * 2) {
            nSlots *= 2;
        }
        slots.assign(nSlots, Slot{0, 0, nullptr});
        nMask = nSlots - 1;
        for (const auto& [strSection, pKeys] : sections) {
            if (pKeys == nullptr) {
                continue;
            }
            for (const auto& [strKey, strValue] : *pKeys) {
                const uint64_t h =
                    PairHash(strSection.data(), strSection.size(), strKey.data(), strKey.size());
                size_t i = h & nMask;
                while (slots[i].pszValue != nullptr) {
                    i = (i + 1) & nMask;
                }
                slots[i] = Slot{static_cast<uint32_t>(h >> 32), static_cast<uint32_t>(names.size()),
                                strValue.c_str()};
                names.append(strSection.c_str(), strSection.size() + 1);
                names.append(strKey.c_str(), strKey.size() + 1);
            }
        }
    }

    // The value's text, or null when the pair is not in the index.
    const char* Find(const char* pszSection, const char* pszKey) const {
        const size_t nSection = std::strlen(pszSection);
        const size_t nKey = std::strlen(pszKey);
        const uint64_t h = PairHash(pszSection, nSection, pszKey, nKey);
        for (size_t i = h & nMask; slots[i].pszValue != nullptr; i = (i + 1) & nMask) {
            const Slot& slot = slots[i];
            if (slot.nHash == static_cast<uint32_t>(h >> 32)) {
                const char* pNames = names.data() + slot.nNames;
                if (std::memcmp(pNames, pszSection, nSection + 1) == 0 &&
                    std::memcmp(pNames + nSection + 1, pszKey, nKey + 1) == 0) {
                    return slot.pszValue;
                }
            }
        }
        return nullptr;
    }
};

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

    // `pLine` holds the `n` bytes of one line's text (none of them zero).
    void Line(const char* pLine, size_t n) {
        if (n < 3 || pLine[0] == ';' || (pLine[0] == '/' && pLine[1] == '/')) {
            return;
        }
        if (pLine[n - 1] == '\n') {
            --n;
        }
        if (pLine[0] == '[') {
            for (size_t i = n - 1; i >= 1; --i) {
                if (pLine[i] == ']') {
                    Commit();
                    strSection.assign(pLine + 1, i - 1);
                    if (bTableOnHeader) {
                        pKeys = std::make_unique<KeyTable>();
                    }
                    return;
                }
            }
        }
        if (strSection.empty() || n < 3 || !IsKeyLineStart(pLine[0])) {
            return;
        }
        const char* const pEnd = pLine + n;
        const char* pEq = static_cast<const char*>(std::memchr(pLine, '=', n));
        if (pEq == nullptr) {
            return;
        }
        const char* pKeyEnd = pEq;
        while (pKeyEnd > pLine && pKeyEnd[-1] == '\t') {
            --pKeyEnd;
        }
        const char* pValue = pEq + 1;
        while (pValue < pEnd && *pValue == '\t') {
            ++pValue;
        }
        const char* pValueEnd = pValue;
        while (pValueEnd < pEnd && *pValueEnd != '\t' && *pValueEnd != '\n' && *pValueEnd != '\r') {
            ++pValueEnd;
        }
        if (!pKeys) {
            pKeys = std::make_unique<KeyTable>();
        }
        const std::string_view key(pLine, static_cast<size_t>(pKeyEnd - pLine));
        // Files mostly list keys in order: appending then needs no search.
        auto it = pKeys->end();
        if (!pKeys->empty() && std::prev(it)->first < key) {
            it = pKeys->emplace_hint(it, key, std::string());
        } else {
            it = pKeys->lower_bound(key);
            if (it == pKeys->end() || it->first != key) {
                it = pKeys->emplace_hint(it, key, std::string());
            }
        }
        it->second.assign(pValue, pValueEnd);
    }

    // The plain form straight from a file held in memory, line by line as PackFGets would give
    // it with a 2048-byte buffer, up to the first 0x00 or 0xFF byte; the rest is left to PackFGets.
    void PlainLines(CPackFile* pFile) {
        const char* const pData = reinterpret_cast<const char*>(pFile->GetData());
        const uint32_t uPlain = pFile->GetPlainSize();
        uint32_t uPos = pFile->GetPos();
        while (uPos < uPlain) {
            const size_t nWindow = std::min<size_t>(uPlain - uPos, kPlainLineCapacity - 1);
            const char* const pLine = pData + uPos;
            const void* pNewline = std::memchr(pLine, '\n', nWindow);
            size_t nLen = pNewline != nullptr
                              ? static_cast<size_t>(static_cast<const char*>(pNewline) - pLine) + 1
                              : nWindow;
            if (pNewline == nullptr && nWindow < kPlainLineCapacity - 1) {
                break;  // the line runs into the special byte or the end: PackFGets decides
            }
            uPos += static_cast<uint32_t>(nLen);
            // PackFGets cuts a "\r\n" ending (or a window ending in '\r' and one byte).
            if (nLen >= 3 && pLine[nLen - 2] == '\r') {
                nLen -= 2;
            }
            Line(pLine, nLen);
        }
        pFile->SetPos(uPos);
    }
};

CPindIni::CPindIni() = default;

CPindIni::CPindIni(bool bReportMissing) : m_bReportMissing(bReportMissing) {}

CPindIni::CPindIni(const char* pszIniFile, bool bReportMissing) : m_bReportMissing(bReportMissing) {
    Load(pszIniFile, /*pszKey=*/nullptr, /*bUseExtendedOpen=*/false);
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
        pind::ReportIfNot("pszIniFile", kSourceName, kLineCreateName);
        return nullptr;
    }
    auto* pMyIni = new (std::nothrow) CPindIni(bReportMissing);
    if (pMyIni == nullptr) {
        pind::ReportIfNot("pMyIni", kSourceName, kLineCreateAlloc);
        return nullptr;
    }
    if (!pMyIni->Load(pszIniFile, pszKey, /*bUseExtendedOpen=*/false)) {
        delete pMyIni;
        return nullptr;
    }
    return pMyIni;
}

bool CPindIni::Load(const char* pszIniFile, const char* pszKey, bool bUseExtendedOpen) {
    if (pszIniFile == nullptr) {
        if (m_pWriteFile == nullptr) {
            pind::ReportIfNot("pszIniFile", kSourceName, kLineLoadName);
            return false;
        }
        Clear();
        return LoadFrom(m_pWriteFile, pszKey);
    }
    m_strFileName = pszIniFile;
    CPackFile* pFile = OpenThroughClient(pszIniFile, pszKey != nullptr ? "rb" : "r", /*bFlag=*/true,
                                         bUseExtendedOpen);
    Clear();
    if (pFile == nullptr) {
        return false;
    }
    const bool bLoaded = LoadFrom(pFile, pszKey);
    PackFClose(pFile);
    return bLoaded;
}

bool CPindIni::LoadEx(const char* pszIniFile, const char* pszKey, bool) {
    return Load(pszIniFile, pszKey, /*bUseExtendedOpen=*/true);
}

bool CPindIni::LoadFrom(CPackFile* pFile, const char* pszKey) {
    PackFSeek(pFile, 0, SEEK_SET);
    Parser parser{*this, /*bTableOnHeader=*/false, std::string(), nullptr};
    // One spare byte past the buffer stays zero, so a full buffer still ends in a terminator.
    char szLine[kPlainLineCapacity + 1];
    szLine[kPlainLineCapacity] = '\0';
    if (pszKey == nullptr) {
        if (!pFile->IsDiskMode()) {
            parser.PlainLines(pFile);
        }
        while (PackFGets(szLine, static_cast<int>(kPlainLineCapacity), pFile) != nullptr) {
            parser.Line(szLine, std::strlen(szLine));
        }
    } else {
        const size_t nKeyLen = std::strlen(pszKey);
        while (ReadRecord(pFile, szLine, kPlainLineCapacity, pszKey, nKeyLen, kKeyedShortRead,
                          kLineKeyedShortRead)) {
            parser.Line(szLine, std::strlen(szLine));
        }
    }
    parser.Commit();
    return true;
}

bool CPindIni::LoadScrambled(const char* pszIniFile) {
    if (pszIniFile == nullptr) {
        pind::ReportIfNot("pszIniFile", kSourceName, kLineScrambledName);
        return false;
    }
    Clear();
    m_strFileName = pszIniFile;
    CPackFile* pFile = GetClient()->OpenFile(pszIniFile, "rb", /*flag=*/true);
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

    Parser parser{*this, /*bTableOnHeader=*/true, std::string(), nullptr};
    char szLine[kScrambledLineCapacity + 1];
    while (ReadRecord(pFile, szLine, kScrambledLineCapacity, strKey.c_str(), nEffective,
                      kScrambledShortRead, kLineScrambledShortRead)) {
        parser.Line(szLine, std::strlen(szLine));
    }
    parser.Commit();
    PackFClose(pFile);
    return true;
}

void CPindIni::DropIndex() {
    delete m_pIndex.exchange(nullptr);
    m_nLookups.store(0, std::memory_order_relaxed);
    m_bTablesOut.store(false, std::memory_order_relaxed);
}

const char* CPindIni::IndexedLookup(const char* pszSection, const char* pszKey) const {
    // Small readers answer from the maps in cache; a large one pays for the index once it has been
    // asked often enough that the index will pay back.
    constexpr size_t kIndexMinSections = 16;
    constexpr uint32_t kIndexAfterLookups = 256;
    if (m_bTablesOut.load(std::memory_order_relaxed)) {
        return nullptr;
    }
    const LookupIndex* pIndex = m_pIndex.load(std::memory_order_acquire);
    if (pIndex == nullptr) {
        // Exactly one caller sees the count reach the mark and builds; the others use the maps.
        if (m_mapSections.size() < kIndexMinSections ||
            m_nLookups.fetch_add(1, std::memory_order_relaxed) + 1 != kIndexAfterLookups) {
            return nullptr;
        }
        pIndex = new LookupIndex(m_mapSections);
        m_pIndex.store(pIndex, std::memory_order_release);
    }
    return pIndex->Find(pszSection, pszKey);
}

void CPindIni::AdoptSection(const std::string& strName, KeyTable* pKeys) {
    DropIndex();
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
    DropIndex();
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

const char* CPindIni::Lookup(const char* pszSection, const char* pszKey, int nLine) const {
    if (pszSection == nullptr || pszKey == nullptr) {
        if (nLine > 0) {
            pind::ReportIfNot("pszSection && pszIndex", kSourceName, nLine);
        }
        return nullptr;
    }
    if (const char* pszValue = IndexedLookup(pszSection, pszKey)) {
        return pszValue;
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
    return itKey->second.c_str();
}

const char* CPindIni::GetString(const char* pszSection, const char* pszKey,
                                const char* pszDefault) const {
    const char* pszValue = Lookup(pszSection, pszKey, kLineGetString);
    return pszValue != nullptr ? pszValue : pszDefault;
}

int CPindIni::GetInt(const char* pszSection, const char* pszKey, int nDefault) const {
    const char* pszValue = Lookup(pszSection, pszKey, kLineGetInt);
    return pszValue != nullptr ? std::atoi(pszValue) : nDefault;
}

unsigned CPindIni::GetUInt(const char* pszSection, const char* pszKey, unsigned uDefault) const {
    const char* pszValue = Lookup(pszSection, pszKey, kLineGetUInt);
    return pszValue != nullptr ? static_cast<unsigned>(std::strtoul(pszValue, nullptr, 10))
                               : uDefault;
}

int64_t CPindIni::GetInt64(const char* pszSection, const char* pszKey, int64_t nDefault) const {
    const char* pszValue = Lookup(pszSection, pszKey, kLineGetInt64);
    return pszValue != nullptr ? pind::platform::Atoi64(pszValue) : nDefault;
}

double CPindIni::GetDouble(const char* pszSection, const char* pszKey, double dDefault) const {
    // No precondition line of its own: a null argument is a silent miss.
    const char* pszValue = Lookup(pszSection, pszKey, kLineNoLookupLine);
    return pszValue != nullptr ? std::atof(pszValue) : dDefault;
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
    m_bTablesOut.store(true, std::memory_order_relaxed);
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
    if (m_nCursor >= m_vecSections.size()) {
        return nullptr;
    }
    m_bTablesOut.store(true, std::memory_order_relaxed);
    return m_vecSections[m_nCursor];
}

const CPindIni::SectionList& CPindIni::GetSections() const {
    m_bTablesOut.store(true, std::memory_order_relaxed);
    return m_vecSections;
}

const char* CPindIni::GetCurrentValue(const char* pszKey) const {
    if (pszKey == nullptr) {
        pind::ReportIfNot("pszIndex", kSourceName, kLineCurrentValue);
        return "";
    }
    if (m_nCursor >= m_vecSections.size()) {
        return "";
    }
    const SectionRecord* pRecord = m_vecSections[m_nCursor];
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
    m_pWriteFile = OpenThroughClient(pszIniFile, "wb", /*bFlag=*/false, bUseExtendedOpen);
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
    return SetValue(pszIniFile, pszSection, pszKey, pszValue, /*bUseExtendedOpen=*/true);
}

bool CPindIni::SetValue(const char* pszIniFile, const char* pszSection, const char* pszKey,
                        const char* pszValue, bool bUseExtendedOpen) {
    if (!Load(pszIniFile, /*pszKey=*/nullptr, bUseExtendedOpen)) {
        if (OpenForWrite(pszIniFile, bUseExtendedOpen)) {
            WriteSection(pszSection);
            WriteKey(pszKey, pszValue);
            PackFFlush(m_pWriteFile);
        }
        return true;
    }
    if (pszSection == nullptr || pszKey == nullptr) {
        pind::ReportIfNot("pszSection && pszKey", kSourceName, kLineSetValue);
        return false;
    }
    if (*pszKey == '\0') {
        return false;
    }
    DropIndex();
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

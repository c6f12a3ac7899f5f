#include "pind/config/PindIni.h"

#include <algorithm>
#include <cstdio>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <iterator>
#include <memory>
#include <new>
#include <string_view>

#include "pind/client/PindClient.h"
#include "pind/diag/Report.h"
#include "pind/files/PackFile.h"
#include "pind/platform/CriticalSection.h"
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

uint64_t HashBytes(const char* p, size_t n, uint64_t h) {
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

// Names and keys are mostly short: up to 8 bytes hash from two overlapping loads.
uint32_t NameHash(const char* p, size_t n) {
    if (n > 8) {
        return static_cast<uint32_t>(HashBytes(p, n, 0x243F6A8885A308D3ull));
    }
    uint64_t w = n;
    if (n >= 4) {
        uint32_t lo;
        uint32_t hi;
        std::memcpy(&lo, p, 4);
        std::memcpy(&hi, p + n - 4, 4);
        w |= (uint64_t{lo} << 32 | hi) << 3;
    } else if (n > 0) {
        w |= (uint64_t{static_cast<uint8_t>(p[0])} << 8 |
              uint64_t{static_cast<uint8_t>(p[n / 2])} << 16 |
              uint64_t{static_cast<uint8_t>(p[n - 1])} << 24);
    }
    w *= 0x9E3779B97F4A7C15ull;
    return static_cast<uint32_t>(w >> 32);
}

// The first tab, LF or CR in [p, pEnd), else pEnd; eight bytes at a time while none is below 14.
char* FindValueEnd(char* p, const char* pEnd) {
    constexpr uint64_t kOnes = 0x0101010101010101ull;
    while (pEnd - p >= 8) {
        uint64_t w;
        std::memcpy(&w, p, 8);
        if (((w - kOnes * 14) & ~w & kOnes * 0x80) != 0) {
            break;
        }
        p += 8;
    }
    while (p < pEnd && *p != '\t' && *p != '\n' && *p != '\r') {
        ++p;
    }
    return p;
}

// Bytes that live as long as the reader's contents: handed out in blocks that never move, so a
// value's text can be given to callers as a pointer.
class TextArena {
public:
    char* Alloc(size_t n) {
        if (n > m_nLeft) {
            m_nNextBlock = std::min<size_t>(m_nNextBlock * 2, size_t{1} << 20);
            NewBlock(std::max(n, m_nNextBlock));
        }
        char* p = m_pFree;
        m_pFree += n;
        m_nLeft -= n;
        return p;
    }
    // A block of its own, so the free space of the current one is kept.
    char* AllocBlock(size_t n) {
        void* p = std::malloc(n);
        if (p == nullptr) {
            throw std::bad_alloc();
        }
        m_blocks.emplace_back(static_cast<char*>(p));
        return m_blocks.back().get();
    }
    // Takes over a buffer whole; its bytes stay where they are.
    void Keep(std::vector<uint8_t>&& bytes) { m_kept.push_back(std::move(bytes)); }
    // The two runs one after the other, and a zero.
    char* Copy(const char* p, size_t n, const char* p2 = nullptr, size_t n2 = 0) {
        char* pCopy = Alloc(n + n2 + 1);
        std::memcpy(pCopy, p, n);
        if (n2 > 0) {
            std::memcpy(pCopy + n, p2, n2);
        }
        pCopy[n + n2] = '\0';
        return pCopy;
    }

private:
    void NewBlock(size_t n) {
        m_pFree = AllocBlock(n);
        m_nLeft = n;
    }

    struct Free {
        void operator()(char* p) const { std::free(p); }
    };
    std::vector<std::unique_ptr<char, Free>> m_blocks;
    std::vector<std::vector<uint8_t>> m_kept;
    char* m_pFree = nullptr;
    size_t m_nLeft = 0;
    size_t m_nNextBlock = 8192;
};

}  // namespace

// What a load read, flat: sections in file order, each a run of key entries in file order
// (duplicates kept; the last one counts), with the text in an arena. Freeing a reader is freeing
// a few blocks; the ordered key tables of the interface are made per section on demand.
struct CPindIni::Store {
    struct Section {
        const char* pName;
        uint32_t nNameLen;
        uint32_t nNameHash;
        uint32_t nFirst;  // entries [nFirst, nEnd)
        uint32_t nEnd;
        bool bTable;  // a plain load gives a section no table until its first key line
    };
    // Lines are at most 2048 bytes, so a key's length and its value's offset fit 16 bits.
    struct Entry {
        const char* pKey;  // the value's text starts `nValueAt` bytes on
        uint16_t nKeyLen;
        uint16_t nValueAt;
        uint32_t nHash;
        const char* Value() const { return pKey + nValueAt; }
    };

    TextArena text;
    std::vector<Section> sections;
    std::vector<Entry> entries;
    // Open addressing by name: 1 + the index of the last section of each name; 0 is free.
    std::vector<uint32_t> nameSlots = std::vector<uint32_t>(16, 0);
    size_t nNames = 0;
    // A section's table once made; written inside `cs`, read without it.
    std::deque<std::atomic<KeyTable*>> tables;
    pind::platform::CriticalSection cs;

    void AddEntry(const char* pKey, size_t nKeyLen, size_t nValueAt) {
        entries.push_back(Entry{pKey, static_cast<uint16_t>(nKeyLen),
                                static_cast<uint16_t>(nValueAt), NameHash(pKey, nKeyLen)});
    }

    // The last section of that name, or -1.
    ptrdiff_t Find(const char* pName, size_t nLen) const {
        const uint32_t nHash = NameHash(pName, nLen);
        const size_t nMask = nameSlots.size() - 1;
        for (size_t i = nHash & nMask; nameSlots[i] != 0; i = (i + 1) & nMask) {
            const Section& section = sections[nameSlots[i] - 1];
            if (section.nNameHash == nHash && section.nNameLen == nLen &&
                std::memcmp(section.pName, pName, nLen) == 0) {
                return static_cast<ptrdiff_t>(nameSlots[i] - 1);
            }
        }
        return -1;
    }

    void Add(const Section& section, KeyTable* pKeys) {
        sections.push_back(section);
        tables.emplace_back(pKeys);
        if ((nNames + 1) * 2 > nameSlots.size()) {
            std::vector<uint32_t> old(nameSlots.size() * 2, 0);
            old.swap(nameSlots);
            nNames = 0;
            for (uint32_t nSlot : old) {
                if (nSlot != 0) {
                    Index(nSlot - 1);
                }
            }
        }
        Index(static_cast<uint32_t>(sections.size() - 1));
    }

    // Points the name's slot at section `nSection`, a later section replacing an earlier one.
    void Index(uint32_t nSection) {
        const Section& section = sections[nSection];
        const size_t nMask = nameSlots.size() - 1;
        size_t i = section.nNameHash & nMask;
        for (; nameSlots[i] != 0; i = (i + 1) & nMask) {
            const Section& other = sections[nameSlots[i] - 1];
            if (other.nNameHash == section.nNameHash && other.nNameLen == section.nNameLen &&
                std::memcmp(other.pName, section.pName, section.nNameLen) == 0) {
                break;
            }
        }
        nNames += nameSlots[i] == 0 ? 1 : 0;
        nameSlots[i] = nSection + 1;
    }

    // The value of the last entry with that key in the section, or null.
    const char* FindKey(const Section& section, const char* pszKey) const {
        const size_t nLen = std::strlen(pszKey);
        const uint32_t nHash = NameHash(pszKey, nLen);
        for (uint32_t i = section.nEnd; i > section.nFirst;) {
            --i;
            const Entry& entry = entries[i];
            if (entry.nHash == nHash && entry.nKeyLen == nLen &&
                std::memcmp(entry.pKey, pszKey, nLen) == 0) {
                return entry.Value();
            }
        }
        return nullptr;
    }
};

// Open addressing over every (section, key) pair a look-up can reach, each slot pointing at the
// value's text in the store; the pair's names are kept beside it, so a look-up reads one slot and
// one short run of bytes.
struct CPindIni::LookupIndex {
    struct Slot {
        uint32_t nHash;
        uint32_t nNames;       // offset of "section\0key\0" in `names`
        const char* pszValue;  // the value's text
    };
    std::vector<Slot> slots;
    size_t nMask = 0;
    std::string names;

    static uint64_t PairHash(const char* pSection, size_t nSection, const char* pKey, size_t nKey) {
        return HashBytes(pKey, nKey, HashBytes(pSection, nSection, 0x243F6A8885A308D3ull));
    }

    explicit LookupIndex(const Store& store) {
        size_t nSlots = 16;
        while (nSlots < store.entries.size() * 2) {
            nSlots *= 2;
        }
        slots.assign(nSlots, Slot{0, 0, nullptr});
        nMask = nSlots - 1;
        for (uint32_t nSlot : store.nameSlots) {
            if (nSlot == 0) {
                continue;
            }
            const Store::Section& section = store.sections[nSlot - 1];
            // From the last entry back, so a duplicate key keeps its last value.
            for (uint32_t e = section.nEnd; e > section.nFirst;) {
                const Store::Entry& entry = store.entries[--e];
                if (Find(section.pName, section.nNameLen, entry.pKey, entry.nKeyLen) != nullptr) {
                    continue;
                }
                const uint64_t h =
                    PairHash(section.pName, section.nNameLen, entry.pKey, entry.nKeyLen);
                size_t i = h & nMask;
                while (slots[i].pszValue != nullptr) {
                    i = (i + 1) & nMask;
                }
                slots[i] = Slot{static_cast<uint32_t>(h >> 32), static_cast<uint32_t>(names.size()),
                                entry.Value()};
                names.append(section.pName, section.nNameLen).push_back('\0');
                names.append(entry.pKey, entry.nKeyLen).push_back('\0');
            }
        }
    }

    // The value's text, or null when the pair is not in the index.
    const char* Find(const char* pSection, size_t nSection, const char* pKey, size_t nKey) const {
        const uint64_t h = PairHash(pSection, nSection, pKey, nKey);
        for (size_t i = h & nMask; slots[i].pszValue != nullptr; i = (i + 1) & nMask) {
            const Slot& slot = slots[i];
            if (slot.nHash == static_cast<uint32_t>(h >> 32)) {
                const char* pNames = names.data() + slot.nNames;
                if (std::memcmp(pNames, pSection, nSection) == 0 && pNames[nSection] == '\0' &&
                    std::memcmp(pNames + nSection + 1, pKey, nKey) == 0 &&
                    pNames[nSection + 1 + nKey] == '\0') {
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
    Store& store;
    Store::Section section{nullptr, 0, 0, 0, 0, false};
    bool bKeepBuffer = false;

    void Commit() {
        if (section.nNameLen > 0) {
            section.nEnd = static_cast<uint32_t>(store.entries.size());
            store.Add(section, nullptr);
            ini.AdoptSection(nullptr);
        }
        section = Store::Section{nullptr, 0, 0, 0, 0, false};
    }

    // `pLine` holds the `n` bytes of one line's text (none of them zero). `bOwnLine`: the line
    // lies in the store's text and ends in its own '\n', so a value can be ended in place.
    void Line(char* pLine, size_t n, bool bOwnLine) {
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
                    const size_t nName = i - 1;
                    section.pName = bOwnLine ? pLine + 1 : store.text.Copy(pLine + 1, nName);
                    section.nNameLen = static_cast<uint32_t>(nName);
                    section.nNameHash = NameHash(section.pName, nName);
                    section.nFirst = static_cast<uint32_t>(store.entries.size());
                    section.bTable = bTableOnHeader;
                    return;
                }
            }
        }
        if (section.nNameLen == 0 || n < 3 || !IsKeyLineStart(pLine[0])) {
            return;
        }
        char* const pEnd = pLine + n;
        char* pEq = static_cast<char*>(std::memchr(pLine, '=', n));
        if (pEq == nullptr) {
            return;
        }
        char* pKeyEnd = pEq;
        while (pKeyEnd > pLine && pKeyEnd[-1] == '\t') {
            --pKeyEnd;
        }
        char* pValue = pEq + 1;
        while (pValue < pEnd && *pValue == '\t') {
            ++pValue;
        }
        char* const pValueEnd = FindValueEnd(pValue, pEnd);
        section.bTable = true;
        const size_t nKey = static_cast<size_t>(pKeyEnd - pLine);
        const size_t nValue = static_cast<size_t>(pValueEnd - pValue);
        if (bOwnLine) {
            *pValueEnd = '\0';  // the value's end is a tab, CR or the line's '\n'
            store.AddEntry(pLine, nKey, static_cast<size_t>(pValue - pLine));
        } else {
            store.AddEntry(store.text.Copy(pLine, nKey, pValue, nValue), nKey, nKey);
        }
    }

    // The plain form straight from a file held in memory, line by line as PackFGets would give
    // it with a 2048-byte buffer, up to the first 0x00 or 0xFF byte; the rest is left to PackFGets.
    // The lines are parsed in the file's own buffer, which the store keeps (see KeepBuffer), with
    // the values ended in place.
    void PlainLines(CPackFile* pFile) {
        const uint32_t uPlain = pFile->m_uFirstSpecial;
        const uint32_t uPos = pFile->m_uPos;
        if (uPos >= uPlain) {
            return;
        }
        const size_t nText = uPlain - uPos;
        char* const pText = reinterpret_cast<char*>(pFile->m_pData) + uPos;
        // Room for a key line in every 32 bytes, a typical file's share: most loads then never
        // copy the entries as they grow.
        store.entries.reserve(store.entries.size() + nText / 32);
        size_t nAt = 0;
        while (nAt < nText) {
            const size_t nWindow = std::min<size_t>(nText - nAt, kPlainLineCapacity - 1);
            char* const pLine = pText + nAt;
            const void* pNewline = std::memchr(pLine, '\n', nWindow);
            size_t nLen = pNewline != nullptr
                              ? static_cast<size_t>(static_cast<const char*>(pNewline) - pLine) + 1
                              : nWindow;
            if (pNewline == nullptr && nWindow < kPlainLineCapacity - 1) {
                break;  // the line runs into the special byte or the end: PackFGets decides
            }
            nAt += nLen;
            // PackFGets cuts a "\r\n" ending (or a window ending in '\r' and one byte).
            if (nLen >= 3 && pLine[nLen - 2] == '\r') {
                nLen -= 2;
            }
            Line(pLine, nLen, /*bOwnLine=*/pNewline != nullptr);
        }
        pFile->m_uPos = uPos + static_cast<uint32_t>(nAt);
        bKeepBuffer = nAt > 0;
    }

    // Once the file is read, the store takes over its buffer when values point into it.
    void KeepBuffer(CPackFile* pFile) {
        if (bKeepBuffer) {
            store.text.Keep(std::move(pFile->m_vecData));
            pFile->m_vecData.clear();
            pFile->m_pData = nullptr;
            pFile->m_uSize = 0;
            pFile->m_uPos = 0;
            pFile->m_uFirstSpecial = 0;
        }
    }
};

CPindIni::CPindIni() : m_pStore(std::make_unique<Store>()) {}

CPindIni::CPindIni(bool bReportMissing)
    : m_bReportMissing(bReportMissing), m_pStore(std::make_unique<Store>()) {}

CPindIni::CPindIni(const char* pszIniFile, bool bReportMissing)
    : m_bReportMissing(bReportMissing), m_pStore(std::make_unique<Store>()) {
    Load(pszIniFile, /*pszKey=*/nullptr, /*bUseExtendedOpen=*/false);
    m_strFileName = pszIniFile != nullptr ? pszIniFile : "";
}

CPindIni::CPindIni(const CPindIni& other)
    : m_nCursor(other.m_nCursor),
      m_bReportMissing(other.m_bReportMissing),
      m_strFileName(other.m_strFileName),
      m_pStore(std::make_unique<Store>()) {
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
    DeleteRecords();
    delete m_pIndex.load();
    PackFClose(m_pWriteFile);
}

// Each record's text, entries and made table are copied; a table the caller changed is copied as
// it is now.
void CPindIni::CopyFrom(const CPindIni& other) {
    const Store& from = *other.m_pStore;
    Store& to = *m_pStore;
    m_vecSections.reserve(from.sections.size());
    to.sections.reserve(from.sections.size());
    to.entries.reserve(from.entries.size());
    for (size_t i = 0; i < from.sections.size(); ++i) {
        Store::Section section = from.sections[i];
        section.pName = to.text.Copy(section.pName, section.nNameLen);
        for (uint32_t e = section.nFirst; e < section.nEnd; ++e) {
            const Store::Entry& entry = from.entries[e];
            const char* pszValue = entry.Value();
            to.AddEntry(to.text.Copy(entry.pKey, entry.nKeyLen, pszValue, std::strlen(pszValue)),
                        entry.nKeyLen, entry.nKeyLen);
        }
        const KeyTable* pMade = other.m_vecSections[i]->pKeys;
        to.Add(section, pMade != nullptr ? new KeyTable(*pMade) : nullptr);
        AdoptSection(to.tables.back().load(std::memory_order_relaxed));
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
    Parser parser{*this, /*bTableOnHeader=*/false, *m_pStore};
    // One spare byte past the buffer stays zero, so a full buffer still ends in a terminator.
    char szLine[kPlainLineCapacity + 1];
    szLine[kPlainLineCapacity] = '\0';
    if (pszKey == nullptr) {
        if (!pFile->IsDiskMode()) {
            parser.PlainLines(pFile);
        }
        while (PackFGets(szLine, static_cast<int>(kPlainLineCapacity), pFile) != nullptr) {
            parser.Line(szLine, std::strlen(szLine), /*bOwnLine=*/false);
        }
        parser.KeepBuffer(pFile);
    } else {
        const size_t nKeyLen = std::strlen(pszKey);
        while (ReadRecord(pFile, szLine, kPlainLineCapacity, pszKey, nKeyLen, kKeyedShortRead,
                          kLineKeyedShortRead)) {
            parser.Line(szLine, std::strlen(szLine), /*bOwnLine=*/false);
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

    Parser parser{*this, /*bTableOnHeader=*/true, *m_pStore};
    char szLine[kScrambledLineCapacity + 1];
    while (ReadRecord(pFile, szLine, kScrambledLineCapacity, strKey.c_str(), nEffective,
                      kScrambledShortRead, kLineScrambledShortRead)) {
        parser.Line(szLine, std::strlen(szLine), /*bOwnLine=*/false);
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
    // Small readers answer from the store in cache; a large one pays for the index once it has
    // been asked often enough that the index will pay back.
    constexpr size_t kIndexMinSections = 16;
    constexpr uint32_t kIndexAfterLookups = 256;
    if (m_bTablesOut.load(std::memory_order_relaxed)) {
        return nullptr;
    }
    const LookupIndex* pIndex = m_pIndex.load(std::memory_order_acquire);
    if (pIndex == nullptr) {
        // Exactly one caller sees the count reach the mark and builds; the others use the store.
        if (m_pStore->nNames < kIndexMinSections ||
            m_nLookups.fetch_add(1, std::memory_order_relaxed) + 1 != kIndexAfterLookups) {
            return nullptr;
        }
        pIndex = new LookupIndex(*m_pStore);
        m_pIndex.store(pIndex, std::memory_order_release);
    }
    return pIndex->Find(pszSection, std::strlen(pszSection), pszKey, std::strlen(pszKey));
}

// The store's section just added gets its record; `pKeys` is its table when already made.
void CPindIni::AdoptSection(KeyTable* pKeys) {
    DropIndex();
    const Store::Section& section = m_pStore->sections.back();
    m_vecSections.push_back(
        new SectionRecord{std::string(section.pName, section.nNameLen), pKeys});
}

CPindIni::KeyTable* CPindIni::MakeTable(size_t nSection) const {
    Store& store = *m_pStore;
    std::atomic<KeyTable*>& made = store.tables[nSection];
    KeyTable* pKeys = made.load(std::memory_order_acquire);
    if (pKeys != nullptr || !store.sections[nSection].bTable) {
        return pKeys;
    }
    pind::platform::CriticalSectionGuard guard(store.cs);
    pKeys = made.load(std::memory_order_relaxed);
    if (pKeys == nullptr) {
        pKeys = new KeyTable();
        const Store::Section& section = store.sections[nSection];
        for (uint32_t e = section.nFirst; e < section.nEnd; ++e) {
            const Store::Entry& entry = store.entries[e];
            const std::string_view key(entry.pKey, entry.nKeyLen);
            // Files mostly list keys in order: appending then needs no search.
            if (pKeys->empty() || std::prev(pKeys->end())->first < key) {
                pKeys->emplace_hint(pKeys->end(), key, entry.Value());
            } else {
                (*pKeys)[std::string(key)] = entry.Value();
            }
        }
        m_vecSections[nSection]->pKeys = pKeys;
        made.store(pKeys, std::memory_order_release);
    }
    return pKeys;
}

void CPindIni::MakeAllTables() const {
    for (size_t i = 0; i < m_pStore->sections.size(); ++i) {
        MakeTable(i);
    }
}

void CPindIni::DeleteRecords() {
    for (SectionRecord* pRecord : m_vecSections) {
        delete pRecord->pKeys;
        delete pRecord;
    }
    m_vecSections.clear();
}

void CPindIni::Clear() {
    DeleteRecords();
    m_pStore = std::make_unique<Store>();
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
    const ptrdiff_t nSection = m_pStore->Find(pszSection, std::strlen(pszSection));
    if (nSection < 0 || !m_pStore->sections[static_cast<size_t>(nSection)].bTable) {
        ReportSection(pszSection);
        return nullptr;
    }
    const char* pszValue = FindKey(static_cast<size_t>(nSection), pszKey);
    if (pszValue == nullptr) {
        ReportKey(pszSection, pszKey);
    }
    return pszValue;
}

// From the section's table once made (the caller may have changed it), else from the store.
const char* CPindIni::FindKey(size_t nSection, const char* pszKey) const {
    if (const KeyTable* pKeys = m_pStore->tables[nSection].load(std::memory_order_acquire)) {
        return TableGetString(pKeys, pszKey);
    }
    return m_pStore->FindKey(m_pStore->sections[nSection], pszKey);
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
    const ptrdiff_t nSection = m_pStore->Find(pszSection, std::strlen(pszSection));
    KeyTable* pKeys = nSection >= 0 ? MakeTable(static_cast<size_t>(nSection)) : nullptr;
    if (pKeys == nullptr) {
        ReportSection(pszSection);
        return nullptr;
    }
    m_bTablesOut.store(true, std::memory_order_relaxed);
    return pKeys;
}

bool CPindIni::HasSection(const char* pszSection) const {
    return pszSection != nullptr && m_pStore->Find(pszSection, std::strlen(pszSection)) >= 0;
}

bool CPindIni::HasKey(const char* pszSection, const char* pszKey) const {
    if (pszSection == nullptr || pszKey == nullptr) {
        return false;
    }
    const ptrdiff_t nSection = m_pStore->Find(pszSection, std::strlen(pszSection));
    return nSection >= 0 && m_pStore->sections[static_cast<size_t>(nSection)].bTable &&
           FindKey(static_cast<size_t>(nSection), pszKey) != nullptr;
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
    MakeTable(m_nCursor);
    m_bTablesOut.store(true, std::memory_order_relaxed);
    return m_vecSections[m_nCursor];
}

const CPindIni::SectionList& CPindIni::GetSections() const {
    MakeAllTables();
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
    const char* pszValue =
        pRecord->pKeys != nullptr || m_pStore->tables[m_nCursor].load() != nullptr
            ? TableGetString(pRecord->pKeys, pszKey)
            : m_pStore->FindKey(m_pStore->sections[m_nCursor], pszKey);
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
    MakeAllTables();
    Store& store = *m_pStore;
    const size_t nName = std::strlen(pszSection);
    const ptrdiff_t nFound = store.Find(pszSection, nName);
    if (nFound < 0) {
        auto* pKeys = new KeyTable();
        pKeys->emplace(pszKey, pszValue != nullptr ? pszValue : "");
        const char* pName = store.text.Copy(pszSection, nName);
        const auto nAt = static_cast<uint32_t>(store.entries.size());
        store.Add(Store::Section{pName, static_cast<uint32_t>(nName), NameHash(pName, nName), nAt,
                                 nAt, /*bTable=*/true},
                  pKeys);
        AdoptSection(pKeys);
    } else {
        const auto nSection = static_cast<size_t>(nFound);
        KeyTable* pKeys = store.tables[nSection].load(std::memory_order_relaxed);
        if (pKeys == nullptr) {
            // The last record of the name is the one look-ups stand for; it owns the new table.
            pKeys = new KeyTable();
            store.sections[nSection].bTable = true;
            store.tables[nSection].store(pKeys, std::memory_order_relaxed);
            m_vecSections[nSection]->pKeys = pKeys;
        }
        auto itKey = pKeys->find(std::string_view(pszKey));
        if (itKey == pKeys->end()) {
            pKeys->emplace(pszKey, pszValue != nullptr ? pszValue : "");
        } else if (pszValue != nullptr) {
            itKey->second = pszValue;
        }
    }
    if (OpenForWrite(pszIniFile, bUseExtendedOpen)) {
        // One entry per name, its last section, in byte order.
        SectionIndex index;
        for (uint32_t nSlot : store.nameSlots) {
            if (nSlot != 0) {
                const Store::Section& section = store.sections[nSlot - 1];
                index.emplace(std::string(section.pName, section.nNameLen),
                              store.tables[nSlot - 1].load(std::memory_order_relaxed));
            }
        }
        for (const auto& [strName, pKeys] : index) {
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

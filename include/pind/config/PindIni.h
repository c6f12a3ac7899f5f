// Reads INI files through the host client: [section] headers over key=value lines, in plain text,
// as key-XOR-ed length-prefixed records, or in the self-keyed scrambled form CMyCrypto writes.
// Look-ups give the caller's default on a miss; the ordered key tables of the interface are made
// for a section the first time a caller asks for one. SetValue rewrites a file.
//   CPindIni ini("ini/GameSetup.ini", /*reportMissing=*/true);
//   int nRate = ini.GetInt("FrameRate", "ProfileInterval", 20);
#ifndef PIND_CONFIG_PINDINI_H_
#define PIND_CONFIG_PINDINI_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "pind/platform/Export.h"

class CPackFile;

/// One loaded file. Bounds this reader adds where the file is trusted (see Load and
/// LoadScrambled): record lengths are cut to the line buffer, and empty keys XOR nothing.
class PIND_API CPindIni {
public:
    /// Key -> value, byte-wise order.
    using KeyTable = std::map<std::string, std::string, std::less<>>;
    /// A section as read: its name and its key table (null when a plain load saw no key line).
    struct SectionRecord {
        std::string strName;  ///< the name between the brackets
        KeyTable* pKeys;      ///< the keys; null when a plain load saw no key line
    };
    /// Section name -> key table of the last section of that name; owns nothing. SetValue writes
    /// the sections in this order.
    using SectionIndex = std::map<std::string, KeyTable*, std::less<>>;
    /// Sections in file order; owns the records and their key tables.
    using SectionList = std::vector<SectionRecord*>;

    /// An empty reader that does not report misses.
    CPindIni();
    /// An empty reader; `bReportMissing` sends each look-up miss to the client's debug text.
    explicit CPindIni(bool bReportMissing);
    /// Loads `pszIniFile` (plain, the plain open slot) and keeps the name whatever the outcome.
    CPindIni(const char* pszIniFile, bool bReportMissing);
    ///@{
    /// Copies hold their own key tables, the same walk position and no write file.
    CPindIni(const CPindIni& other);
    CPindIni& operator=(const CPindIni& other);
    ///@}
    /// Frees the sections and closes the write file.
    virtual ~CPindIni();

    /// A new reader loaded with `pszKey` (null: plain text); null when the name is null or the load
    /// fails.
    static CPindIni* Create(const char* pszIniFile, bool bReportMissing, const char* pszKey);

    /// Reads the plain form (`pszKey` null) or the keyed record form; false when the name is null
    /// and no write file is open, or when the client gives no file (the reader is then empty).
    /// True for an empty file. A keyed record longer than the 2048-byte line buffer is consumed
    /// whole but only its first 2048 bytes are parsed; a negative length ends the file.
    bool Load(const char* pszIniFile, const char* pszKey = nullptr, bool bUseExtendedOpen = false);
    /// Load through the client's extended open slot.
    bool LoadEx(const char* pszIniFile, const char* pszKey, bool bUseExtendedOpen);
    /// Reads the self-keyed scrambled form; false (reader empty) for a null name, no file, a wrong
    /// marker, or a key length that is negative or longer than the rest of the file. Records longer
    /// than 1024 bytes are consumed whole, their first 1024 bytes parsed.
    bool LoadScrambled(const char* pszIniFile);
    /// Frees every section; the walk goes back to the start.
    void Clear();

    /// The stored text, or `pszDefault` when the section, its keys or the key is missing.
    const char* GetString(const char* pszSection, const char* pszKey, const char* pszDefault) const;
    /// atoi of the stored text, or the default.
    int GetInt(const char* pszSection, const char* pszKey, int nDefault) const;
    /// strtoul(text, nullptr, 10) of the stored text, or the default.
    unsigned GetUInt(const char* pszSection, const char* pszKey, unsigned uDefault) const;
    /// _atoi64 of the stored text, or the default.
    int64_t GetInt64(const char* pszSection, const char* pszKey, int64_t nDefault) const;
    /// atof of the stored text, or the default.
    double GetDouble(const char* pszSection, const char* pszKey, double dDefault) const;

    /// The section's key table; null when missing or when it has no keys (reported as a miss).
    KeyTable* GetSection(const char* pszSection) const;
    /// True when the name was read as a header, even one without keys; false for null.
    bool HasSection(const char* pszSection) const;
    /// False for a null argument, a missing section, one without keys, or a missing key.
    bool HasKey(const char* pszSection, const char* pszKey) const;

    ///@{
    /// Silent look-ups on a table from GetSection: the default (or null) for a null table or key.
    static int TableGetInt(const KeyTable* pTable, const char* pszKey, int nDefault);
    static const char* TableGetString(const KeyTable* pTable, const char* pszKey);
    static const char* TableGetString(const KeyTable* pTable, const char* pszKey,
                                      const char* pszDefault);
    ///@}
    ///@{
    /// The same, reporting a miss when reports are on; the report names the table's address bytes
    /// where a section name would stand ("(null)" for a null table).
    int GetInt(const KeyTable* pTable, const char* pszKey, int nDefault) const;
    int64_t GetInt64(const KeyTable* pTable, const char* pszKey, int64_t nDefault) const;
    const char* GetString(const KeyTable* pTable, const char* pszKey, const char* pszDefault) const;
    ///@}

    /// Walk: to the first record; false when there is none.
    bool FirstSection();
    /// Walk: one record on; false once past the last (callers stop at the first false).
    bool NextSection();
    /// The current record's name; null past the end.
    const char* GetCurrentSectionName() const;
    /// The current record; null past the end.
    SectionRecord* GetCurrentSection() const;
    /// The key's value in the current record, or "" (a null key or a miss is reported).
    const char* GetCurrentValue(const char* pszKey) const;
    /// The number of records, duplicates included.
    int GetSectionCount() const { return static_cast<int>(m_vecSections.size()); }
    /// The records in file order.
    const SectionList& GetSections() const;
    /// The name last given to a load or the constructor ("" when none).
    const char* GetFileName() const { return m_strFileName.c_str(); }

    /// Opens `pszIniFile` "wb" through the client as the write file (closing the previous one);
    /// false when the client gives none.
    bool OpenForWrite(const char* pszIniFile, bool bUseExtendedOpen);
    /// True when there is no write file or it holds no bytes.
    bool IsWriteFileEmpty();
    /// "[name]\n"; this and the other writers do nothing without a disk-backed write file, and
    /// take a null text as empty.
    void WriteSection(const char* pszName);
    /// "[number]\n".
    void WriteSection(int nNumber);
    /// "key=value\n".
    void WriteKey(const char* pszKey, const char* pszValue);
    /// "key=number\n", skipped for 0 unless `bWriteZero`.
    void WriteKey(const char* pszKey, int nValue, bool bWriteZero = false);
    /// "\n".
    void WriteNewLine();

    /// Loads the file, sets key := value and rewrites it in section-name order (comments, order
    /// and duplicate sections are lost); a missing file is created with the one pair. False for a
    /// null section or key or an empty key; the write file stays open, flushed.
    bool SetValue(const char* pszIniFile, const char* pszSection, const char* pszKey,
                  const char* pszValue, bool bUseExtendedOpen);
    /// SetValue through the client's extended open slot.
    bool SetValue(const char* pszIniFile, const char* pszSection, const char* pszKey,
                  const char* pszValue);

    /// In place: byte i ^= key[i mod strlen(key)]; nothing for a null buffer or an empty/null key.
    static void Scramble(char* pBuffer, int nLength, const char* pszKey);

private:
    struct Store;
    struct Parser;
    struct LookupIndex;

    bool LoadFrom(CPackFile* pFile, const char* pszKey);
    const char* Lookup(const char* pszSection, const char* pszKey, int nLine) const;
    const char* FindKey(size_t nSection, const char* pszKey) const;
    const char* IndexedLookup(const char* pszSection, const char* pszKey) const;
    KeyTable* MakeTable(size_t nSection) const;
    void MakeAllTables() const;
    void DropIndex();
    void DeleteRecords();
    void AdoptSection(KeyTable* pKeys);
    void CopyFrom(const CPindIni& other);
    void ReportSection(const char* pszSection) const;
    void ReportKey(const char* pszSection, const char* pszKey) const;
    void Write(const std::string& strText);

    // The records in file order; they own their key tables, which are made from the store the
    // first time a caller asks for one (GetSection, the walk's records, SetValue).
    SectionList m_vecSections;
    size_t m_nCursor = 0;
    bool m_bReportMissing = false;
    std::string m_strFileName;
    CPackFile* m_pWriteFile = nullptr;

    // The loaded text with its sections and keys in flat arrays, and the by-name index: look-ups
    // answer from here until a section's table is made, then from the table.
    std::unique_ptr<Store> m_pStore;

    // A hash of (section, key) pairs beside the store, built once a reader of many sections has
    // answered enough look-ups; unused once a table went out writable (GetSection and the like),
    // as the caller may then change what it points at.
    mutable std::atomic<const LookupIndex*> m_pIndex{nullptr};
    mutable std::atomic<uint32_t> m_nLookups{0};
    mutable std::atomic<bool> m_bTablesOut{false};
};

#endif  // PIND_CONFIG_PINDINI_H_

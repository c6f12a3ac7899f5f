// The game's file object: reads a file from disk through stdio, or whole out of the packed-resource
// archive into memory, and hides which. The PackF* functions mirror stdio over CPackFile handles so
// stdio callers switch line for line; every one of them takes a null handle quietly.
//   CPackFile* f = PackFOpen("ini/GameSetup.ini", "r");
//   char line[256]; while (PackFGets(line, sizeof line, f)) { ... } PackFClose(f);
#ifndef PIND_FILES_PACKFILE_H_
#define PIND_FILES_PACKFILE_H_

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "pind/platform/Export.h"

class CWholeFilePackage;

/// One open file. Disk mode exactly when GetStream() is non-null; otherwise the whole packaged
/// file sits in an owned buffer read through a cursor. The constructor normalises the path and
/// opens; an object with neither stream nor bytes is "not opened".
class PIND_API CPackFile {
public:
    /// Opens `pszPath` with a stdio mode: from disk, or from the installed package when the client
    /// says packages are in use (writing modes always go to disk). A null mode opens nothing.
    CPackFile(const char* pszPath, const char* pszMode);
    virtual ~CPackFile();
    CPackFile(const CPackFile&) = delete;
    CPackFile& operator=(const CPackFile&) = delete;

    /// Closes the stream, frees the bytes and clears the name; the object is then not opened.
    void Close();

    /// True when the file is read through a stdio stream.
    bool IsDiskMode() const { return m_pStream != nullptr; }
    /// True when a stream is open or bytes were read.
    bool IsOpened() const { return m_pStream != nullptr || m_uSize > 0; }
    /// The disk stream; null in memory mode.
    std::FILE* GetStream() const { return m_pStream; }
    /// The packaged bytes; null in disk mode.
    const uint8_t* GetData() const { return m_pData; }
    /// The number of packaged bytes; 0 in disk mode.
    uint32_t GetSize() const { return m_uSize; }
    /// The memory-mode cursor.
    uint32_t GetPos() const { return m_uPos; }
    /// Memory mode: the data before this offset holds no 0x00 or 0xFF byte (it may be lower than
    /// the first such byte after an unget).
    uint32_t GetPlainSize() const { return m_uFirstSpecial; }
    /// Line terminators the last line read saw (a "\r\n" counts 2).
    int32_t GetLineEnds() const { return m_nLineEnds; }
    /// The normalised path the file was opened under.
    const std::string& GetName() const { return m_strName; }

    // The memory-mode halves of the PackF* functions; the free functions pick disk or memory.
    /// PackFRead in memory mode.
    size_t MemRead(void* pBuffer, size_t nSize, size_t nCount);
    /// PackFGetc in memory mode.
    int32_t MemGetc();
    /// PackFUngetc in memory mode.
    int MemUngetc(int nChar);
    /// The raw line read: no terminator handling; `*pLength` (may be null) gets the text's length.
    /// Never writes past nCapacity bytes.
    char* ReadLine(char* pszBuffer, int nCapacity, size_t* pLength = nullptr);
    /// PackFSeek in memory mode.
    int MemSeek(int32_t nOffset, int nWhence);
    /// Counts `n` more line terminators for GetLineEnds.
    void AddLineEnds(int32_t n) { m_nLineEnds += n; }
    /// GetLineEnds back to 0.
    void ResetLineEnds() { m_nLineEnds = 0; }
    /// Moves the memory-mode cursor, unchecked.
    void SetPos(uint32_t uPos) { m_uPos = uPos; }

private:
    friend char* PackFGets(char* pszBuffer, int nCapacity, CPackFile* pFile);
    // The INI reader parses a packaged file in its buffer and keeps the buffer, not a copy.
    friend class CPindIni;

    void OpenDisk(const char* pszMode);
    bool OpenPackage(const char* pszCallerPath);
    // Loads `pszName` of `pPackage` into m_vecData; false when the package has no such file.
    bool TakeWholeFile(CWholeFilePackage* pPackage, const char* pszName);

    int32_t m_nLineEnds = 0;
    uint32_t m_uPos = 0;
    uint32_t m_uSize = 0;
    std::vector<uint8_t> m_vecData;  // the packaged bytes and a zeroed pad
    uint8_t* m_pData = nullptr;      // m_vecData's bytes; null until a package gave them
    std::FILE* m_pStream = nullptr;
    std::string m_strName;
    // Offset of the first 0x00 or 0xFF byte in the data: lines before it need only a newline
    // search.
    uint32_t m_uFirstSpecial = 0;
};

/// Sets the library-wide flag that turns package-first mode off (files then come from disk first).
PIND_API void SetPackForceDisk(bool bForceDisk);
/// The flag SetPackForceDisk set; false until then.
PIND_API bool GetPackForceDisk();

/// Opens `pszPath` (after the client's path translation) with a stdio mode; null for a null
/// argument or when neither the disk nor the package gave the file (an empty packaged file too).
PIND_API CPackFile* PackFOpen(const char* pszPath, const char* pszMode);
/// An anonymous temporary file opened "wb+"; null when none could be made.
PIND_API CPackFile* PackFTmpFile();
/// Disk mode: closes and frees `pFile`, then returns PackFOpen(path, mode). Memory mode: `pFile`
/// unchanged. Null for any null argument.
PIND_API CPackFile* PackFReopen(const char* pszPath, const char* pszMode, CPackFile* pFile);
/// Closes and frees the object; null is ignored.
PIND_API void PackFClose(CPackFile* pFile);

/// Items read; memory mode copies at most the bytes left, and a trailing partial item is consumed
/// but not counted. 0 at end, for zero sizes or a null argument.
PIND_API size_t PackFRead(void* pBuffer, size_t nSize, size_t nCount, CPackFile* pFile);
/// The next byte over the low byte of an all-ones word (byte 0x41 gives 0xFFFFFF41); all ones (-1)
/// at end or for null.
PIND_API int32_t PackFGetc(CPackFile* pFile);
/// Pushes a byte back: memory mode steps the cursor back and stores the byte in the buffer. -1 at
/// end of a packaged file, for nChar -1, or for null.
PIND_API int PackFUngetc(int nChar, CPackFile* pFile);
/// One line into a zeroed buffer of nCapacity bytes (never more); "abc\r\n" comes back as "abc",
/// "abc\n" keeps its '\n'. A 0xFF byte in a packaged file ends the data. Null at end, for
/// nCapacity < 1 or a null argument.
PIND_API char* PackFGets(char* pszBuffer, int nCapacity, CPackFile* pFile);
/// Skips lines that are only "\n" or "\r\n" and scans the next one (at most 2047 characters) with
/// sscanf. The fields converted; 0 (cursor restored) when none; -1 at end, for null or an empty
/// format.
PIND_API int PackFScanf(CPackFile* pFile, const char* pszFormat, ...);
/// PackFScanf with the arguments as a va_list.
PIND_API int PackFVScanf(CPackFile* pFile, const char* pszFormat, va_list args);
/// Writes go to disk files only: memory mode and null give -1 (PackFWrite: 0 items).
PIND_API int PackFPrintf(CPackFile* pFile, const char* pszFormat, ...) PIND_PRINTF(2, 3);
/// `vfprintf` on a disk file; -1 in memory mode or for null.
PIND_API int PackFVPrintf(CPackFile* pFile, const char* pszFormat, va_list args);
/// `fputs` on a disk file; -1 in memory mode or for null.
PIND_API int PackFPuts(const char* pszText, CPackFile* pFile);
/// `fputc` on a disk file; -1 in memory mode or for null.
PIND_API int PackFPutc(int nChar, CPackFile* pFile);
/// `fwrite` on a disk file: the items written; 0 in memory mode or for null.
PIND_API size_t PackFWrite(const void* pBuffer, size_t nSize, size_t nCount, CPackFile* pFile);
/// `fflush` on a disk file; -1 in memory mode or for null.
PIND_API int PackFFlush(CPackFile* pFile);
/// 0 or -1. Memory mode: set needs 0 <= offset <= size; current must stay within 0..size; end
/// takes offsets <= 0 only, with no lower check (the cursor may then lie past the data, where
/// reads give nothing). A failed seek leaves the cursor.
PIND_API int PackFSeek(CPackFile* pFile, int32_t nOffset, int nWhence);
/// As PackFSeek with the offset cut to its low 32 bits (0x1_0000_0005 seeks to 5).
PIND_API int PackFSeek64(CPackFile* pFile, int64_t nOffset, int nWhence);
/// The position; -1 for null.
PIND_API int32_t PackFTell(CPackFile* pFile);
/// PackFTell as 64 bits.
PIND_API int64_t PackFTell64(CPackFile* pFile);
/// The file's length in bytes; -1 for null or when the system cannot tell.
PIND_API int32_t PackFGetLen(CPackFile* pFile);
/// PackFGetLen as 64 bits.
PIND_API int64_t PackFGetLen64(CPackFile* pFile);
/// `rewind` on disk; in memory mode the cursor goes to 0. Null is ignored.
PIND_API void PackFRewind(CPackFile* pFile);
/// feof on disk; in memory mode 0 while bytes remain, else -1 (not 1). -1 for null.
PIND_API int PackFEof(CPackFile* pFile);
/// ferror on disk, 0 in memory mode, -1 for null.
PIND_API int PackFError(CPackFile* pFile);
/// `clearerr` on disk; nothing in memory mode or for null.
PIND_API void PackFClearErr(CPackFile* pFile);
/// fgetpos/fsetpos on disk. Memory mode stores the cursor in the record's leading 64-bit value,
/// and restores the low 32 bits of that value unchecked; both give 0. -1 for null.
///@{
PIND_API int PackFGetPos(CPackFile* pFile, std::fpos_t* pPos);
PIND_API int PackFSetPos(CPackFile* pFile, const std::fpos_t* pPos);
///@}
/// True when the package, the client or the file system knows the (normalised, lower-cased) path;
/// false for null or empty.
PIND_API bool PackFExist(const char* pszPath);

/// Cuts a final `\n` and a second-to-last `\r` (so `"a\r\n"` and `"a\rb"` both become "a").
/// Null is ignored.
PIND_API void TrimLineEnd(char* pszLine);
/// True for null, empty, or text starting with '\n', ';', "//" or "\r\n"; a one-character line
/// other than '\n' or ';' is not a comment.
PIND_API bool IsCommentLine(const char* pszLine);

namespace pind::detail {
/// The path as the file object opens it: ".lua" -> ".dat" in package-first mode, and the first
/// ".//" (or else "./") erased.
PIND_API std::string NormalisePackPath(const char* pszPath);
/// True when packages are in use, the force-disk flag is clear and the package mode is 1.
PIND_API bool IsPackageFirst();
}  // namespace pind::detail

#endif  // PIND_FILES_PACKFILE_H_

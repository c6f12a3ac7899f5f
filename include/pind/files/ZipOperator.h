// Unpacks the first entry of a zip archive into memory. The operator keeps one output buffer
// (2621400 bytes, grown only for larger entries) so repeated loads do not allocate.
//   CMyZipOperator zip; unsigned char* pData = nullptr;
//   unsigned int nSize = zip.ReadFirstFile("data/table.zip", &pData);  // 0: failed or empty
#ifndef PIND_FILES_ZIPOPERATOR_H_
#define PIND_FILES_ZIPOPERATOR_H_

#include <cstdint>
#include <memory>
#include <string>

#include "pind/platform/Export.h"

/// Reads the first entry of zip archives into one reusable buffer.
class PIND_API CMyZipOperator {
public:
    /// The size the buffer starts at.
    static constexpr uint32_t kInitialCapacity = 2621400;
    /// Bytes decompressed per read.
    static constexpr uint32_t kChunkSize = 8192;

    /// No buffer yet; the first read allocates kInitialCapacity bytes.
    CMyZipOperator();
    ///@{
    /// The copy shares the original's buffer; the buffer lives until its last sharer lets it go.
    CMyZipOperator(const CMyZipOperator& other);
    CMyZipOperator& operator=(const CMyZipOperator& other);
    ///@}
    virtual ~CMyZipOperator();

    /// The uncompressed size the archive declares for its first entry, with `*ppData` set to the
    /// zeroed-then-filled buffer (valid until the next call or destruction). An entry that inflates
    /// to less keeps a zero tail; one that inflates to more stops at the buffer's end. 0 for a null
    /// or empty path, an unreadable or empty archive (`*ppData` untouched), a null `ppData`, or a
    /// declared size no deflate stream of the entry's compressed size (or of the whole archive)
    /// could reach (over 1032×). Also 0, `*ppData` untouched, for an entry that is encrypted or
    /// neither stored nor deflated. Zip64 sizes are read from the entry's extra field.
    unsigned int ReadFirstFile(const char* pszZipPath, unsigned char** ppData);

    /// Why the archive's first entry cannot be read as plain bytes ("entry a.txt: compression
    /// method 12 (bzip2) is not supported"); "" when it can, or when there is no entry to judge.
    static std::string UnsupportedFirstEntry(const char* pszZipPath);

    /// Why ReadFirstFile gives 0 for this archive, from its headers: it is no readable archive (an
    /// empty one included), its first entry is a folder, is not plain (as UnsupportedFirstEntry), or
    /// declares more bytes than its data can hold. "" when the first entry is a plain empty file.
    static std::string FirstEntryFailure(const char* pszZipPath);

    /// Bytes the buffer holds (0 before the first call).
    uint32_t GetCapacity() const { return m_nCapacity; }
    /// The buffer the last read filled; null before the first call.
    const unsigned char* GetBuffer() const { return m_pBuffer.get(); }

private:
    bool Reserve(uint32_t nSize);

    std::shared_ptr<unsigned char> m_pBuffer;
    unsigned char m_chunk[kChunkSize];
    uint32_t m_nCapacity = 0;
};

#endif  // PIND_FILES_ZIPOPERATOR_H_

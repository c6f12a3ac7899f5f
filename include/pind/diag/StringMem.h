// Tags memory addresses (the buffers of the client's strings) with a short description, keeps a
// running byte total and dumps both to "profile/StringExMemory.txt", to tell which strings are
// alive, where, and how much they hold. Main thread only: nothing here is locked.
//   StringMemAdd(str.data(), "chat line"); ... StringMemRemove(str.data()); StringMemDump();
#ifndef PIND_DIAG_STRINGMEM_H_
#define PIND_DIAG_STRINGMEM_H_

#include <cstdint>
#include <string>

#include "pind/platform/Export.h"

/// Tags `pAddress` with a copy of `pszText` and adds its length + 1 to the total; a null or empty
/// text does nothing. Tagging a tagged address replaces its text and still adds to the total.
PIND_API void StringMemAdd(const void* pAddress, const char* pszText);
/// Tags `pAddress` with the text of `strText` up to its first NUL, as above; empty does nothing.
PIND_API void StringMemAdd(const void* pAddress, const std::string& strText);
/// Untags `pAddress` and takes its text's length (without the + 1) off the total; an unknown
/// address does nothing.
PIND_API void StringMemRemove(const void* pAddress);
/// Replaces the tag of `pAddress` (remove, then add); a null text does nothing. Returns pAddress.
PIND_API const void* StringMemRetag(const void* pAddress, const char* pszText);
/// Tags `pNew` with the text of `pOld` when that one is tagged; otherwise nothing. Returns pNew.
PIND_API const void* StringMemCopyTag(const void* pNew, const void* pOld);
/// Writes the total and every tag, by ascending address, to "profile/StringExMemory.txt"
/// (replacing it); nothing when the file cannot be opened.
PIND_API void StringMemDump();

namespace pind {
/// The running total as the dump prints it.
PIND_API int32_t StringMemTotal();
}  // namespace pind

#endif  // PIND_DIAG_STRINGMEM_H_

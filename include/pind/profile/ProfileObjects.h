// Memory reports for hunting leaks in the running client: live object counts per class, kept by a
// register/unregister pair in the client's constructors and destructors, and a walk of the
// process's heaps. Both append to files in the profile folder, stamped with UTC + 8 hours.
//   CUnit::CUnit() { AddProfileObject("CUnit", sizeof(CUnit)); }
//   CUnit::~CUnit() { RemoveProfileObject("CUnit"); }
#ifndef PIND_PROFILE_PROFILEOBJECTS_H_
#define PIND_PROFILE_PROFILEOBJECTS_H_

#include <cstdint>
#include <vector>

#include "pind/platform/Export.h"
#include "pind/platform/System.h"

/// Counts one more live object of `pszClassName`; the size given first for a class is kept. A null
/// name is ignored.
PIND_API void AddProfileObject(const char* pszClassName, int32_t nSize);
/// Counts one object fewer (the count may go below 0); unknown or null names are ignored.
PIND_API void RemoveProfileObject(const char* pszClassName);
/// Appends the table to "Profile/PrintfProfileObjectCountInfo.txt"; nothing when it cannot open.
PIND_API void PrintfProfileObjectCountInfo();
/// Appends the heap walk's totals to "profile\\PrintHeapInfo.txt"; nothing when it cannot open.
PIND_API void PrintHeapInfo();
/// Stops (true) or resumes every per-frame piece of profiler work.
PIND_API void SetProfileSuspended(bool bSuspended);
/// True from SetProfileSuspended(true) until it is called with false; false at the start.
PIND_API bool GetProfileSuspended();

namespace pind {

/// One heap's sums as the heap report adds them, in bytes.
struct HeapTotals {
    int64_t nTotal;        ///< committed plus uncommitted bytes
    int64_t nCommitted;    ///< the header, busy blocks and free blocks
    int64_t nUncommitted;  ///< reserved ranges not yet committed
};

/// Sums one heap's walk: the header before the first block, busy blocks as the distance to the
/// next entry, free blocks and uncommitted ranges by their size. Zeros for an empty walk.
PIND_API HeapTotals SumHeapEntries(platform::HeapHandle hHeap,
                                   const std::vector<platform::HeapEntry>& entries);

}  // namespace pind

#endif  // PIND_PROFILE_PROFILEOBJECTS_H_

// CMyLockCs: the library's exported mutual-exclusion object for client code, recursive for the
// owning thread.
//   static CMyLockCs s_lock; s_lock.Lock(); ... s_lock.Unlock();
#ifndef PIND_DIAG_LOCKCS_H_
#define PIND_DIAG_LOCKCS_H_

#include "pind/platform/CriticalSection.h"
#include "pind/platform/Export.h"

/// A recursive lock for client code.
class PIND_API CMyLockCs {
public:
    /// An unlocked lock.
    CMyLockCs();
    virtual ~CMyLockCs();
    /// Copies are the client's member-wise copies: on Windows the critical section's bytes are
    /// copied as they are; on other platforms the copy gets a fresh unlocked lock (assignment keeps
    /// the target's). Copy only a lock that is not in use.
    ///@{
    CMyLockCs(const CMyLockCs&) = default;
    CMyLockCs& operator=(const CMyLockCs&) = default;
    ///@}

    /// Waits for the lock; always true.
    bool Lock();
    /// Releases one level of the caller's hold; the caller must hold the lock.
    void Unlock();

private:
    pind::platform::CriticalSection m_cs;
};

#endif  // PIND_DIAG_LOCKCS_H_

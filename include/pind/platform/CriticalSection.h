// The library's lock: a Windows critical section on Windows, a recursive mutex elsewhere. Recursive
// for the owning thread. Used inside the logging classes and by CMyLockCs.
//   pind::platform::CriticalSection cs; cs.Enter(); ... cs.Leave();
#ifndef PIND_PLATFORM_CRITICALSECTION_H_
#define PIND_PLATFORM_CRITICALSECTION_H_

#include "pind/platform/Export.h"

namespace pind::platform {

/// A recursive lock in storage of a fixed size.
class PIND_API CriticalSection {
public:
    /// An unlocked lock.
    CriticalSection();
    /// The lock must not be held.
    ~CriticalSection();

    /// Copies behave as the client's member-wise copy of a CRITICAL_SECTION: on Windows the bytes
    /// are copied as they are (no new critical section); elsewhere the copy gets a fresh, unlocked
    /// lock and assignment leaves the target's lock alone — the only sound outcome of a byte copy,
    /// which is itself sound only for a lock that is not in use.
    ///@{
    CriticalSection(const CriticalSection& other);
    CriticalSection& operator=(const CriticalSection& other);
    ///@}

    /// Waits for the lock; the owning thread may enter again.
    void Enter();
    /// Releases one level of the caller's hold; the caller must hold the lock.
    void Leave();
    /// Enters when the lock is free or already the caller's; false without waiting otherwise.
    bool TryEnter();

private:
    // Opaque room for CRITICAL_SECTION or std::recursive_mutex, so that public class layouts do not
    // depend on platform headers.
    alignas(16) unsigned char m_storage[64];
};

/// Scoped Enter/Leave.
class CriticalSectionGuard {
public:
    /// Enters `cs` until the guard goes out of scope.
    explicit CriticalSectionGuard(CriticalSection& cs) : m_cs(cs) { m_cs.Enter(); }
    ~CriticalSectionGuard() { m_cs.Leave(); }
    CriticalSectionGuard(const CriticalSectionGuard&) = delete;
    CriticalSectionGuard& operator=(const CriticalSectionGuard&) = delete;

private:
    CriticalSection& m_cs;
};

}  // namespace pind::platform

#endif  // PIND_PLATFORM_CRITICALSECTION_H_

// The library's lock: a Windows critical section on Windows, a recursive mutex elsewhere. Recursive
// for the owning thread. Used inside the logging classes and by CMyLockCs.
//   pind::platform::CriticalSection cs; cs.Enter(); ... cs.Leave();
#ifndef PIND_PLATFORM_CRITICALSECTION_H_
#define PIND_PLATFORM_CRITICALSECTION_H_

#include "pind/platform/Export.h"

namespace pind::platform {

class PIND_API CriticalSection {
public:
    CriticalSection();
    ~CriticalSection();

    /// Copies behave as the client's member-wise copy of a CRITICAL_SECTION: on Windows the bytes
    /// are copied as they are (no new critical section); elsewhere the copy gets a fresh, unlocked
    /// lock and assignment leaves the target's lock alone — the only sound outcome of a byte copy,
    /// which is itself sound only for a lock that is not in use.
    CriticalSection(const CriticalSection& other);
    CriticalSection& operator=(const CriticalSection& other);

    void Enter();
    void Leave();
    bool TryEnter();

private:
    // Opaque room for CRITICAL_SECTION or std::recursive_mutex, so that public class layouts do not
    // depend on platform headers.
    alignas(16) unsigned char m_storage[64];
};

/// Scoped Enter/Leave.
class CriticalSectionGuard {
public:
    explicit CriticalSectionGuard(CriticalSection& cs) : m_cs(cs) { m_cs.Enter(); }
    ~CriticalSectionGuard() { m_cs.Leave(); }
    CriticalSectionGuard(const CriticalSectionGuard&) = delete;
    CriticalSectionGuard& operator=(const CriticalSectionGuard&) = delete;

private:
    CriticalSection& m_cs;
};

}  // namespace pind::platform

#endif  // PIND_PLATFORM_CRITICALSECTION_H_

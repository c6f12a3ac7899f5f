#include "pind/platform/CriticalSection.h"

#include <mutex>
#include <new>

namespace pind::platform {
namespace {
using Impl = std::recursive_mutex;
static_assert(sizeof(Impl) <= 64 && alignof(Impl) <= 16, "CriticalSection storage too small");

Impl& Get(unsigned char* storage) { return *std::launder(reinterpret_cast<Impl*>(storage)); }
}  // namespace

CriticalSection::CriticalSection() { new (m_storage) Impl(); }
CriticalSection::~CriticalSection() { Get(m_storage).~Impl(); }

// A mutex cannot be copied byte for byte; the copy starts as a fresh, unlocked lock.
CriticalSection::CriticalSection(const CriticalSection&) { new (m_storage) Impl(); }
CriticalSection& CriticalSection::operator=(const CriticalSection&) { return *this; }

void CriticalSection::Enter() { Get(m_storage).lock(); }
void CriticalSection::Leave() { Get(m_storage).unlock(); }
bool CriticalSection::TryEnter() { return Get(m_storage).try_lock(); }

}  // namespace pind::platform

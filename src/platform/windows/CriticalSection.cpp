#include "pind/platform/CriticalSection.h"

#include <cstring>

#include "pind/platform/WinTypes.h"

namespace pind::platform {
namespace {
static_assert(sizeof(CRITICAL_SECTION) <= 64, "CriticalSection storage too small");
CRITICAL_SECTION* Get(unsigned char* storage) {
    return reinterpret_cast<CRITICAL_SECTION*>(storage);
}
}  // namespace

CriticalSection::CriticalSection() { ::InitializeCriticalSection(Get(m_storage)); }
CriticalSection::~CriticalSection() { ::DeleteCriticalSection(Get(m_storage)); }

// The client's classes copy their critical sections member-wise; keep that byte copy.
CriticalSection::CriticalSection(const CriticalSection& other) {
    std::memcpy(m_storage, other.m_storage, sizeof m_storage);
}
CriticalSection& CriticalSection::operator=(const CriticalSection& other) {
    if (this != &other) {
        std::memcpy(m_storage, other.m_storage, sizeof m_storage);
    }
    return *this;
}

void CriticalSection::Enter() { ::EnterCriticalSection(Get(m_storage)); }
void CriticalSection::Leave() { ::LeaveCriticalSection(Get(m_storage)); }
bool CriticalSection::TryEnter() { return ::TryEnterCriticalSection(Get(m_storage)) != 0; }

}  // namespace pind::platform

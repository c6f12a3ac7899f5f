#include "support/FakeClock.h"

namespace pind::test {

FakeClock::FakeClock() : m_previous(platform::SetClockSource(this)) {}

FakeClock::~FakeClock() { platform::SetClockSource(m_previous); }

void FakeClock::AdvanceMs(int64_t ms) {
    m_tickMs += static_cast<uint32_t>(ms);
    m_counter += ms * 1000;
    m_processMs += static_cast<int32_t>(ms);
    m_unixMs += ms;
}

}  // namespace pind::test

// A clock the test drives: every reading moves only when the test says so.
//   pind::test::FakeClock clock;            // installed until it goes out of scope
//   clock.SetUnixTimeMs(1715043792000); clock.AdvanceMs(501);
#ifndef PIND_TESTS_SUPPORT_FAKECLOCK_H_
#define PIND_TESTS_SUPPORT_FAKECLOCK_H_

#include <atomic>
#include <cstdint>

#include "pind/platform/Clock.h"

namespace pind::test {

class FakeClock : public platform::ClockSource {
public:
    /// Installs itself as the clock source; the previous source comes back on destruction.
    FakeClock();
    ~FakeClock() override;
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    /// Moves every reading forward by `ms` (the performance counter runs at 1 MHz).
    void AdvanceMs(int64_t ms);
    void SetUnixTimeMs(int64_t ms) { m_unixMs = ms; }
    void SetTickMs(uint32_t ms) { m_tickMs = ms; }
    void SetProcessClock(int32_t ms) { m_processMs = ms; }

    /// How often GetTickCount was read.
    int TickReads() const { return m_tickReads; }

    uint32_t TimeGetTime() const override { return m_tickMs; }
    uint32_t GetTickCount() const override {
        ++m_tickReads;
        return m_tickMs;
    }
    int64_t PerformanceCounter() const override { return m_counter; }
    int64_t PerformanceFrequency() const override { return 1000000; }
    int32_t ProcessClock() const override { return m_processMs; }
    int64_t UnixTimeMs() const override { return m_unixMs; }

private:
    std::atomic<uint32_t> m_tickMs{1000};
    std::atomic<int64_t> m_counter{0};
    std::atomic<int32_t> m_processMs{0};
    std::atomic<int64_t> m_unixMs{1715043792000};  // 2024-05-07 01:03:12 UTC
    mutable std::atomic<int> m_tickReads{0};
    const platform::ClockSource* m_previous;
};

}  // namespace pind::test

#endif  // PIND_TESTS_SUPPORT_FAKECLOCK_H_

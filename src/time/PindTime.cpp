#include "pind/time/PindTime.h"

#include "pind/platform/Clock.h"
#include "pind/platform/TimeZone.h"
#include "time/TimeDetail.h"

namespace pind::detail {

std::tm TmFromFields(int64_t year, int64_t month, int64_t day, int64_t hour, int64_t minute,
                     int64_t second) {
    std::tm tm{};
    tm.tm_year = Low32(year - 1900);
    tm.tm_mon = Low32(month - 1);
    tm.tm_mday = Low32(day);
    tm.tm_hour = Low32(hour);
    tm.tm_min = Low32(minute);
    tm.tm_sec = Low32(second);
    tm.tm_isdst = 0;
    return tm;
}

std::tm TmFromYYMMDDhhmm(uint32_t packed, int32_t second) {
    return TmFromFields(2000 + packed / 100000000, packed / 1000000 % 100, packed / 10000 % 100,
                        packed / 100 % 100, packed % 100, second);
}

std::tm TmFromYYYYMMDDhhmm(int64_t packed) {
    int64_t year = packed / 100000000;
    if (year >= 1 && year <= 999) {
        year += 2000;
    }
    return TmFromFields(year, packed / 1000000 % 100, packed / 10000 % 100, packed / 100 % 100,
                        packed % 100, 0);
}

int64_t ToServerInstant(std::tm* tm, int32_t zoneOffset) {
    return AddWrap(platform::MkTime64(tm), int64_t{zoneOffset} - platform::GetTimezone());
}

std::tm* GmRecord(int64_t t) {
    static std::tm s_tm;
    return platform::GmTime64(t, &s_tm) ? &s_tm : nullptr;
}

}  // namespace pind::detail

namespace {
CPindTime* g_pPindTime = nullptr;
}  // namespace

using pind::detail::AddWrap;
using pind::detail::Low32;
using pind::detail::SubWrap;

CPindTime::~CPindTime() = default;

CPindTime* CPindTime::Instance() {
    if (g_pPindTime == nullptr) {
        g_pPindTime = new CPindTime();
    }
    return g_pPindTime;
}

void CPindTime::DestroyInstance() {
    delete g_pPindTime;
    g_pPindTime = nullptr;
}

void CPindTime::SyncServerTime(uint64_t serverUtcSeconds, int32_t zoneOffset) {
    m_nZoneOffset = zoneOffset;
    m_uSyncTick = pind::platform::TimeGetTime();
    m_uSyncServerTime = serverUtcSeconds;
    m_nClockAtSync = pind::platform::ProcessClock();
    m_nServerClockAtSync = static_cast<int32_t>(static_cast<uint32_t>(serverUtcSeconds));
    m_nWallAtSync = pind::platform::Time64();
    m_nServerTimeAtWall = m_nServerClockAtSync;
}

int64_t CPindTime::ServerNow() const {
    // Signed, so a tick read before the synchronising one moves the time back, not 2^64 ahead.
    const int64_t elapsedMs =
        int64_t{pind::platform::TimeGetTime()} - static_cast<int64_t>(m_uSyncTick);
    return AddWrap(elapsedMs / 1000, static_cast<int64_t>(m_uSyncServerTime));
}

uint64_t CPindTime::ServerNowMs() const {
    return pind::platform::TimeGetTime() + (m_uSyncServerTime * 1000 - m_uSyncTick);
}

uint32_t CPindTime::ServerNowByClock() const {
    return static_cast<uint32_t>(pind::platform::ProcessClock()) -
           static_cast<uint32_t>(m_nClockAtSync) + static_cast<uint32_t>(m_nServerClockAtSync);
}

int64_t CPindTime::ServerNowByWall(bool bToLocalZone) const {
    const int32_t elapsed = Low32(pind::platform::Time64() - m_nWallAtSync);
    const int64_t now = Low32(int64_t{elapsed} + m_nServerTimeAtWall);
    if (!bToLocalZone) {
        return now;
    }
    return now + pind::platform::GetDstBias() - m_nZoneOffset + pind::platform::GetTimezone();
}

int32_t CPindTime::SecondsSince(int64_t t) const {
    return Low32(SubWrap(ServerNowByWall(false), t));
}

std::tm* CPindTime::ServerTmAt(int64_t t) const {
    const int64_t at = t != 0 ? t : ServerNowByWall(false);
    return pind::detail::GmRecord(SubWrap(at, m_nZoneOffset));
}

std::tm* CPindTime::LocalTmNow() const {
    // Converted once, on the first call, and never again: callers rely on the frozen record.
    static std::tm s_tm = [this] {
        std::tm tm{};
        pind::platform::LocalTime64(ServerNowByWall(false), &tm);
        return tm;
    }();
    return &s_tm;
}

int64_t CPindTime::LocalNow() const { return pind::platform::Time64(); }

std::tm* CPindTime::GetServerTm() const {
    static std::tm s_tm;
    const int64_t at = SubWrap(ServerNow(), m_nZoneOffset);
    return pind::platform::GmTime64(at, &s_tm) ? &s_tm : nullptr;
}

int32_t CPindTime::GetZoneHours() const { return -(m_nZoneOffset / 3600); }

uint64_t CPindTime::StartStopwatch() {
    m_bStopwatchRunning = true;
    m_uStopwatchElapsed = 0;
    m_uStopwatchStart =
        m_bUseEngineClock ? pind::platform::TimeGetTime() : pind::platform::GetTickCount();
    return m_uStopwatchStart;
}

uint64_t CPindTime::StopwatchMs() const {
    if (!m_bStopwatchRunning) {
        return m_uStopwatchElapsed;
    }
    const uint32_t now =
        m_bUseEngineClock ? pind::platform::TimeGetTime() : pind::platform::GetTickCount();
    // 32-bit difference: the tick wraps every 49.7 days.
    return m_uStopwatchElapsed + (now - static_cast<uint32_t>(m_uStopwatchStart));
}

uint32_t CPindTime::UpdateDerivedSeconds() {
    m_nWallAtSync = pind::platform::Time64();
    // Half the stopwatch's seconds: the client's derived value has always been halved.
    const int32_t halfSeconds = Low32(static_cast<int64_t>(StopwatchMs() / 1000)) / 2;
    m_uDerivedSeconds = static_cast<uint32_t>(halfSeconds) -
                        static_cast<uint32_t>(m_nServerTimeAtWall) +
                        static_cast<uint32_t>(m_nWallAtSync);
    return m_uDerivedSeconds;
}

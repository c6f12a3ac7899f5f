#include "pind/profile/Profiler.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "pind/client/PindClient.h"
#include "pind/files/PackFile.h"
#include "pind/platform/Clock.h"
#include "pind/platform/System.h"
#include "pind/platform/Window.h"
#include "pind/profile/ProfileObjects.h"
#include "profile/ProfilerState.h"

namespace pind::detail {

std::atomic<bool> g_profileEnabled{false};

namespace {

// Virtual key codes the overlay and the hot keys read.
constexpr int kVkControl = 17;
constexpr int kVkLeft = 37;
constexpr int kVkUp = 38;
constexpr int kVkRight = 39;
constexpr int kVkDown = 40;
constexpr int kVkNumpad1 = 97;
constexpr int kVkNumpad2 = 98;
constexpr int kVkNumpad3 = 99;
constexpr int kVkNumpad4 = 100;
constexpr int kVkNumpad5 = 101;
constexpr int kVkNumpad6 = 102;
constexpr int kVkNumpad7 = 103;

constexpr uint32_t kHotKeyGapMs = 501;
constexpr int kArrowStep = 12;
constexpr uint32_t kRowBackground = 0x7F1A1A1A;
constexpr uint32_t kTextBlack = 0x000000;
constexpr uint32_t kTextYellow = 0xFFFF00;
constexpr uint32_t kShareBar = 0xFF3FA03F;

// The profiler is never freed once made, so a scope on another thread can always take its lock;
// a restart empties it in place.
std::atomic<bool> g_created{false};
Profiler& Instance() {
    static Profiler* s_profiler = new Profiler;
    return *s_profiler;
}
// Bumped on every restart: a scope that began under an older profiler records nothing.
std::atomic<uint32_t> g_generation{0};
std::atomic<bool> g_suspended{false};
// The generation in which this thread became the main one (the one running frames); a restart
// makes every thread a stranger until it runs a frame again.
thread_local uint32_t t_uMainOf = UINT32_MAX;
std::atomic<uint32_t> g_nextThreadId{1};
thread_local uint32_t t_threadId = 0;
size_t g_traceFrames = 300;

// Overlay and hot-key state, main thread.
int32_t g_nX = 0;
int32_t g_nY = 0;
int32_t g_nMode = 1;
int32_t g_nSelection = 0;
uint32_t g_uLastHotKey = 0;

uint32_t ThreadId() {
    if (t_threadId == 0) {
        t_threadId = g_nextThreadId.fetch_add(1);
    }
    return t_threadId;
}

bool KeyDown(int vk) { return (platform::GetAsyncKeyState(vk) & 0x8000) != 0; }

ProfileSettings ReadSettings() {
    static const char kFile[] = "ini/GameSetup.ini";
    static const char kSection[] = "FrameRate";
    auto read = [](const char* key, int def) {
        return static_cast<int32_t>(platform::PrivateProfileInt(kSection, key, def, kFile));
    };
    ProfileSettings s;
    s.nProfile = read("Profile", 0);
    s.nInterval = read("ProfileInterval", 10);
    s.nMaxFrameInterval = read("CheckMaxFrameInterval", 3000);
    s.nShowGraph = read("ProfileShowGraph", 0);
    s.nLog = read("ProfileLog", 0);
    return s;
}

Profiler& Create(const ProfileSettings& settings) {
    Profiler& p = Instance();
    {
        platform::CriticalSectionGuard lock(p.cs);
        p.settings = settings;
        p.fInterval = 0.01f;
        p.fIntervalStart = ProfileClock();
        p.bHaveLastFrame = false;
        p.nFrequency = std::max<int64_t>(1, platform::QueryPerformanceFrequency());
        p.dMsPerTick = 1000.0 / static_cast<double>(p.nFrequency);
        p.displayList.reserve(100);
        TraceResize(p, g_traceFrames);
        g_created.store(true);
    }
    t_uMainOf = g_generation.load();
    g_profileEnabled.store(settings.nProfile != 0);
    return p;
}

// The section named `name`, created (and put on the display list) when new; null when the map is
// full. Under the lock.
ProfileSection* FindOrAddSection(Profiler& p, const char* name) {
    auto it = p.sections.find(name);
    if (it == p.sections.end()) {
        if (p.sections.size() >= kMaxSections) {
            return nullptr;
        }
        it = p.sections.emplace(name, ProfileSection{}).first;
        it->second.strName = name;
        p.displayList.push_back(name);
    }
    return &it->second;
}

ProfileNode* OpenTreeNode(Profiler& p, const ProfileSection* pSection) {
    if (!p.root) {
        p.root = std::make_unique<ProfileNode>();
        p.root->strName = "Root";
        p.nNodes = 1;
    }
    ProfileNode* parent = p.stack.empty() ? p.root.get() : p.stack.back();
    if (parent == nullptr || p.stack.size() >= kMaxTreeDepth) {
        return nullptr;
    }
    for (const auto& child : parent->children) {
        if (child->pSection == pSection) {
            return child.get();
        }
    }
    if (p.nNodes >= kMaxTreeNodes) {
        return nullptr;
    }
    auto child = std::make_unique<ProfileNode>();
    child->strName = pSection->strName;
    child->pSection = pSection;
    parent->children.push_back(std::move(child));
    ++p.nNodes;
    return parent->children.back().get();
}

void DrawRows(Profiler& p) {
    std::vector<std::string> rows;
    {
        platform::CriticalSectionGuard lock(p.cs);
        for (const std::string& name : p.displayList) {
            const auto it = p.sections.find(name);
            if (it == p.sections.end() || it->second.uCount == 0) {
                continue;
            }
            const ProfileSection& s = it->second;
            if (s.fTime / static_cast<float>(s.uCount) > 0.001f) {
                rows.push_back(OverlayRowText(static_cast<int>(rows.size()) + 1, s));
            }
        }
    }
    IPindClient* client = GetClient();
    for (size_t i = 0; i < rows.size(); ++i) {
        const int x = g_nX + 10;
        const int y = g_nY + 700 + 20 * static_cast<int>(i);
        client->FillRectangle(x, y, g_nX + 660, y + 20, kRowBackground);
        client->DrawString(x, y, kTextBlack, rows[i].c_str());
        // Drawn again one pixel down and right, so the black copy reads as a shadow.
        client->DrawString(x + 1, y + 1, kTextYellow, rows[i].c_str());
    }
}

void DrawClassifyGraph(Profiler& p) {
    struct Bar {
        int32_t nId;
        float fTime;
        float fShare;
    };
    std::vector<Bar> bars;
    {
        platform::CriticalSectionGuard lock(p.cs);
        const float fRoot = p.root ? p.root->fTime : 0.0f;
        for (auto& [id, record] : p.classify) {
            record.fShare = fRoot > 0 ? record.fTime / fRoot : 0.0f;
            bars.push_back({id, record.fTime, record.fShare});
        }
    }
    IPindClient* client = GetClient();
    const int x = g_nX + 10;
    const int y0 = g_nY + 400;
    constexpr int kWidth = 400;
    for (size_t i = 0; i < bars.size(); ++i) {
        const int y = y0 + 20 * static_cast<int>(i);
        const float share = std::clamp(bars[i].fShare, 0.0f, 1.0f);
        client->FillRectangle(x, y, x + kWidth, y + 18, kRowBackground);
        client->FillRectangle(x, y, x + static_cast<int>(share * kWidth), y + 18, kShareBar);
        char text[96];
        std::snprintf(text, sizeof text, "ClassifyTime[%d] = %0.2f (%.1f%%)", bars[i].nId,
                      static_cast<double>(bars[i].fTime), static_cast<double>(share) * 100.0);
        client->DrawString(x + kWidth + 10, y, kTextYellow, text);
    }
}

void MoveOverlay() {
    if (!KeyDown(kVkControl)) {
        return;
    }
    if (KeyDown(kVkLeft)) {
        g_nX -= kArrowStep;
    } else if (KeyDown(kVkRight)) {
        g_nX += kArrowStep;
    } else if (KeyDown(kVkUp)) {
        g_nY -= kArrowStep;
    } else if (KeyDown(kVkDown)) {
        g_nY += kArrowStep;
    }
}

void ResetSections(Profiler& p) {
    platform::CriticalSectionGuard lock(p.cs);
    for (auto& entry : p.sections) {
        ProfileSection& s = entry.second;
        s.fTime = 0;
        s.uCount = 0;
        s.fMax = 0;
        s.fTotalTime = 0;
        s.uTotalCount = 0;
    }
}

void HandleHotKeys(Profiler& p, char* pReportRequested) {
    if (!KeyDown(kVkControl)) {
        return;
    }
    const uint32_t now = platform::GetTickCount();
    if (now - g_uLastHotKey < kHotKeyGapMs) {
        return;
    }
    static const int kKeys[] = {kVkNumpad7, kVkNumpad4, kVkNumpad6, kVkNumpad5,
                                kVkNumpad1, kVkNumpad2, kVkNumpad3};
    for (const int key : kKeys) {
        if (!KeyDown(key)) {
            continue;
        }
        g_uLastHotKey = now;
        switch (key) {
            case kVkNumpad7:
                if (pReportRequested != nullptr) {
                    *pReportRequested = 1;
                }
                GetClient()->CreateDir("profile");
                ProfileWriteReport("profile/StatisticsFunction.log");
                break;
            case kVkNumpad4:
                --g_nSelection;
                break;
            case kVkNumpad6:
                ++g_nSelection;
                break;
            case kVkNumpad5:
                g_nSelection = 0;
                break;
            case kVkNumpad1:
                g_nMode = 1;
                break;
            case kVkNumpad2:
                g_nMode = 2;
                break;
            default:
                ResetSections(p);
                break;
        }
        return;
    }
}

void EndOfFrame(Profiler& p, float now) {
    if (p.settings.nInterval != 0) {
        p.fInterval = static_cast<float>(p.settings.nInterval) / 1000.0f;
    }
    if (now - p.fIntervalStart >= p.fInterval) {
        platform::CriticalSectionGuard lock(p.cs);
        for (auto& entry : p.sections) {
            entry.second.fTime = 0;
            entry.second.uCount = 0;
        }
        p.fIntervalStart = now;
    }
    if (p.settings.nMaxFrameInterval == 0) {
        p.bHaveLastFrame = false;
        return;
    }
    platform::ThreadTimes times{0, 0};
    platform::GetThreadTimes(&times);
    const int64_t counter = platform::QueryPerformanceCounter();
    // Whole counter ticks, not the float clock: a frame of exactly the limit is not slow.
    const bool slow = p.bHaveLastFrame && (counter - p.nLastFrame) * 1000 >
                                              int64_t{p.settings.nMaxFrameInterval} * p.nFrequency;
    if (slow && p.settings.nLog != 0) {
        WriteProcessTimes((times.user - p.lastTimes.user) / 10000,
                          (times.kernel - p.lastTimes.kernel) / 10000);
    }
    p.lastTimes = times;
    p.nLastFrame = counter;
    p.bHaveLastFrame = true;
}

}  // namespace

Profiler* CurrentProfiler() { return g_created.load() ? &Instance() : nullptr; }

Profiler& EnsureProfiler() { return g_created.load() ? Instance() : Create(ReadSettings()); }

}  // namespace pind::detail

using pind::detail::Profiler;

float ProfileClock() {
    static const int64_t s_frequency =
        std::max<int64_t>(1, pind::platform::QueryPerformanceFrequency());
    static const int64_t s_origin = pind::platform::QueryPerformanceCounter();
    const int64_t now = pind::platform::QueryPerformanceCounter();
    return static_cast<float>(static_cast<double>(now - s_origin) /
                              static_cast<double>(s_frequency));
}

void SetProfileIntervals(int32_t nInterval, int32_t nMaxFrameInterval) {
    Profiler& p = pind::detail::EnsureProfiler();
    p.settings.nInterval = nInterval;
    p.settings.nMaxFrameInterval = nMaxFrameInterval;
}

void ProfileFrame(char* pReportRequested) {
    using namespace pind::detail;
    Profiler& p = EnsureProfiler();
    t_uMainOf = g_generation.load();
    if (p.settings.nProfile == 0 || !GetClient()->IsProfileAllowed() || g_suspended.load()) {
        return;
    }
    {
        pind::platform::CriticalSectionGuard lock(p.cs);
        TraceFrame(p, pind::platform::QueryPerformanceCounter(), ThreadId());
    }
    if (p.settings.nShowGraph != 0) {
        MoveOverlay();
        if (g_nMode == 1) {
            DrawRows(p);
        } else if (g_nMode == 2) {
            DrawClassifyGraph(p);
        }
    }
    HandleHotKeys(p, pReportRequested);
    EndOfFrame(p, ProfileClock());
}

void ProfileAddClassifyTime(int nId, float fMs) {
    if (!pind::detail::g_profileEnabled.load(std::memory_order_relaxed)) {
        return;
    }
    Profiler* p = pind::detail::CurrentProfiler();
    if (p == nullptr) {
        return;
    }
    pind::platform::CriticalSectionGuard lock(p->cs);
    p->classify[nId].fTime += fMs;
}

void SetProfileSuspended(bool bSuspended) { pind::detail::g_suspended.store(bSuspended); }

bool GetProfileSuspended() { return pind::detail::g_suspended.load(); }

namespace pind {

void ProfileConfigure(const ProfileSettings& settings) {
    detail::Profiler* p = detail::CurrentProfiler();
    if (p == nullptr) {
        detail::Create(settings);
        return;
    }
    p->settings = settings;
    detail::t_uMainOf = detail::g_generation.load();
    detail::g_profileEnabled.store(settings.nProfile != 0);
}

void ProfileRestart() {
    using namespace detail;
    g_profileEnabled.store(false);
    Profiler& p = Instance();
    {
        platform::CriticalSectionGuard lock(p.cs);
        for (ProfileSite* site = p.pSites; site != nullptr;) {
            ProfileSite* next = site->pNext;
            site->pSection.store(nullptr);
            site->pNext = nullptr;
            site = next;
        }
        p.pSites = nullptr;
        g_generation.fetch_add(1);
        g_created.store(false);
        p.sections.clear();
        p.displayList.clear();
        p.classify.clear();
        p.root.reset();
        p.nNodes = 0;
        p.stack.clear();
        p.fIntervalStart = 0;
        p.bHaveLastFrame = false;
        p.lastTimes = {0, 0};
        p.events.clear();
        p.frames.clear();
        p.nNextEvent = p.nEventCount = p.nNextFrame = p.nFrameCount = 0;
    }
    g_nX = 0;
    g_nY = 0;
    g_nMode = 1;
    g_nSelection = 0;
    g_uLastHotKey = 0;
}

ProfileOverlayState ProfileGetOverlayState() {
    return {detail::g_nX, detail::g_nY, detail::g_nMode, detail::g_nSelection};
}

void ProfileSetTraceFrames(int32_t nFrames) {
    detail::g_traceFrames = static_cast<size_t>(std::max<int32_t>(1, nFrames));
    if (detail::Profiler* p = detail::CurrentProfiler()) {
        platform::CriticalSectionGuard lock(p->cs);
        detail::TraceResize(*p, detail::g_traceFrames);
    }
}

bool ProfileWriteReport(const char* pszPath) {
    CPackFile* file = PackFOpen(pszPath, "a+");
    if (file == nullptr) {
        return false;
    }
    detail::WriteStatisticsReport(detail::EnsureProfiler(), file);
    PackFClose(file);
    return true;
}

}  // namespace pind

void CProfileScope::Begin(pind::ProfileSite* pSite, const char* pszName) {
    using namespace pind::detail;
    Profiler& p = Instance();
    const uint32_t generation = g_generation.load(std::memory_order_acquire);
    void* section = pSite != nullptr ? pSite->pSection.load(std::memory_order_acquire) : nullptr;
    if (section == nullptr) {
        pind::platform::CriticalSectionGuard lock(p.cs);
        if (!g_created.load() || generation != g_generation.load()) {
            return;
        }
        ProfileSection* found = FindOrAddSection(p, pSite != nullptr ? pSite->pszName : pszName);
        if (found == nullptr) {
            return;
        }
        if (pSite != nullptr && pSite->pSection.load() == nullptr) {
            pSite->pNext = p.pSites;
            p.pSites = pSite;
            pSite->pSection.store(found, std::memory_order_release);
        }
        section = found;
    }
    m_pSection = section;
    m_uGeneration = generation;
    if (t_uMainOf == generation) {
        p.stack.push_back(OpenTreeNode(p, static_cast<ProfileSection*>(section)));
        m_bTree = true;
    }
    m_nStart = pind::platform::QueryPerformanceCounter();
}

void CProfileScope::End() {
    using namespace pind::detail;
    const int64_t end = pind::platform::QueryPerformanceCounter();
    Profiler& p = Instance();
    float ms = 0;
    {
        pind::platform::CriticalSectionGuard lock(p.cs);
        if (m_uGeneration != g_generation.load()) {
            return;
        }
        ms = TicksToMs(p, end - m_nStart);
        auto* s = static_cast<ProfileSection*>(m_pSection);
        s->fTime += ms;
        ++s->uCount;
        s->fMax = std::max(s->fMax, ms);
        s->fTotalTime += ms;
        ++s->uTotalCount;
        if (!p.events.empty()) {
            p.events[p.nNextEvent] = {s, m_nStart, end - m_nStart, ThreadId()};
            if (++p.nNextEvent == p.events.size()) {
                p.nNextEvent = 0;
            }
            p.nEventCount = std::min(p.nEventCount + 1, p.events.size());
        }
    }
    if (m_bTree && !p.stack.empty()) {
        ProfileNode* node = p.stack.back();
        p.stack.pop_back();
        if (node != nullptr) {
            node->fTime += ms;
            ++node->uCount;
            if (p.stack.empty()) {
                p.root->fTime += ms;
                ++p.root->uCount;
            }
        }
    }
}

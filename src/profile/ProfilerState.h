// The profiler's process-wide state, shared by the frame entry, the scopes, the reports and the
// trace writer. Section maps and the trace ring are guarded by the profiler's lock; the call tree
// and the overlay state belong to the main thread.
#ifndef PIND_SRC_PROFILE_PROFILERSTATE_H_
#define PIND_SRC_PROFILE_PROFILERSTATE_H_

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "pind/files/PackFile.h"
#include "pind/platform/CriticalSection.h"
#include "pind/platform/System.h"
#include "pind/profile/Profiler.h"

namespace pind::detail {

struct ProfileSection {
    std::string strName;
    float fTime = 0;  // milliseconds in the current interval
    uint32_t uCount = 0;
    float fMax = 0;
    float fTotalTime = 0;
    uint32_t uTotalCount = 0;
};

struct ProfileNode {
    std::string strName;
    float fTime = 0;
    uint32_t uCount = 0;
    float fShare = 0;
    const ProfileSection* pSection = nullptr;
    std::vector<std::unique_ptr<ProfileNode>> children;
};

struct ProfileClassify {
    float fTime = 0;
    float fShare = 0;
};

struct TraceEvent {
    const ProfileSection* pSection;
    int64_t nStart;
    int64_t nDuration;
    uint32_t uThread;
};

// Bounds that keep bad input (endless distinct names, deep recursion) from growing memory.
constexpr size_t kMaxSections = 16384;
constexpr size_t kMaxTreeDepth = 64;
constexpr size_t kMaxTreeNodes = 8192;
constexpr size_t kTraceEventsPerFrame = 256;
constexpr size_t kMaxTraceEvents = size_t{1} << 18;

struct Profiler {
    ProfileSettings settings;
    float fInterval = 0.01f;  // seconds
    int64_t nFrequency = 1;
    double dMsPerTick = 1000.0;

    platform::CriticalSection cs;
    std::map<std::string, ProfileSection> sections;
    std::vector<std::string> displayList;
    std::map<int32_t, ProfileClassify> classify;
    ProfileSite* pSites = nullptr;  // sites bound to a section, unbound on restart

    // Main thread only.
    std::unique_ptr<ProfileNode> root;
    size_t nNodes = 0;
    std::vector<ProfileNode*> stack;  // open scopes; null for one kept out of the tree
    float fIntervalStart = 0;
    int64_t nLastFrame = 0;  // performance counter at the last frame's end
    bool bHaveLastFrame = false;
    platform::ThreadTimes lastTimes{0, 0};

    // Trace rings, under the lock.
    std::vector<TraceEvent> events;
    size_t nNextEvent = 0;
    size_t nEventCount = 0;
    std::vector<int64_t> frames;
    size_t nNextFrame = 0;
    size_t nFrameCount = 0;
    uint32_t uMainThread = 0;
};

// The profiler, or null before the first frame (or after a restart). Main thread.
Profiler* CurrentProfiler();
// The profiler, created with the INI settings when there is none.
Profiler& EnsureProfiler();

// Milliseconds for a span of performance-counter ticks.
inline float TicksToMs(const Profiler& p, int64_t nTicks) {
    return static_cast<float>(static_cast<double>(nTicks) * p.dMsPerTick);
}

// Report writing (ProfileReport.cpp).
void WriteStatisticsReport(Profiler& p, CPackFile* pFile);
void WriteProcessTimes(int64_t nUserMs, int64_t nKernelMs);
// The overlay's row text for row `nRow`.
std::string OverlayRowText(int nRow, const ProfileSection& s);

// Trace (ChromeTrace.cpp).
void TraceResize(Profiler& p, size_t nFrames);
void TraceFrame(Profiler& p, int64_t nNow, uint32_t uThread);

}  // namespace pind::detail

#endif  // PIND_SRC_PROFILE_PROFILERSTATE_H_

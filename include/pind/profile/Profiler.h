// The in-game profiler: named section timers, a per-frame entry that draws an overlay through the
// host's drawing slots and writes a statistics report on Ctrl+Numpad 7, and a Chrome trace of the
// last frames. Settings come once from "ini/GameSetup.ini" [FrameRate] when the first frame runs.
//   void CScene::Draw() { PIND_PROFILE_SCOPE("CScene::Draw"); ... }
//   char written = 0; ProfileFrame(&written);  // once per frame, on the main thread
#ifndef PIND_PROFILE_PROFILER_H_
#define PIND_PROFILE_PROFILER_H_

#include <atomic>
#include <cstdint>

#include "pind/platform/Export.h"

/// Seconds since the first call, from the performance counter; 0 on the first call.
PIND_API float ProfileClock();

/// Replaces the "ProfileInterval" and "CheckMaxFrameInterval" milliseconds (0 keeps the interval /
/// turns the slow-frame check off). Creates the profiler (reading its settings) if needed.
PIND_API void SetProfileIntervals(int32_t nInterval, int32_t nMaxFrameInterval);

/// The per-frame entry, on the main thread: draws the overlay, handles the hot keys and rolls the
/// interval over. Sets `*pReportRequested` (may be null) to 1 when Ctrl+Numpad 7 asks for a report.
PIND_API void ProfileFrame(char* pReportRequested);

/// Adds `fMs` to classification `nId` (shown as "ClassifyTime[id]" and in overlay mode 2); does
/// nothing while the profiler is off.
PIND_API void ProfileAddClassifyTime(int nId, float fMs);

namespace pind {

namespace detail {
// True while the profiler runs; read by every scope before anything else.
PIND_API extern std::atomic<bool> g_profileEnabled;
}  // namespace detail

/// One timing site: a name with static storage, bound to its section record on first use so that
/// later calls find it without a map look-up.
struct ProfileSite {
    const char* pszName;                   ///< the section name, which must outlive the site
    std::atomic<void*> pSection{nullptr};  ///< the section record, or null while unbound
    ProfileSite* pNext = nullptr;          ///< next bound site, so a restart can unbind them all
    /// A site not yet bound, named `name` (a string with static storage).
    explicit constexpr ProfileSite(const char* name) : pszName(name) {}
};

/// The settings the profiler reads from "ini/GameSetup.ini" [FrameRate], for hosts and tools that
/// configure it directly.
struct ProfileSettings {
    int32_t nProfile = 0;              ///< "Profile": nonzero turns the profiler on
    int32_t nInterval = 10;            ///< "ProfileInterval": ms between counter resets; 0 keeps it
    int32_t nMaxFrameInterval = 3000;  ///< "CheckMaxFrameInterval": slow-frame ms; 0 turns it off
    int32_t nShowGraph = 0;            ///< "ProfileShowGraph": nonzero draws the overlay
    int32_t nLog = 0;                  ///< "ProfileLog": nonzero logs process times of slow frames
};

/// The overlay's state: origin offset, display mode (1 rows, 2 classification graph), selection.
struct ProfileOverlayState {
    int32_t nX;          ///< horizontal offset, moved by Ctrl+Left/Right; 0 at the start
    int32_t nY;          ///< vertical offset, moved by Ctrl+Up/Down; 0 at the start
    int32_t nMode;       ///< 1 (the start) or 2, set by Ctrl+Numpad 1 or Ctrl+Numpad 2
    int32_t nSelection;  ///< stepped by Ctrl+Numpad 4/6 (unbounded), 0 after Ctrl+Numpad 5
};

/// Creates the profiler with `settings` instead of the INI file (or replaces the settings of the
/// running one); the process's main thread is the one that calls ProfileFrame.
PIND_API void ProfileConfigure(const ProfileSettings& settings);

/// Drops the profiler with every record, the call tree, the classifications, the overlay state and
/// the trace; the next ProfileFrame reads the settings again. Call on the main thread while no
/// scope is open on it.
PIND_API void ProfileRestart();

/// A copy of the overlay's state; the start values before the first frame and after a restart.
PIND_API ProfileOverlayState ProfileGetOverlayState();

/// How many frames the trace keeps (default 300, at least 1); older frames are overwritten.
PIND_API void ProfileSetTraceFrames(int32_t nFrames);

/// Writes the scopes of the kept frames as Trace Event JSON to `pszPath` (replacing it); false when
/// the file cannot be written or the path is null.
PIND_API bool ProfileWriteChromeTrace(const char* pszPath);

/// Writes the statistics report that Ctrl+Numpad 7 writes, appending to `pszPath`; false when the
/// file cannot be opened.
PIND_API bool ProfileWriteReport(const char* pszPath);

}  // namespace pind

/// Times the code from its construction to its end on any thread; costs one branch while the
/// profiler is off. Nested scopes on the main thread also build the call tree.
class PIND_API CProfileScope {
public:
    /// Starts timing the section of `site`, binding the site on first use; nothing while off.
    explicit CProfileScope(pind::ProfileSite& site) {
        if (pind::detail::g_profileEnabled.load(std::memory_order_relaxed)) {
            Begin(&site, nullptr);
        }
    }
    /// For names without static storage: looked up by name on every call (slower).
    explicit CProfileScope(const char* pszName) {
        if (pind::detail::g_profileEnabled.load(std::memory_order_relaxed) && pszName != nullptr) {
            Begin(nullptr, pszName);
        }
    }
    ~CProfileScope() {
        if (m_pSection != nullptr) {
            End();
        }
    }
    CProfileScope(const CProfileScope&) = delete;
    CProfileScope& operator=(const CProfileScope&) = delete;

private:
    void Begin(pind::ProfileSite* pSite, const char* pszName);
    void End();

    void* m_pSection = nullptr;
    int64_t m_nStart = 0;
    uint32_t m_uGeneration = 0;
    bool m_bTree = false;
};

/// @cond
#define PIND_PROFILE_CONCAT2(a, b) a##b
#define PIND_PROFILE_CONCAT(a, b) PIND_PROFILE_CONCAT2(a, b)
/// @endcond
/// Times the rest of the enclosing block as the section `name` (a string literal).
#define PIND_PROFILE_SCOPE(name)                                                      \
    static ::pind::ProfileSite PIND_PROFILE_CONCAT(pindProfileSite_, __LINE__){name}; \
    ::CProfileScope PIND_PROFILE_CONCAT(pindProfileScope_, __LINE__) {                \
        PIND_PROFILE_CONCAT(pindProfileSite_, __LINE__)                               \
    }

#endif  // PIND_PROFILE_PROFILER_H_

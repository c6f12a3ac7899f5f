// The frame entry with a scripted host: settings, overlay drawing, Ctrl+arrow moves, the hot keys
// and their rate limit, and the slow-frame line. Report bytes: ProfileReportTest.cpp.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pind/profile/ProfileObjects.h"
#include "pind/profile/Profiler.h"
#include "profile/ProfileTestSupport.h"

namespace pind::test {
namespace {

constexpr int kCtrl = 17;
constexpr int kLeft = 37, kUp = 38, kRight = 39, kDown = 40;
constexpr int kNum1 = 97, kNum2 = 98, kNum3 = 99, kNum4 = 100, kNum5 = 101, kNum6 = 102,
              kNum7 = 103;

void TimedScope(FakeClock& clock, const char* name, int64_t ms) {
    CProfileScope scope(name);
    clock.AdvanceMs(ms);
}

TEST_F(ProfilerFixture, ReadsFrameRateSectionOnce) {
    // A scope counts only while profiling is on; the settings are read by the first frame only.
    const auto counted = [this](const char* probe) {
        Frame();
        TimedScope(m_clock, probe, 2);
        ProfileWriteReport("out.log");
        return Lf(m_dir.Read("out.log")).find("[" + std::string(probe) + " ") != std::string::npos;
    };
    EXPECT_FALSE(counted("NoFile"));
    m_dir.Write("ini/GameSetup.ini", "[framerate]\n  profile = 2\n");
    EXPECT_FALSE(counted("NotReadAgain"));
    ProfileRestart();
    EXPECT_TRUE(counted("Enabled"));
    m_dir.Write("ini/GameSetup.ini", "[FrameRate]\nProfile=0\n");
    EXPECT_TRUE(counted("StillEnabled"));
}

TEST_F(ProfilerFixture, DrawsRowsWithShadowSkippingTinyAverages) {
    Enable();
    TimedScope(m_clock, "Tiny", 0);  // average 0: no row
    TimedScope(m_clock, "Slow", 4);
    TimedScope(m_clock, "Slow", 2);
    KeysDown() = {kCtrl, kRight};  // one 12-pixel move, before drawing
    Frame(1);

    using Lines = std::vector<std::string>;
    EXPECT_EQ(m_client.rects, Lines{"22 700 672 720 7f1a1a1a"});
    const std::string row = " 1--[Slow" + std::string(44, ' ') +
                            "]\t--\xcf\xfb\xba\xc4\xca\xb1\xbc\xe4:\t6.0000ms\t\t"
                            "\xb5\xf7\xd3\xc3\xb4\xce\xca\xfd:2       \t"
                            "\xc6\xbd\xbe\xf9\xca\xb1\xbc\xe4:3.0000ms  "
                            "\xd7\xee\xb4\xf3\xcf\xfb\xba\xc4:4.0000ms";
    EXPECT_EQ(m_client.texts, (Lines{"22 700 000000 " + row, "23 701 ffff00 " + row}));
}

// Ctrl+arrows move the overlay 12 pixels on every frame, with no rate limit and beside hot keys.
TEST_F(ProfilerFixture, HotKeysActAtMostOnceEvery501MsAndArrowsMoveEveryFrame) {
    Enable();  // the overlay shown: moves apply only then
    const struct {
        std::set<int> keys;
        int64_t ms;  // since the previous frame
        int mode, selection, x, y;
    } steps[] = {{{kCtrl, kNum4, kNum6}, 0, 1, -1, 0, 0},  // 4 comes before 6
                 {{kCtrl, kNum6, kLeft}, 600, 1, 0, -12, 0},
                 {{kCtrl, kNum6, kNum5, kLeft, kRight}, 600, 1, 1, -24, 0},
                 {{kCtrl, kNum5, kNum2, kUp}, 600, 1, 0, -24, -12},
                 {{kCtrl, kNum2, kUp, kDown, kRight}, 600, 2, 0, -12, -12},
                 {{kCtrl, kNum1, kNum2}, 600, 1, 0, -12, -12},
                 {{kNum2, kLeft}, 600, 1, 0, -12, -12},  // no Ctrl
                 {{kCtrl, kNum6}, 600, 1, 1, -12, -12},
                 {{kCtrl, kNum6, kDown}, 500, 1, 1, -12, 0},
                 {{kCtrl, kNum6}, 1, 1, 2, -12, 0}};  // 501 ms after the last accepted one
    int step = 0;
    for (const auto& s : steps) {
        KeysDown() = s.keys;
        Frame(s.ms);
        const ProfileOverlayState state = ProfileGetOverlayState();
        EXPECT_EQ(std::vector<int>({state.nMode, state.nSelection, state.nX, state.nY}),
                  std::vector<int>({s.mode, s.selection, s.x, s.y}))
            << step++;
    }
}

TEST_F(ProfilerFixture, Numpad7WritesTheReportAndNumpad3ResetsSections) {
    Enable(0);
    TimedScope(m_clock, "Work", 3);
    KeysDown() = {kCtrl, kNum7, kNum3};  // 7 wins
    m_client.profileAllowed = false;     // nothing runs while the client forbids it or suspended
    EXPECT_EQ(Frame(0), 0);
    m_client.profileAllowed = true;
    SetProfileSuspended(true);
    EXPECT_EQ(Frame(0), 0);
    SetProfileSuspended(false);
    EXPECT_EQ(Frame(0), 1);
    ASSERT_EQ(m_client.createdDirs, std::vector<std::string>{"profile"});
    const std::string first = Lf(m_dir.Read("profile/StatisticsFunction.log"));
    EXPECT_NE(first.find("[Work "), std::string::npos);  // the layout: ProfileReportTest.cpp

    KeysDown() = {kCtrl, kNum3};
    Frame(600);
    KeysDown() = {kCtrl, kNum7};
    EXPECT_EQ(Frame(600), 1);
    const std::string both = Lf(m_dir.Read("profile/StatisticsFunction.log"));
    ASSERT_EQ(both.compare(0, first.size(), first), 0) << "appended, not replaced";
    const std::string second = both.substr(first.size());
    EXPECT_NE(second.find("\t0.0000ms\t\t\xd7\xdc\xb9\xb2\xb5\xf7\xd3\xc3:0 "), std::string::npos);
}

TEST_F(ProfilerFixture, UnwritableReportStillFlagsTheRequest) {
    Enable(0);
    m_dir.Write("profile/StatisticsFunction.log/x", "");  // the report's name is a folder
    KeysDown() = {kCtrl, kNum7};
    EXPECT_EQ(Frame(), 1);
    EXPECT_FALSE(ProfileWriteReport("profile/StatisticsFunction.log"));
    EXPECT_FALSE(ProfileWriteReport("no/such/folder/r.log"));
    ProfileFrame(nullptr);  // a null flag is allowed
}

TEST_F(ProfilerFixture, SlowFrameWritesProcessTimesWhenLogging) {
    for (const int log : {0, 1}) {
        ProfileRestart();
        Enable(0, log, /*maxFrame=*/50);
        Frame(10);
        Frame(50);  // not above the limit
        EXPECT_TRUE(Lf(m_dir.Read("profile/StatisticsFunction.log")).empty());
        Frame(51);
        const std::string text = Lf(m_dir.Read("profile/StatisticsFunction.log"));
        EXPECT_EQ(text.rfind("ProcessTimes        UserTimes = ", 0) == 0, log == 1) << text;
        EXPECT_EQ(text.find("ms,       KernelTimes = ") != std::string::npos, log == 1);
    }
}

}  // namespace
}  // namespace pind::test

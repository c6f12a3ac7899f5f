// A scripted host for the profiler's tests: a temp folder as the working folder, a clock the test
// moves, keys the test holds down, and a client that records every rectangle and text drawn.
#ifndef PIND_TESTS_PROFILE_PROFILETESTSUPPORT_H_
#define PIND_TESTS_PROFILE_PROFILETESTSUPPORT_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "pind/platform/System.h"
#include "pind/platform/Window.h"
#include "pind/profile/ProfileObjects.h"
#include "pind/profile/Profiler.h"
#include "support/FakeClock.h"
#include "support/RecordingClient.h"
#include "support/TempDir.h"

namespace pind::test {

// Report files are opened in text mode, which on Windows ends lines with "\r\n".
inline std::string Lf(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

inline std::set<int>& KeysDown() {
    static std::set<int> s_keys;
    return s_keys;
}

inline int16_t FakeKeyState(int vk) {
    return KeysDown().count(vk) != 0 ? static_cast<int16_t>(0x8000) : int16_t{0};
}

class DrawingClient : public RecordingClient {
public:
    struct Rect {
        int left, top, right, bottom;
        uint32_t argb;
    };
    struct Text {
        int x, y;
        uint32_t rgb;
        std::string text;
    };
    std::vector<Rect> rects;
    std::vector<Text> texts;

    void FillRectangle(int l, int t, int r, int b, uint32_t argb) override {
        rects.push_back({l, t, r, b, argb});
    }
    void DrawString(int x, int y, uint32_t rgb, const char* text) override {
        texts.push_back({x, y, rgb, text != nullptr ? text : ""});
    }
    void CreateDir(const char* name) override {
        RecordingClient::CreateDir(name);
        platform::MakeDir(name);
    }
    void ClearDrawing() {
        rects.clear();
        texts.clear();
    }
};

class ProfilerFixture : public ::testing::Test {
protected:
    ProfilerFixture() : m_cwd(m_dir.Path()) {
        ProfileRestart();
        KeysDown().clear();
        m_previousKeys = platform::SetKeyStateSource(FakeKeyState);
        SetProfileSuspended(false);
    }
    ~ProfilerFixture() override {
        ProfileRestart();
        platform::SetKeyStateSource(m_previousKeys);
        KeysDown().clear();
    }

    static void Enable(int32_t showGraph = 1, int32_t log = 0, int32_t maxFrame = 3000) {
        ProfileConfigure(ProfileSettings{1, 10, maxFrame, showGraph, log});
    }

    // One frame: the clock moves `ms` first, then the profiler's frame entry runs.
    char Frame(int64_t ms = 16) {
        m_clock.AdvanceMs(ms);
        char written = 0;
        ProfileFrame(&written);
        return written;
    }

    TempDir m_dir;
    ScopedCurrentDir m_cwd;
    FakeClock m_clock;
    DrawingClient m_client;
    platform::KeyStateSource m_previousKeys = nullptr;
};

}  // namespace pind::test

#endif  // PIND_TESTS_PROFILE_PROFILETESTSUPPORT_H_

// A scripted host for the profiler's tests: a temp folder as the working folder, a clock the test
// moves, keys the test holds down, and a client that records every rectangle and text drawn.
#ifndef PIND_TESTS_PROFILE_PROFILETESTSUPPORT_H_
#define PIND_TESTS_PROFILE_PROFILETESTSUPPORT_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
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

// Records each rectangle as "left top right bottom argb" and each text as "x y rgb text".
class DrawingClient : public RecordingClient {
public:
    std::vector<std::string> rects, texts;

    void FillRectangle(int l, int t, int r, int b, uint32_t argb) override {
        char line[64];
        std::snprintf(line, sizeof line, "%d %d %d %d %08x", l, t, r, b, argb);
        rects.push_back(line);
    }
    void DrawString(int x, int y, uint32_t rgb, const char* text) override {
        char head[48];
        std::snprintf(head, sizeof head, "%d %d %06x ", x, y, rgb);
        texts.push_back(head + std::string(text != nullptr ? text : ""));
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

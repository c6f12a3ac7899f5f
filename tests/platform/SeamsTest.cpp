// The installable seams: engine log, packed resources, window messages and key state. The lock is
// tested through CMyLockCs (tests/diag).
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "pind/platform/EngineLog.h"
#include "pind/platform/Package.h"
#include "pind/platform/Window.h"
#include "support/EngineLogCapture.h"
#include "support/FakePackage.h"
#include "support/RecordingWindowSink.h"

namespace pind::platform {
namespace {

TEST(EngineLog, SinkGetsTheFormattedWholeText) {
    test::EngineLogCapture log;
    PindLogMsg("%s=%d", "level", 3);
    const std::string longText(5000, 'a');  // longer than the stack buffer
    PindLogMsg("%s!", longText.c_str());
    PindLogMsg(nullptr);
    const std::vector<std::string> lines = log.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "level=3");
    EXPECT_EQ(lines[1], longText + "!");
}

TEST(EngineLog, SetReturnsThePreviousSink) {
    auto first = [](const char*) {};
    EngineLogSink before = SetEngineLogSink(first);
    EXPECT_EQ(SetEngineLogSink(before), static_cast<EngineLogSink>(first));
}

TEST(Package, WithoutAPackageEveryCallFails) {
    ASSERT_EQ(GetPackage(), nullptr);
    PackHandle h = nullptr;
    char buf[4];
    void* data = nullptr;
    int32_t length = 0;
    EXPECT_NE(VoFOpen("a.txt", &h), 0);
    EXPECT_EQ(VoFGetLen(h), 0u);
    EXPECT_EQ(VOFRead(buf, 1, 4, h), 0u);
    VoFClose(h);
    EXPECT_EQ(VoFExist("a.txt", 0), 0);
    EXPECT_NE(VoFDump("a.txt", &data, &length, 0), 0);
    VoFUndump(data);
}

TEST(Package, InstalledPackageServesTheEntryPoints) {
    test::FakePackage pack;
    pack.files["ini/a.ini"] = "[s]\nk=1\n";
    ASSERT_EQ(GetPackage(), &pack);

    PackHandle h = nullptr;
    ASSERT_EQ(VoFOpen("ini/a.ini", &h), 0);
    ASSERT_EQ(VoFGetLen(h), 8u);
    char buf[8];
    EXPECT_EQ(VOFRead(buf, 1, 8, h), 8u);
    EXPECT_EQ(std::string(buf, 8), "[s]\nk=1\n");
    VoFClose(h);
    EXPECT_EQ(pack.closes, 1);
    EXPECT_NE(VoFOpen("ini/b.ini", &h), 0);
    EXPECT_NE(VoFOpen(nullptr, &h), 0);
    EXPECT_EQ(VoFExist("ini/a.ini", 0), 1);
    EXPECT_EQ(VoFExist("ini/b.ini", 0), 0);

    void* data = nullptr;
    int32_t length = 0;
    EXPECT_EQ(VoFDump("ini/a.ini", &data, &length, 1), 0);
    EXPECT_EQ(length, 8);
    VoFUndump(data);
    VoFUndump(nullptr);  // null is not passed on
    EXPECT_EQ(pack.undumps, 1);
}

TEST(Window, InstalledSinkGetsPostsAndConversions) {
    HWND window = reinterpret_cast<HWND>(uintptr_t{0x1234});
    {
        test::RecordingWindowSink sink;
        EXPECT_EQ(PostWindowMessage(window, WM_USER + 1, 5, -6), 1);
        ASSERT_EQ(sink.posts.size(), 1u);
        EXPECT_EQ(sink.posts[0].hWnd, window);
        EXPECT_EQ(sink.posts[0].msg, static_cast<UINT>(WM_USER + 1));
        EXPECT_EQ(sink.posts[0].wParam, 5u);
        EXPECT_EQ(sink.posts[0].lParam, -6);
        POINT p{340, 260};
        // Qualified: on Windows, ADL on HWND and POINT also finds USER32's ScreenToClient.
        EXPECT_EQ(platform::ScreenToClient(window, &p), 1);
        EXPECT_EQ(p.x, 240);
        EXPECT_EQ(p.y, 210);
        EXPECT_EQ(platform::ScreenToClient(window, nullptr), 0);  // never reaches the sink
    }
    EXPECT_EQ(SetWindowMessageSink(nullptr), nullptr);  // the sink uninstalled itself
}

TEST(Window, KeyStateSourceAnswersUntilRemoved) {
    KeyStateSource before = SetKeyStateSource(
        [](int key) -> int16_t { return key == 17 ? static_cast<int16_t>(0x8000) : 0; });
    EXPECT_NE(GetAsyncKeyState(17) & 0x8000, 0);
    EXPECT_EQ(GetAsyncKeyState(37), 0);
    SetKeyStateSource(before);
}

}  // namespace
}  // namespace pind::platform

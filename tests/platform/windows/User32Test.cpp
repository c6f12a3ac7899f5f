// The window and key-state seams with nothing installed reach USER32. A message-only window needs
// no display, so the posts are checked in this thread's own queue.
#include <gtest/gtest.h>

#include "pind/client/ClientWindow.h"
#include "pind/platform/Window.h"

namespace {

class MessageWindow : public ::testing::Test {
protected:
    void SetUp() override {
        // A popup has no frame: its client area starts at its position.
        m_hWnd = ::CreateWindowExA(0, "STATIC", "pind-test", WS_POPUP, 100, 50, 200, 100,
                                   HWND_MESSAGE, nullptr, ::GetModuleHandleA(nullptr), nullptr);
        ASSERT_NE(m_hWnd, nullptr) << ::GetLastError();
    }
    void TearDown() override {
        ::DestroyWindow(m_hWnd);
        g_hMainWnd = nullptr;
    }

    // The next message of `msg` waiting for the window; false when none is queued.
    bool Take(UINT msg, MSG* out) { return ::PeekMessageA(out, m_hWnd, msg, msg, PM_REMOVE) != 0; }

    HWND m_hWnd = nullptr;
};

TEST_F(MessageWindow, ClientMessagesReachTheWindowTheHostExported) {
    g_hMainWnd = m_hWnd;  // written by the host through the DLL's exported variable
    const uint32_t before = g_nPostedMessageCount;
    EXPECT_NE(PostClientMessage(3, -4), 0u);
    EXPECT_NE(PostClientMessage102(5, 6), 0);
    EXPECT_EQ(g_nPostedMessageCount, before + 1);
    MSG msg{};
    ASSERT_TRUE(Take(kClientMessage, &msg));
    EXPECT_EQ(msg.wParam, 3u);
    EXPECT_EQ(msg.lParam, -4);
    ASSERT_TRUE(Take(kClientMessage102, &msg));
    EXPECT_EQ(msg.wParam, 5u);
    EXPECT_FALSE(Take(kClientMessage, &msg));  // each post arrives once
}

TEST_F(MessageWindow, ScreenPointsConvertAgainstTheWindowOriginAndDeadWindowsFail) {
    g_hMainWnd = m_hWnd;
    POINT p{130, 90};
    ASSERT_NE(ScreenToMainWindow(&p), 0);
    EXPECT_EQ(p.x, 30);
    EXPECT_EQ(p.y, 40);
    ::DestroyWindow(m_hWnd);  // TearDown's second destroy fails harmlessly
    EXPECT_EQ(pind::platform::PostWindowMessage(m_hWnd, WM_USER, 0, 0), 0);
    EXPECT_EQ(ScreenToMainWindow(&p), 0);
    EXPECT_EQ(pind::platform::GetAsyncKeyState(VK_F11) & 0x8000, 0);  // headless: no key is down
}

}  // namespace

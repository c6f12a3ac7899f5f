// Posting to the client's main window through the window seam.
#include <gtest/gtest.h>

#include "pind/client/ClientWindow.h"
#include "support/FakeClock.h"
#include "support/RecordingWindowSink.h"

namespace {

class ClientWindow : public ::testing::Test {
protected:
    void SetUp() override {
        g_hMainWnd = nullptr;
        g_nPostedMessageCount = 0;
    }
    void TearDown() override { g_hMainWnd = nullptr; }
    HWND Window() { return reinterpret_cast<HWND>(&m_window); }

    pind::test::RecordingWindowSink m_sink;
    int m_window = 0;
};

TEST_F(ClientWindow, WithoutAWindowOnlyTheUncheckedPostGoesOutAndCounts) {
    EXPECT_EQ(PostClientMessage(7, 0), 7u);
    EXPECT_EQ(PostClientMessage102(1, 2), 0);
    EXPECT_EQ(PostClientMessage106(1, 2), 0);
    POINT p{1, 1};
    EXPECT_EQ(ScreenToMainWindow(&p), 0);
    EXPECT_TRUE(m_sink.posts.empty());
    m_sink.result = 0;
    EXPECT_EQ(PostClientMessageUnchecked(1, 1), 0);
    EXPECT_EQ(g_nPostedMessageCount, 1u);
    ASSERT_EQ(m_sink.posts.size(), 1u);
    EXPECT_EQ(m_sink.posts[0].hWnd, nullptr);
}

TEST_F(ClientWindow, MessagesCarryTheirNumbersAndOnlyTheFirstPairCounts) {
    pind::test::FakeClock clock;
    g_hMainWnd = Window();
    EXPECT_EQ(PostClientMessage(3, 4), 1u);
    EXPECT_EQ(PostClientMessageUnchecked(5, 6), 1);
    EXPECT_EQ(PostClientMessage102(7, 8), 1);
    EXPECT_EQ(PostClientMessage106(9, -10), 1);
    EXPECT_EQ(g_nPostedMessageCount, 2u);
    EXPECT_EQ(clock.TickReads(), 2);  // the 102/106 pair reads the tick
    const UINT expected[] = {1124, 1124, 1126, 1130};
    ASSERT_EQ(m_sink.posts.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(m_sink.posts[i].msg, expected[i]);
        EXPECT_EQ(m_sink.posts[i].hWnd, Window());
        EXPECT_EQ(m_sink.posts[i].wParam, 3u + 2 * i);
    }
    EXPECT_EQ(m_sink.posts[3].lParam, -10);
    m_sink.result = 0;
    EXPECT_EQ(PostClientMessage(7, 0), 0u);  // the post's result comes back...
    EXPECT_EQ(g_nPostedMessageCount, 3u);    // ...counted before the post
}

TEST_F(ClientWindow, ScreenPointsConvertToTheMainWindow) {
    g_hMainWnd = Window();
    POINT p{340, 260};
    EXPECT_EQ(ScreenToMainWindow(&p), 1);
    EXPECT_EQ(p.x * 1000 + p.y, 240210);
    EXPECT_EQ(ScreenToMainWindow(nullptr), 0);  // the sink would fault on a null point
}

}  // namespace

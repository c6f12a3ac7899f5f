// The host objects, posts to the client's main window, and component links.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pind/client/ClientWindow.h"
#include "pind/client/Component.h"
#include "pind/client/PindClient.h"
#include "pind/platform/Window.h"
#include "support/FakeClock.h"
#include "support/RecordingClient.h"

namespace {

// Records every post as "msg window wParam lParam"; the window's client area starts at (100, 50).
struct WindowSink : pind::platform::IWindowMessageSink {
    std::vector<std::string> posts;
    BOOL result = 1;  // what every post answers
    BOOL PostWindowMessage(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam) override {
        posts.push_back(std::to_string(msg) + (hWnd != nullptr ? " w " : " - ") +
                        std::to_string(wParam) + " " + std::to_string(lParam));
        return result;
    }
    BOOL ScreenToClient(HWND, POINT* point) override {
        point->x -= 100;
        point->y -= 50;
        return 1;
    }
};

TEST(ClientWindow, PostsCarryTheirNumbersAndOnlyTheFirstPairCounts) {
    WindowSink sink;
    auto* previous = pind::platform::SetWindowMessageSink(&sink);
    pind::test::FakeClock clock;
    g_hMainWnd = nullptr;
    g_nPostedMessageCount = 0;
    // Without a window only the unchecked post goes out.
    EXPECT_EQ(PostClientMessage(7, 0), 7u);
    EXPECT_EQ(PostClientMessage102(1, 2) + PostClientMessage106(1, 2), 0);
    EXPECT_EQ(PostClientMessageUnchecked(5, 6), 1);
    int window = 0;
    g_hMainWnd = reinterpret_cast<HWND>(&window);
    EXPECT_EQ(PostClientMessage(3, 4), 1u);
    EXPECT_EQ(PostClientMessage102(7, 8), 1);
    EXPECT_EQ(PostClientMessage106(9, -10), 1);
    EXPECT_EQ(clock.TickReads(), 2);  // the 102/106 pair reads the tick
    POINT p{340, 260};
    EXPECT_EQ(ScreenToMainWindow(&p), 1);
    EXPECT_EQ(p.x * 1000 + p.y, 240210);
    sink.result = 0;
    EXPECT_EQ(PostClientMessage(7, 0), 0u);  // the post's result comes back...
    EXPECT_EQ(g_nPostedMessageCount, 3u);    // ...counted before the post
    g_hMainWnd = nullptr;
    pind::platform::SetWindowMessageSink(previous);
    EXPECT_EQ(sink.posts, (std::vector<std::string>{"1124 - 5 6", "1124 w 3 4", "1126 w 7 8",
                                                    "1130 w 9 -10", "1124 w 7 0"}));
}

struct Parent : CCompParent {
    std::vector<CCompChild*> lost;
    void OnLinkDestroyed(CCompChild* child) override { lost.push_back(child); }
};

struct Child : CCompChild {
    std::vector<CCompParent*> lost;
    void OnLinkDestroyed(CCompParent* parent) override { lost.push_back(parent); }
};

// Serial numbers count per class, and a copy shares its original's without taking one.
TEST(Component, SerialNumbersAndDestroyingEitherSideTellsEachCounterpartOnce) {
    Child c1, c2;
    Parent p1, p2;
    const Parent copy(p1);
    const Parent p3;
    EXPECT_EQ(c2.GetId(), c1.GetId() + 1);
    EXPECT_EQ(copy.GetId(), p1.GetId());
    EXPECT_EQ(p3.GetId(), p2.GetId() + 1);
    {
        Parent p;
        p.AddChild(&c1);
        p.AddChild(&c1);  // twice: linked once on each side
        p.AddChild(nullptr);
        p.AddChild(&c2);
        ASSERT_EQ(p.GetChildren().size(), 2u);
        ASSERT_EQ(c1.GetParents().size(), 1u);
        Child c;
        p1.AddChild(&c);
        p2.AddChild(&c);
    }
    EXPECT_TRUE(c1.GetParents().empty() && c2.GetParents().empty());
    EXPECT_TRUE(p1.GetChildren().empty() && p2.GetChildren().empty());
    for (size_t told : {c1.lost.size(), c2.lost.size(), p1.lost.size(), p2.lost.size()}) {
        EXPECT_EQ(told, 1u);
    }
}

TEST(Component, RemovalAddParentAndCopiesAreOneSided) {
    Parent p;
    Child c;
    p.AddChild(&c);
    p.RemoveChild(&c);
    EXPECT_EQ(c.GetParents().count(&p), 1u);  // the child keeps its side
    c.RemoveParent(&p);
    c.AddParent(&p);  // through the child alone: the parent does not learn of it
    EXPECT_TRUE(p.GetChildren().empty());
    c.RemoveParent(&p);
    p.AddChild(&c);
    c.lost.clear();
    {
        // Destroying a copy erases it from the child's set (where it never was) and calls the
        // child's hook: the one-sided link reaches into the child, as the contract warns.
        Parent copy(p);
        EXPECT_EQ(c.GetParents().count(&copy), 0u);
    }
    EXPECT_EQ(c.lost.size(), 1u);
    EXPECT_EQ(c.GetParents().count(&p), 1u);
}

// A host's own object, even one derived from the default, has a type of its own.
struct OtherHost : IPindClientNone {};

TEST(PindClient, HostObjectsAreNeverDestroyedByTheLibrary) {
    GetClient();  // a default is current
    {
        pind::test::RecordingClient host;  // SetClient(&host) destroys that default
        OtherHost other;
        EXPECT_EQ(SetClient(&other), &other);
        host.DebugText("still %s", "here");  // replacing the host left it alive
        EXPECT_EQ(host.debugTexts, std::vector<std::string>{"still here"});
        SetClient(&host);
        EXPECT_FALSE(other.IsPackageInUse());  // and the same for the second host
    }
    // The recording client uninstalled itself; a fresh default answers.
    EXPECT_EQ(GetClient()->OpenFile("a", "r", true), nullptr);
    SetClient(nullptr);
}

}  // namespace

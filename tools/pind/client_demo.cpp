// Demo of the host seams: a host client, window messages, components and the lock.
#include <cstdio>
#include <string>
#include <vector>

#include "Commands.h"
#include "pind/client/ClientWindow.h"
#include "pind/client/Component.h"
#include "pind/client/PindClient.h"
#include "pind/diag/LockCs.h"
#include "pind/diag/Report.h"
#include "pind/platform/EngineLog.h"
#include "pind/platform/System.h"
#include "pind/platform/Window.h"

namespace pind::tool {
namespace {

class DemoHost : public IPindClientNone {
public:
    explicit DemoHost(std::string base) : m_base(std::move(base)) {}
    const char* GetBaseDir() override { return m_base.c_str(); }
    bool IsPackageInUse() override { return false; }

private:
    std::string m_base;
};

class PrintingSink : public platform::IWindowMessageSink {
public:
    BOOL PostWindowMessage(HWND, UINT msg, WPARAM wParam, LPARAM lParam) override {
        std::printf("  window got message %u (WM_USER + %u), wParam %llu, lParam %lld\n", msg,
                    msg - WM_USER, static_cast<unsigned long long>(wParam),
                    static_cast<long long>(lParam));
        return 1;
    }
    BOOL ScreenToClient(HWND, POINT* point) override {
        point->x -= 100;  // the demo window's client area starts at (100, 50) on screen
        point->y -= 50;
        return 1;
    }
};

struct Unit : CCompParent {
    void OnLinkDestroyed(CCompChild* child) override {
        std::printf("  unit %u: buff %u went away\n", GetId(), child->GetId());
    }
};

struct Buff : CCompChild {
    void OnLinkDestroyed(CCompParent* parent) override {
        std::printf("  buff %u: unit %u went away\n", GetId(), parent->GetId());
    }
};

void PrintEngineLine(const char* text) { std::printf("  engine log: %s\n", text); }

}  // namespace

void DemoClient(const DemoContext& ctx) {
    DemoHeading("host client");
    std::printf("  before SetClient, OpenFile answers %s\n",
                GetClient()->OpenFile("ini/GameSetup.ini", "r", true) ? "a file" : "null");
    DemoHost host(ctx.dataDir);
    SetClient(&host);
    std::printf("  host installed; base folder: %s\n", GetClient()->GetBaseDir());

    const std::string setup = ctx.dataDir + "/ini/GameSetup.ini";
    std::printf("  %s [FrameRate] Profile=%u ProfileInterval=%u CheckMaxFrameInterval=%u\n",
                setup.c_str(), platform::PrivateProfileInt("FrameRate", "Profile", 0, setup.c_str()),
                platform::PrivateProfileInt("FrameRate", "ProfileInterval", 10, setup.c_str()),
                platform::PrivateProfileInt("FrameRate", "CheckMaxFrameInterval", 3000,
                                            setup.c_str()));

    DemoHeading("window messages");
    PrintingSink sink;
    platform::SetWindowMessageSink(&sink);
    std::printf("  no window yet: PostClientMessage(7, 0) returns %llu, %u posted\n",
                static_cast<unsigned long long>(PostClientMessage(7, 0)), g_nPostedMessageCount);
    int demoWindow = 0;
    g_hMainWnd = reinterpret_cast<HWND>(&demoWindow);
    PostClientMessage(1, 42);
    PostClientMessage102(2, 0);
    PostClientMessage106(3, -1);
    POINT pt{340, 260};
    ScreenToMainWindow(&pt);
    std::printf("  %u counted; screen (340, 260) is (%d, %d) in the window\n",
                g_nPostedMessageCount, static_cast<int>(pt.x), static_cast<int>(pt.y));
    g_hMainWnd = nullptr;
    platform::SetWindowMessageSink(nullptr);

    DemoHeading("components");
    {
        Buff haste;
        Buff shield;
        {
            Unit hero;
            hero.AddChild(&haste);
            hero.AddChild(&shield);
            hero.AddChild(&haste);  // already linked: still one entry each side
            std::printf("  unit %u has %zu buffs; buff %u has %zu units\n", hero.GetId(),
                        hero.GetChildren().size(), haste.GetId(), haste.GetParents().size());
        }
        std::printf("  after the unit is gone, buff %u has %zu units\n", haste.GetId(),
                    haste.GetParents().size());
    }

    DemoHeading("diagnostics and lock");
    const platform::EngineLogSink previous = platform::SetEngineLogSink(PrintEngineLine);
    ReportIfNot("pszIniFile", "PindIni", 278);
    platform::SetEngineLogSink(previous);
    CMyLockCs lock;
    lock.Lock();
    lock.Lock();
    lock.Unlock();
    lock.Unlock();
    std::printf("  CMyLockCs locked twice and released twice by one thread\n");

    SetClient(nullptr);
}

}  // namespace pind::tool

#include "pind/client/ClientWindow.h"

#include "pind/platform/Clock.h"
#include "pind/platform/Window.h"

HWND g_hMainWnd = nullptr;
uint32_t g_nPostedMessageCount = 0;

WPARAM PostClientMessage(WPARAM wParam, LPARAM lParam) {
    if (g_hMainWnd == nullptr) {
        return wParam;
    }
    ++g_nPostedMessageCount;
    return static_cast<WPARAM>(
        pind::platform::PostWindowMessage(g_hMainWnd, kClientMessage, wParam, lParam));
}

BOOL PostClientMessageUnchecked(WPARAM wParam, LPARAM lParam) {
    ++g_nPostedMessageCount;
    return pind::platform::PostWindowMessage(g_hMainWnd, kClientMessage, wParam, lParam);
}

namespace {
BOOL PostUncounted(UINT msg, WPARAM wParam, LPARAM lParam) {
    if (g_hMainWnd == nullptr) {
        return 0;
    }
    // The client reads the tick here and drops it; the read is kept so that clock seams see the
    // same calls as the client's own clock.
    (void)pind::platform::GetTickCount();
    return pind::platform::PostWindowMessage(g_hMainWnd, msg, wParam, lParam);
}
}  // namespace

BOOL PostClientMessage102(WPARAM wParam, LPARAM lParam) {
    return PostUncounted(kClientMessage102, wParam, lParam);
}

BOOL PostClientMessage106(WPARAM wParam, LPARAM lParam) {
    return PostUncounted(kClientMessage106, wParam, lParam);
}

BOOL ScreenToMainWindow(POINT* point) { return pind::platform::ScreenToClient(g_hMainWnd, point); }

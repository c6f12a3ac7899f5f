// Messages to the client's main window. The host writes its window handle into g_hMainWnd at
// start-up; the functions below post WM_USER-based messages to it through the window seam
// (pind/platform/Window.h).
//   g_hMainWnd = hWnd; PostClientMessage(kind, value);
#ifndef PIND_CLIENT_CLIENTWINDOW_H_
#define PIND_CLIENT_CLIENTWINDOW_H_

#include <cstdint>

#include "pind/platform/Export.h"
#include "pind/platform/WinTypes.h"

/// The client's main window; null until the host sets it.
extern PIND_API HWND g_hMainWnd;
/// Messages posted by PostClientMessage and PostClientMessageUnchecked (for reading).
extern PIND_API uint32_t g_nPostedMessageCount;

constexpr UINT kClientMessage = WM_USER + 100;     ///< 1124
constexpr UINT kClientMessage102 = WM_USER + 102;  ///< 1126
constexpr UINT kClientMessage106 = WM_USER + 106;  ///< 1130

/// With no window: returns `wParam` unchanged and counts nothing. Otherwise counts the message and
/// posts kClientMessage; returns the post result (non-zero when queued).
PIND_API WPARAM PostClientMessage(WPARAM wParam, LPARAM lParam);
/// Counts and posts kClientMessage without looking at the window handle.
PIND_API BOOL PostClientMessageUnchecked(WPARAM wParam, LPARAM lParam);
/// With a window: posts kClientMessage102 (not counted); without one returns 0.
PIND_API BOOL PostClientMessage102(WPARAM wParam, LPARAM lParam);
/// With a window: posts kClientMessage106 (not counted); without one returns 0.
PIND_API BOOL PostClientMessage106(WPARAM wParam, LPARAM lParam);
/// Rewrites a screen position as a position inside the main window; 0 on failure.
PIND_API BOOL ScreenToMainWindow(POINT* point);

#endif  // PIND_CLIENT_CLIENTWINDOW_H_

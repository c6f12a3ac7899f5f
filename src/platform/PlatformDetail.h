// What each platform folder (posix/, windows/) provides to the shared seam code beside this file.
#ifndef PIND_SRC_PLATFORM_PLATFORMDETAIL_H_
#define PIND_SRC_PLATFORM_PLATFORMDETAIL_H_

#include <cstdint>

#include "pind/platform/WinTypes.h"

namespace pind::platform::detail {

/// The engine log when no sink is installed.
void DefaultEngineLog(const char* text);

/// USER32 (or nothing, where there is no USER32) when no window sink is installed.
BOOL DefaultPostWindowMessage(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam);
BOOL DefaultScreenToClient(HWND hWnd, POINT* point);
int16_t DefaultAsyncKeyState(int virtualKey);

}  // namespace pind::platform::detail

#endif  // PIND_SRC_PLATFORM_PLATFORMDETAIL_H_

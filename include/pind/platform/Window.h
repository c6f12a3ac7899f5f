// Window messages to the client's main window (USER32 `PostMessageA`, `ScreenToClient`) and the
// keyboard state (`GetAsyncKeyState`). On Windows the real USER32 calls answer unless a host installs
// its own; elsewhere nothing answers until one is installed (posts fail, no key is down).
//   RecordingSink sink; pind::platform::SetWindowMessageSink(&sink);
#ifndef PIND_PLATFORM_WINDOW_H_
#define PIND_PLATFORM_WINDOW_H_

#include <cstdint>

#include "pind/platform/Export.h"
#include "pind/platform/WinTypes.h"

namespace pind::platform {

/// Where posted messages go.
class PIND_API IWindowMessageSink {
public:
    virtual ~IWindowMessageSink();
    /// As `PostMessageA`: non-zero when the message was queued.
    virtual BOOL PostWindowMessage(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam) = 0;
    /// As `ScreenToClient`: non-zero on success, with `point` converted in place.
    virtual BOOL ScreenToClient(HWND hWnd, POINT* point) = 0;
};

/// Installs `sink` (null: the platform's default); returns the one installed before. Not owned.
PIND_API IWindowMessageSink* SetWindowMessageSink(IWindowMessageSink* sink);

/// `PostMessage` through the installed sink; its answer.
PIND_API BOOL PostWindowMessage(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam);
/// A null point fails without touching anything.
PIND_API BOOL ScreenToClient(HWND hWnd, POINT* point);

/// Answers `GetAsyncKeyState`: bit 15 set while the virtual key is down.
using KeyStateSource = int16_t (*)(int virtualKey);

/// Installs `source` (null: the platform's default); returns the one installed before.
PIND_API KeyStateSource SetKeyStateSource(KeyStateSource source);
/// `GetAsyncKeyState` through the installed source: bit 15 set while the key is down.
PIND_API int16_t GetAsyncKeyState(int virtualKey);

}  // namespace pind::platform

#endif  // PIND_PLATFORM_WINDOW_H_

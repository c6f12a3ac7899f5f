// With no engine and no window system, the defaults are stderr for the engine log, and no window
// and no keyboard: posts fail and no key is down.
#include <cstdio>

#include "platform/PlatformDetail.h"

namespace pind::platform::detail {

void DefaultEngineLog(const char* text) { std::fprintf(stderr, "%s\n", text); }

BOOL DefaultPostWindowMessage(HWND, UINT, WPARAM, LPARAM) { return 0; }
BOOL DefaultScreenToClient(HWND, POINT*) { return 0; }
int16_t DefaultAsyncKeyState(int) { return 0; }

}  // namespace pind::platform::detail

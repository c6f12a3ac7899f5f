// The engine log goes to the engine's LogMsg when the graphic library is loaded, else to the
// debugger and stderr; window messages and key states go to USER32.
#include <cstdio>

#include "platform/PlatformDetail.h"

namespace pind::platform::detail {

void DefaultEngineLog(const char* text) {
    using LogMsgFn = void(__cdecl*)(const char*, ...);
    static const LogMsgFn s_logMsg = [] {
        HMODULE graphic = ::GetModuleHandleA("graphic.dll");
        return graphic != nullptr ? reinterpret_cast<LogMsgFn>(reinterpret_cast<void*>(
                                        ::GetProcAddress(graphic, "LogMsg")))
                                  : nullptr;
    }();
    if (s_logMsg != nullptr) {
        s_logMsg("%s", text);
        return;
    }
    ::OutputDebugStringA(text);
    ::OutputDebugStringA("\n");
    std::fprintf(stderr, "%s\n", text);
}

BOOL DefaultPostWindowMessage(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    return ::PostMessageA(hWnd, msg, wParam, lParam);
}

BOOL DefaultScreenToClient(HWND hWnd, POINT* point) { return ::ScreenToClient(hWnd, point); }

int16_t DefaultAsyncKeyState(int virtualKey) { return ::GetAsyncKeyState(virtualKey); }

}  // namespace pind::platform::detail

#include "pind/platform/Window.h"

#include <atomic>

#include "platform/PlatformDetail.h"

namespace pind::platform {
namespace {
std::atomic<IWindowMessageSink*> g_sink{nullptr};
std::atomic<KeyStateSource> g_keys{nullptr};
}  // namespace

IWindowMessageSink::~IWindowMessageSink() = default;

IWindowMessageSink* SetWindowMessageSink(IWindowMessageSink* sink) { return g_sink.exchange(sink); }

BOOL PostWindowMessage(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    if (IWindowMessageSink* sink = g_sink.load()) {
        return sink->PostWindowMessage(hWnd, msg, wParam, lParam);
    }
    return detail::DefaultPostWindowMessage(hWnd, msg, wParam, lParam);
}

BOOL ScreenToClient(HWND hWnd, POINT* point) {
    if (point == nullptr) {
        return 0;
    }
    if (IWindowMessageSink* sink = g_sink.load()) {
        return sink->ScreenToClient(hWnd, point);
    }
    return detail::DefaultScreenToClient(hWnd, point);
}

KeyStateSource SetKeyStateSource(KeyStateSource source) { return g_keys.exchange(source); }

int16_t GetAsyncKeyState(int virtualKey) {
    if (KeyStateSource source = g_keys.load()) {
        return source(virtualKey);
    }
    return detail::DefaultAsyncKeyState(virtualKey);
}

}  // namespace pind::platform

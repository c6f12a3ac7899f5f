// A window-message sink for tests: records every post and converts screen points as if the window's
// client area started at (100, 50). Installed while it lives.
//   pind::test::RecordingWindowSink sink; PostClientMessage(1, 2); sink.posts[0].msg == 1124
#ifndef PIND_TESTS_SUPPORT_RECORDINGWINDOWSINK_H_
#define PIND_TESTS_SUPPORT_RECORDINGWINDOWSINK_H_

#include <vector>

#include "pind/platform/Window.h"

namespace pind::test {

class RecordingWindowSink : public platform::IWindowMessageSink {
public:
    RecordingWindowSink() : m_previous(platform::SetWindowMessageSink(this)) {}
    ~RecordingWindowSink() override { platform::SetWindowMessageSink(m_previous); }
    RecordingWindowSink(const RecordingWindowSink&) = delete;
    RecordingWindowSink& operator=(const RecordingWindowSink&) = delete;

    struct Post {
        HWND hWnd;
        UINT msg;
        WPARAM wParam;
        LPARAM lParam;
    };
    std::vector<Post> posts;
    BOOL result = 1;  // what every post answers

    BOOL PostWindowMessage(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam) override {
        posts.push_back({hWnd, msg, wParam, lParam});
        return result;
    }
    /// Fails for a null window.
    BOOL ScreenToClient(HWND hWnd, POINT* point) override {
        if (hWnd == nullptr) {
            return 0;
        }
        point->x -= 100;
        point->y -= 50;
        return 1;
    }

private:
    platform::IWindowMessageSink* m_previous;
};

}  // namespace pind::test

#endif  // PIND_TESTS_SUPPORT_RECORDINGWINDOWSINK_H_

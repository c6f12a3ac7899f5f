#include "pind/platform/EngineLog.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "platform/PlatformDetail.h"

namespace pind::platform {
namespace {
std::atomic<EngineLogSink> g_sink{nullptr};
}  // namespace

EngineLogSink SetEngineLogSink(EngineLogSink sink) { return g_sink.exchange(sink); }

void PindLogMsg(const char* format, ...) {
    if (format == nullptr) {
        return;
    }
    char local[1024];
    std::string big;
    const char* text = local;
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    const int needed = std::vsnprintf(local, sizeof local, format, args);
    va_end(args);
    if (needed >= static_cast<int>(sizeof local)) {
        // The engine log takes the whole text; only the common short line avoids the heap.
        big.resize(static_cast<size_t>(needed) + 1);
        std::vsnprintf(&big[0], big.size(), format, again);
        big.resize(static_cast<size_t>(needed));
        text = big.c_str();
    } else if (needed < 0) {
        local[0] = '\0';
    }
    va_end(again);
    if (EngineLogSink sink = g_sink.load()) {
        sink(text);
    } else {
        detail::DefaultEngineLog(text);
    }
}

}  // namespace pind::platform

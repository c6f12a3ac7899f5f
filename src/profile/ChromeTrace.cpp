// The trace of the last frames' scopes as Trace Event JSON: "X" complete events per scope with the
// thread that ran it, and an instant event where each frame began.
#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "pind/files/PackFile.h"
#include "pind/profile/Profiler.h"
#include "profile/ProfilerState.h"

namespace pind::detail {
namespace {

// JSON wants UTF-8, but names are GBK: every byte outside printable ASCII goes out as \u00XX, so
// the file always parses and no byte is lost.
void AppendJsonString(std::string& out, const std::string& text) {
    out += '"';
    for (const char c : text) {
        const auto b = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (b < 0x20 || b >= 0x7f) {
            out += fmt::format("\\u{:04x}", b);
        } else {
            out += c;
        }
    }
    out += '"';
}

}  // namespace

void TraceResize(Profiler& p, size_t nFrames) {
    p.frames.assign(nFrames, 0);
    p.nNextFrame = p.nFrameCount = 0;
    p.events.assign(std::min(kMaxTraceEvents, nFrames * kTraceEventsPerFrame), TraceEvent{});
    p.nNextEvent = p.nEventCount = 0;
}

void TraceFrame(Profiler& p, int64_t nNow, uint32_t uThread) {
    if (p.frames.empty()) {
        return;
    }
    p.uMainThread = uThread;
    p.frames[p.nNextFrame] = nNow;
    p.nNextFrame = (p.nNextFrame + 1) % p.frames.size();
    p.nFrameCount = std::min(p.nFrameCount + 1, p.frames.size());
}

}  // namespace pind::detail

namespace pind {

bool ProfileWriteChromeTrace(const char* pszPath) {
    if (pszPath == nullptr) {
        return false;
    }
    detail::Profiler& p = detail::EnsureProfiler();
    std::string out = "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[\n";
    {
        platform::CriticalSectionGuard lock(p.cs);
        const double usPerTick = 1e6 / static_cast<double>(p.nFrequency);
        const size_t nFrames = p.frames.size();
        // The oldest kept frame: scopes that ended before it belong to frames already dropped.
        const size_t first =
            (p.nNextFrame + nFrames - p.nFrameCount) % std::max<size_t>(1, nFrames);
        const int64_t cutoff =
            p.nFrameCount == nFrames && nFrames != 0 ? p.frames[first] : INT64_MIN;
        out += fmt::format(
            "{{\"name\":\"thread_name\",\"ph\":\"M\",\"pid\":1,\"tid\":{},"
            "\"args\":{{\"name\":\"main\"}}}}",
            p.uMainThread);
        for (size_t i = 0; i < p.nFrameCount; ++i) {
            const int64_t at = p.frames[(first + i) % nFrames];
            out += fmt::format(
                ",\n{{\"name\":\"Frame\",\"ph\":\"i\",\"s\":\"g\",\"ts\":{:.3f},\"pid\":1,"
                "\"tid\":{}}}",
                static_cast<double>(at) * usPerTick, p.uMainThread);
        }
        const size_t nEvents = p.events.size();
        const size_t firstEvent =
            (p.nNextEvent + nEvents - p.nEventCount) % std::max<size_t>(1, nEvents);
        for (size_t i = 0; i < p.nEventCount; ++i) {
            const detail::TraceEvent& e = p.events[(firstEvent + i) % nEvents];
            if (e.nStart < cutoff) {
                continue;
            }
            out += ",\n{\"name\":";
            detail::AppendJsonString(out, e.pSection->strName);
            out += fmt::format(
                ",\"cat\":\"scope\",\"ph\":\"X\",\"ts\":{:.3f},\"dur\":{:.3f},\"pid\":1,\"tid\":{}}"
                "}",
                static_cast<double>(e.nStart) * usPerTick,
                static_cast<double>(e.nDuration) * usPerTick, e.uThread);
        }
    }
    out += "\n]}\n";
    CPackFile* file = PackFOpen(pszPath, "wb");
    if (file == nullptr) {
        return false;
    }
    const bool written = PackFWrite(out.data(), 1, out.size(), file) == out.size();
    const bool flushed = PackFFlush(file) == 0;
    PackFClose(file);
    return written && flushed;
}

}  // namespace pind

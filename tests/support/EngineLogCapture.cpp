#include "support/EngineLogCapture.h"

#include <mutex>

namespace pind::test {
namespace {
std::mutex g_mutex;
std::vector<std::string> g_lines;

void Record(const char* text) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_lines.emplace_back(text);
}
}  // namespace

EngineLogCapture::EngineLogCapture() : m_previous(platform::SetEngineLogSink(Record)) { Clear(); }

EngineLogCapture::~EngineLogCapture() { platform::SetEngineLogSink(m_previous); }

std::vector<std::string> EngineLogCapture::Lines() const {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_lines;
}

void EngineLogCapture::Clear() {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_lines.clear();
}

}  // namespace pind::test

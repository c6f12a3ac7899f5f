// Shared pieces of the logging tests: a recording callback and a fixture that runs each test in its
// own current folder, on a fake clock, in a fixed zone, with the written-text memory cleared.
#ifndef PIND_TESTS_LOGGING_LOGTESTSUPPORT_H_
#define PIND_TESTS_LOGGING_LOGTESTSUPPORT_H_

#include <gtest/gtest.h>

#include <fstream>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "pind/logging/Logger.h"
#include "support/FakeClock.h"
#include "support/TempDir.h"

namespace pind::test {

class RecordingLogCallback : public _log::ILogCallback {
public:
    void OnLog(uint32_t nLevel, const char* pszText) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.emplace_back(nLevel, pszText);
    }
    std::vector<std::pair<uint32_t, std::string>> Entries() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_entries;
    }

private:
    std::mutex m_mutex;
    std::vector<std::pair<uint32_t, std::string>> m_entries;
};

/// Every line of a file, without its "\n"; empty when the file cannot be read. Read in text mode,
/// as the writer writes: on Windows its CR LF line ends come back as "\n".
inline std::vector<std::string> ReadLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

class LogTest : public ::testing::Test {
protected:
    LogTest() : m_cwd(m_dir.Path()), m_tz("UTC0") {
        _log::GetLoggerFactory()->SetLogFolder("debug");
        _log::GetLoggerFactory()->SetCallback(&m_callback);
        pind::detail::ClearWrittenTexts();
    }
    ~LogTest() override { _log::GetLoggerFactory()->SetCallback(nullptr); }

    /// A logger of the global factory under a name no other test uses.
    _log::ILogger* NewLogger(const std::string& strName, uint32_t nMinLevel = _log::LOG_INFO,
                             _log::LogAttributes fixed = {}) {
        _log::LoggerConfig config;
        config.strName = strName;
        config.nMinLevel = nMinLevel;
        config.vecFixedAttrs = std::move(fixed);
        return _log::GetLoggerFactory()->GetLogger(config);
    }
    size_t Calls() { return m_callback.Entries().size(); }

    TempDir m_dir;
    ScopedCurrentDir m_cwd;
    FakeClock m_clock;  // 2024-05-07 01:03:12 UTC
    ScopedTz m_tz;
    RecordingLogCallback m_callback;
};

}  // namespace pind::test

#endif  // PIND_TESTS_LOGGING_LOGTESTSUPPORT_H_

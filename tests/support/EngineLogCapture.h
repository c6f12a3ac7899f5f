// Records every engine-log line while it lives (one capture at a time).
//   pind::test::EngineLogCapture log; SafeStrlen(nullptr);
//   EXPECT_EQ(log.Lines(), std::vector<std::string>{"SafeStrlen param is null"});
#ifndef PIND_TESTS_SUPPORT_ENGINELOGCAPTURE_H_
#define PIND_TESTS_SUPPORT_ENGINELOGCAPTURE_H_

#include <string>
#include <vector>

#include "pind/platform/EngineLog.h"

namespace pind::test {

class EngineLogCapture {
public:
    EngineLogCapture();
    ~EngineLogCapture();
    EngineLogCapture(const EngineLogCapture&) = delete;
    EngineLogCapture& operator=(const EngineLogCapture&) = delete;

    /// Lines logged since construction or the last Clear, oldest first.
    std::vector<std::string> Lines() const;
    void Clear();

private:
    platform::EngineLogSink m_previous;
};

}  // namespace pind::test

#endif  // PIND_TESTS_SUPPORT_ENGINELOGCAPTURE_H_

// Records every formatter report while it lives by filling the handler slot.
//   RecordedReports reports; f.GetResult(); EXPECT_EQ(reports.Codes(), std::vector<int>{2002});
#ifndef PIND_TESTS_FORMAT_FORMATTESTSUPPORT_H_
#define PIND_TESTS_FORMAT_FORMATTESTSUPPORT_H_

#include <string>
#include <vector>

#include "pind/format/FormatError.h"

namespace pind::test {

struct FormatReport {
    int nCode;
    std::string strMessage;
    std::string strFile;
    int nLine;
};

class RecordedReports {
public:
    RecordedReports() : m_previous(g_pfnFormatErrorHandler) {
        Log().clear();
        g_pfnFormatErrorHandler = Record;
    }
    ~RecordedReports() { g_pfnFormatErrorHandler = m_previous; }
    RecordedReports(const RecordedReports&) = delete;
    RecordedReports& operator=(const RecordedReports&) = delete;

    const std::vector<FormatReport>& All() const { return Log(); }
    /// "code message" per report, oldest first.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        for (const FormatReport& r : Log()) {
            lines.push_back(std::to_string(r.nCode) + " " + r.strMessage);
        }
        return lines;
    }

private:
    static std::vector<FormatReport>& Log() {
        static std::vector<FormatReport> s_log;
        return s_log;
    }
    static int Record(int nCode, const char* pszMessage, const char* pszFile, int nLine) {
        Log().push_back({nCode, pszMessage != nullptr ? pszMessage : "<null>",
                         pszFile != nullptr ? pszFile : "<null>", nLine});
        return 0;
    }

    FormatErrorHandler m_previous;
};

}  // namespace pind::test

#endif  // PIND_TESTS_FORMAT_FORMATTESTSUPPORT_H_

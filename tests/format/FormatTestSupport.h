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
    std::string strMessage, strFile;
    int nLine;
};

class RecordedReports {
public:
    RecordedReports() : m_previous(g_pfnFormatErrorHandler) {
        All().clear();
        g_pfnFormatErrorHandler = [](int nCode, const char* pszMessage, const char* pszFile,
                                     int nLine) {
            All().push_back({nCode, pszMessage != nullptr ? pszMessage : "<null>",
                             pszFile != nullptr ? pszFile : "<null>", nLine});
            return 0;
        };
    }
    ~RecordedReports() { g_pfnFormatErrorHandler = m_previous; }

    static std::vector<FormatReport>& All() {
        static std::vector<FormatReport> s_log;
        return s_log;
    }
    /// "code message" per report, oldest first.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        for (const FormatReport& r : All())
            lines.push_back(std::to_string(r.nCode) + " " + r.strMessage);
        return lines;
    }

private:
    FormatErrorHandler m_previous;
};

}  // namespace pind::test

#endif  // PIND_TESTS_FORMAT_FORMATTESTSUPPORT_H_

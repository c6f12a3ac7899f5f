#include "pind/format/FormatError.h"

#include <string>
#include <vector>

#include "format/FormatErrorContext.h"
#include "pind/platform/EngineLog.h"

int g_nErrorStrId = 0;
FormatErrorHandler g_pfnFormatErrorHandler = nullptr;

namespace {

struct ErrorSite {
    std::string strFormat;
    const char* pszFile = nullptr;
    int nLine = 0;
};

ErrorSite& Site() {
    static ErrorSite s_site;
    return s_site;
}

// The default handler writes a report once while it is among the most recent keys.
constexpr size_t kMaxReportedKeys = 11;

std::vector<std::string>& ReportedKeys() {
    static std::vector<std::string> s_keys;
    return s_keys;
}

}  // namespace

namespace pind::detail {

void SetFormatErrorSite(const char* pszFormat, size_t nLength, const char* pszFile, int nLine) {
    ErrorSite& site = Site();
    site.strFormat.assign(pszFormat, nLength);  // reuses the buffer: no allocation once warm
    site.pszFile = pszFile;
    site.nLine = nLine;
}

}  // namespace pind::detail

void ReportFormatError(int nCode, const char* pszMessage) {
    const ErrorSite& site = Site();
    const FormatErrorHandler handler = g_pfnFormatErrorHandler;
    if (handler != nullptr) {
        handler(nCode, pszMessage, site.pszFile, site.nLine);
    } else {
        DefaultFormatErrorHandler(nCode, pszMessage, site.pszFile, site.nLine);
    }
}

int DefaultFormatErrorHandler(int /*nCode*/, const char* pszMessage, const char* pszFile,
                              int nLine) {
    if (pszMessage == nullptr) {
        pszMessage = "(empty)";
    }
    if (pszFile == nullptr) {
        pszFile = "(unknown)";
    }
    const std::string& format = Site().strFormat;
    // The version labels stand empty; the key leaves out the code and the line on purpose.
    std::string key = "ReleaseVer==BinVer: ResVer: StringFormat error.format string:";
    key += format;
    key += ", message: ";
    key += pszMessage;
    key += ", g_nErrorStrId=";
    key += std::to_string(g_nErrorStrId);
    key += ", at file: ";
    key += pszFile;

    std::vector<std::string>& keys = ReportedKeys();
    for (auto it = keys.rbegin(); it != keys.rend(); ++it) {
        if (*it == key) {
            return 0;
        }
    }
    if (keys.size() >= kMaxReportedKeys) {
        keys.erase(keys.begin());
    }
    keys.push_back(std::move(key));
    pind::platform::PindLogMsg(
        "StringFormat error.format string:%s, message: %s, g_nErrorStrId=%d,at file: %s, line: %d",
        format.c_str(), pszMessage, g_nErrorStrId, pszFile, nLine);
    return 0;
}

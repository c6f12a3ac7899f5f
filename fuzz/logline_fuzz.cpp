// Log lines over arbitrary bytes: no crash, the line comes back whole, and a record keeps exactly
// one message between its header and top-level attributes.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "pind/logging/LogLineParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    _log::LogLine line;
    const bool bRecord = _log::ParseLogLine(bytes, &line);
    if (bRecord != line.bRecord || line.strLine.size() > bytes.size() ||
        bytes.compare(0, line.strLine.size(), line.strLine) != 0) {
        std::abort();
    }
    if (!bRecord && (!line.vecHeader.empty() || !line.vecTop.empty() || !line.strMsg.empty())) {
        std::abort();
    }
    for (const _log::LogLineField& f : line.vecHeader) {
        if (f.strKey == "msg") std::abort();  // the first "msg" is the message itself
    }
    _log::ParseRecordText(bytes.data(), bytes.size(), &line);
    return 0;
}

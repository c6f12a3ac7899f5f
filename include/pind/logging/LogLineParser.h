// Reading log lines back: a file line (line time, blank, record text, blank) or a bare record text
// is split into the header attributes, the message, the top-level attributes and the context
// attributes the writer printed, each value unescaped when it was quoted.
//   _log::LogLine line; if (_log::ParseLogLine(text, &line)) use(line.Find(line.vecTop, "cate"));
#ifndef PIND_LOGGING_LOGLINEPARSER_H_
#define PIND_LOGGING_LOGLINEPARSER_H_

#include <cstddef>
#include <string>
#include <vector>

#include "pind/platform/Export.h"

namespace _log {

/// One attribute as printed. A quoted value (texts, booleans) comes back unescaped; a bare value
/// (numbers, characters, raw fragments, and nothing at all for empty values and source locations)
/// comes back as its bytes.
struct LogLineField {
    std::string strKey;    ///< the attribute name, unescaped
    std::string strValue;  ///< the value: unescaped when quoted, else its bytes (maybe empty)
    bool bQuoted = false;  ///< true when the value was a quoted text
};

/// Fields in the order the line printed them.
using LogLineFields = std::vector<LogLineField>;

/// A line read back. When `bRecord` is false the line is not a record text (a hand edit, a line
/// cut short) and only `strLineTime` (when the line starts with one) and `strLine` are set.
struct PIND_API LogLine {
    bool bRecord = false;      ///< true when the text parsed as a record with a quoted "msg"
    std::string strLine;       ///< the whole line, without its line end
    std::string strLineTime;   ///< "2024-05-07 09:03:12", or "" when the line has none
    LogLineFields vecHeader;   ///< before the message: "logtime", "ts", "level", "src"
    std::string strMsg;        ///< the unescaped "msg" text; empty when not a record
    LogLineFields vecTop;      ///< after the message: "cate", "file", "line", ...
    LogLineFields vecContext;  ///< inside "attr"/"c"; empty when the record has no context

    /// The first field of `fields` named `key`, or null.
    static const LogLineField* Find(const LogLineFields& fields, const char* key);
};

/// Parses a record text as the writer builds it (`{ "logtime": ..., "msg": "...", ...}`). Bare
/// values are found by the separators around them; a raw fragment or character that itself holds
/// `, "` can make the split ambiguous, and then the reading that leaves balanced brackets and
/// quotes in each value wins. False (and `*pOut` cleared of fields) when the text is not a record.
PIND_API bool ParseRecordText(const char* pText, size_t nLen, LogLine* pOut);

/// Parses one file line: an optional "YYYY-MM-DD hh:mm:ss " line time, the record text and the
/// writer's trailing blank; a trailing CR is dropped. Always fills `strLine` and, when present,
/// `strLineTime`; returns `bRecord`.
PIND_API bool ParseLogLine(const std::string& line, LogLine* pOut);

}  // namespace _log

#endif  // PIND_LOGGING_LOGLINEPARSER_H_

// The logging vocabulary: the six levels, typed values, named attributes, the record a logger hands
// its writer, and the exact one-line text a record becomes (structured or plain).
//   std::vector<_log::LogAttribute> attrs{{"uid", _log::LogValue(42)}};
//   _log::LogRecord rec(0, msg, attrs, {});  _log::FormatRecordText(header, rec, &text);
#ifndef PIND_LOGGING_LOGRECORD_H_
#define PIND_LOGGING_LOGRECORD_H_

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

#include "pind/platform/Export.h"

namespace _log {

/// The six levels, least severe first; a logger writes records at or above its own level.
enum LogLevel : uint32_t {
    LOG_TRACE = 0,
    LOG_DEBUG = 1,
    LOG_INFO = 2,
    LOG_WARN = 3,
    LOG_ERROR = 4,
    LOG_FATAL = 5,
};

/// The level's name ("TRACE" .. "FATAL"). Levels outside 0..5 give "" rather than reading past the
/// six-entry table.
PIND_API const char* LevelName(uint32_t nLevel);

/// A tagged value: a kind code (0..16) and the payload that kind names. Values of a kind outside
/// the table print nothing.
class PIND_API LogValue {
public:
    /// The kind codes, as the client's code and its log readers know them.
    enum Kind : uint32_t {
        kEmpty = 0,
        kChar = 1,
        kUChar = 2,
        kU16 = 3,
        kI16 = 4,
        kU32 = 5,
        kI32 = 6,
        kULong = 7,
        kLong = 8,
        kU64 = 9,
        kI64 = 10,
        kFloat = 11,
        kDouble = 12,
        kBool = 13,
        kText = 14,
        kRaw = 15,
        kSource = 16,
    };

    /// Kind 0, which prints nothing.
    LogValue() = default;
    ///@{
    /// The kind of the argument's type: char 1 (signed char too), unsigned char 2, uint16_t 3,
    /// int16_t 4, uint32_t 5, int32_t 6.
    LogValue(char c);
    LogValue(signed char c);
    LogValue(unsigned char c);
    LogValue(uint16_t n);
    LogValue(int16_t n);
    LogValue(uint32_t n);
    LogValue(int32_t n);
    ///@}
    /// 32-bit `long` (Windows) gives kind 8 / 7, 64-bit `long` gives 10 / 9.
    ///@{
    LogValue(long n);
    LogValue(unsigned long n);
    ///@}
    ///@{
    /// The kind of the argument's type: long long 10, unsigned long long 9, float 11, double 12,
    /// bool 13.
    LogValue(long long n);
    LogValue(unsigned long long n);
    LogValue(float f);
    LogValue(double d);
    LogValue(bool b);
    ///@}
    /// Kind 14; a null pointer is the empty text.
    ///@{
    LogValue(const char* psz);
    LogValue(const std::string& str);
    ///@}

    /// Copies exactly the payload the kind names; any other kind copies only the kind code.
    ///@{
    LogValue(const LogValue& other);
    LogValue& operator=(const LogValue& other);
    ///@}

    /// Kind 0, which prints nothing.
    static LogValue Empty() { return LogValue(); }
    /// Kind 15: a ready-made fragment, printed neither quoted nor escaped.
    static LogValue Raw(const std::string& str);
    /// Kind 16: a source location, turned into "file" and "line" by the logger.
    static LogValue Source(const char* pszFile, uint32_t nLine);
    /// The same payload under another kind code (2, 7 or 8 on any platform, or any code at all).
    static LogValue WithKind(uint32_t nKind, const LogValue& value);

    /// The kind code (0..16 for the kinds above; WithKind may have set any other).
    uint32_t Kind() const { return m_nKind; }
    /// The text of kinds 14, 15 and 16 (the file name); "" otherwise.
    const std::string& Text() const { return m_str; }
    /// The line of kind 16; the 32-bit payload of kinds 5 to 8.
    uint32_t Number32() const { return m_u.u32; }

    /// Appends the structured form: booleans and texts quoted, texts escaped. Numbers print into
    /// 64-byte buffers: a "%f" longer than 63 characters (|x| above about 1e56) is cut there.
    void AppendStructured(std::string* pOut) const;
    /// Appends the plain form: everything as it stands.
    void AppendPlain(std::string* pOut) const;

private:
    // The widest member first: `Payload{}` zeroes only the first member, and a relabelled value
    // (WithKind) may read any of them.
    union Payload {
        uint64_t u64;
        char c;
        uint16_t u16;
        int16_t i16;
        uint32_t u32;
        int32_t i32;
        int64_t i64;
        float f;
        double d;
        bool b;
    };
    void CopyFrom(const LogValue& other);
    void AppendCommon(std::string* pOut) const;

    uint32_t m_nKind = kEmpty;
    Payload m_u{};
    std::string m_str;
};

/// One named value. Lists keep insertion order, which is output order; keys need not be unique.
struct PIND_API LogAttribute {
    /// An empty key with the empty value.
    LogAttribute() = default;
    /// The key and its value.
    LogAttribute(std::string key, LogValue val) : strKey(std::move(key)), value(std::move(val)) {}

    std::string strKey;  ///< the name, printed as it is
    LogValue value;      ///< the value
};

/// Attributes in output order.
using LogAttributes = std::vector<LogAttribute>;

/// What a logger hands its writer. The message is the caller's string and must outlive the record.
struct PIND_API LogRecord {
    /// Keeps a reference to `msg`; takes the two lists.
    LogRecord(uint32_t kind, const std::string& msg, LogAttributes context, LogAttributes top)
        : nKind(kind), strMsg(msg), vecContext(std::move(context)), vecTop(std::move(top)) {}

    uint32_t nKind;             ///< 0 structured text, 1 plain text
    const std::string& strMsg;  ///< the caller's message
    LogAttributes vecContext;   ///< printed inside "attr"/"c"
    LogAttributes vecTop;       ///< "cate", "file", "line"
};

/// Appends `text` escaped as a text value: `\b \t \n \f \r \" \\` by name, other bytes below 0x20
/// as `\u00xx`, everything else (GBK bytes, 0x7F) unchanged.
PIND_API void AppendEscaped(std::string* pOut, const char* pText, size_t nLen);

/// Replaces `*pOut` with the record's text. Kind 0: the structured one-line text. Any other kind:
/// the plain text, which is empty whenever `header` is not (the writer always fills the header, so
/// plain records are written as empty texts).
PIND_API void FormatRecordText(const LogAttributes& header, const LogRecord& record,
                               std::string* pOut);

/// The writer's four header attributes for a record at `nLevel` and time `nNowSeconds`: "logtime"
/// (LogTimeText), "ts" (seconds × 1000), "level" (LevelName) and "src".
PIND_API void MakeHeader(uint32_t nLevel, const std::string& strSource, int64_t nNowSeconds,
                         LogAttributes* pOut);

/// The zone text for offsets `nTimezone` and `nDstBias` (seconds west of UTC): "+0800" for -28800,
/// "-0330" for 12600.
PIND_API std::string ZoneText(long nTimezone, long nDstBias);

/// "logtime": the time shifted by the zone's offset and daylight bias and broken down as local time
/// (so, outside daylight-saving zones, UTC's wall clock), unpadded, then the zone text:
/// "2024-5-7 1:3:12 +0800". A time the runtime cannot break down prints as 0-0-0 0:0:0.
PIND_API std::string LogTimeText(int64_t nNowSeconds);

/// The local time that starts each file line: "2024-05-07 09:03:12".
PIND_API std::string LineTimeText(int64_t nNowSeconds);

}  // namespace _log

namespace pind::detail {

/// Appends the text the file writer makes of `record` at `nLevel` and `nNowSeconds`: the same bytes
/// as MakeHeader followed by FormatRecordText, without building the header list.
PIND_API void AppendWriterText(uint32_t nLevel, const std::string& strSource, int64_t nNowSeconds,
                               const _log::LogRecord& record, std::string* pOut);

/// Prints `tm` as strftime's "%Y-%m-%d %H:%M:%S" into `buf` (zero-terminated); returns the length,
/// 0 when strftime gives nothing.
PIND_API size_t FormatLineTime(const std::tm& tm, char (&buf)[64]);

}  // namespace pind::detail

#endif  // PIND_LOGGING_LOGRECORD_H_

#include "pind/logging/LogRecord.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "pind/platform/TimeZone.h"

namespace _log {
namespace {

const char* const kLevelNames[6] = {"TRACE", "DEBUG", "INFO", "WARN", "ERROR", "FATAL"};
const char kTrue[] = "true";
const char kFalse[] = "false";

// Numbers are printed into 64-byte buffers; "%f" of a huge double would not fit, so every print
// is bounded to the buffer (anything that fits is exact).
constexpr size_t kNumberBuffer = 64;

// Writes the decimal digits of `n` at `p`; returns the end.
char* PutUnsigned(char* p, uint64_t n) {
    size_t len = 1;
    for (uint64_t rest = n; rest >= 10; rest /= 10) {
        ++len;
    }
    char* q = p + len;
    do {
        *--q = static_cast<char>('0' + n % 10);
        n /= 10;
    } while (n != 0);
    return p + len;
}

char* PutSigned(char* p, int64_t n) {
    if (n < 0) {
        *p++ = '-';
        // Negate in unsigned arithmetic so that INT64_MIN stays exact.
        return PutUnsigned(p, 0 - static_cast<uint64_t>(n));
    }
    return PutUnsigned(p, static_cast<uint64_t>(n));
}

// "%02d" of a value: zero-filled to two places only from 0 to 9 (a negative value is already two
// characters wide).
char* PutPad2(char* p, int n) {
    if (n >= 0 && n <= 9) {
        *p++ = '0';
        *p++ = static_cast<char>('0' + n);
        return p;
    }
    return PutSigned(p, n);
}

// 0 to 99, zero-filled to two places.
char* PutTwoDigits(char* p, int n) {
    *p++ = static_cast<char>('0' + n / 10);
    *p++ = static_cast<char>('0' + n % 10);
    return p;
}

char* PutText(char* p, const char* pszText) {
    const size_t len = std::strlen(pszText);
    std::memcpy(p, pszText, len);
    return p + len;
}

// A literal's characters, without its terminator.
template <size_t N>
char* PutLiteral(char* p, const char (&text)[N]) {
    std::memcpy(p, text, N - 1);
    return p + N - 1;
}

void AppendUnsigned(std::string* pOut, uint64_t n) {
    char buf[24];
    pOut->append(buf, PutUnsigned(buf, n));
}

void AppendSigned(std::string* pOut, int64_t n) {
    char buf[24];
    pOut->append(buf, PutSigned(buf, n));
}

void AppendFixed(std::string* pOut, double d) {
    char buf[kNumberBuffer];
    const int n = std::snprintf(buf, sizeof buf, "%f", d);
    if (n > 0) {
        pOut->append(buf, std::min(static_cast<size_t>(n), sizeof buf - 1));
    }
}

// 0: copied as it is; 1: needs an escape.
struct EscapeTable {
    bool special[256];
    constexpr EscapeTable() : special() {
        for (int i = 0; i < 0x20; ++i) {
            special[i] = true;
        }
        special[static_cast<unsigned char>('"')] = true;
        special[static_cast<unsigned char>('\\')] = true;
    }
};
constexpr EscapeTable kEscape;

void AppendAttributes(std::string* pOut, const LogAttributes& attrs) {
    bool first = true;
    for (const LogAttribute& a : attrs) {
        if (!first) {
            pOut->append(", ", 2);
        }
        first = false;
        pOut->push_back('"');
        AppendEscaped(pOut, a.strKey.data(), a.strKey.size());
        pOut->append("\": ", 3);
        a.value.AppendStructured(pOut);
    }
}

void AppendPlainAttributes(std::string* pOut, const LogAttributes& attrs) {
    for (const LogAttribute& a : attrs) {
        pOut->push_back(' ');
        pOut->append(a.strKey);
        pOut->push_back('=');
        a.value.AppendPlain(pOut);
    }
}

}  // namespace

const char* LevelName(uint32_t nLevel) { return nLevel < 6 ? kLevelNames[nLevel] : ""; }

LogValue::LogValue(char c) : m_nKind(kChar) { m_u.c = c; }
LogValue::LogValue(signed char c) : m_nKind(kChar) { m_u.c = static_cast<char>(c); }
LogValue::LogValue(unsigned char c) : m_nKind(kUChar) { m_u.c = static_cast<char>(c); }
LogValue::LogValue(uint16_t n) : m_nKind(kU16) { m_u.u16 = n; }
LogValue::LogValue(int16_t n) : m_nKind(kI16) { m_u.i16 = n; }
LogValue::LogValue(uint32_t n) : m_nKind(kU32) { m_u.u32 = n; }
LogValue::LogValue(int32_t n) : m_nKind(kI32) { m_u.i32 = n; }
LogValue::LogValue(long n) {
    if (sizeof(long) == 4) {
        m_nKind = kLong;
        m_u.i32 = static_cast<int32_t>(n);
    } else {
        m_nKind = kI64;
        m_u.i64 = static_cast<int64_t>(n);
    }
}
LogValue::LogValue(unsigned long n) {
    if (sizeof(unsigned long) == 4) {
        m_nKind = kULong;
        m_u.u32 = static_cast<uint32_t>(n);
    } else {
        m_nKind = kU64;
        m_u.u64 = static_cast<uint64_t>(n);
    }
}
LogValue::LogValue(long long n) : m_nKind(kI64) { m_u.i64 = static_cast<int64_t>(n); }
LogValue::LogValue(unsigned long long n) : m_nKind(kU64) { m_u.u64 = static_cast<uint64_t>(n); }
LogValue::LogValue(float f) : m_nKind(kFloat) { m_u.f = f; }
LogValue::LogValue(double d) : m_nKind(kDouble) { m_u.d = d; }
LogValue::LogValue(bool b) : m_nKind(kBool) { m_u.b = b; }
LogValue::LogValue(const char* psz) : m_nKind(kText), m_str(psz != nullptr ? psz : "") {}
LogValue::LogValue(const std::string& str) : m_nKind(kText), m_str(str) {}

LogValue::LogValue(const LogValue& other) { CopyFrom(other); }

LogValue& LogValue::operator=(const LogValue& other) {
    if (this != &other) {
        m_u = Payload{};
        m_str.clear();
        CopyFrom(other);
    }
    return *this;
}

void LogValue::CopyFrom(const LogValue& other) {
    m_nKind = other.m_nKind;
    switch (m_nKind) {
        case kChar:
        case kUChar:
            m_u.c = other.m_u.c;
            break;
        case kBool:
            m_u.b = other.m_u.b;
            break;
        case kU16:
        case kI16:
            m_u.u16 = other.m_u.u16;
            break;
        case kU32:
        case kI32:
        case kULong:
        case kLong:
            m_u.u32 = other.m_u.u32;
            break;
        case kFloat:
            m_u.f = other.m_u.f;
            break;
        case kU64:
        case kI64:
            m_u.u64 = other.m_u.u64;
            break;
        case kDouble:
            m_u.d = other.m_u.d;
            break;
        case kText:
        case kRaw:
            m_str = other.m_str;
            break;
        case kSource:
            m_str = other.m_str;
            m_u.u32 = other.m_u.u32;
            break;
        default:
            break;  // an unknown kind carries no payload
    }
}

LogValue LogValue::Raw(const std::string& str) {
    LogValue v(str);
    v.m_nKind = kRaw;
    return v;
}

LogValue LogValue::Source(const char* pszFile, uint32_t nLine) {
    LogValue v(pszFile);
    v.m_nKind = kSource;
    v.m_u.u32 = nLine;
    return v;
}

LogValue LogValue::WithKind(uint32_t nKind, const LogValue& value) {
    LogValue v;
    v.m_nKind = nKind;
    v.m_u = value.m_u;
    v.m_str = value.m_str;
    return v;
}

void LogValue::AppendCommon(std::string* pOut) const {
    switch (m_nKind) {
        case kChar:
        case kUChar:
            // Printed as a C string of one character: a zero byte prints nothing.
            if (m_u.c != '\0') {
                pOut->push_back(m_u.c);
            }
            break;
        case kU16:
            AppendUnsigned(pOut, m_u.u16);
            break;
        case kI16:
            AppendSigned(pOut, m_u.i16);
            break;
        case kU32:
        case kULong:
            AppendUnsigned(pOut, m_u.u32);
            break;
        case kI32:
        case kLong:
            AppendSigned(pOut, m_u.i32);
            break;
        case kU64:
            AppendUnsigned(pOut, m_u.u64);
            break;
        case kI64:
            AppendSigned(pOut, m_u.i64);
            break;
        case kFloat:
            AppendFixed(pOut, static_cast<double>(m_u.f));
            break;
        case kDouble:
            AppendFixed(pOut, m_u.d);
            break;
        case kRaw:
            pOut->append(m_str);
            break;
        default:
            break;  // empty, source location and unknown kinds print nothing
    }
}

void LogValue::AppendStructured(std::string* pOut) const {
    if (m_nKind == kBool) {
        pOut->push_back('"');
        pOut->append(m_u.b ? kTrue : kFalse);
        pOut->push_back('"');
    } else if (m_nKind == kText) {
        pOut->push_back('"');
        AppendEscaped(pOut, m_str.data(), m_str.size());
        pOut->push_back('"');
    } else {
        AppendCommon(pOut);
    }
}

void LogValue::AppendPlain(std::string* pOut) const {
    if (m_nKind == kBool) {
        pOut->append(m_u.b ? kTrue : kFalse);
    } else if (m_nKind == kText) {
        pOut->append(m_str);
    } else {
        AppendCommon(pOut);
    }
}

void AppendEscaped(std::string* pOut, const char* pText, size_t nLen) {
    static const char kHex[] = "0123456789abcdef";
    size_t runStart = 0;
    for (size_t i = 0; i < nLen; ++i) {
        const unsigned char b = static_cast<unsigned char>(pText[i]);
        if (!kEscape.special[b]) {
            continue;
        }
        pOut->append(pText + runStart, i - runStart);
        runStart = i + 1;
        switch (b) {
            case 0x08:
                pOut->append("\\b", 2);
                break;
            case 0x09:
                pOut->append("\\t", 2);
                break;
            case 0x0A:
                pOut->append("\\n", 2);
                break;
            case 0x0C:
                pOut->append("\\f", 2);
                break;
            case 0x0D:
                pOut->append("\\r", 2);
                break;
            case '"':
                pOut->append("\\\"", 2);
                break;
            case '\\':
                pOut->append("\\\\", 2);
                break;
            default: {
                const char esc[6] = {'\\', 'u', '0', '0', kHex[b >> 4], kHex[b & 0xF]};
                pOut->append(esc, sizeof esc);
                break;
            }
        }
    }
    pOut->append(pText + runStart, nLen - runStart);
}

namespace {

// Everything of a structured text from the message on; the opening and header come before it.
void AppendStructuredBody(std::string* pOut, const LogRecord& record) {
    AppendEscaped(pOut, record.strMsg.data(), record.strMsg.size());
    pOut->push_back('"');
    if (!record.vecTop.empty()) {
        pOut->append(", ", 2);
        AppendAttributes(pOut, record.vecTop);
    }
    if (!record.vecContext.empty()) {
        pOut->append(", \"attr\": { \"c\": {");
        AppendAttributes(pOut, record.vecContext);
        pOut->append("} } ");
    }
    pOut->push_back('}');
}

// The zone text as ZoneText prints it (at most 14 characters).
char* PutZone(char* p, long nTimezone, long nDstBias) {
    const long offset = -(nTimezone + nDstBias);
    const int hours = static_cast<int>(std::labs(offset / 3600));
    const long rest = offset % 3600;
    // The minutes go through a 32-bit float, as the zone text always has.
    const float fMinutes = static_cast<float>(rest) / 3600.0f * 60.0f;
    const int minutes = std::abs(static_cast<int>(fMinutes));
    // "%c%02d%02d", "%c%02d%d", "%c%d%02d" or "%c%d%d": a part is zero-filled when it is <= 9.
    *p++ = offset < 0 ? '-' : '+';
    p = PutPad2(p, hours);
    return PutPad2(p, minutes);
}

// Room for a "logtime" text: six numbers of at most 11 characters, separators and the zone.
constexpr size_t kLogTimeRoom = 96;
// The writer's header up to the source name: fixed fragments, the "logtime" text, "ts" and a level.
constexpr size_t kHeaderRoom = kLogTimeRoom + 96;

// The "logtime" text as LogTimeText prints it ("%d-%d-%d %d:%d:%d %s").
char* PutLogTime(char* p, int64_t nNowSeconds) {
    const long tz = pind::platform::GetTimezone();
    const long dst = pind::platform::GetDstBias();
    std::tm tm{};
    if (!pind::platform::LocalTime64(nNowSeconds + tz + dst, &tm)) {
        tm = std::tm{};
        tm.tm_year = -1900;
        tm.tm_mon = -1;
    }
    p = PutSigned(p, tm.tm_year + 1900);
    *p++ = '-';
    p = PutSigned(p, tm.tm_mon + 1);
    *p++ = '-';
    p = PutSigned(p, tm.tm_mday);
    *p++ = ' ';
    p = PutSigned(p, tm.tm_hour);
    *p++ = ':';
    p = PutSigned(p, tm.tm_min);
    *p++ = ':';
    p = PutSigned(p, tm.tm_sec);
    *p++ = ' ';
    return PutZone(p, tz, dst);
}

}  // namespace

void FormatRecordText(const LogAttributes& header, const LogRecord& record, std::string* pOut) {
    pOut->clear();
    if (record.nKind != 0) {
        // The plain form exists only without a header; with one, the text stays empty.
        if (header.empty()) {
            pOut->append(record.strMsg);
            AppendPlainAttributes(pOut, record.vecContext);
            AppendPlainAttributes(pOut, record.vecTop);
        }
        return;
    }
    if (header.empty()) {
        pOut->append("{ \"msg\": \"");
    } else {
        pOut->append("{ ", 2);
        AppendAttributes(pOut, header);
        pOut->append(", \"msg\": \"");
    }
    AppendStructuredBody(pOut, record);
}

void MakeHeader(uint32_t nLevel, const std::string& strSource, int64_t nNowSeconds,
                LogAttributes* pOut) {
    // Reuses the list's entries: assigning a value keeps the storage its strings already have.
    pOut->resize(4);
    LogAttribute* a = pOut->data();
    a[0].strKey.assign("logtime", 7);
    a[0].value = LogValue(LogTimeText(nNowSeconds));
    a[1].strKey.assign("ts", 2);
    a[1].value = LogValue(static_cast<long long>(nNowSeconds * 1000));
    a[2].strKey.assign("level", 5);
    a[2].value = LogValue(LevelName(nLevel));
    a[3].strKey.assign("src", 3);
    a[3].value = LogValue(strSource);
}

std::string ZoneText(long nTimezone, long nDstBias) {
    char buf[24];
    return std::string(buf, PutZone(buf, nTimezone, nDstBias));
}

std::string LogTimeText(int64_t nNowSeconds) {
    char buf[kLogTimeRoom];
    return std::string(buf, PutLogTime(buf, nNowSeconds));
}

std::string LineTimeText(int64_t nNowSeconds) {
    std::tm tm{};
    pind::platform::LocalTime64(nNowSeconds, &tm);
    char buf[64];
    return std::string(buf, pind::detail::FormatLineTime(tm, buf));
}

}  // namespace _log

namespace pind::detail {

void AppendWriterText(uint32_t nLevel, const std::string& strSource, int64_t nNowSeconds,
                      const _log::LogRecord& record, std::string* pOut) {
    if (record.nKind != 0) {
        return;  // the plain form of a record with a header is empty
    }
    // The header list MakeHeader builds, printed as FormatRecordText prints it. The logtime text is
    // digits, '-', ':', '+' and blanks, and the level names need no escape either.
    char buf[_log::kHeaderRoom];
    char* p = _log::PutLiteral(buf, "{ \"logtime\": \"");
    p = _log::PutLogTime(p, nNowSeconds);
    p = _log::PutLiteral(p, "\", \"ts\": ");
    p = _log::PutSigned(p, static_cast<long long>(nNowSeconds * 1000));
    p = _log::PutLiteral(p, ", \"level\": \"");
    p = _log::PutText(p, _log::LevelName(nLevel));
    p = _log::PutLiteral(p, "\", \"src\": \"");
    pOut->append(buf, p);
    _log::AppendEscaped(pOut, strSource.data(), strSource.size());
    pOut->append("\", \"msg\": \"");
    _log::AppendStructuredBody(pOut, record);
}

size_t FormatLineTime(const std::tm& tm, char (&buf)[64]) {
    const int year = tm.tm_year + 1900;
    if (year >= 1000 && year <= 9999 && tm.tm_mon >= 0 && tm.tm_mon <= 11 && tm.tm_mday >= 1 &&
        tm.tm_mday <= 31 && tm.tm_hour >= 0 && tm.tm_hour <= 23 && tm.tm_min >= 0 &&
        tm.tm_min <= 59 && tm.tm_sec >= 0 && tm.tm_sec <= 60) {
        // "%Y-%m-%d %H:%M:%S" of a valid time, without strftime's per-call overhead; anything else
        // is left to strftime.
        char* p = _log::PutTwoDigits(buf, year / 100);
        p = _log::PutTwoDigits(p, year % 100);
        *p++ = '-';
        p = _log::PutTwoDigits(p, tm.tm_mon + 1);
        *p++ = '-';
        p = _log::PutTwoDigits(p, tm.tm_mday);
        *p++ = ' ';
        p = _log::PutTwoDigits(p, tm.tm_hour);
        *p++ = ':';
        p = _log::PutTwoDigits(p, tm.tm_min);
        *p++ = ':';
        p = _log::PutTwoDigits(p, tm.tm_sec);
        *p = '\0';
        return static_cast<size_t>(p - buf);
    }
    const size_t n = std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &tm);
    buf[n] = '\0';
    return n;
}

}  // namespace pind::detail

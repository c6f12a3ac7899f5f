#include "pind/format/StringFormat.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <deque>
#include <new>
#include <string>
#include <vector>

#include "format/FormatErrorContext.h"
#include "pind/platform/System.h"

namespace {

// The site CheckFormatArgs names in its reports.
constexpr const char* kCheckerFile = "StringFormat";
constexpr int kCheckerLine = 1938;

constexpr uint32_t kPieceLiteral = 0;
constexpr uint32_t kPieceSpec = 1;

void ReportInternal() { ReportFormatError(3000, "Internal Error"); }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Fills `spec` from the text at a '%'; the characters consumed (the '%' counted), or -1.
int ParseSpec(const char* text, FormatSpec* spec) {
    if (text == nullptr || text[0] != '%') {
        return -1;
    }
    *spec = FormatSpec{};
    const char* p = text + 1;
    for (;; ++p) {
        uint32_t bit = 0;
        switch (*p) {
            case ' ':
                bit = kFormatFlagSpace;
                break;
            case '#':
                bit = kFormatFlagHash;
                break;
            case '+':
                bit = kFormatFlagPlus;
                break;
            case '-':
                bit = kFormatFlagMinus;
                break;
            case '0':
                bit = kFormatFlagZero;
                break;
            default:
                break;
        }
        if (bit == 0) {
            break;
        }
        spec->nFlags |= bit;
    }
    if (*p == '*') {
        spec->nFlags |= kFormatFlagWidthStar;
        ++p;
    } else if (IsDigit(*p)) {
        spec->nFlags |= kFormatFlagWidth;
        uint32_t width = 0;  // wraps like the 32-bit accumulator it stands for
        for (; IsDigit(*p); ++p) {
            width = width * 10u + static_cast<uint32_t>(*p - '0');
        }
        spec->nWidth = static_cast<int32_t>(width);
    }
    // A '.' followed by neither '*' nor a digit stays unread and then fails as the conversion,
    // which rejects "%.d" and "%.s".
    if (p[0] == '.' && p[1] == '*') {
        spec->nFlags |= kFormatFlagPrecisionStar;
        p += 2;
    } else if (p[0] == '.' && IsDigit(p[1])) {
        spec->nFlags |= kFormatFlagPrecision;
        uint32_t precision = 0;
        for (++p; IsDigit(*p); ++p) {
            precision = precision * 10u + static_cast<uint32_t>(*p - '0');
        }
        spec->nPrecision = static_cast<int32_t>(precision);
    }
    if (p[0] == 'I' && p[1] == '6' && p[2] == '4') {
        spec->nFlags |= kFormatFlagInt64;
        p += 3;
    } else if (p[0] == 'L') {
        spec->nFlags |= kFormatFlagLongDouble;
        ++p;
    } else if (p[0] == 'h') {
        spec->nFlags |= kFormatFlagShort;
        ++p;
    } else if (p[0] == 'l' && p[1] == 'l') {
        spec->nFlags |= kFormatFlagInt64;
        p += 2;
    } else if (p[0] == 'l') {
        spec->nFlags |= kFormatFlagLong;
        ++p;
    }
    switch (*p) {
        case 'E':
        case 'G':
        case 'X':
        case 'c':
        case 'd':
        case 'e':
        case 'f':
        case 'g':
        case 'i':
        case 'n':
        case 'o':
        case 'p':
        case 's':
        case 'u':
        case 'x':
            break;
        default:
            return -1;
    }
    spec->cConversion = static_cast<uint8_t>(*p);
    return static_cast<int>(p - text) + 1;
}

// Gathers the few pieces of one conversion (texts and fills) and appends them in one go, which
// costs far less than one string append per piece.
class Pieces {
public:
    void Fill(size_t count, char c) {
        if (count != 0) {
            m_items[m_count++] = {nullptr, count, c};
        }
    }
    void Text(const char* text, size_t length) {
        if (length != 0) {
            m_items[m_count++] = {text, length, '\0'};
        }
    }
    void AppendTo(std::string& out) const {
        size_t total = 0;
        for (size_t i = 0; i < m_count; ++i) {
            total += m_items[i].length;
        }
        char local[128];
        if (total > sizeof local) {
            for (size_t i = 0; i < m_count; ++i) {
                const Item& item = m_items[i];
                if (item.text != nullptr) {
                    out.append(item.text, item.length);
                } else {
                    out.append(item.length, item.fill);
                }
            }
            return;
        }
        char* w = local;
        for (size_t i = 0; i < m_count; ++i) {
            const Item& item = m_items[i];
            if (item.text != nullptr) {
                std::memcpy(w, item.text, item.length);
            } else {
                std::memset(w, item.fill, item.length);
            }
            w += item.length;
        }
        out.append(local, total);
    }

private:
    struct Item {
        const char* text;  // null: `length` copies of `fill`
        size_t length;
        char fill;
    };
    Item m_items[5];
    size_t m_count = 0;
};

// Joins prefix and body onto `out` with the width padding shared by every conversion but %s;
// `zeros` are leading zeros of the body (an integer's minimum digit count).
void AppendPadded(std::string& out, const FormatSpec& spec, const char* prefix, size_t prefixLen,
                  const char* body, size_t bodyLen, size_t zeros = 0) {
    const int64_t total = static_cast<int64_t>(prefixLen + zeros + bodyLen);
    const bool left = (spec.nFlags & kFormatFlagMinus) != 0;
    const bool zero = (spec.nFlags & kFormatFlagZero) != 0 && !left;
    size_t pad = 0;
    // Signed on purpose: a negative width from '*' neither pads nor left-adjusts.
    if ((spec.nFlags & kFormatFlagWidth) != 0 && spec.nWidth > total) {
        pad = static_cast<size_t>(spec.nWidth - total);
    }
    Pieces pieces;
    if (!left && !zero) {
        pieces.Fill(pad, ' ');
    }
    pieces.Text(prefix, prefixLen);
    if (zero) {
        pieces.Fill(pad, '0');
    }
    pieces.Fill(zeros, '0');
    pieces.Text(body, bodyLen);
    if (left) {
        pieces.Fill(pad, ' ');
    }
    pieces.AppendTo(out);
}

// Pads `text` to the width with `fill`: after it when left-adjusted, before it otherwise.
void AppendFilled(std::string& out, const FormatSpec& spec, const char* text, size_t length,
                  char fill) {
    size_t pad = 0;
    if ((spec.nFlags & kFormatFlagWidth) != 0 && spec.nWidth > static_cast<int64_t>(length)) {
        pad = static_cast<size_t>(spec.nWidth - static_cast<int64_t>(length));
    }
    const bool left = (spec.nFlags & kFormatFlagMinus) != 0;
    Pieces pieces;
    if (!left) {
        pieces.Fill(pad, fill);
    }
    pieces.Text(text, length);
    if (left) {
        pieces.Fill(pad, fill);
    }
    pieces.AppendTo(out);
}

bool IsNullLiteral(const FormatArg& arg) { return arg.nType == kFormatArgInt32 && arg.n32 == 0; }

bool EmitInteger(std::string& out, const FormatSpec& spec, const FormatArg& arg) {
    const bool wide = (spec.nFlags & kFormatFlagInt64) != 0;
    if (wide && arg.nType != kFormatArgInt64) {
        ReportFormatError(2001, "invalid argument type. expect a 64-bit integer");
        return false;
    }
    if (!wide && arg.nType != kFormatArgInt32) {
        ReportFormatError(2001, "invalid argument type. expect an integer");
        return false;
    }
    const char conversion = static_cast<char>(spec.cConversion);
    uint64_t value;
    int64_t signedValue;
    if (wide) {
        value = static_cast<uint64_t>(arg.n64);
        signedValue = arg.n64;
    } else if ((spec.nFlags & kFormatFlagShort) != 0 && (spec.nFlags & kFormatFlagLong) == 0) {
        value = static_cast<uint16_t>(arg.n32);
        signedValue = static_cast<int16_t>(arg.n32);
    } else {
        value = static_cast<uint32_t>(arg.n32);
        signedValue = arg.n32;
    }
    char prefix[4];
    size_t prefixLen = 0;
    // Octal is signed here, like d and i.
    const bool isSigned = conversion == 'd' || conversion == 'i' || conversion == 'o';
    if (isSigned) {
        if (signedValue < 0) {
            prefix[prefixLen++] = '-';
            value = 0 - static_cast<uint64_t>(signedValue);
        } else {
            value = static_cast<uint64_t>(signedValue);
            // The space flag wins over '+', and zero never gets a '+'.
            if ((spec.nFlags & kFormatFlagSpace) != 0) {
                prefix[prefixLen++] = ' ';
            } else if ((spec.nFlags & kFormatFlagPlus) != 0 && signedValue > 0) {
                prefix[prefixLen++] = '+';
            }
        }
    }
    const char* digits = "0123456789";
    unsigned base = 10;
    if (conversion == 'X' || conversion == 'x') {
        digits = conversion == 'X' ? "0123456789ABCDEF" : "0123456789abcdef";
        base = 16;
    } else if (conversion == 'o') {
        digits = "01234567";
        base = 8;
    }
    if ((spec.nFlags & kFormatFlagHash) != 0 && base != 10) {
        prefix[prefixLen++] = '0';
        if (base == 16) {
            prefix[prefixLen++] = conversion;
        }
    }
    char buffer[24];
    char* end = buffer + sizeof buffer;
    char* start = end;
    // Least significant digit first. Powers of two shift; decimal divides by a constant, which
    // compiles to a multiplication, and in 32 bits while the value fits.
    if (base != 10) {
        const unsigned shift = base == 16 ? 4 : 3;
        do {
            *--start = digits[value & (base - 1)];
            value >>= shift;
        } while (value != 0);
    } else {
        for (; value > 0xFFFFFFFFu; value /= 10) {
            *--start = static_cast<char>('0' + value % 10);
        }
        auto small = static_cast<uint32_t>(value);
        do {
            *--start = static_cast<char>('0' + small % 10);
            small /= 10;
        } while (small != 0);
    }
    size_t count = static_cast<size_t>(end - start);
    const int32_t minDigits = (spec.nFlags & kFormatFlagPrecision) != 0 ? spec.nPrecision : -1;
    const size_t zeros =
        minDigits > static_cast<int32_t>(count) ? static_cast<size_t>(minDigits) - count : 0;
    AppendPadded(out, spec, prefix, prefixLen, start, count, zeros);
    return true;
}

bool EmitChar(std::string& out, const FormatSpec& spec, const FormatArg& arg) {
    if (arg.nType != kFormatArgInt32) {
        ReportFormatError(2001, "invalid argument type. expect an integer");
        return false;
    }
    if ((spec.nFlags & kFormatFlagLong) != 0) {
        ReportFormatError(2003, "wide-char not supported yet");
        return false;
    }
    const char c = static_cast<char>(arg.n32 & 0xFF);
    AppendPadded(out, spec, "", 0, &c, 1);
    return true;
}

bool EmitString(std::string& out, const FormatSpec& spec, const FormatArg& arg) {
    if (arg.nType != kFormatArgString && !IsNullLiteral(arg)) {
        ReportFormatError(2001, "invalid argument type. expect a string-pointer");
        return false;
    }
    if ((spec.nFlags & kFormatFlagLong) != 0) {
        ReportFormatError(2003, "wide-char string not supported yet");
        return false;
    }
    const char* text =
        arg.nType == kFormatArgString ? static_cast<const char*>(arg.pValue) : nullptr;
    if (text == nullptr) {
        text = "(null)";
    } else if (!pind::platform::IsReadableString(text, 1)) {
        ReportFormatError(2001, "invalid pointer type");
        return false;
    }
    size_t length;
    if ((spec.nFlags & kFormatFlagPrecision) != 0) {
        // Reads no further than the precision allows; a negative one shows nothing.
        const size_t limit = spec.nPrecision > 0 ? static_cast<size_t>(spec.nPrecision) : 0;
        const void* nul = std::memchr(text, '\0', limit);
        length = nul != nullptr ? static_cast<size_t>(static_cast<const char*>(nul) - text) : limit;
    } else {
        length = std::strlen(text);
    }
    // Strings honour '0' even together with '-'.
    AppendFilled(out, spec, text, length, (spec.nFlags & kFormatFlagZero) != 0 ? '0' : ' ');
    return true;
}

bool EmitPointer(std::string& out, const FormatSpec& spec, const FormatArg& arg) {
    uintptr_t value = 0;
    if (arg.nType == kFormatArgPointer || arg.nType == kFormatArgString ||
        arg.nType == kFormatArgIntPointer) {
        value = reinterpret_cast<uintptr_t>(arg.pValue);
    } else if (!IsNullLiteral(arg)) {
        ReportFormatError(2001, "invalid argument type. expect a pointer");
        return false;
    }
    char buffer[2 * sizeof(uintptr_t)];
    char* end = buffer + sizeof buffer;
    char* start = end;
    do {
        *--start = "0123456789ABCDEF"[value & 0xF];
        value >>= 4;
    } while (value != 0 || end - start < 8);
    AppendPadded(out, spec, "", 0, start, static_cast<size_t>(end - start));
    return true;
}

bool EmitCount(std::string& out, const FormatArg& arg) {
    if (arg.nType == kFormatArgIntPointer) {
        if (arg.pValue != nullptr) {
            int32_t* target = static_cast<int32_t*>(const_cast<void*>(arg.pValue));
            *target = static_cast<int32_t>(out.size());
        }
        return true;
    }
    if (IsNullLiteral(arg)) {
        return true;
    }
    ReportFormatError(2001, "invalid argument type. expect a pointer");
    return false;
}

// The stream's own conversion: printf with "%[+][#].*" and the conversion letter.
int PrintfFloat(char* out, size_t size, const FormatSpec& spec, int precision, double value) {
    char format[8];
    char* f = format;
    *f++ = '%';
    if ((spec.nFlags & kFormatFlagPlus) != 0) {
        *f++ = '+';
    }
    if ((spec.nFlags & kFormatFlagHash) != 0) {
        *f++ = '#';
    }
    *f++ = '.';
    *f++ = '*';
    *f++ = static_cast<char>(spec.cConversion);
    *f = '\0';
    return std::snprintf(out, size, format, precision, value);
}

// The same bytes for finite values without '#', several times faster than printf; -1 where it
// does not apply or the text does not fit.
int FastFloat(char* out, size_t size, const FormatSpec& spec, int precision, double value) {
    if ((spec.nFlags & kFormatFlagHash) != 0 || !std::isfinite(value) || size < 2) {
        return -1;
    }
    char* first = out;
    if ((spec.nFlags & kFormatFlagPlus) != 0 && !std::signbit(value)) {
        *first++ = '+';
    }
    const char conversion = static_cast<char>(spec.cConversion);
    const std::chars_format style = conversion == 'f' ? std::chars_format::fixed
                                    : conversion == 'e' || conversion == 'E'
                                        ? std::chars_format::scientific
                                        : std::chars_format::general;
    const std::to_chars_result r = std::to_chars(first, out + size - 1, value, style, precision);
    if (r.ec != std::errc()) {
        return -1;
    }
    if (conversion == 'E' || conversion == 'G') {
        for (char* p = first; p != r.ptr; ++p) {
            if (*p == 'e') {
                *p = 'E';
            }
        }
    }
    return static_cast<int>(r.ptr - out);
}

// Writes the value as an output string stream set up from the conversion's flags writes it: the
// stream's printf conversion, then its own fill to the width (in front unless left-adjusted, so a
// '0' fill lands before a minus sign). The space flag plays no part.
bool EmitFloat(std::string& out, const FormatSpec& spec, const FormatArg& arg) {
    if ((spec.nFlags & kFormatFlagLongDouble) != 0) {
        if (arg.nType != kFormatArgLongDouble) {
            ReportFormatError(2001, "invalid argument type. expect a long double");
            return false;
        }
    } else if (arg.nType != kFormatArgDouble) {
        ReportFormatError(2001, "invalid argument type. expect a float/double");
        return false;
    }
    // The stream falls back to its default precision when given a negative one.
    int precision = 6;
    if ((spec.nFlags & kFormatFlagPrecision) != 0 && spec.nPrecision >= 0) {
        precision = spec.nPrecision;
    }
    char local[128];
    std::string big;
    const char* text = local;
    int length = FastFloat(local, sizeof local, spec, precision, arg.dValue);
    if (length < 0) {
        length = PrintfFloat(local, sizeof local, spec, precision, arg.dValue);
        if (length < 0) {
            ReportInternal();
            return false;
        }
        if (static_cast<size_t>(length) >= sizeof local) {
            big.resize(static_cast<size_t>(length) + 1);
            PrintfFloat(&big[0], big.size(), spec, precision, arg.dValue);
            text = big.data();
        }
    }
    AppendFilled(out, spec, text, static_cast<size_t>(length),
                 (spec.nFlags & kFormatFlagZero) != 0 ? '0' : ' ');
    return true;
}

bool Emit(std::string& out, const FormatSpec& spec, const FormatArg& arg) {
    switch (spec.cConversion) {
        case 'd':
        case 'i':
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            return EmitInteger(out, spec, arg);
        case 'c':
            return EmitChar(out, spec, arg);
        case 's':
            return EmitString(out, spec, arg);
        case 'p':
            return EmitPointer(out, spec, arg);
        case 'n':
            return EmitCount(out, arg);
        case 'e':
        case 'E':
        case 'f':
        case 'g':
        case 'G':
            return EmitFloat(out, spec, arg);
        default:
            ReportInternal();
            return false;
    }
}

}  // namespace

class CStringFormatter::CImpl {
public:
    // Fields in the order of the formatter's data model.
    bool m_bValid = false;
    bool m_bComputed = false;
    std::string m_strFormat;
    std::string m_strResult;
    std::vector<uint32_t> m_vecKinds;
    std::vector<FormatSpec> m_vecSpecs;
    std::vector<FormatArg> m_vecArgs;
    std::vector<std::string> m_vecLiterals;

    bool ParseFormat(const char* pszFormat);
    void CalcFormat();
    const FormatSpec* GetFormatType(int nIndex);
};

bool CStringFormatter::CImpl::ParseFormat(const char* pszFormat) {
    m_bValid = false;
    m_bComputed = false;
    m_strFormat.clear();
    m_strResult.clear();
    m_vecKinds.clear();
    m_vecSpecs.clear();
    m_vecArgs.clear();
    m_vecLiterals.clear();
    if (pszFormat == nullptr) {
        return false;
    }
    const size_t length = std::strlen(pszFormat);
    // Sized up front so that neither parsing nor the usual appends reallocate; a conversion takes
    // at most three arguments (width, precision, value).
    size_t percents = 0;
    for (const char* p = pszFormat;
         (p = static_cast<const char*>(
              std::memchr(p, '%', length - static_cast<size_t>(p - pszFormat)))) != nullptr;
         ++p) {
        ++percents;
    }
    m_vecKinds.reserve(2 * percents + 1);
    m_vecSpecs.reserve(percents);
    m_vecArgs.reserve(3 * percents);
    m_vecLiterals.reserve(percents + 1);

    size_t pos = 0;
    while (pos < length) {
        const char* percent =
            static_cast<const char*>(std::memchr(pszFormat + pos, '%', length - pos));
        if (percent == nullptr) {
            m_vecLiterals.emplace_back(pszFormat + pos, length - pos);
            m_vecKinds.push_back(kPieceLiteral);
            break;
        }
        const size_t at = static_cast<size_t>(percent - pszFormat);
        if (at > pos) {
            m_vecLiterals.emplace_back(pszFormat + pos, at - pos);
            m_vecKinds.push_back(kPieceLiteral);
        }
        FormatSpec spec;
        const int used = ParseSpec(percent, &spec);
        if (used > 0) {
            m_vecSpecs.push_back(spec);
            m_vecKinds.push_back(kPieceSpec);
            pos = at + static_cast<size_t>(used);
            continue;
        }
        // "%%" is a literal '%'; any other '%' that starts no conversion is dropped and what
        // follows it is read again as text.
        pos = at + 1;
        if (pos < length && pszFormat[pos] == '%') {
            m_vecLiterals.emplace_back(1, '%');
            m_vecKinds.push_back(kPieceLiteral);
            ++pos;
        }
    }
    if (m_vecKinds.size() != m_vecLiterals.size() + m_vecSpecs.size()) {
        ReportInternal();
        return false;
    }
    m_strFormat.assign(pszFormat, length);
    m_bValid = true;
    return true;
}

void CStringFormatter::CImpl::CalcFormat() {
    if (!m_bValid || m_bComputed) {
        return;
    }
    std::string& out = m_strResult;
    try {
        out.clear();
        out.reserve(m_strFormat.size() + 8 * m_vecSpecs.size() + 16);
        size_t nextLiteral = 0;
        size_t nextSpec = 0;
        size_t nextArg = 0;
        bool ok = true;
        auto takeArg = [&](const FormatArg** arg) {
            if (nextArg >= m_vecArgs.size()) {
                ReportFormatError(2002, "not enough arguments");
                return false;
            }
            *arg = &m_vecArgs[nextArg++];
            return true;
        };
        for (size_t i = 0; ok && i < m_vecKinds.size(); ++i) {
            if (m_vecKinds[i] == kPieceLiteral) {
                if (nextLiteral >= m_vecLiterals.size()) {
                    ReportInternal();
                    ok = false;
                    break;
                }
                out += m_vecLiterals[nextLiteral++];
                continue;
            }
            if (m_vecKinds[i] != kPieceSpec || nextSpec >= m_vecSpecs.size()) {
                ReportInternal();
                ok = false;
                break;
            }
            FormatSpec spec = m_vecSpecs[nextSpec++];
            const FormatArg* arg = nullptr;
            // A '*' width or precision takes the next argument, which must be a 32-bit integer.
            auto takeStar = [&](uint32_t starFlag, uint32_t flag, int32_t* value) {
                if ((spec.nFlags & starFlag) == 0) {
                    return true;
                }
                if (!takeArg(&arg)) {
                    return false;
                }
                if (arg->nType != kFormatArgInt32) {
                    ReportFormatError(2001, "invalid argument type. expect an integer");
                    return false;
                }
                *value = arg->n32;
                spec.nFlags = (spec.nFlags & ~starFlag) | flag;
                return true;
            };
            if (!takeStar(kFormatFlagWidthStar, kFormatFlagWidth, &spec.nWidth) ||
                !takeStar(kFormatFlagPrecisionStar, kFormatFlagPrecision, &spec.nPrecision)) {
                ok = false;
                break;
            }
            ok = takeArg(&arg) && Emit(out, spec, *arg);
        }
        if (!ok) {
            out.clear();
            return;
        }
        if (nextArg < m_vecArgs.size()) {
            ReportFormatError(1000, "too many arguments");  // a warning: the text stands
        }
        m_bComputed = true;
    } catch (...) {
        out.clear();
        ReportFormatError(3000, "CStringFormatter::CImpl::CalcFormat ERROR");
    }
}

const FormatSpec* CStringFormatter::CImpl::GetFormatType(int nIndex) {
    if (nIndex < 0 || static_cast<size_t>(nIndex) >= m_vecSpecs.size()) {
        m_bValid = false;
        ReportFormatError(3000, "GetFormatType error");
        return nullptr;
    }
    return &m_vecSpecs[static_cast<size_t>(nIndex)];
}

namespace {

// A destroyed formatter leaves its implementation to the next one built on the same thread:
// parsing clears it all but keeps the buffers, so the usual build-format-destroy cycle allocates
// nothing once warm. Plain thread-locals stay usable while the thread's destructors run.
thread_local CStringFormatter::CImpl* t_pSpare = nullptr;
thread_local bool t_bThreadEnding = false;

struct SpareReaper {
    ~SpareReaper() {
        t_bThreadEnding = true;
        delete t_pSpare;
        t_pSpare = nullptr;
    }
};
thread_local SpareReaper t_reaper;

// Buffers above these sizes are given back rather than kept for the thread.
constexpr size_t kMaxSpareText = 1024;
constexpr size_t kMaxSpareItems = 64;

void Release(CStringFormatter::CImpl* impl) {
    if (impl != nullptr && t_pSpare == nullptr && !t_bThreadEnding &&
        impl->m_strFormat.capacity() <= kMaxSpareText &&
        impl->m_strResult.capacity() <= kMaxSpareText &&
        impl->m_vecKinds.capacity() <= 2 * kMaxSpareItems &&
        impl->m_vecArgs.capacity() <= kMaxSpareItems &&
        impl->m_vecLiterals.capacity() <= kMaxSpareItems) {
        static_cast<void>(&t_reaper);  // registers the thread-exit cleanup
        t_pSpare = impl;
        return;
    }
    delete impl;
}

// Parses into a cleared implementation and names the site; reports an unparsable format.
CStringFormatter::CImpl* MakeImpl(const char* pszFormat, const char* pszFile, int nLine) {
    CStringFormatter::CImpl* impl = t_pSpare;
    t_pSpare = nullptr;
    if (impl == nullptr) {
        impl = new (std::nothrow) CStringFormatter::CImpl;
    }
    const char* format = pszFormat != nullptr ? pszFormat : "";
    if (impl == nullptr) {
        pind::detail::SetFormatErrorSite(format, std::strlen(format), pszFile, nLine);
        ReportInternal();
        return nullptr;
    }
    bool parsed = false;
    try {
        parsed = impl->ParseFormat(format);
    } catch (...) {
        parsed = false;
    }
    pind::detail::SetFormatErrorSite(format, std::strlen(format), pszFile, nLine);
    if (!parsed) {
        std::string message = "invalid format string: \"";
        message += format;
        message += '"';
        ReportFormatError(2000, message.c_str());
    }
    return impl;
}

CStringFormatter::CImpl* CopyImpl(const CStringFormatter::CImpl* other) {
    if (other == nullptr) {
        ReportInternal();
        return nullptr;
    }
    try {
        return new CStringFormatter::CImpl(*other);
    } catch (...) {
        ReportInternal();
        return nullptr;
    }
}

}  // namespace

CStringFormatter::CStringFormatter(const char* pszFormat, const char* pszFile, int nLine)
    : m_pImpl(MakeImpl(pszFormat, pszFile, nLine)) {}

CStringFormatter::CStringFormatter(const CStringFormatter& other)
    : m_pImpl(CopyImpl(other.m_pImpl)) {}

CStringFormatter& CStringFormatter::operator=(const CStringFormatter& other) {
    if (this != &other) {
        CImpl* copy = CopyImpl(other.m_pImpl);
        Release(m_pImpl);
        m_pImpl = copy;
    }
    return *this;
}

CStringFormatter::~CStringFormatter() { Release(m_pImpl); }

bool CStringFormatter::IsValid() const {
    if (m_pImpl == nullptr) {
        ReportInternal();
        return false;
    }
    return m_pImpl->m_bValid;
}

CStringFormatter& CStringFormatter::Append(const FormatArg& arg) {
    if (m_pImpl == nullptr) {
        ReportInternal();
        return *this;
    }
    try {
        m_pImpl->m_vecArgs.push_back(arg);
    } catch (...) {
        ReportInternal();
    }
    return *this;
}

namespace {
FormatArg Int32Arg(int32_t value) {
    FormatArg arg{};
    arg.nType = kFormatArgInt32;
    arg.n32 = value;
    return arg;
}
FormatArg Int64Arg(int64_t value) {
    FormatArg arg{};
    arg.nType = kFormatArgInt64;
    arg.n64 = value;
    return arg;
}
FormatArg DoubleArg(uint32_t type, double value) {
    FormatArg arg{};
    arg.nType = type;
    arg.dValue = value;
    return arg;
}
FormatArg PointerArg(uint32_t type, const void* value) {
    FormatArg arg{};
    arg.nType = type;
    arg.pValue = value;
    return arg;
}
}  // namespace

CStringFormatter& CStringFormatter::AddArg(int nValue) { return Append(Int32Arg(nValue)); }
CStringFormatter& CStringFormatter::AddArg(unsigned int nValue) {
    return Append(Int32Arg(static_cast<int32_t>(nValue)));
}
CStringFormatter& CStringFormatter::AddArg(short nValue) { return Append(Int32Arg(nValue)); }
CStringFormatter& CStringFormatter::AddArg(unsigned short nValue) {
    return Append(Int32Arg(nValue));
}
CStringFormatter& CStringFormatter::AddArg(signed char nValue) { return Append(Int32Arg(nValue)); }
CStringFormatter& CStringFormatter::AddArg(unsigned char nValue) {
    return Append(Int32Arg(nValue));
}
CStringFormatter& CStringFormatter::AddArg(long nValue) {
    if (sizeof(long) == sizeof(int32_t)) {
        return Append(Int32Arg(static_cast<int32_t>(nValue)));
    }
    return Append(Int64Arg(nValue));
}
CStringFormatter& CStringFormatter::AddArg(unsigned long nValue) {
    if (sizeof(unsigned long) == sizeof(uint32_t)) {
        return Append(Int32Arg(static_cast<int32_t>(nValue)));
    }
    return Append(Int64Arg(static_cast<int64_t>(nValue)));
}
CStringFormatter& CStringFormatter::AddArg(long long nValue) { return Append(Int64Arg(nValue)); }
CStringFormatter& CStringFormatter::AddArg(unsigned long long nValue) {
    return Append(Int64Arg(static_cast<int64_t>(nValue)));
}
CStringFormatter& CStringFormatter::AddArg(float fValue) {
    return Append(DoubleArg(kFormatArgDouble, fValue));
}
CStringFormatter& CStringFormatter::AddArg(double dValue) {
    return Append(DoubleArg(kFormatArgDouble, dValue));
}
CStringFormatter& CStringFormatter::AddArg(long double dValue) {
    return Append(DoubleArg(kFormatArgLongDouble, static_cast<double>(dValue)));
}
CStringFormatter& CStringFormatter::AddArg(const void* pValue) {
    return Append(PointerArg(kFormatArgPointer, pValue));
}
CStringFormatter& CStringFormatter::AddArg(const char* pszValue) {
    return Append(PointerArg(kFormatArgString, pszValue));
}
CStringFormatter& CStringFormatter::AddArg(int* pnTarget) {
    return Append(PointerArg(kFormatArgIntPointer, pnTarget));
}
CStringFormatter& CStringFormatter::AddArg(std::nullptr_t) { return Append(Int32Arg(0)); }

const std::string& CStringFormatter::GetResult() {
    static const std::string s_empty;
    if (m_pImpl == nullptr) {
        ReportInternal();
        return s_empty;
    }
    m_pImpl->CalcFormat();
    return m_pImpl->m_strResult;
}

int CStringFormatter::GetFormatCount() const {
    if (m_pImpl == nullptr) {
        ReportInternal();
        return 0;
    }
    return static_cast<int>(m_pImpl->m_vecSpecs.size());
}

const FormatSpec* CStringFormatter::GetFormatType(int nIndex) {
    if (m_pImpl == nullptr) {
        ReportInternal();
        return nullptr;
    }
    return m_pImpl->GetFormatType(nIndex);
}

namespace {

// Wide text reaches only a conversion that reports it as unsupported, so a plain narrowing that
// keeps ASCII and marks everything else is all it needs.
std::string NarrowForCheck(const wchar_t* text) {
    std::string narrow;
    if (text != nullptr) {
        for (; *text != 0; ++text) {
            narrow += *text < 0x80 ? static_cast<char>(*text) : '?';
        }
    }
    return narrow;
}

}  // namespace

bool CheckFormatArgs(const char* pszFormat, va_list args) {
    CStringFormatter::CImpl* impl = MakeImpl(pszFormat, kCheckerFile, kCheckerLine);
    if (impl == nullptr) {
        return false;
    }
    bool valid = false;
    try {
        std::deque<std::string> narrowed;  // stable addresses for the %ls temporaries
        va_list slots;
        va_copy(slots, args);
        const size_t count = impl->m_vecSpecs.size();
        for (size_t i = 0; i < count; ++i) {
            const FormatSpec* spec = impl->GetFormatType(static_cast<int>(i));
            if (spec == nullptr) {
                break;
            }
            FormatArg arg{};
            switch (spec->cConversion) {
                case 'e':
                case 'E':
                case 'f':
                case 'g':
                case 'G':
                    arg = DoubleArg(kFormatArgDouble, va_arg(slots, double));
                    break;
                case 'n':
                    arg = PointerArg(kFormatArgIntPointer, va_arg(slots, int*));
                    break;
                case 'p':
                    arg = PointerArg(kFormatArgPointer, va_arg(slots, void*));
                    break;
                case 's':
                    if (spec->nFlags == kFormatFlagLong) {
                        const wchar_t* wide = va_arg(slots, const wchar_t*);
                        narrowed.push_back(NarrowForCheck(wide));
                        arg = PointerArg(kFormatArgString,
                                         wide != nullptr ? narrowed.back().c_str() : nullptr);
                    } else {
                        arg = PointerArg(kFormatArgString, va_arg(slots, const char*));
                    }
                    break;
                case 'd':
                case 'u':
                    // Only a bare "%I64d"/"%lld" takes 64 bits; "%5I64d" is then reported.
                    if (spec->nFlags == kFormatFlagInt64) {
                        arg = Int64Arg(va_arg(slots, long long));
                    } else {
                        arg = Int32Arg(va_arg(slots, int));
                    }
                    break;
                default:
                    arg = Int32Arg(va_arg(slots, int));
                    break;
            }
            impl->m_vecArgs.push_back(arg);
        }
        va_end(slots);
        impl->CalcFormat();
        valid = impl->m_bValid;
    } catch (...) {
        ReportInternal();
    }
    Release(impl);
    return valid;
}

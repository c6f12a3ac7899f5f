// A printf-style formatter that never trusts its arguments: the format is parsed once, typed
// arguments are appended, and the text is built only when each argument has the type its
// conversion expects. A mismatch produces no text and a numbered report on the formatter error
// channel (pind/format/FormatError.h), never a crash.
//   CStringFormatter f("%5.3d|%s", __FILE__, __LINE__);
//   f.AddArg(7).AddArg("ok").GetResult();  // "  007|ok"
#ifndef PIND_FORMAT_STRINGFORMAT_H_
#define PIND_FORMAT_STRINGFORMAT_H_

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string>

#include "pind/format/FormatError.h"
#include "pind/platform/Export.h"

// Bits of FormatSpec::nFlags. CheckFormatArgs compares whole flag words against them.
constexpr uint32_t kFormatFlagPlus = 0x0001;           // '+'
constexpr uint32_t kFormatFlagMinus = 0x0002;          // '-'
constexpr uint32_t kFormatFlagHash = 0x0004;           // '#'
constexpr uint32_t kFormatFlagZero = 0x0008;           // '0'
constexpr uint32_t kFormatFlagSpace = 0x0010;          // ' '
constexpr uint32_t kFormatFlagShort = 0x0100;          // 'h'
constexpr uint32_t kFormatFlagLong = 0x0200;           // 'l'
constexpr uint32_t kFormatFlagLongDouble = 0x0400;     // 'L'
constexpr uint32_t kFormatFlagInt64 = 0x0800;          // "I64" or "ll"
constexpr uint32_t kFormatFlagWidth = 0x1000;          // width digits (or a resolved '*')
constexpr uint32_t kFormatFlagWidthStar = 0x2000;      // width '*'
constexpr uint32_t kFormatFlagPrecision = 0x4000;      // precision digits (or a resolved '*')
constexpr uint32_t kFormatFlagPrecisionStar = 0x8000;  // precision '*'

/// One '%' conversion of a format, in order of appearance.
struct FormatSpec {
    uint32_t nFlags;
    uint8_t cConversion;  // one of E G X c d e f g i n o p s u x, as written
    int32_t nWidth;       // meaningful with kFormatFlagWidth
    int32_t nPrecision;   // meaningful with kFormatFlagPrecision
};

// Type tags of FormatArg::nType.
constexpr uint32_t kFormatArgInt32 = 1;  // 8-, 16- and 32-bit integers, '*' values
constexpr uint32_t kFormatArgInt64 = 2;
constexpr uint32_t kFormatArgDouble = 3;      // float and double
constexpr uint32_t kFormatArgLongDouble = 4;  // held as a double
constexpr uint32_t kFormatArgPointer = 5;     // untyped pointer for %p
constexpr uint32_t kFormatArgString = 6;      // const char*
constexpr uint32_t kFormatArgIntPointer = 7;  // %n target

/// One appended argument: its type tag and an 8-byte value slot.
struct FormatArg {
    uint32_t nType;
    union {
        int32_t n32;
        int64_t n64;
        double dValue;
        const void* pValue;  // tags 5, 6 and 7
    };
};

/// The checked formatter. Copies are deep. Every member called on a formatter whose
/// implementation could not be allocated reports 3000 "Internal Error" and returns a neutral value.
class PIND_API CStringFormatter {
public:
    class CImpl;

    /// Parses `pszFormat` (null is taken as "") and makes `pszFile`/`nLine` (kept as pointers, not
    /// copied) the site named by every later report.
    CStringFormatter(const char* pszFormat, const char* pszFile, int nLine);
    CStringFormatter(const CStringFormatter& other);
    CStringFormatter& operator=(const CStringFormatter& other);
    ~CStringFormatter();

    /// True when the format was parsed (and GetFormatType has not been asked for a bad index).
    bool IsValid() const;

    /// Each appends one argument and returns this formatter, so appends chain. Arguments added
    /// after the text was built do not change it.
    CStringFormatter& AddArg(int nValue);
    CStringFormatter& AddArg(unsigned int nValue);
    CStringFormatter& AddArg(short nValue);
    CStringFormatter& AddArg(unsigned short nValue);
    CStringFormatter& AddArg(signed char nValue);
    CStringFormatter& AddArg(unsigned char nValue);
    /// `long` is a 32-bit argument where it has 32 bits (Windows) and a 64-bit one elsewhere.
    CStringFormatter& AddArg(long nValue);
    CStringFormatter& AddArg(unsigned long nValue);
    CStringFormatter& AddArg(long long nValue);
    CStringFormatter& AddArg(unsigned long long nValue);
    CStringFormatter& AddArg(float fValue);
    CStringFormatter& AddArg(double dValue);
    CStringFormatter& AddArg(long double dValue);
    CStringFormatter& AddArg(const void* pValue);
    CStringFormatter& AddArg(const char* pszValue);
    CStringFormatter& AddArg(int* pnTarget);
    /// A literal null: the 32-bit integer 0, which %s, %p and %n accept as a null pointer.
    CStringFormatter& AddArg(std::nullptr_t);

    /// The text, built on the first call that finds every argument right. After a failure it is
    /// empty and the next call tries (and reports) again; an invalid format gives "" silently.
    const std::string& GetResult();
    /// Number of conversions in the format.
    int GetFormatCount() const;
    /// The conversion at `nIndex`; null, with 3000 "GetFormatType error" reported and the
    /// formatter made invalid, when the index is out of range.
    const FormatSpec* GetFormatType(int nIndex);

private:
    CStringFormatter& Append(const FormatArg& arg);

    CImpl* m_pImpl;
};

/// Checks a printf-style call at run time: the conversions of `pszFormat` (null as "") take their
/// values from `args` by conversion letter, and any mismatch the formatter finds is reported with
/// the site "StringFormat", line 1938. True when the format parsed, whatever was reported.
PIND_API bool CheckFormatArgs(const char* pszFormat, va_list args);

#endif  // PIND_FORMAT_STRINGFORMAT_H_

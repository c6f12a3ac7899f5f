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
constexpr uint32_t kFormatFlagPlus = 0x0001;           ///< '+': a '+' before positive numbers.
constexpr uint32_t kFormatFlagMinus = 0x0002;          ///< '-': left-adjusted in the width.
constexpr uint32_t kFormatFlagHash = 0x0004;           ///< '#': a 0, 0x or 0X prefix; a kept point.
constexpr uint32_t kFormatFlagZero = 0x0008;           ///< '0': pads with zeros, not spaces.
constexpr uint32_t kFormatFlagSpace = 0x0010;          ///< ' ': a space before d, i, o >= 0.
constexpr uint32_t kFormatFlagShort = 0x0100;          ///< 'h': a 16-bit integer.
constexpr uint32_t kFormatFlagLong = 0x0200;           ///< 'l': wide %c and %s are refused.
constexpr uint32_t kFormatFlagLongDouble = 0x0400;     ///< 'L': a long double for e, f, g.
constexpr uint32_t kFormatFlagInt64 = 0x0800;          ///< "I64" or "ll": a 64-bit integer.
constexpr uint32_t kFormatFlagWidth = 0x1000;          ///< Width digits (or a resolved '*').
constexpr uint32_t kFormatFlagWidthStar = 0x2000;      ///< Width '*', taken from an int.
constexpr uint32_t kFormatFlagPrecision = 0x4000;      ///< Precision digits (or a resolved '*').
constexpr uint32_t kFormatFlagPrecisionStar = 0x8000;  ///< Precision '*', taken from an int.

/// One '%' conversion of a format, in order of appearance.
struct FormatSpec {
    uint32_t nFlags;      ///< kFormatFlag* bits for the flags, size, width and precision written.
    uint8_t cConversion;  ///< The letter as written: one of E G X c d e f g i n o p s u x.
    int32_t nWidth;       ///< Minimum field width with kFormatFlagWidth; 0 otherwise.
    int32_t nPrecision;   ///< Precision with kFormatFlagPrecision; 0 otherwise.
};

// Type tags of FormatArg::nType.
constexpr uint32_t kFormatArgInt32 = 1;       ///< Integers up to 32 bits, nullptr and '*' values.
constexpr uint32_t kFormatArgInt64 = 2;       ///< 64-bit integers, and long where it has 64 bits.
constexpr uint32_t kFormatArgDouble = 3;      ///< A float or a double.
constexpr uint32_t kFormatArgLongDouble = 4;  ///< A long double, held as a double.
constexpr uint32_t kFormatArgPointer = 5;     ///< An untyped pointer, for %p.
constexpr uint32_t kFormatArgString = 6;      ///< A const char*; null prints "(null)".
constexpr uint32_t kFormatArgIntPointer = 7;  ///< A %n target; null is skipped.

/// One appended argument: its type tag and an 8-byte value slot.
struct FormatArg {
    uint32_t nType;  ///< A kFormatArg* tag naming the union member that holds the value.
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
    /// Copies the parsed format, arguments and text of `other`; a copy that fails reports 3000.
    CStringFormatter(const CStringFormatter& other);
    /// Replaces this formatter with a copy of `other` (itself: no change) and returns it.
    CStringFormatter& operator=(const CStringFormatter& other);
    ~CStringFormatter();

    /// True when the format was parsed (and GetFormatType has not been asked for a bad index).
    bool IsValid() const;

    /// Each appends one argument and returns this formatter, so appends chain. Arguments added
    /// after the text was built do not change it.
    CStringFormatter& AddArg(int nValue);
    /// Appends the same bits as a 32-bit integer, so %d shows values above INT_MAX negative.
    CStringFormatter& AddArg(unsigned int nValue);
    /// Appends the value sign-extended to a 32-bit integer.
    CStringFormatter& AddArg(short nValue);
    /// Appends the value zero-extended to a 32-bit integer.
    CStringFormatter& AddArg(unsigned short nValue);
    /// Appends the value sign-extended to a 32-bit integer, for %c or an integer conversion.
    CStringFormatter& AddArg(signed char nValue);
    /// Appends the value zero-extended to a 32-bit integer, for %c or an integer conversion.
    CStringFormatter& AddArg(unsigned char nValue);
    /// `long` is a 32-bit argument where it has 32 bits (Windows) and a 64-bit one elsewhere.
    CStringFormatter& AddArg(long nValue);
    /// Appends the same bits as a 32-bit integer where `long` has 32 bits, a 64-bit one elsewhere.
    CStringFormatter& AddArg(unsigned long nValue);
    /// Appends a 64-bit integer, which only conversions with "I64" or "ll" accept.
    CStringFormatter& AddArg(long long nValue);
    /// Appends the same bits as a 64-bit integer, for conversions with "I64" or "ll".
    CStringFormatter& AddArg(unsigned long long nValue);
    /// Appends the value as a double, for %e, %E, %f, %g or %G without 'L'.
    CStringFormatter& AddArg(float fValue);
    /// Appends a double, for %e, %E, %f, %g or %G without 'L'.
    CStringFormatter& AddArg(double dValue);
    /// Appends the value rounded to a double but tagged long double, which only 'L' accepts.
    CStringFormatter& AddArg(long double dValue);
    /// Appends an untyped pointer, which only %p accepts.
    CStringFormatter& AddArg(const void* pValue);
    /// Appends a string for %s (or %p), read only when the text is built; null prints "(null)".
    CStringFormatter& AddArg(const char* pszValue);
    /// Appends the int that %n sets to the text's length so far (null: skipped); %p takes it too.
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

// `pind printf`: one checked formatter over typed arguments, with every report it makes; and the
// formatter's demo step.
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "Commands.h"
#include "ToolSupport.h"
#include "pind/format/StringFormat.h"

namespace pind::tool {
namespace {

const char kPrintfUsage[] =
    "usage: pind printf FORMAT [ARG ...]\n"
    "\n"
    "Formats with the checked formatter: FORMAT byte for byte, then each ARG appended in order\n"
    "with the type its prefix names. Prints every report as \"CODE MESSAGE\", then, unless one\n"
    "has a code of 2000 or more, the text and a newline and \"n:VALUE\" per n: argument.\n"
    "Exit 0 when no report has a code of 2000 or more, 1 otherwise.\n"
    "\n"
    "ARG is PREFIX:VALUE:\n"
    "  i: u:      int32_t, uint32_t           decimal\n"
    "  h: uh:     int16_t, uint16_t           decimal\n"
    "  sc: uc:    signed char, unsigned char  decimal (a number)\n"
    "  l: ul:     int64_t, uint64_t           decimal\n"
    "  f: d: ld:  float, double, long double  as strtof/strtod/strtold read it (hex, inf, nan)\n"
    "  p:         void*                       1-16 hex digits, optional 0x\n"
    "  s:         const char*                 the rest of the argument\n"
    "  sp:        const char*                 a pointer with that address (hex as p:), never read\n"
    "  S:         const char*                 null; nothing after the colon\n"
    "  n:         int32_t*                    to a value starting at -1; nothing after the colon\n"
    "  N:         int32_t*                    null; nothing after the colon\n"
    "Decimal is an optional '-' (signed types only) and digits that fit the type; a float that\n"
    "overflows to infinity is out of range.";

enum class Kind {
    kI32,
    kU32,
    kI16,
    kU16,
    kSChar,
    kUChar,
    kI64,
    kU64,
    kF,
    kD,
    kLD,
    kP,
    kS,
    kSP,
    kNullS,
    kCount,
    kNullCount
};

struct Arg {
    Kind kind;
    int64_t nSigned = 0;
    uint64_t nUnsigned = 0;
    long double dValue = 0;
    std::string strText;
};

struct Prefix {
    const char* name;
    Kind kind;
};

const Prefix kPrefixes[] = {{"i", Kind::kI32},   {"u", Kind::kU32},      {"h", Kind::kI16},
                            {"uh", Kind::kU16},  {"sc", Kind::kSChar},   {"uc", Kind::kUChar},
                            {"l", Kind::kI64},   {"ul", Kind::kU64},     {"f", Kind::kF},
                            {"d", Kind::kD},     {"ld", Kind::kLD},      {"p", Kind::kP},
                            {"s", Kind::kS},     {"sp", Kind::kSP},      {"S", Kind::kNullS},
                            {"n", Kind::kCount}, {"N", Kind::kNullCount}};

// Optional '-' (when allowed) then at least one digit; the magnitude must not pass `max`.
bool ParseDecimal(const char* text, bool allowMinus, uint64_t max, bool* negative,
                  uint64_t* magnitude) {
    *negative = allowMinus && *text == '-';
    if (*negative) {
        ++text;
    }
    if (*text == '\0') {
        return false;
    }
    uint64_t value = 0;
    for (; *text != '\0'; ++text) {
        if (*text < '0' || *text > '9') {
            return false;
        }
        const unsigned digit = static_cast<unsigned>(*text - '0');
        if (value > (max - digit) / 10) {
            return false;
        }
        value = value * 10 + digit;
    }
    *magnitude = value;
    return true;
}

bool ParseSigned(const char* text, int64_t min, int64_t max, int64_t* out) {
    bool negative = false;
    uint64_t magnitude = 0;
    // The magnitude of min is max + 1.
    if (!ParseDecimal(text, true, static_cast<uint64_t>(max) + 1, &negative, &magnitude) ||
        (!negative && magnitude > static_cast<uint64_t>(max))) {
        return false;
    }
    *out = negative ? static_cast<int64_t>(0 - magnitude) : static_cast<int64_t>(magnitude);
    return *out >= min;
}

bool ParseHexPointer(const char* text, uint64_t* out) {
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text += 2;
    }
    const size_t length = std::strlen(text);
    if (length == 0 || length > 16 || std::strspn(text, "0123456789abcdefABCDEF") != length) {
        return false;
    }
    *out = std::strtoull(text, nullptr, 16);
    return true;
}

template <typename T>
bool ParseFloat(const char* text, T (*convert)(const char*, char**), long double* out) {
    char* end = nullptr;
    errno = 0;
    const T value = convert(text, &end);
    if (*text == '\0' || *end != '\0') {
        return false;
    }
    // Overflow to infinity is out of range; an underflow still gives the nearest value.
    if (errno == ERANGE && std::isinf(value)) {
        return false;
    }
    *out = value;
    return true;
}

float ToFloat(const char* text, char** end) { return std::strtof(text, end); }
double ToDouble(const char* text, char** end) { return std::strtod(text, end); }
long double ToLongDouble(const char* text, char** end) { return std::strtold(text, end); }

// One ARG; false on any usage error.
bool ParseArg(const char* text, Arg* arg) {
    const char* colon = std::strchr(text, ':');
    if (colon == nullptr) {
        return false;
    }
    const std::string prefix(text, colon);
    const char* value = colon + 1;
    const Prefix* found = nullptr;
    for (const Prefix& p : kPrefixes) {
        if (prefix == p.name) {
            found = &p;
        }
    }
    if (found == nullptr) {
        return false;
    }
    arg->kind = found->kind;
    bool negative = false;
    switch (arg->kind) {
        case Kind::kI32:
            return ParseSigned(value, INT32_MIN, INT32_MAX, &arg->nSigned);
        case Kind::kI16:
            return ParseSigned(value, INT16_MIN, INT16_MAX, &arg->nSigned);
        case Kind::kSChar:
            return ParseSigned(value, SCHAR_MIN, SCHAR_MAX, &arg->nSigned);
        case Kind::kI64:
            return ParseSigned(value, INT64_MIN, INT64_MAX, &arg->nSigned);
        case Kind::kU32:
            return ParseDecimal(value, false, UINT32_MAX, &negative, &arg->nUnsigned);
        case Kind::kU16:
            return ParseDecimal(value, false, UINT16_MAX, &negative, &arg->nUnsigned);
        case Kind::kUChar:
            return ParseDecimal(value, false, UCHAR_MAX, &negative, &arg->nUnsigned);
        case Kind::kU64:
            return ParseDecimal(value, false, UINT64_MAX, &negative, &arg->nUnsigned);
        case Kind::kF:
            return ParseFloat<float>(value, ToFloat, &arg->dValue);
        case Kind::kD:
            return ParseFloat<double>(value, ToDouble, &arg->dValue);
        case Kind::kLD:
            return ParseFloat<long double>(value, ToLongDouble, &arg->dValue);
        case Kind::kP:
        case Kind::kSP:
            return ParseHexPointer(value, &arg->nUnsigned);
        case Kind::kS:
            arg->strText = value;
            return true;
        case Kind::kNullS:
        case Kind::kCount:
        case Kind::kNullCount:
            return *value == '\0';
    }
    return false;
}

struct Report {
    int nCode;
    std::string strMessage;
};

std::vector<Report>& Reports() {
    static std::vector<Report> s_reports;
    return s_reports;
}

int RecordReport(int nCode, const char* pszMessage, const char*, int) {
    Reports().push_back({nCode, pszMessage != nullptr ? pszMessage : ""});
    return 0;
}

void* AsPointer(uint64_t address) {
    return reinterpret_cast<void*>(static_cast<uintptr_t>(address));
}

void Append(CStringFormatter& f, Arg& arg, int32_t* target) {
    switch (arg.kind) {
        case Kind::kI32:
            f.AddArg(static_cast<int32_t>(arg.nSigned));
            break;
        case Kind::kU32:
            f.AddArg(static_cast<uint32_t>(arg.nUnsigned));
            break;
        case Kind::kI16:
            f.AddArg(static_cast<int16_t>(arg.nSigned));
            break;
        case Kind::kU16:
            f.AddArg(static_cast<uint16_t>(arg.nUnsigned));
            break;
        case Kind::kSChar:
            f.AddArg(static_cast<signed char>(arg.nSigned));
            break;
        case Kind::kUChar:
            f.AddArg(static_cast<unsigned char>(arg.nUnsigned));
            break;
        case Kind::kI64:
            f.AddArg(static_cast<int64_t>(arg.nSigned));
            break;
        case Kind::kU64:
            f.AddArg(static_cast<uint64_t>(arg.nUnsigned));
            break;
        case Kind::kF:
            f.AddArg(static_cast<float>(arg.dValue));
            break;
        case Kind::kD:
            f.AddArg(static_cast<double>(arg.dValue));
            break;
        case Kind::kLD:
            f.AddArg(arg.dValue);
            break;
        case Kind::kP:
            f.AddArg(static_cast<const void*>(AsPointer(arg.nUnsigned)));
            break;
        case Kind::kS:
            f.AddArg(arg.strText.c_str());
            break;
        case Kind::kSP:
            f.AddArg(static_cast<const char*>(AsPointer(arg.nUnsigned)));
            break;
        case Kind::kNullS:
            f.AddArg(static_cast<const char*>(nullptr));
            break;
        case Kind::kCount:
            f.AddArg(target);
            break;
        case Kind::kNullCount:
            f.AddArg(static_cast<int32_t*>(nullptr));
            break;
    }
}

}  // namespace

int RunPrintf(int argc, char** argv) {
    // Only --help asks for help: "-h" is a format like any other.
    if (argc >= 2 && std::strcmp(argv[1], "--help") == 0) {
        return PrintUsage(kPrintfUsage);
    }
    if (argc < 2) {
        return UsageError("printf", kPrintfUsage, "no FORMAT");
    }
    std::vector<Arg> args(static_cast<size_t>(argc - 2));
    for (int i = 2; i < argc; ++i) {
        if (!ParseArg(argv[i], &args[static_cast<size_t>(i - 2)])) {
            return UsageError("printf", kPrintfUsage, std::string("bad argument: ") + argv[i]);
        }
    }
    // One target per n: argument, each starting at -1; reserved so their addresses hold.
    std::vector<int32_t> targets;
    targets.reserve(args.size());

    const FormatErrorHandler previous = g_pfnFormatErrorHandler;
    g_pfnFormatErrorHandler = RecordReport;
    std::string result;
    {
        CStringFormatter formatter(argv[1], "pind printf", 0);
        for (Arg& arg : args) {
            int32_t* target = nullptr;
            if (arg.kind == Kind::kCount) {
                targets.push_back(-1);
                target = &targets.back();
            }
            Append(formatter, arg, target);
        }
        result = formatter.GetResult();
    }
    g_pfnFormatErrorHandler = previous;

    bool failed = false;
    std::string out;
    for (const Report& r : Reports()) {
        out += std::to_string(r.nCode) + " " + r.strMessage + "\n";
        failed = failed || r.nCode >= 2000;
    }
    if (!failed) {
        out += result;
        out += '\n';
        for (int32_t value : targets) {
            out += "n:" + std::to_string(value) + "\n";
        }
    }
    if (!WriteOut(out) || !FlushOut()) {
        return kExitFailure;
    }
    return failed ? kExitFailure : kExitOk;
}

void DemoFormat(const DemoContext& /*ctx*/) {
    DemoHeading("checked printf formatter");
    const FormatErrorHandler previous = g_pfnFormatErrorHandler;
    g_pfnFormatErrorHandler = [](int nCode, const char* pszMessage, const char*, int) {
        std::printf("  report %d: %s\n", nCode, pszMessage);
        return 0;
    };
    CStringFormatter good("%-8s|%5.3d|%08.2f|%#x", __FILE__, __LINE__);
    good.AddArg("gold").AddArg(7).AddArg(-1.5).AddArg(255);
    std::printf("  \"%%-8s|%%5.3d|%%08.2f|%%#x\" of \"gold\", 7, -1.5, 255 -> \"%s\"\n",
                good.GetResult().c_str());
    CStringFormatter bad("%s has %d coins", __FILE__, __LINE__);
    bad.AddArg(12).AddArg("hero");
    std::printf("  \"%%s has %%d coins\" of 12, \"hero\" -> \"%s\" (nothing formatted)\n",
                bad.GetResult().c_str());
    g_pfnFormatErrorHandler = previous;
}

}  // namespace pind::tool

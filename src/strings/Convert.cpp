#include "pind/strings/Convert.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "strings/Long32.h"

namespace {

enum class Checked { kFailed, kDecimal, kHex };

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// The one validation rule of the parsers. A text that starts with 0 and is at least 3 long never
// takes a sign, and a text of length 1 never does.
Checked Check(const char* text, size_t length, bool allowDot) {
    size_t start = 0;
    bool hex = false;
    if (length >= 3 && text[0] == '0' && text[1] == 'x') {
        hex = true;
        start = 2;
    } else if (length >= 2 && text[0] == '-') {
        start = 1;
    }
    for (size_t i = start; i < length; ++i) {
        const char c = text[i];
        const bool ok = (hex ? IsHexDigit(c) : IsDigit(c)) || (allowDot && c == '.');
        if (!ok) {
            return Checked::kFailed;
        }
    }
    return hex ? Checked::kHex : Checked::kDecimal;
}

int Base(Checked kind) { return kind == Checked::kHex ? 16 : 10; }

void AppendUnit(std::string& out, char16_t unit) {
    const uint32_t u = unit;
    if (u >= 0xD800 && u <= 0xDFFF) {
        throw std::range_error("bad conversion");
    }
    if (u < 0x80) {
        out += static_cast<char>(u);
    } else if (u < 0x800) {
        out += static_cast<char>(0xC0 | (u >> 6));
        out += static_cast<char>(0x80 | (u & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (u >> 12));
        out += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (u & 0x3F));
    }
}

}  // namespace

int32_t StrToInt(const std::string& strText) {
    const Checked kind = Check(strText.data(), strText.size(), /*allowDot=*/false);
    if (kind == Checked::kFailed) {
        return 0;
    }
    if (kind == Checked::kHex) {
        return static_cast<int32_t>(pind::detail::Strtoul32(strText.c_str(), nullptr, 16));
    }
    return pind::detail::Atol32(strText.c_str());
}

uint32_t StrToUInt(const std::string& strText) {
    const Checked kind = Check(strText.data(), strText.size(), /*allowDot=*/false);
    return kind == Checked::kFailed ? 0
                                    : pind::detail::Strtoul32(strText.c_str(), nullptr, Base(kind));
}

uint64_t StrToUInt64(const std::string& strText) {
    const Checked kind = Check(strText.data(), strText.size(), /*allowDot=*/false);
    return kind == Checked::kFailed ? 0 : std::strtoull(strText.c_str(), nullptr, Base(kind));
}

uint64_t SzToUInt64(const char* pszText) {
    if (pszText == nullptr) {
        return 0;
    }
    const Checked kind = Check(pszText, std::strlen(pszText), /*allowDot=*/false);
    return kind == Checked::kFailed ? 0 : std::strtoull(pszText, nullptr, Base(kind));
}

int32_t SzToInt(const char* pszText) {
    if (pszText == nullptr ||
        Check(pszText, std::strlen(pszText), /*allowDot=*/false) == Checked::kFailed) {
        return 0;
    }
    return pind::detail::Atol32(pszText);
}

double SzToDouble(const char* pszText) {
    if (pszText == nullptr ||
        Check(pszText, std::strlen(pszText), /*allowDot=*/true) == Checked::kFailed) {
        return 0.0;
    }
    return std::atof(pszText);
}

std::string WideToUtf8(const char16_t* pwszText) {
    std::string out;
    if (pwszText == nullptr) {
        return out;
    }
    for (const char16_t* p = pwszText; *p != 0; ++p) {
        AppendUnit(out, *p);
    }
    return out;
}

std::string WideToUtf8(char16_t wch) {
    std::string out;
    AppendUnit(out, wch);
    return out;
}

bool MaskWithKey(void* pBuffer, int32_t nLength, const char* pszKey) {
    if (pBuffer == nullptr || pszKey == nullptr) {
        return false;
    }
    if (nLength <= 0) {
        return true;
    }
    const size_t keyLength = std::strlen(pszKey);
    if (keyLength == 0) {
        return false;
    }
    auto* bytes = static_cast<unsigned char*>(pBuffer);
    for (size_t i = 0; i < static_cast<size_t>(nLength); ++i) {
        bytes[i] ^= static_cast<unsigned char>(pszKey[i % keyLength]);
    }
    return true;
}

bool MaskRunning(char* pszText, uint32_t nStart) {
    if (pszText == nullptr) {
        return false;
    }
    auto value = static_cast<unsigned char>(nStart);
    // The walk ends at the first zero byte, including one the masking itself just made.
    for (char* p = pszText; *p != '\0'; ++p) {
        *p = static_cast<char>(static_cast<unsigned char>(*p) ^ value);
        if (*p == '\0') {
            break;
        }
        ++value;
    }
    return true;
}

#include "pind/strings/SafeString.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "pind/platform/CrtString.h"
#include "pind/platform/EngineLog.h"
#include "strings/Long32.h"

namespace {

// Every helper but SafeStrlen reports through this one routine; an empty message is not logged.
void ReportMisuse(const char* message) {
    if (message != nullptr && message[0] != '\0') {
        pind::platform::PindLogMsg("%s", message);
    }
}

}  // namespace

size_t SafeStrlen(const char* pszText) {
    if (pszText == nullptr) {
        pind::platform::PindLogMsg("SafeStrlen param is null");
        return 0;
    }
    return std::strlen(pszText);
}

const char* SafeStrstr(const char* pszText, const char* pszPattern) {
    if (pszText == nullptr || pszPattern == nullptr) {
        ReportMisuse("SafeStrstr param is null");
        return nullptr;
    }
    return std::strstr(pszText, pszPattern);
}

const char* SafeStrchr(const char* pszText, int nChar) {
    if (pszText == nullptr) {
        ReportMisuse("SafeStrchr param is null");
        return nullptr;
    }
    return std::strchr(pszText, nChar);
}

const char* SafeStrrchr(const char* pszText, int nChar) {
    if (pszText == nullptr) {
        ReportMisuse("SafeStrrchr param is null");
        return nullptr;
    }
    return std::strrchr(pszText, nChar);
}

int SafeItoA(const int32_t* pnValue, char* pszBuffer, size_t nSize, int nRadix) {
    if (pszBuffer == nullptr) {
        ReportMisuse("SafeItoA param is null");
        return -1;
    }
    return pind::platform::ItoaS(*pnValue, pszBuffer, nSize, nRadix);
}

int SafeI64toA(const int64_t* pnValue, char* pszBuffer, size_t nSize, int nRadix) {
    return pszBuffer != nullptr ? pind::platform::I64toaS(*pnValue, pszBuffer, nSize, nRadix) : -1;
}

int SafeUi64toA(const uint64_t* pnValue, char* pszBuffer, size_t nSize, int nRadix) {
    return pszBuffer != nullptr ? pind::platform::Ui64toaS(*pnValue, pszBuffer, nSize, nRadix) : -1;
}

int SafeLtoA(const int32_t* pnValue, char* pszBuffer, size_t nSize, int nRadix) {
    return pszBuffer != nullptr ? pind::platform::LtoaS(*pnValue, pszBuffer, nSize, nRadix) : -1;
}

int SafeUltoA(const uint32_t* pnValue, char* pszBuffer, size_t nSize, int nRadix) {
    return pszBuffer != nullptr ? pind::platform::UltoaS(*pnValue, pszBuffer, nSize, nRadix) : -1;
}

uint32_t SafeStrtoul(const char* pszText, char** ppszEnd, int nBase) {
    if (pszText == nullptr) {
        ReportMisuse("SafeStrtoul param is null");
        return 0;
    }
    return pind::detail::Strtoul32(pszText, ppszEnd, nBase);
}

int32_t SafeStrtol(const char* pszText, char** ppszEnd, int nBase) {
    if (pszText == nullptr) {
        ReportMisuse("SafeStrtol param is null");
        return 0;
    }
    return pind::detail::Strtol32(pszText, ppszEnd, nBase);
}

int64_t SafeAtoi64(const char* pszText) {
    if (pszText == nullptr || pszText[0] == '\0') {
        ReportMisuse("SafeAtoi64 param is null or empty");
        return 0;
    }
    return pind::platform::Atoi64(pszText);
}

int SafeStricmp(const char* pszLeft, const char* pszRight) {
    if (pszLeft == nullptr || pszRight == nullptr) {
        ReportMisuse("SafeStricmp param is null");
        return -1;
    }
    return pind::platform::Stricmp(pszLeft, pszRight);
}

int SafeStrnicmp(const char* pszLeft, const char* pszRight, size_t nCount) {
    if (pszLeft == nullptr || pszRight == nullptr) {
        ReportMisuse("SafeStrnicmp param is null");
        return -1;
    }
    return pind::platform::Strnicmp(pszLeft, pszRight, nCount);
}

bool SafeSprintf(char* pszBuffer, int32_t nSize, const char* pszFormat, ...) {
    if (pszFormat == nullptr || pszBuffer == nullptr || nSize < 1) {
        return false;
    }
    va_list args;
    va_start(args, pszFormat);
    std::vsnprintf(pszBuffer, static_cast<size_t>(nSize), pszFormat, args);
    va_end(args);
    pszBuffer[nSize - 1] = '\0';
    return true;
}

bool SafeUi64ToStr(char* pszBuffer, int32_t nSize, const uint64_t* pnValue) {
    if (pszBuffer != nullptr && nSize > 0) {
        std::memset(pszBuffer, 0, static_cast<size_t>(nSize));
    }
    if (pnValue == nullptr) {
        return false;
    }
    return SafeSprintf(pszBuffer, nSize, "%llu", static_cast<unsigned long long>(*pnValue));
}

std::string GetFileExt(const std::string& strPath) {
    const size_t dot = strPath.rfind('.');
    return dot == std::string::npos ? std::string() : strPath.substr(dot + 1);
}

bool HasUtf8ThreeByte(const char* pszText) {
    if (pszText == nullptr) {
        return false;
    }
    const auto* text = reinterpret_cast<const unsigned char*>(pszText);
    const size_t length = std::strlen(pszText);
    size_t i = 0;
    while (i < length) {
        const unsigned char lead = text[i];
        if (length - i >= 3 && (lead & 0xF0) == 0xE0 && (text[i + 1] & 0xC0) == 0x80 &&
            (text[i + 2] & 0xC0) == 0x80) {
            return true;
        }
        if ((lead & 0xE0) == 0xC0) {
            i += 2;
        } else if ((lead & 0xF0) == 0xE0) {
            i += 3;
        } else if ((lead & 0xF8) == 0xF0) {
            i += 4;
        } else {
            i += 1;
        }
    }
    return false;
}

bool HasGb2312Char(const char* pszText) {
    if (pszText == nullptr) {
        return false;
    }
    const auto* text = reinterpret_cast<const unsigned char*>(pszText);
    const size_t length = std::strlen(pszText);
    for (size_t i = 0; i + 1 < length; ++i) {
        if (text[i] >= 0xB0 && text[i] <= 0xF7 && text[i + 1] >= 0xA1 && text[i + 1] <= 0xFE) {
            return true;
        }
    }
    return false;
}

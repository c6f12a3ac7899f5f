#include "pind/servertext/ServerString.h"

#include <fmt/args.h>
#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "pind/json/FmtJson.h"
#include "pind/platform/EngineLog.h"

using pind::platform::PindLogMsg;

namespace {

std::atomic<StringIdCallback> g_pfnStringId{nullptr};

const char* LookUp(uint32_t id) {
    const StringIdCallback fn = g_pfnStringId.load();
    const char* text = fn != nullptr ? fn(id) : nullptr;
    return text != nullptr ? text : "";
}

inline bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// strtoul in base 10 with a 32-bit unsigned long, as the client's runtime has it: leading white
// space, a sign ('-' negates modulo 2^32), digits. False when there are no digits; `*range` is
// set when the magnitude exceeds 32 bits (the value is then 0xFFFFFFFF).
bool ScanULong32(const char* s, uint32_t* value, bool* range) {
    while (IsSpace(*s)) ++s;
    const bool neg = *s == '-';
    if (*s == '-' || *s == '+') ++s;
    if (*s < '0' || *s > '9') {
        return false;
    }
    uint64_t v = 0;
    *range = false;
    for (; *s >= '0' && *s <= '9'; ++s) {
        v = v * 10 + static_cast<uint64_t>(*s - '0');
        if (v > 0xFFFFFFFFu) {
            *range = true;
            v = 0xFFFFFFFFu;  // saturated; later digits keep it so
        }
    }
    *value = *range ? 0xFFFFFFFFu : static_cast<uint32_t>(neg ? 0u - v : v);
    return true;
}

uint32_t Stoul32(const std::string& text) {
    uint32_t value = 0;
    bool range = false;
    if (!ScanULong32(text.c_str(), &value, &range)) {
        throw std::invalid_argument("invalid stoul argument");
    }
    if (range) {
        throw std::out_of_range("stoul argument out of range");
    }
    return value;
}

std::string LookUpRef(const char* afterAt) {
    std::string text;
    TryGetStringFromStrID(text, afterAt);
    return text;
}

bool StartsWithRef(const char* s) { return s != nullptr && s[0] == '@' && s[1] == '@'; }

// The table text of `format` filled with the arguments that follow it.
std::string FormatPlaceholders(const JsonNode* format) {
    fmt::dynamic_format_arg_store<fmt::format_context> args;
    size_t count = 0;
    for (const JsonNode* n = format->pNext; n != nullptr; n = n->pNext, ++count) {
        switch (n->nType) {
            case JSON_STRING:
                if (StartsWithRef(n->pszValue)) {
                    args.push_back(LookUpRef(n->pszValue + 2));
                } else {
                    args.push_back(std::string(n->pszValue));
                }
                break;
            case JSON_REAL:
                args.push_back(n->fValue);
                break;
            case JSON_INT:
                args.push_back(n->nValue);
                break;
            case JSON_INT64:
                args.push_back(static_cast<long long>(n->llValue));
                break;
            case JSON_ARRAY:
                args.push_back(FormatJsonServerString(n));
                break;
            case JSON_FALSE:
                args.push_back("0");
                break;
            case JSON_TRUE:
                args.push_back("1");
                break;
            case JSON_NULL:
                args.push_back("NULL");
                break;
            default:
                args.push_back("error");
                break;
        }
    }
    const std::string text = LookUpRef(format->pszValue + 2);
    if (count == 0 &&
        (text.find("{0}") != std::string::npos || text.find("{}") != std::string::npos)) {
        PindLogMsg("Error FmtStr:%s, OriginStr=%s", format->pszValue, text.c_str());
        return std::string();
    }
    try {
        return fmt::vformat(fmt::string_view(text), args);
    } catch (const fmt::format_error&) {
        return std::string();
    }
}

// The elements' texts joined; a leading "@@#" marker is skipped and makes the separator a space.
std::string Concatenate(const JsonNode* first) {
    const char* separator = "";
    const JsonNode* n = first;
    if (n->nType == JSON_STRING && std::strlen(n->pszValue) >= 3 && n->pszValue[2] == '#') {
        separator = " ";
        n = n->pNext;
    }
    std::string out;
    for (; n != nullptr; n = n->pNext) {
        if (!out.empty()) {
            out += separator;
        }
        switch (n->nType) {
            case JSON_STRING:
                if (!StartsWithRef(n->pszValue)) {
                    out += n->pszValue;
                } else if (n->pszValue[2] != '#') {
                    out += LookUpRef(n->pszValue + 2);
                }
                break;
            case JSON_REAL:
                out += fmt::format("{:f}", static_cast<double>(n->fValue));
                break;
            case JSON_INT:
                out += fmt::format("{}", n->nValue);
                break;
            case JSON_INT64:
                out += fmt::format("{}", n->llValue);
                break;
            case JSON_ARRAY:
                out += FormatJsonServerString(n);
                break;
            case JSON_NULL:
                out += "NULL";
                break;
            case JSON_FALSE:
                out += "0";
                break;
            case JSON_TRUE:
                out += "1";
                break;
            default:
                out += "error";
                break;
        }
    }
    return out;
}

// One array, then nothing but its closing bracket: the depth first comes back to 0 at the end.
bool IsWholeArray(const std::string& s) {
    if (s.size() < 2 || s.front() != '[' || s.back() != ']') {
        return false;
    }
    int depth = 0;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '[') {
            ++depth;
        } else if (s[i] == ']') {
            --depth;
        }
        if (depth == 0) {
            return i + 1 == s.size();
        }
    }
    return false;
}

void ConvertEmbedded(const std::string& source, std::string& out) {
    constexpr size_t kPieceBuffer = 2048;
    std::string piece;
    int depth = 0;
    for (const char c : source) {
        if (c == '[' || c == ']') {
            depth += c == '[' ? 1 : -1;
            piece += c;
            if (c == '[' || depth != 0) {
                continue;
            }
            // A piece that is the whole source would only convert into itself again, forever.
            if (piece.find("[\"@@") == std::string::npos || piece.size() == source.size()) {
                out += piece;
            } else {
                std::unique_ptr<char[]> buffer(new char[kPieceBuffer]());
                std::memcpy(buffer.get(), piece.data(), std::min(piece.size(), kPieceBuffer - 1));
                FormatServerString(buffer.get(), static_cast<int32_t>(kPieceBuffer));
                out += buffer.get();
            }
            piece.clear();
        } else if (depth > 0) {
            piece += c;
        } else {
            out += c;
        }
    }
}

}  // namespace

void SetStringIdCallback(StringIdCallback pfnLookup) { g_pfnStringId.store(pfnLookup); }

void TryGetStringFromStrID(std::string& strOut, const std::string& strId) {
    try {
        strOut = LookUp(Stoul32(strId));
    } catch (const std::exception&) {
        PindLogMsg("TryGetStringFromStrID %s\n", strId.c_str());
        strOut.clear();
    }
}

void ConvertServerString(const std::string& strSource, std::string& strOut) {
    if (strSource.compare(0, 2, "@@") == 0) {
        uint32_t id = 0;
        bool range = false;
        ScanULong32(strSource.c_str() + 2, &id, &range);
        std::string result = LookUp(id);
        const std::string prefix = fmt::format("@@{}", id);
        const size_t at =
            strSource.size() > prefix.size() ? strSource.find(prefix) : std::string::npos;
        if (at != std::string::npos) {
            result.append(strSource, at + prefix.size(), std::string::npos);
        }
        strOut = std::move(result);
        return;
    }
    if (IsWholeArray(strSource)) {
        JsonNode* root = JsonParse(strSource.data(), strSource.size());
        if (root == nullptr) {
            strOut = strSource;
            return;
        }
        std::string result;
        try {
            result = FormatJsonServerString(root);
        } catch (...) {
            JsonFree(root);
            throw;
        }
        JsonFree(root);
        strOut = std::move(result);
        return;
    }
    if (strSource.find("[\"@@") != std::string::npos) {
        std::string result;
        ConvertEmbedded(strSource, result);
        strOut = std::move(result);
        return;
    }
    strOut = strSource;
}

void FormatServerString(char* pszStrBuf, int32_t nCapacity) {
    if (pszStrBuf == nullptr || nCapacity <= 0) {
        return;
    }
    const size_t capacity = static_cast<size_t>(nCapacity);
    const void* end = std::memchr(pszStrBuf, '\0', capacity);
    const size_t len = end != nullptr ? static_cast<const char*>(end) - pszStrBuf : capacity;
    if (std::memchr(pszStrBuf, '@', len) == nullptr) {
        return;
    }
    const std::string source(pszStrBuf, len);
    try {
        std::string result;
        ConvertServerString(source, result);
        if (result.size() < capacity) {
            std::memset(pszStrBuf, 0, capacity);
            std::memcpy(pszStrBuf, result.data(), result.size());
        } else {
            PindLogMsg("FormatServerString: [Buf Too Short!], pszStrBuf=%s", result.c_str());
        }
    } catch (const std::exception&) {
        PindLogMsg("FormatServerString %s\n", source.c_str());
    }
}

std::string FormatServerStringToText(const char* pszServerStr) {
    if (pszServerStr == nullptr) {
        return std::string();
    }
    try {
        std::string result;
        ConvertServerString(pszServerStr, result);
        return result;
    } catch (const std::exception&) {
        PindLogMsg("FormatServerString %s\n", pszServerStr);
        return std::string();
    }
}

std::string FormatJsonServerString(const JsonNode* pNode) {
    if (pNode == nullptr || pNode->nType != JSON_ARRAY || pNode->pChild == nullptr) {
        return std::string();
    }
    const JsonNode* first = pNode->pChild;
    if (first->nType == JSON_STRING && StartsWithRef(first->pszValue) &&
        first->pszValue[2] != '#') {
        return FormatPlaceholders(first);
    }
    return Concatenate(first);
}

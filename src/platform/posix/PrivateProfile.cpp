// GetPrivateProfileIntA's reading of an INI file, for systems without the Windows profile API.
#include <cstdio>
#include <cstring>
#include <string>

#include "pind/platform/CrtString.h"
#include "pind/platform/System.h"

namespace pind::platform {
namespace {

std::string Trim(const std::string& s) {
    size_t begin = 0;
    size_t end = s.size();
    while (begin < end && static_cast<unsigned char>(s[begin]) <= ' ') {
        ++begin;
    }
    while (end > begin && static_cast<unsigned char>(s[end - 1]) <= ' ') {
        --end;
    }
    return s.substr(begin, end - begin);
}

// RtlUnicodeStringToInteger with base 0: blanks, one sign, a 0x/0o/0b prefix, then digits up to the
// first character that is not one; the result wraps at 32 bits.
uint32_t ParseProfileInt(const std::string& text) {
    size_t i = 0;
    while (i < text.size() && static_cast<unsigned char>(text[i]) <= ' ') {
        ++i;
    }
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    unsigned base = 10;
    if (i + 1 < text.size() && text[i] == '0') {
        const char p = text[i + 1];
        if (p == 'x' || p == 'X') {
            base = 16;
        } else if (p == 'o' || p == 'O') {
            base = 8;
        } else if (p == 'b' || p == 'B') {
            base = 2;
        }
        if (base != 10) {
            i += 2;
        }
    }
    uint32_t value = 0;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        unsigned digit = 0;
        if (c >= '0' && c <= '9') {
            digit = static_cast<unsigned>(c - '0');
        } else if (c >= 'a' && c <= 'z') {
            digit = static_cast<unsigned>(c - 'a' + 10);
        } else if (c >= 'A' && c <= 'Z') {
            digit = static_cast<unsigned>(c - 'A' + 10);
        } else {
            break;
        }
        if (digit >= base) {
            break;
        }
        value = value * base + digit;
    }
    return negative ? 0u - value : value;
}

}  // namespace

uint32_t PrivateProfileInt(const char* section, const char* key, int defaultValue,
                           const char* fileName) {
    const uint32_t fallback = static_cast<uint32_t>(defaultValue);
    if (section == nullptr || key == nullptr || fileName == nullptr) {
        return fallback;
    }
    std::FILE* f = std::fopen(fileName, "r");
    if (f == nullptr) {
        return fallback;
    }
    const std::string wantSection = Trim(section);
    const std::string wantKey = Trim(key);
    bool inSection = false;
    std::string line;
    char buf[1024];
    bool found = false;
    std::string value;
    while (!found && std::fgets(buf, sizeof buf, f) != nullptr) {
        line.assign(buf);
        // A physical line longer than the buffer continues in the next read.
        while (!line.empty() && line.back() != '\n' && std::fgets(buf, sizeof buf, f) != nullptr) {
            line.append(buf);
        }
        const std::string t = Trim(line);
        if (t.empty() || t[0] == ';') {
            continue;
        }
        if (t[0] == '[') {
            const size_t close = t.find(']');
            const std::string name = Trim(t.substr(1, close == std::string::npos ? std::string::npos
                                                                                : close - 1));
            inSection = Stricmp(name.c_str(), wantSection.c_str()) == 0;
            continue;
        }
        if (!inSection) {
            continue;
        }
        const size_t eq = t.find('=');
        const std::string name = Trim(t.substr(0, eq));
        if (Stricmp(name.c_str(), wantKey.c_str()) != 0) {
            continue;
        }
        value = eq == std::string::npos ? std::string() : Trim(t.substr(eq + 1));
        if (value.size() >= 2 && (value[0] == '"' || value[0] == '\'') &&
            value.back() == value[0]) {
            value = value.substr(1, value.size() - 2);
        }
        found = true;
    }
    std::fclose(f);
    if (!found || value.empty()) {
        return fallback;
    }
    return ParseProfileInt(value);
}

}  // namespace pind::platform

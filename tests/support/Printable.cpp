#include "support/Printable.h"

#include <cstdio>

namespace pind::test {

std::string Printable(const char* text) {
    if (text == nullptr) {
        return "null";
    }
    std::string out = "'";
    for (const char* p = text; *p != '\0'; ++p) {
        const unsigned char c = static_cast<unsigned char>(*p);
        if (c < 0x20 || c >= 0x7F || c == '\'' || c == '"' || c == '\\') {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", c);
            out += hex;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "'";
}

}  // namespace pind::test

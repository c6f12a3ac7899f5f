// Reads a Trace Event file back for tests: a strict JSON reader (anything malformed fails) that
// keeps the string and number members of each object inside the top-level "traceEvents" array.
#ifndef PIND_TESTS_PROFILE_TRACEJSON_H_
#define PIND_TESTS_PROFILE_TRACEJSON_H_

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace pind::test {

struct TraceEvent {
    std::map<std::string, std::string> text;
    std::map<std::string, double> number;
};

class TraceJson {
public:
    bool Parse(const std::string& json) {
        m_s = json;
        m_at = 0;
        events.clear();
        return Value(0, nullptr) && (Blank(), m_at == m_s.size());
    }
    std::vector<TraceEvent> events;

private:
    void Blank() { m_at = std::min(m_s.find_first_not_of(" \t\r\n", m_at), m_s.size()); }
    bool Eat(char c) {
        return Blank(), m_at < m_s.size() && m_s[m_at] == c ? (++m_at, true) : false;
    }
    // \u escapes below 0x80 give the byte, the others their UTF-8 form (two bytes suffice here).
    bool String(std::string* out) {
        if (!Eat('"')) return false;
        for (; m_at < m_s.size() && m_s[m_at] != '"'; ++m_at) {
            const auto c = static_cast<unsigned char>(m_s[m_at]);
            if (c < 0x20) return false;
            if (c != '\\') {
                *out += static_cast<char>(c);
                continue;
            }
            const char e = m_at + 1 < m_s.size() ? m_s[++m_at] : '\0';
            if (e == 'u' && m_at + 4 < m_s.size()) {
                const unsigned long u = std::strtoul(m_s.substr(m_at + 1, 4).c_str(), nullptr, 16);
                m_at += 4;
                if (u >= 0x80) *out += static_cast<char>(0xC0 | (u >> 6));
                *out += static_cast<char>(u >= 0x80 ? 0x80 | (u & 0x3F) : u);
            } else if (e == '"' || e == '\\' || e == '/') {
                *out += e;
            } else {
                return false;
            }
        }
        return Eat('"');
    }
    // One value at `depth` (0 is the document); members of objects at depth 2 go into `event`.
    bool Value(int depth, TraceEvent* event, const std::string& key = std::string()) {
        Blank();
        const char c = m_at < m_s.size() ? m_s[m_at] : '\0';
        if (c == '{' || c == '[') {
            const bool object = c == '{';
            ++m_at;
            if (Eat(object ? '}' : ']')) return true;
            do {
                std::string name;
                if (object && (!String(&name) || !Eat(':'))) return false;
                TraceEvent* into = nullptr;
                if (!object && depth == 1 && key == "traceEvents") {
                    events.emplace_back();
                    into = &events.back();
                }
                if (!Value(depth + 1, object && depth == 2 ? event : into, name)) return false;
            } while (Eat(','));
            return Eat(object ? '}' : ']');
        }
        if (c == '"') {
            std::string text;
            if (!String(&text)) return false;
            if (event != nullptr) event->text[key] = text;
            return true;
        }
        for (const char* word : {"true", "false", "null"}) {
            if (m_s.compare(m_at, std::strlen(word), word) == 0)
                return m_at += std::strlen(word), true;
        }
        char* end = nullptr;
        const double d = std::strtod(m_s.c_str() + m_at, &end);
        if (end == m_s.c_str() + m_at) return false;
        m_at = static_cast<size_t>(end - m_s.c_str());
        if (event != nullptr) event->number[key] = d;
        return true;
    }

    std::string m_s;
    size_t m_at = 0;
};

}  // namespace pind::test

#endif  // PIND_TESTS_PROFILE_TRACEJSON_H_

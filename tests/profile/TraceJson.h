// Reads a Trace Event file back for tests: a strict little JSON reader (it rejects anything that is
// not well-formed JSON) that keeps the fields of each event in "traceEvents".
#ifndef PIND_TESTS_PROFILE_TRACEJSON_H_
#define PIND_TESTS_PROFILE_TRACEJSON_H_

#include <cctype>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace pind::test {

// One event: its string fields and its number fields by key.
struct TraceEvent {
    std::map<std::string, std::string> text;
    std::map<std::string, double> number;
};

class TraceJson {
public:
    /// False when `json` is not well-formed or has no "traceEvents" array of objects.
    bool Parse(const std::string& json) {
        m_s = json;
        m_at = 0;
        events.clear();
        Skip();
        if (!Eat('{')) {
            return false;
        }
        bool found = false;
        do {
            std::string key;
            if (!String(&key) || !Eat(':')) {
                return false;
            }
            if (key == "traceEvents") {
                found = true;
                if (!Eat('[')) {
                    return false;
                }
                if (!Eat(']')) {
                    do {
                        events.emplace_back();
                        if (!Value(&events.back(), true)) {
                            return false;
                        }
                    } while (Eat(','));
                    if (!Eat(']')) {
                        return false;
                    }
                }
            } else if (!Value(nullptr, false)) {
                return false;
            }
        } while (Eat(','));
        return Eat('}') && m_at == m_s.size() && found;
    }

    std::vector<TraceEvent> events;

private:
    void Skip() {
        while (m_at < m_s.size() &&
               (m_s[m_at] == ' ' || m_s[m_at] == '\n' || m_s[m_at] == '\t' || m_s[m_at] == '\r')) {
            ++m_at;
        }
    }
    bool Eat(char c) {
        Skip();
        if (m_at < m_s.size() && m_s[m_at] == c) {
            ++m_at;
            Skip();
            return true;
        }
        return false;
    }
    // A string; \u escapes below 0x80 become the byte, others their UTF-8 form.
    bool String(std::string* out) {
        Skip();
        if (m_at >= m_s.size() || m_s[m_at] != '"') {
            return false;
        }
        for (++m_at; m_at < m_s.size(); ++m_at) {
            const auto c = static_cast<unsigned char>(m_s[m_at]);
            if (c == '"') {
                ++m_at;
                Skip();
                return true;
            }
            if (c < 0x20) {
                return false;
            }
            if (c != '\\') {
                *out += static_cast<char>(c);
                continue;
            }
            if (++m_at >= m_s.size()) {
                return false;
            }
            const char e = m_s[m_at];
            if (e == 'u') {
                if (m_at + 4 >= m_s.size()) {
                    return false;
                }
                const unsigned long u = std::strtoul(m_s.substr(m_at + 1, 4).c_str(), nullptr, 16);
                m_at += 4;
                if (u < 0x80) {
                    *out += static_cast<char>(u);
                } else {
                    *out += static_cast<char>(0xC0 | (u >> 6));
                    *out += static_cast<char>(0x80 | (u & 0x3F));
                }
            } else if (e == '"' || e == '\\' || e == '/') {
                *out += e;
            } else {
                return false;
            }
        }
        return false;
    }
    // Any value; an object's scalar members go into `event` when one is given.
    bool Value(TraceEvent* event, bool wantObject) {
        Skip();
        if (m_at >= m_s.size()) {
            return false;
        }
        const char c = m_s[m_at];
        if (c == '{') {
            Eat('{');
            if (Eat('}')) {
                return true;
            }
            do {
                std::string key;
                if (!String(&key) || !Eat(':')) {
                    return false;
                }
                Skip();
                if (m_at < m_s.size() && m_s[m_at] == '"') {
                    std::string text;
                    if (!String(&text)) {
                        return false;
                    }
                    if (event != nullptr) {
                        event->text[key] = text;
                    }
                } else if (m_at < m_s.size() &&
                           (m_s[m_at] == '-' ||
                            std::isdigit(static_cast<unsigned char>(m_s[m_at])))) {
                    char* end = nullptr;
                    const double d = std::strtod(m_s.c_str() + m_at, &end);
                    m_at = static_cast<size_t>(end - m_s.c_str());
                    if (event != nullptr) {
                        event->number[key] = d;
                    }
                } else if (!Value(nullptr, false)) {
                    return false;
                }
            } while (Eat(','));
            return Eat('}');
        }
        if (wantObject) {
            return false;
        }
        if (c == '[') {
            Eat('[');
            if (Eat(']')) {
                return true;
            }
            do {
                if (!Value(nullptr, false)) {
                    return false;
                }
            } while (Eat(','));
            return Eat(']');
        }
        if (c == '"') {
            std::string ignored;
            return String(&ignored);
        }
        for (const char* word : {"true", "false", "null"}) {
            if (m_s.compare(m_at, std::string(word).size(), word) == 0) {
                m_at += std::string(word).size();
                Skip();
                return true;
            }
        }
        char* end = nullptr;
        std::strtod(m_s.c_str() + m_at, &end);
        if (end == m_s.c_str() + m_at) {
            return false;
        }
        m_at = static_cast<size_t>(end - m_s.c_str());
        Skip();
        return true;
    }

    std::string m_s;
    size_t m_at = 0;
};

}  // namespace pind::test

#endif  // PIND_TESTS_PROFILE_TRACEJSON_H_

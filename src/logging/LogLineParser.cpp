#include "pind/logging/LogLineParser.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace _log {
namespace {

constexpr size_t kNone = static_cast<size_t>(-1);

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The byte a \u escape stands for; -1 unless it is four hex digits naming a byte (the writer
// escapes only bytes).
int EscapedByte(const char* p) {
    int value = 0;
    for (int i = 0; i < 4; ++i) {
        const int d = HexDigit(p[i]);
        if (d < 0) return -1;
        value = value * 16 + d;
    }
    return value <= 0xFF ? value : -1;
}

// Splits one attribute list (`"key": value, "key": value`) that fills [begin, end) exactly. Bare
// values have no end mark of their own, so each is tried at every `, "` that could end it, the
// likeliest first, and a start that once led nowhere is not tried again. `budget` bounds the work
// on hostile input.
class ListParser {
public:
    ListParser(const char* s, size_t begin, size_t end, bool bContext, size_t* budget)
        : m_s(s),
          m_begin(begin),
          m_end(end),
          m_bContext(bContext),
          m_budget(budget),
          m_failed(end - begin + 1, 0) {}

    bool Parse(LogLineFields* pItems, LogLineFields* pContext) {
        if (m_begin == m_end) return true;
        std::vector<Frame> stack;
        if (!Push(&stack, m_begin)) return false;
        while (!stack.empty()) {
            Frame& f = stack.back();
            const size_t e = NextCandidate(&f);
            if (e == kNone) {
                m_failed[f.itemStart - m_begin] = 1;
                stack.pop_back();
                if (*m_budget == 0) return false;
                continue;
            }
            f.valueEnd = e;
            if (e == m_end) {
                Collect(stack, pItems, pContext);
                return true;
            }
            if (!m_failed[e + 2 - m_begin]) {
                Push(&stack, e + 2);
            }
        }
        return false;
    }

private:
    struct Frame {
        size_t itemStart;
        size_t valueStart;
        std::string key;
        int stage = 0;
        size_t scan = 0;
        size_t tried[2] = {kNone, kNone};
        size_t valueEnd = kNone;
        bool bQuoted = false;
        bool bContextBlock = false;
        LogLineFields context;
    };

    bool Boundary(size_t p) const {
        return p == m_end ||
               (p + 3 <= m_end && m_s[p] == ',' && m_s[p + 1] == ' ' && m_s[p + 2] == '"');
    }

    bool Spend(size_t n) {
        if (*m_budget < n) {
            *m_budget = 0;
            return false;
        }
        *m_budget -= n;
        return true;
    }

    // The index of the quote that closes the text opened at `open`, or kNone.
    size_t CloseQuote(size_t open) {
        size_t p = open + 1;
        while (p < m_end) {
            const char c = m_s[p];
            if (c == '"') break;
            if (c == '\\') {
                if (p + 1 >= m_end) return kNone;
                const char e = m_s[p + 1];
                if (e == 'u') {
                    if (p + 6 > m_end || EscapedByte(m_s + p + 2) < 0) return kNone;
                    p += 6;
                    continue;
                }
                if (std::strchr("btnfr\"\\/", e) == nullptr || e == '\0') return kNone;
                p += 2;
                continue;
            }
            ++p;
        }
        Spend(p - open);
        return p < m_end ? p : kNone;
    }

    // A frame for the item at `start`; false (and the start marked) when no key opens it there.
    bool Push(std::vector<Frame>* stack, size_t start) {
        if (start >= m_end || m_s[start] != '"') {
            m_failed[start - m_begin] = 1;
            return false;
        }
        const size_t close = CloseQuote(start);
        if (close == kNone || close + 3 > m_end || m_s[close + 1] != ':' || m_s[close + 2] != ' ') {
            m_failed[start - m_begin] = 1;
            return false;
        }
        Frame f;
        f.itemStart = start;
        f.valueStart = close + 3;
        f.scan = f.valueStart;
        f.key = Unescape(start + 1, close);
        stack->push_back(std::move(f));
        return true;
    }

    // The next place the value of `f` could end, or kNone when every reading has been tried.
    size_t NextCandidate(Frame* f) {
        const size_t v = f->valueStart;
        f->bQuoted = false;
        f->bContextBlock = false;
        while (*m_budget > 0) {
            switch (f->stage++) {
                case 0: {  // the context block, which must close the record
                    static const char kOpen[] = "{ \"c\": {";
                    const size_t nOpen = sizeof kOpen - 1;
                    if (!m_bContext || f->key != "attr" || m_end - v < nOpen + 4 ||
                        std::memcmp(m_s + v, kOpen, nOpen) != 0 ||
                        std::memcmp(m_s + m_end - 4, "} } ", 4) != 0) {
                        break;
                    }
                    f->context.clear();
                    LogLineFields unused;
                    ListParser inner(m_s, v + nOpen, m_end - 4, false, m_budget);
                    if (inner.Parse(&f->context, &unused)) {
                        f->bContextBlock = true;
                        return m_end;
                    }
                    break;
                }
                case 1: {  // a quoted text
                    if (m_s[v] != '"') break;
                    const size_t close = CloseQuote(v);
                    if (close != kNone && Boundary(close + 1)) {
                        f->tried[0] = close + 1;
                        f->bQuoted = true;
                        return close + 1;
                    }
                    break;
                }
                case 2: {  // a bare value with balanced brackets and quotes
                    const size_t e = BalancedEnd(v);
                    if (e != kNone && e != f->tried[0]) {
                        f->tried[1] = e;
                        return e;
                    }
                    break;
                }
                default: {  // any other separator, nearest first
                    --f->stage;
                    while (f->scan <= m_end) {
                        const size_t p = f->scan++;
                        if (!Spend(1)) return kNone;
                        if (Boundary(p) && p != f->tried[0] && p != f->tried[1]) return p;
                    }
                    return kNone;
                }
            }
        }
        return kNone;
    }

    size_t BalancedEnd(size_t v) {
        int depth = 0;
        for (size_t p = v; p <= m_end; ++p) {
            if (depth == 0 && Boundary(p)) {
                Spend(p - v);
                return p;
            }
            if (p == m_end) break;
            const char c = m_s[p];
            if (c == '"') {
                const size_t close = CloseQuote(p);
                if (close == kNone) break;
                p = close;
            } else if (c == '{' || c == '[') {
                ++depth;
            } else if (c == '}' || c == ']') {
                if (--depth < 0) break;
            }
        }
        Spend(m_end - v);
        return kNone;
    }

    std::string Unescape(size_t b, size_t e) const {
        std::string out;
        out.reserve(e - b);
        for (size_t p = b; p < e; ++p) {
            const char c = m_s[p];
            if (c != '\\') {
                out.push_back(c);
                continue;
            }
            const char x = m_s[++p];
            switch (x) {
                case 'b':
                    out.push_back('\b');
                    break;
                case 't':
                    out.push_back('\t');
                    break;
                case 'n':
                    out.push_back('\n');
                    break;
                case 'f':
                    out.push_back('\f');
                    break;
                case 'r':
                    out.push_back('\r');
                    break;
                case 'u':
                    out.push_back(static_cast<char>(EscapedByte(m_s + p + 1)));
                    p += 4;
                    break;
                default:
                    out.push_back(x);
                    break;  // " \ /
            }
        }
        return out;
    }

    void Collect(std::vector<Frame>& stack, LogLineFields* pItems, LogLineFields* pContext) const {
        for (Frame& f : stack) {
            if (f.bContextBlock) {
                *pContext = std::move(f.context);
                continue;
            }
            LogLineField field;
            field.strKey = std::move(f.key);
            field.bQuoted = f.bQuoted;
            field.strValue = f.bQuoted ? Unescape(f.valueStart + 1, f.valueEnd - 1)
                                       : std::string(m_s + f.valueStart, m_s + f.valueEnd);
            pItems->push_back(std::move(field));
        }
    }

    const char* m_s;
    size_t m_begin;
    size_t m_end;
    bool m_bContext;
    size_t* m_budget;
    std::vector<char> m_failed;
};

bool IsDigitAt(const std::string& s, size_t i) { return s[i] >= '0' && s[i] <= '9'; }

// "YYYY-MM-DD hh:mm:ss" and a blank at the start of `line`.
bool HasLineTime(const std::string& line) {
    static const char kShape[] = "0000-00-00 00:00:00 ";
    if (line.size() < sizeof kShape - 1) return false;
    for (size_t i = 0; i < sizeof kShape - 1; ++i) {
        if (kShape[i] == '0' ? !IsDigitAt(line, i) : line[i] != kShape[i]) return false;
    }
    return true;
}

}  // namespace

const LogLineField* LogLine::Find(const LogLineFields& fields, const char* key) {
    for (const LogLineField& f : fields) {
        if (f.strKey == key) return &f;
    }
    return nullptr;
}

bool ParseRecordText(const char* pText, size_t nLen, LogLine* pOut) {
    pOut->bRecord = false;
    pOut->vecHeader.clear();
    pOut->vecTop.clear();
    pOut->vecContext.clear();
    pOut->strMsg.clear();
    if (nLen < 3 || pText[0] != '{' || pText[1] != ' ' || pText[nLen - 1] != '}') {
        return false;
    }
    size_t budget = 64 * nLen + 4096;
    LogLineFields items;
    LogLineFields context;
    ListParser list(pText, 2, nLen - 1, true, &budget);
    if (!list.Parse(&items, &context)) {
        return false;
    }
    size_t msg = 0;
    while (msg < items.size() && items[msg].strKey != "msg") ++msg;
    if (msg == items.size() || !items[msg].bQuoted) {
        return false;
    }
    pOut->vecHeader.assign(
        std::make_move_iterator(items.begin()),
        std::make_move_iterator(items.begin() + static_cast<std::ptrdiff_t>(msg)));
    pOut->strMsg = std::move(items[msg].strValue);
    pOut->vecTop.assign(
        std::make_move_iterator(items.begin() + static_cast<std::ptrdiff_t>(msg) + 1),
        std::make_move_iterator(items.end()));
    pOut->vecContext = std::move(context);
    pOut->bRecord = true;
    return true;
}

bool ParseLogLine(const std::string& line, LogLine* pOut) {
    pOut->strLine = line;
    while (!pOut->strLine.empty() &&
           (pOut->strLine.back() == '\n' || pOut->strLine.back() == '\r')) {
        pOut->strLine.pop_back();
    }
    const std::string& s = pOut->strLine;
    size_t start = 0;
    pOut->strLineTime.clear();
    if (HasLineTime(s)) {
        pOut->strLineTime = s.substr(0, 19);
        start = 20;
    }
    size_t end = s.size();
    if (end > start && s[end - 1] == ' ') --end;  // the blank the writer puts after every text
    return ParseRecordText(s.data() + start, end - start, pOut);
}

}  // namespace _log

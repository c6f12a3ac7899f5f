#include "pind/json/FmtJson.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <system_error>
#include <vector>

namespace {

constexpr int kMaxDepth = 512;

// A tree's memory: the header, the root and the first nodes, then the copy of the text that the
// strings are unescaped into. Nodes that do not fit go to further blocks, each twice the last.
struct ExtraBlock {
    ExtraBlock* pNext;
};
struct TreeHeader {
    ExtraBlock* pExtra;
    size_t nReserved;  // keeps the root 16-byte aligned
};

// Bytes a string can hold without a closer look: not '"', '\\', a control character or NUL.
struct PlainTable {
    bool plain[256];
    constexpr PlainTable() : plain() {
        for (int c = 0; c < 256; ++c) {
            plain[c] = c >= 0x20 && c != '"' && c != '\\';
        }
    }
};
constexpr PlainTable kPlain;

inline bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }
inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

class Parser {
public:
    Parser(const char* text, size_t len) : m_len(len) {
        if (len > std::numeric_limits<size_t>::max() / 8) {
            return;  // no such text fits in memory; Parse reports it
        }
        // A node per 12 bytes covers typical documents in the first block; the rest grows.
        const size_t firstNodes = len / 12 + 4;
        const size_t bytes = sizeof(TreeHeader) + firstNodes * sizeof(JsonNode) + len + 1;
        m_header = static_cast<TreeHeader*>(std::malloc(bytes));
        if (m_header == nullptr) {
            return;
        }
        m_header->pExtra = nullptr;
        m_nodeCur = reinterpret_cast<JsonNode*>(m_header + 1);
        m_nodeEnd = m_nodeCur + firstNodes;
        m_nextBlockNodes = firstNodes * 2;
        m_begin = reinterpret_cast<char*>(m_nodeEnd);
        if (len != 0) {
            std::memcpy(m_begin, text, len);
        }
        m_begin[len] = '\0';  // the sentinel every scan stops at
        m_p = m_begin;
    }

    ~Parser() {
        if (!m_keep && m_header != nullptr) {
            JsonFree(reinterpret_cast<JsonNode*>(m_header + 1));
        }
    }

    JsonNode* Parse(JsonParseError* error);

private:
    struct Frame {
        JsonNode* container;
        JsonNode* last;
    };

    JsonNode* NewNode() {
        if (m_nodeCur == m_nodeEnd && !Grow()) {
            return nullptr;
        }
        JsonNode* n = m_nodeCur++;
        *n = JsonNode{};
        return n;
    }
    bool Grow();
    bool Fail(const char* what) {
        m_what = what;
        return false;
    }
    void SkipSpace() {
        while (IsSpace(*m_p)) {
            ++m_p;
        }
    }
    bool ParseString(const char** out);
    bool ParseEscape(char** out);
    bool ParseNumber(JsonNode* node);
    bool ParseLiteral(const char* word, size_t n) {
        for (size_t i = 0; i < n; ++i) {
            if (m_p[i] != word[i]) {  // stops at the sentinel: it matches no letter
                m_p += i;
                return Fail("invalid literal");
            }
        }
        m_p += n;
        return true;
    }

    size_t m_len;
    TreeHeader* m_header = nullptr;
    JsonNode* m_nodeCur = nullptr;
    JsonNode* m_nodeEnd = nullptr;
    size_t m_nextBlockNodes = 0;
    char* m_begin = nullptr;
    char* m_p = nullptr;
    const char* m_what = "";
    bool m_keep = false;
};

bool Parser::Grow() {
    const size_t n = m_nextBlockNodes;
    auto* block = static_cast<ExtraBlock*>(
        std::malloc(sizeof(TreeHeader) + n * sizeof(JsonNode)));  // header-sized: keeps alignment
    if (block == nullptr) {
        return Fail("out of memory");
    }
    block->pNext = m_header->pExtra;
    m_header->pExtra = block;
    m_nodeCur = reinterpret_cast<JsonNode*>(reinterpret_cast<char*>(block) + sizeof(TreeHeader));
    m_nodeEnd = m_nodeCur + n;
    m_nextBlockNodes = n * 2;
    return true;
}

void AppendUtf8(char** out, uint32_t cp) {
    char* o = *out;
    if (cp < 0x80) {
        *o++ = static_cast<char>(cp);
    } else if (cp < 0x800) {
        *o++ = static_cast<char>(0xC0 | (cp >> 6));
        *o++ = static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        *o++ = static_cast<char>(0xE0 | (cp >> 12));
        *o++ = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        *o++ = static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        *o++ = static_cast<char>(0xF0 | (cp >> 18));
        *o++ = static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        *o++ = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        *o++ = static_cast<char>(0x80 | (cp & 0x3F));
    }
    *out = o;
}

// m_p is at the backslash; the unescaped bytes go to *out, which never overtakes m_p.
bool Parser::ParseEscape(char** out) {
    const char c = m_p[1];
    char plain = 0;
    switch (c) {
        case '"':
            plain = '"';
            break;
        case '\\':
            plain = '\\';
            break;
        case '/':
            plain = '/';
            break;
        case 'b':
            plain = '\b';
            break;
        case 'f':
            plain = '\f';
            break;
        case 'n':
            plain = '\n';
            break;
        case 'r':
            plain = '\r';
            break;
        case 't':
            plain = '\t';
            break;
        case 'u':
            break;
        default:
            ++m_p;
            return Fail("invalid escape");
    }
    if (c != 'u') {
        *(*out)++ = plain;
        m_p += 2;
        return true;
    }
    auto hex4 = [this](const char* at, uint32_t* value) {
        uint32_t v = 0;
        for (int i = 0; i < 4; ++i) {
            const int h = HexValue(at[i]);  // the sentinel is no hex digit: stops in bounds
            if (h < 0) {
                m_p = const_cast<char*>(at + i);
                return Fail("invalid \\u escape");
            }
            v = v * 16 + static_cast<uint32_t>(h);
        }
        *value = v;
        return true;
    };
    uint32_t cp = 0;
    if (!hex4(m_p + 2, &cp)) {
        return false;
    }
    if (cp >= 0xDC00 && cp <= 0xDFFF) {
        return Fail("unpaired surrogate");
    }
    if (cp >= 0xD800 && cp <= 0xDBFF) {
        uint32_t low = 0;
        if (m_p[6] != '\\' || m_p[7] != 'u' || !hex4(m_p + 8, &low) || low < 0xDC00 ||
            low > 0xDFFF) {
            return Fail("unpaired surrogate");
        }
        cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
        m_p += 6;
    }
    m_p += 6;
    AppendUtf8(out, cp);
    return true;
}

// m_p is at the opening quote. The text is unescaped in place and zero-terminated where it ends.
bool Parser::ParseString(const char** result) {
    char* start = ++m_p;
    while (kPlain.plain[static_cast<unsigned char>(*m_p)]) {
        ++m_p;
    }
    char* out = m_p;
    for (;;) {
        const char c = *m_p;
        if (c == '"') {
            *out = '\0';
            ++m_p;
            *result = start;
            return true;
        }
        if (c == '\\') {
            if (!ParseEscape(&out)) {
                return false;
            }
        } else if (static_cast<unsigned char>(c) < 0x20) {
            return Fail(c == '\0' && m_p == m_begin + m_len ? "unterminated string"
                                                            : "control character in string");
        } else {
            *out++ = c;
            ++m_p;
        }
    }
}

// Exponent of the leading digit of a plain-decimal number, saturated: tells an overflow from an
// underflow when even a double cannot hold the value.
long DecimalMagnitude(const char* s, const char* end) {
    if (*s == '-') ++s;
    long mag = 0;
    if (*s != '0') {
        while (s < end && IsDigit(*s)) {
            ++mag;
            ++s;
        }
    } else {
        ++s;
        if (s < end && *s == '.') {
            ++s;
            while (s < end && *s == '0') {
                --mag;
                ++s;
            }
        }
    }
    while (s < end && *s != 'e' && *s != 'E') ++s;
    if (s < end) {
        ++s;
        const bool neg = *s == '-';
        if (*s == '-' || *s == '+') ++s;
        long e = 0;
        while (s < end && IsDigit(*s)) {
            e = e < 100000000 ? e * 10 + (*s - '0') : e;
            ++s;
        }
        mag += neg ? -e : e;
    }
    return mag;
}

float RealFromText(const char* s, const char* end) {
    float f = 0;
    const auto r = std::from_chars(s, end, f);
    if (r.ec == std::errc()) {
        return f;
    }
    double d = 0;
    if (std::from_chars(s, end, d).ec == std::errc()) {
        return static_cast<float>(d);
    }
    const float mag = DecimalMagnitude(s, end) > 0 ? std::numeric_limits<float>::infinity() : 0.0f;
    return *s == '-' ? -mag : mag;
}

bool Parser::ParseNumber(JsonNode* node) {
    const char* start = m_p;
    const bool neg = *m_p == '-';
    if (neg) {
        ++m_p;
    }
    uint64_t u = 0;
    bool overflow = false;
    if (*m_p == '0') {
        ++m_p;
        if (IsDigit(*m_p)) {
            return Fail("leading zero");
        }
    } else if (IsDigit(*m_p)) {
        do {
            const unsigned d = static_cast<unsigned>(*m_p - '0');
            if (u > (std::numeric_limits<uint64_t>::max() - d) / 10) {
                overflow = true;
            } else {
                u = u * 10 + d;
            }
            ++m_p;
        } while (IsDigit(*m_p));
    } else {
        return Fail("invalid number");
    }
    bool real = overflow;
    if (*m_p == '.') {
        ++m_p;
        if (!IsDigit(*m_p)) {
            return Fail("digit expected after '.'");
        }
        while (IsDigit(*m_p)) ++m_p;
        real = true;
    }
    if (*m_p == 'e' || *m_p == 'E') {
        ++m_p;
        if (*m_p == '+' || *m_p == '-') ++m_p;
        if (!IsDigit(*m_p)) {
            return Fail("digit expected in exponent");
        }
        while (IsDigit(*m_p)) ++m_p;
        real = true;
    }
    constexpr uint64_t kInt64Limit = uint64_t{1} << 63;
    if (!real && u < (uint64_t{1} << 31)) {
        const int32_t v = neg ? -static_cast<int32_t>(u) : static_cast<int32_t>(u);
        node->nType = JSON_INT;
        node->nValue = v;
        node->llValue = v;
        node->fValue = static_cast<float>(v);
    } else if (!real && (u < kInt64Limit || (neg && u == kInt64Limit))) {
        const int64_t v = neg ? static_cast<int64_t>(0 - u) : static_cast<int64_t>(u);
        node->nType = JSON_INT64;
        node->llValue = v;
        node->fValue = static_cast<float>(v);
    } else {
        node->nType = JSON_REAL;
        node->fValue = RealFromText(start, m_p);
    }
    return true;
}

JsonNode* Parser::Parse(JsonParseError* error) {
    if (m_header == nullptr) {
        if (error != nullptr) {
            *error = JsonParseError{0, "out of memory"};
        }
        return nullptr;
    }
    Frame frames[kMaxDepth];
    int depth = 0;
    JsonNode* root = NewNode();
    JsonNode* cur = root;
    bool ok = true;

value:
    SkipSpace();
    switch (*m_p) {
        case '{':
        case '[': {
            if (depth == kMaxDepth) {
                ok = Fail("nesting deeper than 512");
                goto done;
            }
            const bool isObject = *m_p == '{';
            cur->nType = isObject ? JSON_OBJECT : JSON_ARRAY;
            ++m_p;
            SkipSpace();
            if (*m_p == (isObject ? '}' : ']')) {
                ++m_p;
                goto after_value;
            }
            frames[depth++] = Frame{cur, nullptr};
            if (isObject) {
                goto member;
            }
            goto element;
        }
        case '"':
            cur->nType = JSON_STRING;
            if (!ParseString(&cur->pszValue)) {
                ok = false;
                goto done;
            }
            goto after_value;
        case 't':
            cur->nType = JSON_TRUE;
            ok = ParseLiteral("true", 4);
            break;
        case 'f':
            cur->nType = JSON_FALSE;
            ok = ParseLiteral("false", 5);
            break;
        case 'n':
            cur->nType = JSON_NULL;
            ok = ParseLiteral("null", 4);
            break;
        default:
            if (*m_p == '-' || IsDigit(*m_p)) {
                ok = ParseNumber(cur);
            } else {
                ok = Fail(*m_p == '\0' && m_p == m_begin + m_len ? "unexpected end of text"
                                                                 : "value expected");
            }
            break;
    }
    if (!ok) {
        goto done;
    }

after_value:
    if (depth == 0) {
        goto done;
    }
    SkipSpace();
    {
        Frame& top = frames[depth - 1];
        const bool isObject = top.container->nType == JSON_OBJECT;
        if (*m_p == ',') {
            ++m_p;
            if (isObject) {
                goto member;
            }
            goto element;
        }
        if (*m_p == (isObject ? '}' : ']')) {
            ++m_p;
            --depth;
            goto after_value;
        }
        ok = Fail(isObject ? "',' or '}' expected" : "',' or ']' expected");
        goto done;
    }

element:
    SkipSpace();
    if (*m_p == ']') {
        ok = Fail("trailing comma");
        goto done;
    }
    {
        Frame& top = frames[depth - 1];
        cur = NewNode();
        if (cur == nullptr) {
            ok = false;
            goto done;
        }
        (top.last != nullptr ? top.last->pNext : top.container->pChild) = cur;
        top.last = cur;
    }
    goto value;

member:
    SkipSpace();
    if (*m_p != '"') {
        ok = Fail(*m_p == '}' ? "trailing comma" : "member name expected");
        goto done;
    }
    {
        const char* name = nullptr;
        if (!ParseString(&name)) {
            ok = false;
            goto done;
        }
        SkipSpace();
        if (*m_p != ':') {
            ok = Fail("':' expected");
            goto done;
        }
        ++m_p;
        Frame& top = frames[depth - 1];
        cur = NewNode();
        if (cur == nullptr) {
            ok = false;
            goto done;
        }
        cur->pszName = name;
        (top.last != nullptr ? top.last->pNext : top.container->pChild) = cur;
        top.last = cur;
    }
    goto value;

done:
    if (ok) {
        SkipSpace();
        if (m_p != m_begin + m_len) {
            ok = Fail("text after the value");
        }
    }
    if (!ok) {
        if (error != nullptr) {
            *error = JsonParseError{static_cast<size_t>(m_p - m_begin), m_what};
        }
        return nullptr;
    }
    m_keep = true;
    return root;
}

// ---- printing --------------------------------------------------------------------------------

void PrintString(std::string& out, const char* s) {
    static const char kHex[] = "0123456789abcdef";
    out += '"';
    if (s != nullptr) {
        const char* run = s;
        for (;; ++s) {
            const unsigned char c = static_cast<unsigned char>(*s);
            if (kPlain.plain[c]) {
                continue;
            }
            out.append(run, s);
            if (c == 0) {
                break;
            }
            switch (c) {
                case '"':
                    out += "\\\"";
                    break;
                case '\\':
                    out += "\\\\";
                    break;
                case '\b':
                    out += "\\b";
                    break;
                case '\f':
                    out += "\\f";
                    break;
                case '\n':
                    out += "\\n";
                    break;
                case '\r':
                    out += "\\r";
                    break;
                case '\t':
                    out += "\\t";
                    break;
                default: {
                    const char esc[] = {'\\', 'u', '0', '0', kHex[c >> 4], kHex[c & 15]};
                    out.append(esc, sizeof esc);
                }
            }
            run = s + 1;
        }
    }
    out += '"';
}

void PrintReal(std::string& out, float f) {
    if (std::isnan(f)) {
        out += "null";
        return;
    }
    if (std::isinf(f)) {
        out += f < 0 ? "-1e999" : "1e999";
        return;
    }
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, f);
    out.append(buf, r.ptr);
    // Without a point or exponent the text would read back as an integer.
    if (std::find_if(buf, r.ptr, [](char c) { return c == '.' || c == 'e'; }) == r.ptr) {
        out += ".0";
    }
}

void PrintScalar(std::string& out, const JsonNode* n) {
    char buf[32];
    switch (n->nType) {
        case JSON_FALSE:
            out += "false";
            break;
        case JSON_TRUE:
            out += "true";
            break;
        case JSON_REAL:
            PrintReal(out, n->fValue);
            break;
        case JSON_STRING:
            PrintString(out, n->pszValue);
            break;
        case JSON_ARRAY:
            out += "[]";
            break;
        case JSON_OBJECT:
            out += "{}";
            break;
        case JSON_INT:
            out.append(buf, std::to_chars(buf, buf + sizeof buf, n->nValue).ptr);
            break;
        case JSON_INT64:
            out.append(buf, std::to_chars(buf, buf + sizeof buf, n->llValue).ptr);
            break;
        default:
            out += "null";
            break;
    }
}

void Indent(std::string& out, size_t depth) {
    out += '\n';
    out.append(depth * 4, ' ');
}

}  // namespace

JsonNode* JsonParse(const char* pszText) {
    return pszText == nullptr ? nullptr : JsonParse(pszText, std::strlen(pszText), nullptr);
}

JsonNode* JsonParse(const char* pText, size_t nLen, JsonParseError* pError) {
    if (pText == nullptr) {
        if (pError != nullptr) {
            *pError = JsonParseError{0, "no text"};
        }
        return nullptr;
    }
    Parser parser(pText, nLen);
    return parser.Parse(pError);
}

void JsonFree(JsonNode* pRoot) {
    if (pRoot == nullptr) {
        return;
    }
    TreeHeader* header = reinterpret_cast<TreeHeader*>(pRoot) - 1;
    for (ExtraBlock* b = header->pExtra; b != nullptr;) {
        ExtraBlock* next = b->pNext;
        std::free(b);
        b = next;
    }
    std::free(header);
}

std::string JsonPrint(const JsonNode* pNode, bool bPretty) {
    std::string out;
    if (pNode == nullptr) {
        return "null";
    }
    struct Open {
        const JsonNode* container;
        const JsonNode* next;
    };
    std::vector<Open> stack;
    auto write = [&](const JsonNode* n, bool named) {
        if (named) {
            PrintString(out, n->pszName);
            out += bPretty ? ": " : ":";
        }
        if ((n->nType == JSON_ARRAY || n->nType == JSON_OBJECT) && n->pChild != nullptr) {
            out += n->nType == JSON_ARRAY ? '[' : '{';
            stack.push_back(Open{n, n->pChild});
        } else {
            PrintScalar(out, n);
        }
    };
    write(pNode, false);
    while (!stack.empty()) {
        Open& top = stack.back();
        const JsonNode* n = top.next;
        if (n == nullptr) {
            const char close = top.container->nType == JSON_ARRAY ? ']' : '}';
            stack.pop_back();
            if (bPretty) {
                Indent(out, stack.size());
            }
            out += close;
            continue;
        }
        if (n != top.container->pChild) {
            out += ',';
        }
        if (bPretty) {
            Indent(out, stack.size());
        }
        top.next = n->pNext;
        write(n, top.container->nType == JSON_OBJECT);  // may grow the stack: `top` is stale after
    }
    return out;
}

int32_t JsonArraySize(const JsonNode* pNode) {
    if (pNode == nullptr || (pNode->nType != JSON_ARRAY && pNode->nType != JSON_OBJECT)) {
        return 0;
    }
    int32_t n = 0;
    for (const JsonNode* c = pNode->pChild; c != nullptr; c = c->pNext) {
        ++n;
    }
    return n;
}

JsonNode* JsonArrayItem(const JsonNode* pNode, int32_t nIndex) {
    if (pNode == nullptr || nIndex < 0 ||
        (pNode->nType != JSON_ARRAY && pNode->nType != JSON_OBJECT)) {
        return nullptr;
    }
    JsonNode* c = pNode->pChild;
    while (c != nullptr && nIndex-- > 0) {
        c = c->pNext;
    }
    return c;
}

JsonNode* JsonObjectMember(const JsonNode* pNode, const char* pszName) {
    if (pNode == nullptr || pszName == nullptr || pNode->nType != JSON_OBJECT) {
        return nullptr;
    }
    for (JsonNode* c = pNode->pChild; c != nullptr; c = c->pNext) {
        if (c->pszName != nullptr && std::strcmp(c->pszName, pszName) == 0) {
            return c;
        }
    }
    return nullptr;
}

namespace {
template <typename T>
T Saturate(double v) {
    if (v <= static_cast<double>(std::numeric_limits<T>::min())) {
        return std::numeric_limits<T>::min();
    }
    if (v >= static_cast<double>(std::numeric_limits<T>::max())) {
        return std::numeric_limits<T>::max();
    }
    return static_cast<T>(v);
}
}  // namespace

int32_t JsonGetInt(const JsonNode* pNode, int32_t nDefault) {
    if (pNode == nullptr) {
        return nDefault;
    }
    switch (pNode->nType) {
        case JSON_INT:
            return pNode->nValue;
        case JSON_INT64:
            return pNode->llValue < 0 ? std::numeric_limits<int32_t>::min()
                                      : std::numeric_limits<int32_t>::max();
        case JSON_REAL:
            return std::isnan(pNode->fValue) ? nDefault : Saturate<int32_t>(pNode->fValue);
        case JSON_TRUE:
            return 1;
        case JSON_FALSE:
            return 0;
        default:
            return nDefault;
    }
}

int64_t JsonGetInt64(const JsonNode* pNode, int64_t llDefault) {
    if (pNode == nullptr) {
        return llDefault;
    }
    switch (pNode->nType) {
        case JSON_INT:
        case JSON_INT64:
            return pNode->llValue;
        case JSON_REAL:
            return std::isnan(pNode->fValue) ? llDefault : Saturate<int64_t>(pNode->fValue);
        case JSON_TRUE:
            return 1;
        case JSON_FALSE:
            return 0;
        default:
            return llDefault;
    }
}

float JsonGetFloat(const JsonNode* pNode, float fDefault) {
    if (pNode == nullptr) {
        return fDefault;
    }
    switch (pNode->nType) {
        case JSON_INT:
        case JSON_INT64:
        case JSON_REAL:
            return pNode->fValue;
        default:
            return fDefault;
    }
}

const char* JsonGetString(const JsonNode* pNode, const char* pszDefault) {
    return pNode != nullptr && pNode->nType == JSON_STRING ? pNode->pszValue : pszDefault;
}

bool JsonGetBool(const JsonNode* pNode, bool bDefault) {
    if (pNode == nullptr || (pNode->nType != JSON_TRUE && pNode->nType != JSON_FALSE)) {
        return bDefault;
    }
    return pNode->nType == JSON_TRUE;
}

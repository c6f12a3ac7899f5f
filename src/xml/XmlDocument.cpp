#include "pind/xml/XmlDocument.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string_view>

#include "pind/client/PindClient.h"

namespace xml {

// --- DataStream ---------------------------------------------------------------------------------

DataStream::~DataStream() = default;

bool DataStream::IsEnd() {
    return m_pStream == nullptr || m_pStream->peek() == std::istream::traits_type::eof();
}

size_t DataStream::Available(size_t nWanted) {
    if (m_pStream == nullptr || !*m_pStream) {
        return 0;
    }
    const std::istream::pos_type here = m_pStream->tellg();
    if (here == std::istream::pos_type(-1) || !m_pStream->seekg(0, std::ios::end)) {
        m_pStream->clear();
        return 0;
    }
    const std::istream::pos_type end = m_pStream->tellg();
    m_pStream->seekg(here);
    const auto left = static_cast<size_t>(end - here);
    return left < nWanted ? left : nWanted;
}

bool DataStream::ReadLine(std::string& strLine, char cDelim) {
    strLine.clear();
    return m_pStream != nullptr && static_cast<bool>(std::getline(*m_pStream, strLine, cDelim));
}

size_t DataStream::Read(char* pBuffer, size_t nSize) {
    const size_t n = Available(nSize);
    if (n == 0) {
        return 0;
    }
    m_pStream->read(pBuffer, static_cast<std::streamsize>(n));
    return static_cast<size_t>(m_pStream->gcount());
}

// --- Node ---------------------------------------------------------------------------------------

Node::Node(int nKind, std::string strName)
    : m_strName(std::move(strName)), m_pParent(nullptr), m_nKind(nKind) {}

Node::~Node() {
    // Trees may be arbitrarily deep, so descendants are freed from a work list, not by nested
    // destructors. Children go before their parent and later siblings before earlier ones: the
    // reverse of the order a load allocates them, which lets the allocator merge the memory back
    // cheaply.
    struct Entry {
        Node* node;
        bool expanded;
    };
    std::vector<Entry> stack;
    for (Node* child : m_vecChildren) {
        stack.push_back({child, false});
    }
    while (!stack.empty()) {
        Node* node = stack.back().node;
        if (stack.back().expanded) {
            stack.pop_back();
            delete node;  // its children are gone already
            continue;
        }
        stack.back().expanded = true;
        for (Node* child : node->m_vecChildren) {
            stack.push_back({child, false});
        }
        node->m_vecChildren.clear();
    }
}

const std::string* Node::FindAttribute(const std::string& strName) const {
    for (const Attribute& attribute : m_vecAttributes) {
        if (attribute.first == strName) {
            return &attribute.second;
        }
    }
    return nullptr;
}

Node* Node::AddChild(Node* pChild) {
    pChild->m_pParent = this;
    m_vecChildren.push_back(pChild);
    return pChild;
}

// --- entities -----------------------------------------------------------------------------------

std::string EncodeEntities(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '\'':
                out += "&apos;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

bool DecodeEntities(const char* pText, size_t nSize, std::string& out) {
    const char* p = pText;
    const char* const end = pText + nSize;
    const char* amp = static_cast<const char*>(std::memchr(p, '&', nSize));
    if (amp == nullptr) {
        out.assign(pText, nSize);
        return true;
    }
    out.clear();
    out.reserve(nSize);  // decoding only shortens
    while (amp != nullptr) {
        const char* semi =
            static_cast<const char*>(std::memchr(amp + 1, ';', static_cast<size_t>(end - amp - 1)));
        if (semi == nullptr) {
            return false;
        }
        const std::string_view name(amp + 1, static_cast<size_t>(semi - amp - 1));
        char c;
        if (name == "amp") {
            c = '&';
        } else if (name == "lt") {
            c = '<';
        } else if (name == "gt") {
            c = '>';
        } else if (name == "apos") {
            c = '\'';
        } else if (name == "quot") {
            c = '"';
        } else {
            return false;
        }
        out.append(p, static_cast<size_t>(amp - p));
        out += c;
        p = semi + 1;
        amp = static_cast<const char*>(std::memchr(p, '&', static_cast<size_t>(end - p)));
    }
    out.append(p, static_cast<size_t>(end - p));
    return true;
}

// --- Document -----------------------------------------------------------------------------------

namespace {

const char* const kErrorTexts[] = {
    "Failed to open XML file",
    "Failed to ceate XML file",
    "XML file contain incorrect content",
    "XML file contain not closed elements",
    "XML file without declaration",
    "XML file contain closed but not opened element",
    "XML file contain inconsistent elements",
    "XML file contain more than one declaration",
    "XML file contain more than one root element",
    "XML file contain incorrect attribute",
};

Node* DefaultDeclaration() {
    Node* declaration = new Node(Node::kDeclaration, "xml");
    declaration->GetAttributes().emplace_back("version", "1.0");
    declaration->GetAttributes().emplace_back("encoding", "UTF-8");
    return declaration;
}

}  // namespace

Document::Document()
    : m_pRoot(nullptr),
      m_pDeclaration(DefaultDeclaration()),
      m_nError(kErrorNone),
      m_nLine(0),
      m_nColumn(0) {}

Document::~Document() { Clear(); }

void Document::SetRoot(Node* pRoot) {
    delete m_pRoot;
    m_pRoot = pRoot;
}

void Document::SetDeclaration(Node* pDeclaration) {
    delete m_pDeclaration;
    m_pDeclaration = pDeclaration;
}

void Document::Clear() {
    SetRoot(nullptr);
    SetDeclaration(nullptr);
}

std::string Document::GetErrorText() const {
    const size_t count = sizeof kErrorTexts / sizeof kErrorTexts[0];
    return m_nError >= 0 && static_cast<size_t>(m_nError) < count ? kErrorTexts[m_nError] : "";
}

std::string Document::GetErrorLocation() const {
    return "'" + GetErrorText() + "' ,  file='" + m_strFileName +
           "' ,  line=" + std::to_string(m_nLine) + " ,  col=" + std::to_string(m_nColumn);
}

// --- saving -------------------------------------------------------------------------------------

namespace {

void Indent(std::string& out, size_t depth) { out.append(depth * 4, ' '); }

// Writes the node and its subtree with an explicit stack, so that depth costs heap, not stack.
void WriteNode(std::string& out, const Node* top) {
    struct Frame {
        const Node* node;
        size_t depth;
        size_t next;  // the next child to write
    };
    std::vector<Frame> stack{{top, 0, 0}};
    bool entering = true;
    while (!stack.empty()) {
        Frame& frame = stack.back();
        const Node* node = frame.node;
        const size_t depth = frame.depth;
        const bool hasChildren = !node->GetChildren().empty();
        if (entering) {
            Indent(out, depth);
            out += node->GetKind() == Node::kComment       ? "<!--"
                   : node->GetKind() == Node::kDeclaration ? "<?"
                                                           : "<";
            out += node->GetName();
            for (const Node::Attribute& attribute : node->GetAttributes()) {
                out += ' ';
                out += attribute.first;
                out += "=\"";
                out += EncodeEntities(attribute.second);
                out += '"';
            }
            if (!hasChildren && node->GetText().empty()) {
                out += node->GetKind() == Node::kComment       ? "-->\n"
                       : node->GetKind() == Node::kDeclaration ? "?>\n"
                                                               : "/>\n";
                stack.pop_back();
                entering = false;
                continue;
            }
            out += hasChildren ? ">\n" : ">";
            if (!node->GetText().empty()) {
                if (hasChildren) {
                    Indent(out, depth + 1);
                    out += EncodeEntities(node->GetText());
                    out += '\n';
                } else {
                    out += EncodeEntities(node->GetText());
                }
            }
        }
        if (frame.next < node->GetChildren().size()) {
            const Node* child = node->GetChildren()[frame.next++];
            stack.push_back({child, depth + 1, 0});
            entering = true;
            continue;
        }
        if (hasChildren && depth > 0) {
            Indent(out, depth);
        }
        out += "</";
        out += node->GetName();
        out += ">\n";
        stack.pop_back();
        entering = false;
    }
}

}  // namespace

bool Document::Save(const std::string& strFileName) {
    m_strFileName = strFileName;
    std::FILE* file = std::fopen(strFileName.c_str(), "wb");
    if (file == nullptr) {
        m_nError = kErrorCreate;
        return false;
    }
    if (m_pDeclaration == nullptr) {
        std::fclose(file);
        m_nError = kErrorNoDeclaration;
        return false;
    }
    std::string out = "\xEF\xBB\xBF";
    WriteNode(out, m_pDeclaration);
    if (m_pRoot != nullptr) {
        WriteNode(out, m_pRoot);
    }
    const bool written = std::fwrite(out.data(), 1, out.size(), file) == out.size();
    if (std::fclose(file) != 0 || !written) {
        m_nError = kErrorCreate;
        return false;
    }
    m_nError = kErrorNone;
    return true;
}

// --- loading ------------------------------------------------------------------------------------

// Cuts the accumulated lines into tags and builds the tree. The pending buffer is scanned once:
// where a scan stops for want of input it resumes there (with its quote state) when the next line
// arrives, and consumed bytes are dropped in bulk, so loading stays linear in the input size.
class Loader {
public:
    explicit Loader(Document& doc) : m_doc(doc) {}

    // Appends one non-empty line and handles every tag it completes; false at the first fault.
    bool AddLine(std::string& line);
    // The open element, if any, at the end of the input.
    bool HasOpenElement() const { return m_pOpen != nullptr; }

private:
    enum class Scan { kOpen, kClose, kCommentEnd };

    bool Fail(int error) {
        m_doc.m_nError = error;
        return false;
    }
    bool Handle(size_t tagEnd);
    bool HandleTag(std::string_view tag);
    bool ReadAttributes(std::string_view text, std::vector<Node::Attribute>& attributes);
    void Compact();

    Document& m_doc;
    Node* m_pOpen = nullptr;
    std::string m_pending;
    size_t m_head = 0;       // first byte not yet consumed
    size_t m_lineStart = 0;  // where the current line begins in m_pending
    Scan m_scan = Scan::kOpen;
    size_t m_at = 0;  // where the current scan resumes
    size_t m_lt = 0;  // the '<' of the tag being cut
    bool m_inQuote = false;
    std::string m_decoded;
};

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

std::string_view Trim(std::string_view text) {
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && IsBlank(text[begin])) {
        ++begin;
    }
    while (end > begin && IsBlank(text[end - 1])) {
        --end;
    }
    return text.substr(begin, end - begin);
}

bool IsQuote(char c) { return c == '"' || c == '\''; }

// The first of `a` or `b` in [from, end) of `p`, or `end`.
size_t FindEither(const char* p, size_t from, size_t end, char a, char b) {
    for (; from < end; ++from) {
        if (p[from] == a || p[from] == b) {
            return from;
        }
    }
    return end;
}

// The first `target` in [from, end) of `p` outside double quotes, or `end`; `inQuote` is the quote
// state at `from` on entry and at the result on return. A plain byte loop: the stretches between
// tags and quotes are short, where a library search costs more to start than to run.
size_t FindOutsideQuotes(const char* p, size_t from, size_t end, char target, bool& inQuote) {
    bool quoted = inQuote;
    for (; from < end; ++from) {
        const char c = p[from];
        if (c == '"') {
            quoted = !quoted;
        } else if (c == target && !quoted) {
            break;
        }
    }
    inQuote = quoted;
    return from;
}

}  // namespace

bool Loader::AddLine(std::string& line) {
    if (m_head == m_pending.size()) {
        // Nothing is waiting: take the line's buffer instead of copying it.
        m_pending.swap(line);
        m_head = 0;
        m_at = 0;
        m_lineStart = 0;
    } else {
        m_lineStart = m_pending.size();
        m_pending += line;
    }
    m_doc.m_nColumn = 0;
    const char* p = m_pending.data();
    const size_t end = m_pending.size();
    for (;;) {
        if (m_scan == Scan::kOpen) {
            const size_t at = FindOutsideQuotes(p, m_at, end, '<', m_inQuote);
            if (at == end) {
                m_at = end;
                break;
            }
            static const char kComment[] = "<!--";
            const size_t left = end - at;
            if (left < 4 && std::memcmp(p + at, kComment, left) == 0) {
                m_at = at;  // maybe a comment; decide when more has arrived
                break;
            }
            m_lt = at;
            m_inQuote = false;
            if (left >= 4 && std::memcmp(p + at, kComment, 4) == 0) {
                m_scan = Scan::kCommentEnd;
                m_at = at + 4;
            } else {
                m_scan = Scan::kClose;
                m_at = at + 1;
            }
        }
        size_t tagEnd;
        if (m_scan == Scan::kCommentEnd) {
            const size_t found = m_pending.find("-->", m_at);
            if (found == std::string::npos) {
                m_at = end >= m_at + 2 ? end - 2 : m_at;
                break;
            }
            tagEnd = found + 2;
        } else {
            const size_t at = FindOutsideQuotes(p, m_at, end, '>', m_inQuote);
            if (at == end) {
                m_at = end;
                break;
            }
            tagEnd = at;
        }
        m_doc.m_nColumn = static_cast<int>(tagEnd + 1 - m_lineStart);
        if (!Handle(tagEnd)) {
            return false;
        }
        m_head = tagEnd + 1;
        m_at = m_head;
        m_scan = Scan::kOpen;
        m_inQuote = false;
    }
    Compact();
    return true;
}

void Loader::Compact() {
    // Dropping the consumed prefix costs at most what was consumed since the last drop.
    if (m_head == 0 || m_head < m_pending.size() - m_head) {
        return;
    }
    m_pending.erase(0, m_head);
    m_at -= m_head;
    m_lt = m_lt >= m_head ? m_lt - m_head : 0;
    m_head = 0;
}

bool Loader::Handle(size_t tagEnd) {
    const char* p = m_pending.data();
    const std::string_view data(p + m_head, m_lt - m_head);
    bool hasContent = false;
    for (const char c : data) {
        if (c != ' ' && c != '\t' && c != '<') {
            hasContent = true;
            break;
        }
    }
    if (hasContent) {
        if (!DecodeEntities(data.data(), data.size(), m_decoded)) {
            return Fail(Document::kErrorContent);
        }
        if (m_pOpen != nullptr) {
            m_pOpen->m_strText.swap(m_decoded);  // the old text's buffer serves the next run
        }
    }
    return HandleTag(Trim(std::string_view(p + m_lt + 1, tagEnd - m_lt - 1)));
}

bool Loader::HandleTag(std::string_view tag) {
    if (!tag.empty() && tag[0] == '!') {
        return true;
    }
    if (!tag.empty() && tag[0] == '/') {
        if (m_pOpen == nullptr && m_doc.m_pRoot == nullptr) {
            return Fail(Document::kErrorNotOpened);
        }
        if (m_pOpen == nullptr || tag.substr(1) != m_pOpen->GetName()) {
            return Fail(Document::kErrorInconsistent);
        }
        m_pOpen = m_pOpen->GetParent();
        return true;
    }
    const bool declaration = !tag.empty() && tag[0] == '?';
    const std::string_view body = declaration ? tag.substr(1) : tag;
    size_t nameEnd = 0;
    while (nameEnd < body.size() && body[nameEnd] != ' ' && body[nameEnd] != '\t' &&
           body[nameEnd] != '/' && body[nameEnd] != '?') {
        ++nameEnd;
    }
    // The closing '?' of a declaration and the '/' of an empty element are not attribute text.
    std::string_view rest = body.substr(nameEnd);
    const bool selfClosing = !declaration && !rest.empty() && rest.back() == '/';
    if (!rest.empty() && rest.back() == (declaration ? '?' : '/')) {
        rest.remove_suffix(1);
    }
    if (declaration) {
        if (m_doc.m_pDeclaration != nullptr) {
            return Fail(Document::kErrorTwoDeclarations);
        }
        m_doc.m_pDeclaration = new Node(Node::kDeclaration, "xml");
        return ReadAttributes(rest, m_doc.m_pDeclaration->GetAttributes());
    }
    if (m_pOpen == nullptr && m_doc.m_pRoot != nullptr) {
        return Fail(Document::kErrorTwoRoots);
    }
    Node* element = new Node(Node::kElement, std::string(body.substr(0, nameEnd)));
    if (m_pOpen != nullptr) {
        m_pOpen->AddChild(element);
    } else {
        m_doc.m_pRoot = element;
    }
    if (!selfClosing) {
        m_pOpen = element;
    }
    return ReadAttributes(rest, element->GetAttributes());
}

bool Loader::ReadAttributes(std::string_view text, std::vector<Node::Attribute>& attributes) {
    // Every attribute has its '=': counting them bounds the vector's size in one allocation.
    size_t equals = 0;
    for (const char c : text) {
        equals += c == '=' ? 1 : 0;
    }
    attributes.reserve(equals);
    while (!Trim(text).empty()) {
        const size_t at = text.find('=');
        if (at == std::string_view::npos) {
            return Fail(Document::kErrorAttribute);
        }
        const size_t open = FindEither(text.data(), at + 1, text.size(), '"', '\'');
        const size_t close = open < text.size()
                                 ? FindEither(text.data(), open + 1, text.size(), '"', '\'')
                                 : text.size();
        if (close == text.size()) {
            return Fail(Document::kErrorAttribute);
        }
        const std::string_view name = Trim(text.substr(0, at));
        const std::string_view value = Trim(text.substr(at + 1, close - at));
        if (name.empty() || name.find_first_of(" \t\"'&") != std::string_view::npos ||
            value.size() < 2 || !IsQuote(value.front()) || value.front() != value.back()) {
            return Fail(Document::kErrorAttribute);
        }
        attributes.emplace_back(std::string(name), std::string());
        if (!DecodeEntities(value.data() + 1, value.size() - 2, attributes.back().second)) {
            attributes.pop_back();
            return Fail(Document::kErrorAttribute);
        }
        text.remove_prefix(close + 1);
    }
    return true;
}

namespace {
constexpr size_t kReadBufferSize = 64 * 1024;
}  // namespace

bool Document::Load(const std::string& strFileName) {
    // A larger buffer than the stream's default saves most of the read calls on big files.
    std::vector<char> buffer(kReadBufferSize);
    std::ifstream file;
    file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    // The secondary folder is asked for only when the primary one does not hold the file.
    for (int slot = 5; slot <= 6 && !file.is_open(); ++slot) {
        const char* folder =
            slot == 5 ? GetClient()->GetPrimaryFolder() : GetClient()->GetSecondaryFolder();
        file.clear();
        file.open(std::string(folder != nullptr ? folder : "") + "/" + strFileName,
                  std::ios::in | std::ios::binary);
    }
    m_strFileName = strFileName;
    if (!file.is_open()) {
        m_nError = kErrorOpen;
        return false;
    }
    Clear();
    m_nError = kErrorNone;
    m_nLine = 0;
    m_nColumn = 0;

    DataStream stream(&file);
    Loader loader(*this);
    std::string line;
    while (!stream.IsEnd()) {
        stream.ReadLine(line, '\n');
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.empty()) {
            continue;
        }
        ++m_nLine;
        if (!loader.AddLine(line)) {
            return false;
        }
    }
    if (file.bad()) {
        // Opened but unreadable (a folder, say): the file could not really be opened.
        m_nError = kErrorOpen;
        return false;
    }
    if (loader.HasOpenElement()) {
        m_nError = kErrorNotClosed;
        return false;
    }
    return true;
}

}  // namespace xml

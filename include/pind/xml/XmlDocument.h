// The library's own XML reader and writer for configuration-like files: a line-by-line reader that
// keeps one declaration and one element tree and reports the first fault with file, line and
// column, and a writer with four-space indentation behind a UTF-8 byte-order mark.
//   xml::Document doc;
//   if (!doc.Load("ui/layout.xml")) LogMsg("%s", doc.GetErrorLocation().c_str());
#ifndef PIND_XML_XMLDOCUMENT_H_
#define PIND_XML_XMLDOCUMENT_H_

#include <cstddef>
#include <istream>
#include <string>
#include <utility>
#include <vector>

#include "pind/platform/Export.h"

namespace xml {

/// Reads from a standard input stream it does not own; without a stream it reads nothing.
class PIND_API DataStream {
public:
    /// Reads from `pStream`, which must outlive this object; null gives an empty stream.
    explicit DataStream(std::istream* pStream = nullptr) : m_pStream(pStream) {}
    virtual ~DataStream();

    /// True when no byte is left to read (always, without a stream).
    virtual bool IsEnd();
    /// The smaller of `nWanted` and the bytes left; 0 without a stream or when the stream cannot
    /// tell its length.
    virtual size_t Available(size_t nWanted);
    /// Reads up to `cDelim` (consumed, not stored) or the end into `strLine`; false when nothing
    /// could be read.
    virtual bool ReadLine(std::string& strLine, char cDelim);
    /// Reads the smaller of `nSize` and Available(nSize) bytes into `pBuffer`; returns that count.
    virtual size_t Read(char* pBuffer, size_t nSize);

private:
    std::istream* m_pStream;
};

/// An element, comment or declaration. A node owns its children; destroying a tree of any depth
/// uses no recursion.
class PIND_API Node {
public:
    /// What a node is (GetKind); Load makes no comments, Save writes one as <!--name-->.
    enum Kind : int { kComment = 0, kDeclaration = 1, kElement = 2 };
    /// (name, value), the value held decoded.
    using Attribute = std::pair<std::string, std::string>;

    /// A node of kind `nKind` called `strName`, with no text, attributes, children or parent.
    explicit Node(int nKind = kElement, std::string strName = std::string());
    ~Node();
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    /// The tag name ("xml" for a declaration, the body for a comment); may be empty.
    const std::string& GetName() const { return m_strName; }
    /// Replaces the tag name; it is written as given, not checked or encoded.
    void SetName(std::string strName) { m_strName = std::move(strName); }
    /// The decoded character data; empty when the element has none.
    const std::string& GetText() const { return m_strText; }
    /// Replaces the character data (decoded; Save encodes it); empty writes none.
    void SetText(std::string strText) { m_strText = std::move(strText); }
    /// Attributes in order of appearance; names may repeat.
    const std::vector<Attribute>& GetAttributes() const { return m_vecAttributes; }
    /// Attributes in order of appearance; names may repeat.
    std::vector<Attribute>& GetAttributes() { return m_vecAttributes; }
    /// The value of the first attribute called `strName`, or null.
    const std::string* FindAttribute(const std::string& strName) const;
    /// The owned children in document order; empty for a leaf.
    const std::vector<Node*>& GetChildren() const { return m_vecChildren; }
    /// Takes ownership of `pChild` (appended last, its parent set to this node); returns it.
    Node* AddChild(Node* pChild);
    /// Null for the root and the declaration.
    Node* GetParent() const { return m_pParent; }
    /// The Kind given at construction; Save writes any other value as an element.
    int GetKind() const { return m_nKind; }

private:
    friend class Loader;

    // Fields in the order the client's data model gives.
    std::string m_strName;
    std::string m_strText;
    std::vector<Attribute> m_vecAttributes;
    std::vector<Node*> m_vecChildren;
    Node* m_pParent;
    int m_nKind;
};

/// One XML file: a declaration and a root element. Load and Save report only the first fault; the
/// error code, file name, line and column then say what and where.
class PIND_API Document {
public:
    /// Error codes (GetErrorCode); kErrorNone after a successful Load or Save and at the start.
    enum Error : int {
        kErrorNone = -1,
        kErrorOpen = 0,
        kErrorCreate = 1,
        kErrorContent = 2,
        kErrorNotClosed = 3,
        kErrorNoDeclaration = 4,
        kErrorNotOpened = 5,
        kErrorInconsistent = 6,
        kErrorTwoDeclarations = 7,
        kErrorTwoRoots = 8,
        kErrorAttribute = 9,
    };

    /// An empty document with the declaration <?xml version="1.0" encoding="UTF-8"?>.
    Document();
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    /// Reads `strFileName` from the host's primary folder (client slot 5), else its secondary one
    /// (slot 6), as folder + "/" + name. False when neither opens (error 0; the document is then
    /// untouched), when reading fails (error 0, a folder say), or at the first fault; the document
    /// keeps what was read up to the fault. Lines are joined without a separator, so tags and text
    /// may span them. A file without a declaration loads (Save then refuses it); an unfinished tag
    /// at the end is dropped; character data outside the root is dropped once it decodes.
    bool Load(const std::string& strFileName);
    /// Writes the BOM, the declaration and the root to `strFileName` as given. False when the file
    /// cannot be created or fully written (error 1) or without a declaration (error 4, the file is
    /// left empty). Line and column keep the values of the last load.
    bool Save(const std::string& strFileName);

    /// The text of the error code; empty for kErrorNone.
    std::string GetErrorText() const;
    /// "'TEXT' ,  file='NAME' ,  line=L ,  col=C": the column counts the bytes of the faulty line
    /// consumed through the end of the tag being handled (so 1-based at the fault), or through the
    /// last complete tag when the fault is found at the end of the input.
    std::string GetErrorLocation() const;

    /// The Error of the last load or save; kErrorNone when it succeeded or none ran yet.
    int GetErrorCode() const { return m_nError; }
    /// The file of the last load or save, as the caller named it.
    const std::string& GetFileName() const { return m_strFileName; }
    /// Non-empty lines read by the last load.
    int GetLine() const { return m_nLine; }
    /// Bytes of the last line read by the last load, through the last tag ending on it; else 0.
    int GetColumn() const { return m_nColumn; }

    /// Null when the document is empty.
    Node* GetRoot() const { return m_pRoot; }
    /// Null after loading a file without one.
    Node* GetDeclaration() const { return m_pDeclaration; }
    /// Replaces the root (the old one is destroyed); the document owns `pRoot`.
    void SetRoot(Node* pRoot);
    /// Replaces the declaration (the old one is destroyed); the document owns `pDeclaration`.
    void SetDeclaration(Node* pDeclaration);
    /// Drops the root and the declaration.
    void Clear();

private:
    friend class Loader;

    // Fields in the order the client's data model gives.
    Node* m_pRoot;
    Node* m_pDeclaration;
    int m_nError;
    std::string m_strFileName;
    int m_nLine;
    int m_nColumn;
};

/// `text` with each of & < > ' " replaced by its entity.
PIND_API std::string EncodeEntities(const std::string& text);
/// Decodes the five entities &amp; &lt; &gt; &apos; &quot; into `out`; false (out unspecified)
/// for any other entity or an ampersand with no semicolon after it.
PIND_API bool DecodeEntities(const char* pText, size_t nSize, std::string& out);

}  // namespace xml

#endif  // PIND_XML_XMLDOCUMENT_H_

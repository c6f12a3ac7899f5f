// The XML reader and writer: what loads into which tree, each error with its location, the exact
// bytes Save writes, the host folders, and inputs big or deep enough to expose quadratic scans or
// recursion.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "pind/xml/XmlDocument.h"
#include "support/RecordingClient.h"
#include "support/TempDir.h"

namespace {

using xml::Document;
using xml::Node;

// name[k=v,...]"text"(children) -- compact enough to spell trees in a table.
std::string Dump(const Node* node) {
    if (node == nullptr) return "-";
    std::string out = node->GetName(), separator = "[";
    for (const Node::Attribute& a : node->GetAttributes()) {
        out += std::exchange(separator, ",") + a.first + "=" + a.second;
    }
    out += separator == "," ? "]" : "";
    out += node->GetText().empty() ? "" : "\"" + node->GetText() + "\"";
    separator = "(";
    for (const Node* child : node->GetChildren()) {
        out += std::exchange(separator, ",") + Dump(child);
    }
    return separator == "," ? out + ")" : out;
}

class XmlTest : public ::testing::Test {
protected:
    XmlTest() { m_client.primaryFolder = m_dir.Path(); }
    bool Load(Document& doc, const std::string& text) {
        m_dir.Write("a.xml", text);
        return doc.Load("a.xml");
    }
    pind::test::TempDir m_dir;
    pind::test::RecordingClient m_client;
};

struct LoadCase {
    const char* name;
    const char* text;
    int error;  // kErrorNone for a load that succeeds
    int line;
    int column;
    const char* tree;  // Dump of the root (after a successful load or up to the fault)
};

void PrintTo(const LoadCase& c, std::ostream* os) { *os << c.name; }

const int kOk = Document::kErrorNone;

class XmlLoad : public XmlTest, public ::testing::WithParamInterface<LoadCase> {};

TEST_P(XmlLoad, BuildsTreeOrReportsFirstFault) {
    const LoadCase& c = GetParam();
    Document doc;
    EXPECT_EQ(Load(doc, c.text), c.error == kOk);
    EXPECT_EQ(doc.GetErrorCode(), c.error);
    EXPECT_EQ(doc.GetLine(), c.line);
    EXPECT_EQ(doc.GetColumn(), c.column);
    EXPECT_EQ(Dump(doc.GetRoot()), c.tree);
}

const LoadCase kLoadCases[] = {
    {"OneLine", "<a><b/></a>", kOk, 1, 11, "a(b)"},
    {"SplitTagJoined", "<a\n  k=\"1\"/>", kOk, 2, 9, "a[k=1]"},
    {"CrLfAndEmptyLines", "\r\n<a>\r\n\n<b/>\r\n</a>\r\n", kOk, 3, 4, "a(b)"},
    {"LastTextRunKept", "<a>one<b/>two</a>", kOk, 1, 17, "a\"two\"(b)"},
    {"BlankRunIgnored", "<a>one<b/> \t </a>", kOk, 1, 17, "a\"one\"(b)"},
    {"Entities", "<a k=\"&lt;&amp;&gt;&apos;&quot;\">&amp;x</a>", kOk, 1, 43, "a[k=<&>'\"]\"&x\""},
    {"QuotedGtInValue", "<a k=\"x>y\" j='v'/>", kOk, 1, 18, "a[k=x>y,j=v]"},
    {"ValueTrimmedNoSpaceNeeded", "<a k= \" v \" j=\"2\"m=\"3\" />", kOk, 1, 25,
     "a[k= v ,j=2,m=3]"},
    {"QuoteInTextHidesLt", "<a>say \"hi</a>\n\"</a>", kOk, 2, 5, "a\"say \"hi</a>\"\""},
    {"CommentsAndMarkupIgnored", "<!DOCTYPE a>\n<a><!-- <b> \"x --><c/><!-\n- y\n-->\n</a>", kOk, 5,
     4, "a(c)"},
    {"TextOutsideRootDropped", "x<a/>y", kOk, 1, 5, "a"},
    {"UnfinishedTagAtEndDropped", "<a/><b", kOk, 1, 4, "a"},
    {"NotClosed", "<a>\n<b>\n</b>", Document::kErrorNotClosed, 3, 4, "a(b)"},
    {"ClosedNotOpened", "</a>", Document::kErrorNotOpened, 1, 4, "-"},
    {"Inconsistent", "<a>\n  <b></c>", Document::kErrorInconsistent, 2, 9, "a(b)"},
    {"TwoDeclarations", "<?xml a=\"1\"?><?xml?>", Document::kErrorTwoDeclarations, 1, 20, "-"},
    {"TwoRoots", "<a/>\n<b/>", Document::kErrorTwoRoots, 2, 4, "a"},
    {"ApostropheEndsValue", "<a k=\"a'b\"/>", Document::kErrorAttribute, 1, 12, "a"},
    {"NoQuote", "<a k=1/>", Document::kErrorAttribute, 1, 8, "a"},
    {"BadEntityInValue", "<a k=\"&#65;\"/>", Document::kErrorAttribute, 1, 14, "a"},
    {"AmpersandWithoutSemicolon", "<a>\nx & y<b/>", Document::kErrorContent, 2, 9, "a"},
};

INSTANTIATE_TEST_SUITE_P(Edges, XmlLoad, ::testing::ValuesIn(kLoadCases),
                         [](const ::testing::TestParamInfo<LoadCase>& c) {
                             return std::string(c.param.name);
                         });

TEST_F(XmlTest, DeclarationIsReadAndRequiredBySave) {
    Document doc;
    ASSERT_TRUE(Load(doc, "<?xml version=\"1.1\" encoding='GBK' ?>\n<a/>"));
    EXPECT_EQ(Dump(doc.GetDeclaration()), "xml[version=1.1,encoding=GBK]");

    ASSERT_TRUE(Load(doc, "<a/>"));
    EXPECT_EQ(doc.GetDeclaration(), nullptr);
    EXPECT_FALSE(doc.Save(m_dir.File("out.xml")));
    EXPECT_EQ(doc.GetErrorText(), "XML file without declaration");
    EXPECT_EQ(m_dir.Read("out.xml"), "");  // created, then refused
}

TEST_F(XmlTest, ErrorTextsAndLocation) {
    Document doc;
    EXPECT_EQ(doc.GetErrorText(), "");
    EXPECT_FALSE(doc.Load("missing.xml"));
    EXPECT_EQ(doc.GetErrorLocation(),
              "'Failed to open XML file' ,  file='missing.xml' ,  line=0 ,  col=0");
    EXPECT_NE(doc.GetDeclaration(), nullptr);  // untouched by a failed open
    EXPECT_FALSE(doc.Load("."));               // a folder opens on some systems, never reads
    EXPECT_EQ(doc.GetErrorCode(), Document::kErrorOpen);

    EXPECT_FALSE(Load(doc, "<a>\n  <b></c>"));
    EXPECT_EQ(doc.GetErrorLocation(),
              "'XML file contain inconsistent elements' ,  file='a.xml' ,  line=2 ,  col=9");
    EXPECT_FALSE(doc.Save(m_dir.File("no/such/folder.xml")));
    EXPECT_EQ(doc.GetErrorLocation(), "'Failed to ceate XML file' ,  file='" +
                                          m_dir.File("no/such/folder.xml") +
                                          "' ,  line=2 ,  col=9");

    // The load errors' texts, in code order from 2 (the declaration's is checked with Save).
    const std::pair<const char*, const char*> kTexts[] = {
        {"<a>&x;</a>", "XML file contain incorrect content"},
        {"<a>", "XML file contain not closed elements"},
        {"</a>", "XML file contain closed but not opened element"},
        {"<a></b>", "XML file contain inconsistent elements"},
        {"<?x?><?x?>", "XML file contain more than one declaration"},
        {"<a/><b/>", "XML file contain more than one root element"},
        {"<a k/>", "XML file contain incorrect attribute"}};
    for (const auto& [input, text] : kTexts) {
        EXPECT_FALSE(Load(doc, input));
        EXPECT_EQ(doc.GetErrorText(), text) << input;
    }
}

TEST_F(XmlTest, HostFoldersPrimaryThenSecondary) {
    Document doc;
    m_client.primaryFolder = m_dir.File("nothing-here");
    m_client.secondaryFolder = m_dir.Path();
    EXPECT_TRUE(Load(doc, "<s/>"));
    EXPECT_EQ(doc.GetRoot()->GetName(), "s");
}

TEST_F(XmlTest, SaveWritesExactBytes) {
    Document doc;
    ASSERT_TRUE(
        Load(doc,
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
             "<a k=\"&lt;\"><b>t&amp;'&gt;</b><c><d/></c><e x=\"1\" y=\"&quot;\"/>mixed</a>"));
    doc.GetRoot()->AddChild(new Node(Node::kComment, " note "));
    ASSERT_TRUE(doc.Save(m_dir.File("out.xml")));
    EXPECT_EQ(m_dir.Read("out.xml"),
              "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<a k=\"&lt;\">\n"
              "    mixed\n"
              "    <b>t&amp;&apos;&gt;</b>\n"
              "    <c>\n"
              "        <d/>\n"
              "    </c>\n"
              "    <e x=\"1\" y=\"&quot;\"/>\n"
              "    <!-- note -->\n"
              "</a>\n");
    EXPECT_EQ(doc.GetFileName(), m_dir.File("out.xml"));

    Document empty;
    ASSERT_TRUE(empty.Save(m_dir.File("empty.xml")));
    EXPECT_EQ(m_dir.Read("empty.xml"), "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
}

TEST_F(XmlTest, HugeLinesAndSplitTagsLoadInLinearTime) {
    // A quadratic rescan of the pending buffer would take minutes on either input.
    std::string line = "<r>";
    for (int i = 0; line.size() < (4u << 20); ++i) {
        line += "<i k=\"" + std::to_string(i) + "\">t&amp;</i>";
    }
    line += "</r>";
    Document doc;
    ASSERT_TRUE(Load(doc, line));
    EXPECT_EQ(doc.GetRoot()->GetChildren().back()->GetText(), "t&");
    EXPECT_EQ(doc.GetColumn(), static_cast<int>(line.size()));

    std::string split = "<r";
    for (int i = 0; i < 100000; ++i) {
        split += "\n a" + std::to_string(i) + "=\"x\"";
    }
    split += "\n/>";
    ASSERT_GE(split.size(), 1u << 20);
    ASSERT_TRUE(Load(doc, split));
    EXPECT_EQ(doc.GetRoot()->GetAttributes().size(), 100000u);
    EXPECT_EQ(doc.GetLine(), 100002);
}

TEST_F(XmlTest, DeepNestingLoadsSavesAndFreesWithoutRecursion) {
    // Saved text indents each of the 2 * depth lines by four spaces per level, so the save runs at
    // a depth whose output stays small; load and destruction run at full depth.
    for (const int depth : {100000, 1500}) {
        std::string text = "<?xml version=\"1.0\"?>\n";
        for (int i = 0; i < 2 * depth; ++i) {
            text += i < depth ? "<d>" : "</d>";
        }
        auto doc = std::make_unique<Document>();
        ASSERT_TRUE(Load(*doc, text));
        if (depth < 100000) {
            ASSERT_TRUE(doc->Save(m_dir.File("deep.xml")));
            const std::string innermost = "\n" + std::string(4 * (depth - 1), ' ') + "<d/>\n";
            EXPECT_NE(m_dir.Read("deep.xml").find(innermost), std::string::npos);
        }
        doc.reset();
    }
}

}  // namespace

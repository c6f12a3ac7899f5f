// The TinyXML DOM as clients get it from the library: every exported class built, printed and
// parsed back through PindBase's header and link (on Windows, through the DLL's exports).
#include <gtest/gtest.h>

#include <string>

#include "pind/xml/TinyXml.h"

namespace {

TEST(TinyXml, ClassesBuildPrintAndParseThroughTheLibrary) {
    TiXmlDocument doc;
    doc.LinkEndChild(new TiXmlDeclaration("1.0", "UTF-8", ""));
    doc.LinkEndChild(new TiXmlComment("settings"));
    auto* root = new TiXmlElement("config");
    root->SetAttribute("version", 3);
    auto* name = new TiXmlElement("name");
    name->LinkEndChild(new TiXmlText("a < b"));
    root->LinkEndChild(name);
    doc.LinkEndChild(root);

    TiXmlPrinter printer;
    printer.SetIndent("");
    printer.SetLineBreak("");
    doc.Accept(&printer);
    const std::string text = printer.Str();
    EXPECT_EQ(text,
              "<?xml version=\"1.0\" encoding=\"UTF-8\" ?><!--settings-->"
              "<config version=\"3\"><name>a &lt; b</name></config>");

    TiXmlDocument parsed;
    parsed.Parse((text + "<!x>").c_str());
    ASSERT_FALSE(parsed.Error()) << parsed.ErrorDesc();
    EXPECT_EQ(parsed.RootElement()->FirstAttribute()->IntValue(), 3);
    EXPECT_STREQ(parsed.RootElement()->FirstChildElement("name")->GetText(), "a < b");
    EXPECT_NE(parsed.LastChild()->ToUnknown(), nullptr);
}

}  // namespace

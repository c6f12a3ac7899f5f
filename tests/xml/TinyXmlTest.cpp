// The TinyXML DOM as clients get it from the library: a document built, printed and parsed back
// through PindBase's header and link (on Windows, through the DLL's exports).
#include <gtest/gtest.h>

#include <string>

#include "pind/xml/TinyXml.h"

namespace {

TEST(TinyXml, DomBuildsPrintsAndParsesThroughTheLibrary) {
    TiXmlDocument doc;
    auto* root = new TiXmlElement("config");
    root->SetAttribute("version", 3);
    root->LinkEndChild(new TiXmlText("a < b"));
    doc.LinkEndChild(root);
    TiXmlPrinter printer;
    doc.Accept(&printer);
    TiXmlDocument parsed;
    parsed.Parse(printer.CStr());
    ASSERT_FALSE(parsed.Error()) << parsed.ErrorDesc();
    EXPECT_EQ(parsed.RootElement()->FirstAttribute()->IntValue(), 3);
    EXPECT_STREQ(parsed.RootElement()->GetText(), "a < b");
}

}  // namespace

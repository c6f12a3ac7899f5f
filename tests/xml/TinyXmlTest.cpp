// The TinyXML DOM as clients get it from the library: a document parsed, edited and printed
// through PindBase's header and link (on Windows, through the DLL's exports).
#include <gtest/gtest.h>

#include <string>

#include "pind/xml/TinyXml.h"

namespace {

TEST(TinyXml, DomParsesEditsAndPrintsThroughTheLibrary) {
    TiXmlDocument doc;
    doc.Parse("<config version=\"3\">a &lt; b</config>");
    ASSERT_FALSE(doc.Error()) << doc.ErrorDesc();
    doc.RootElement()->SetAttribute("version", doc.RootElement()->FirstAttribute()->IntValue() + 1);
    TiXmlPrinter printer;
    doc.Accept(&printer);
    EXPECT_STREQ(printer.CStr(), "<config version=\"4\">a &lt; b</config>\n");
}

}  // namespace

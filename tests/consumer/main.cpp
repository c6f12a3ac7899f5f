// Links against the installed library and calls through its public headers.
#include <cstdio>
#include <cstring>
#include <string>

#include "pind/PindBase.h"

int main() {
    char buf[16];
    if (pind::platform::ItoaS(-255, buf, sizeof buf, 10) != 0 || std::strcmp(buf, "-255") != 0) {
        std::fprintf(stderr, "consumer: ItoaS gave %s\n", buf);
        return 1;
    }
    if (GetClient()->OpenFile("x", "r", true) != nullptr || PostClientMessage(7, 0) != 7) {
        std::fprintf(stderr, "consumer: default client misbehaves\n");
        return 1;
    }
    // TinyXML's DOM comes with the library: its header through PindBase.h, its code through the
    // library's link (or, on Windows, the DLL's exports).
    TiXmlDocument doc;
    doc.LinkEndChild(new TiXmlDeclaration("1.0", "UTF-8", ""));
    TiXmlElement* root = new TiXmlElement("client");
    root->SetAttribute("name", "consumer");
    root->LinkEndChild(new TiXmlText("ok"));
    doc.LinkEndChild(root);
    TiXmlPrinter printer;
    printer.SetIndent("");
    printer.SetLineBreak("");
    doc.Accept(&printer);
    TiXmlDocument parsed;
    parsed.Parse(printer.CStr());
    const TiXmlElement* back = parsed.RootElement();
    if (parsed.Error() || back == nullptr || std::string(back->GetText()) != "ok" ||
        std::string(printer.Str()).find("<client name=\"consumer\">ok</client>") ==
            std::string::npos) {
        std::fprintf(stderr, "consumer: TinyXML document gave %s\n", printer.CStr());
        return 1;
    }
    std::printf("consumer: PindBase %s works\n", pind::Version());
    return 0;
}

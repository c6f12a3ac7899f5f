// `pind xml`: check an XML file or rewrite it in the library's layout, and the XML step of the demo
// (a sample loaded and saved, and a broken file's located error).
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "Commands.h"
#include "ToolSupport.h"
#include "pind/client/PindClient.h"
#include "pind/xml/XmlDocument.h"

namespace pind::tool {
namespace {

const char kXmlUsage[] =
    "usage: pind xml check FILE\n"
    "       pind xml fmt FILE -o OUT\n"
    "\n"
    "  check  load FILE; print \"ok\", or the error text and its location (exit 1)\n"
    "  fmt    load FILE and save it to OUT: byte-order mark, declaration, four-space\n"
    "         indentation; on failure print the error text and its location (exit 1)\n"
    "\n"
    "FILE is read relative to the current folder, or as given when absolute.";

// Answers the loader's folder slots: "." + "/" + FILE finds a relative FILE, "" + "/" + FILE an
// absolute one.
class CurrentFolderHost : public IPindClientNone {
public:
    const char* GetPrimaryFolder() override { return "."; }
    const char* GetSecondaryFolder() override { return ""; }
};

// Installs a host for one scope.
template <typename Host>
class ClientScope {
public:
    ClientScope() { SetClient(&m_host); }
    ~ClientScope() { SetClient(nullptr); }
    ClientScope(const ClientScope&) = delete;
    ClientScope& operator=(const ClientScope&) = delete;
    Host& Get() { return m_host; }

private:
    Host m_host;
};

// The two lines scripts read: the error text, then its location.
int PrintError(const xml::Document& doc) {
    WriteOut(doc.GetErrorText() + "\n" + doc.GetErrorLocation() + "\n");
    FlushOut();
    return kExitFailure;
}

int RunCheck(const char* file) {
    ClientScope<CurrentFolderHost> host;
    xml::Document doc;
    if (!doc.Load(file)) {
        return PrintError(doc);
    }
    return WriteOut("ok\n") && FlushOut() ? kExitOk : kExitFailure;
}

int RunFmt(const char* file, const char* out) {
    ClientScope<CurrentFolderHost> host;
    xml::Document doc;
    // Save writes OUT itself, so that a failed save leaves what it wrote and names OUT in the
    // error location.
    if (!doc.Load(file) || !doc.Save(out)) {
        return PrintError(doc);
    }
    return FlushOut() ? kExitOk : kExitFailure;
}

}  // namespace

int RunXml(int argc, char** argv) {
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kXmlUsage);
    }
    if (argc < 2) {
        return UsageError("xml", kXmlUsage);
    }
    const char* file = nullptr;
    const char* out = nullptr;
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "-o") == 0 && i + 1 < argc && out == nullptr) {
            out = argv[++i];
        } else if (file == nullptr && (argv[i][0] != '-' || argv[i][1] == '\0')) {
            file = argv[i];
        } else {
            return UsageError("xml", kXmlUsage, std::string("unexpected argument ") + argv[i]);
        }
    }
    if (std::strcmp(argv[1], "check") == 0 && file != nullptr && out == nullptr) {
        return RunCheck(file);
    }
    if (std::strcmp(argv[1], "fmt") == 0 && file != nullptr && out != nullptr) {
        return RunFmt(file, out);
    }
    return UsageError("xml", kXmlUsage);
}

namespace {

// Serves the demo's sample folder through the loader's primary folder slot.
class SampleFolderHost : public IPindClientNone {
public:
    std::string folder;
    const char* GetPrimaryFolder() override { return folder.c_str(); }
};

}  // namespace

void DemoXml(const DemoContext& ctx) {
    DemoHeading("xml");
    ClientScope<SampleFolderHost> host;
    host.Get().folder = ctx.dataDir + "/xml";
    xml::Document doc;
    if (!doc.Load("sample.xml")) {
        std::printf("could not load xml/sample.xml: %s\n", doc.GetErrorLocation().c_str());
        return;
    }
    const xml::Node* root = doc.GetRoot();
    std::printf("loaded xml/sample.xml: %d lines, root <%s> with %zu children\n", doc.GetLine(),
                root->GetName().c_str(), root->GetChildren().size());
    const std::string saved = ctx.workDir + "/sample.xml";
    if (!doc.Save(saved)) {
        std::printf("could not save: %s\n", doc.GetErrorLocation().c_str());
        return;
    }
    std::ifstream in(saved, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const bool bom = text.compare(0, 3, "\xEF\xBB\xBF") == 0;
    std::printf("saved again (%s, then):\n%s", bom ? "a UTF-8 byte-order mark" : "no mark",
                text.c_str() + (bom ? 3 : 0));

    xml::Document broken;
    if (!broken.Load("broken.xml")) {
        std::printf("xml/broken.xml fails to load:\n  %s\n", broken.GetErrorLocation().c_str());
    }
}

}  // namespace pind::tool

// XML loading over arbitrary bytes, served as a file through the host's primary folder slot. Every
// outcome must be a success or one of the ten error codes; a document that loads with a
// declaration is saved, so the writer sees every tree the reader can build.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "FuzzInput.h"
#include "pind/client/PindClient.h"
#include "pind/xml/XmlDocument.h"

namespace {

class FolderClient : public IPindClientNone {
public:
    std::string folder;
    const char* GetPrimaryFolder() override { return folder.c_str(); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = pind::fuzz::WriteInputFile("fuzz.xml", data, size);
    if (path.empty()) {
        return 0;
    }
    static FolderClient s_client;
    const size_t slash = path.find_last_of("/\\");
    s_client.folder = path.substr(0, slash);
    SetClient(&s_client);

    xml::Document doc;
    const bool loaded = doc.Load(path.substr(slash + 1));
    const int error = doc.GetErrorCode();
    if (loaded != (error == xml::Document::kErrorNone) || error < xml::Document::kErrorNone ||
        error > xml::Document::kErrorAttribute || loaded == !doc.GetErrorText().empty()) {
        std::abort();
    }
    if (loaded && doc.GetDeclaration() != nullptr) {
        const std::string out = path + ".out";
        if (!doc.Save(out)) {
            std::abort();  // the temp folder is writable: only the declaration can be missing
        }
        std::remove(out.c_str());
    }
    SetClient(nullptr);
    return 0;
}

// `pind json`: checks a JSON file or prints it again, pretty or compact, with the library's parser
// and printer (what the game client would accept, and the tree it would see).
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "Commands.h"
#include "JsonFile.h"
#include "ToolSupport.h"
#include "pind/json/FmtJson.h"

namespace pind::tool {
namespace {

const char kJsonUsage[] =
    "usage: pind json check FILE\n"
    "       pind json fmt FILE [--compact]\n"
    "\n"
    "check: exit 0 when FILE holds exactly one valid JSON value (RFC 8259, nesting up to 512);\n"
    "       otherwise say what is wrong and where on stderr, exit 1.\n"
    "fmt:   print the value pretty (four spaces per level) or --compact, and a newline.";

// "what at byte N (line L, column C)", counting lines and columns from 1.
std::string DescribeError(const std::string& bytes, const JsonParseError& err) {
    size_t line = 1;
    size_t column = 1;
    for (size_t i = 0; i < err.nOffset && i < bytes.size(); ++i) {
        if (bytes[i] == '\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
    }
    return std::string(err.pszWhat) + " at byte " + std::to_string(err.nOffset) + " (line " +
           std::to_string(line) + ", column " + std::to_string(column) + ")";
}

}  // namespace

bool ReadWholeFile(const char* path, std::string* bytes, std::string* why) {
    std::FILE* f = std::fopen(path, "rb");
    if (f == nullptr) {
        *why = std::string("cannot open: ") + std::strerror(errno);
        return false;
    }
    bytes->clear();
    char chunk[65536];
    size_t n = 0;
    while ((n = std::fread(chunk, 1, sizeof chunk, f)) != 0) {
        bytes->append(chunk, n);
    }
    const bool ok = !std::ferror(f);
    std::fclose(f);
    if (!ok) {
        *why = "cannot read";
    }
    return ok;
}

JsonNode* ParseJsonFile(const char* path, std::string* why) {
    std::string bytes;
    if (!ReadWholeFile(path, &bytes, why)) {
        return nullptr;
    }
    JsonParseError err;
    JsonNode* root = JsonParse(bytes.data(), bytes.size(), &err);
    if (root == nullptr) {
        *why = "not valid JSON: " + DescribeError(bytes, err);
    }
    return root;
}

int RunJson(int argc, char** argv) {
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kJsonUsage);
    }
    if (argc < 3) {
        return UsageError("json", kJsonUsage);
    }
    const std::string action = argv[1];
    const char* file = argv[2];
    bool compact = false;
    if (action == "fmt" && argc == 4 && std::strcmp(argv[3], "--compact") == 0) {
        compact = true;
    } else if ((action != "check" && action != "fmt") || argc != 3) {
        return UsageError("json", kJsonUsage);
    }
    std::string why;
    JsonNode* root = ParseJsonFile(file, &why);
    if (root == nullptr) {
        return Fail("json", std::string(file) + ": " + why);
    }
    std::string text;
    if (action == "fmt") {
        text = JsonPrint(root, !compact);
        text += '\n';
    }
    JsonFree(root);
    return WriteOut(text) && FlushOut() ? kExitOk : kExitFailure;
}

}  // namespace pind::tool

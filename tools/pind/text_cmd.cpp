// `pind text`: converts one server string against a string table given as a JSON file, through
// the same entry points the client calls; and the server-text step of the demo.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>

#include "Commands.h"
#include "JsonFile.h"
#include "ToolSupport.h"
#include "pind/json/FmtJson.h"
#include "pind/servertext/ServerString.h"

namespace pind::tool {
namespace {

const char kTextUsage[] =
    "usage: pind text --table TABLE.json [--fn convert|format|totext|json] [--cap N] TEXT\n"
    "\n"
    "Converts the server string TEXT (the last argument) and prints the result and a newline.\n"
    "TABLE.json is an object from string ids in decimal to their texts: {\"1203\": \"Hi {}\"};\n"
    "an id missing from it gives the empty text.\n"
    "  --fn convert  ConvertServerString(TEXT) (the default)\n"
    "  --fn format   FormatServerString on a zeroed buffer of N bytes (--cap N, default 2048;\n"
    "                N must be greater than TEXT's length)\n"
    "  --fn totext   FormatServerStringToText(TEXT)\n"
    "  --fn json     FormatJsonServerString of TEXT parsed as JSON\n"
    "The library's engine-log lines go to stderr.";

// The loaded table; a plain function pointer is all the library takes.
std::unordered_map<uint32_t, std::string>& Table() {
    static std::unordered_map<uint32_t, std::string> s_table;
    return s_table;
}

const char* LookUpTable(uint32_t id) {
    const auto it = Table().find(id);
    return it != Table().end() ? it->second.c_str() : "";
}

// 0 to 4294967295 in decimal, no sign, no leading zeros.
bool ParseStringId(const char* text, uint32_t* id) {
    const size_t len = std::strlen(text);
    if (len == 0 || len > 10 || (len > 1 && text[0] == '0')) {
        return false;
    }
    uint64_t v = 0;
    for (size_t i = 0; i < len; ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return false;
        }
        v = v * 10 + static_cast<uint64_t>(text[i] - '0');
    }
    *id = static_cast<uint32_t>(v);
    return v <= 0xFFFFFFFFu;
}

// Fills Table() from the file and installs its lookup; false with the reason otherwise.
bool LoadTable(const char* path, std::string* why) {
    JsonNode* root = ParseJsonFile(path, why);
    if (root == nullptr) {
        return false;
    }
    bool ok = root->nType == JSON_OBJECT;
    if (!ok) {
        *why = "not an object of string ids to texts";
    }
    for (const JsonNode* m = root->pChild; ok && m != nullptr; m = m->pNext) {
        uint32_t id = 0;
        if (!ParseStringId(m->pszName, &id)) {
            *why = std::string("member \"") + m->pszName + "\": not a string id";
            ok = false;
        } else if (m->nType != JSON_STRING) {
            *why = std::string("member \"") + m->pszName + "\": not a string";
            ok = false;
        } else {
            Table()[id] = m->pszValue;
        }
    }
    JsonFree(root);
    if (ok) {
        SetStringIdCallback(LookUpTable);
    }
    return ok;
}

// A decimal capacity from 1 to INT32_MAX.
bool ParseCapacity(const char* text, int32_t* cap) {
    const size_t len = std::strlen(text);
    if (len == 0 || len > 10 || std::strspn(text, "0123456789") != len) {
        return false;
    }
    const unsigned long long v = std::strtoull(text, nullptr, 10);
    *cap = static_cast<int32_t>(v);
    return v >= 1 && v <= 0x7FFFFFFFu;
}

}  // namespace

int RunText(int argc, char** argv) {
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kTextUsage);
    }
    if (argc < 2) {
        return UsageError("text", kTextUsage, "no TEXT given");
    }
    const std::string text = argv[argc - 1];
    const char* table = nullptr;
    std::string fn = "convert";
    int32_t cap = 2048;
    for (int i = 1; i < argc - 1; ++i) {
        const bool hasValue = i + 1 < argc - 1;
        if (std::strcmp(argv[i], "--table") == 0 && hasValue) {
            table = argv[++i];
        } else if (std::strcmp(argv[i], "--fn") == 0 && hasValue) {
            fn = argv[++i];
            if (fn != "convert" && fn != "format" && fn != "totext" && fn != "json") {
                return UsageError("text", kTextUsage, "unknown --fn " + fn);
            }
        } else if (std::strcmp(argv[i], "--cap") == 0 && hasValue) {
            if (!ParseCapacity(argv[++i], &cap)) {
                return UsageError("text", kTextUsage,
                                  std::string("--cap ") + argv[i] + ": not a size from 1");
            }
        } else {
            return UsageError("text", kTextUsage, std::string("unexpected argument ") + argv[i]);
        }
    }
    if (table == nullptr) {
        return UsageError("text", kTextUsage, "--table is required");
    }
    if (fn == "format" && static_cast<size_t>(cap) <= text.size()) {
        return UsageError("text", kTextUsage, "--cap must be greater than TEXT's length");
    }
    std::string why;
    if (!LoadTable(table, &why)) {
        return Fail("text", std::string(table) + ": " + why);
    }

    std::string result;
    if (fn == "convert") {
        ConvertServerString(text, result);
    } else if (fn == "totext") {
        result = FormatServerStringToText(text.c_str());
    } else if (fn == "format") {
        std::unique_ptr<char, decltype(&std::free)> buffer(
            static_cast<char*>(std::calloc(static_cast<size_t>(cap), 1)), &std::free);
        if (buffer == nullptr) {
            return Fail("text", "out of memory for --cap " + std::to_string(cap));
        }
        std::memcpy(buffer.get(), text.data(), text.size());
        FormatServerString(buffer.get(), cap);
        result = buffer.get();
    } else {
        JsonParseError err;
        JsonNode* root = JsonParse(text.data(), text.size(), &err);
        if (root == nullptr) {
            return Fail("text", std::string("TEXT is not valid JSON: ") + err.pszWhat +
                                    " at byte " + std::to_string(err.nOffset));
        }
        result = FormatJsonServerString(root);
        JsonFree(root);
    }
    result += '\n';
    return WriteOut(result) && FlushOut() ? kExitOk : kExitFailure;
}

void DemoServerText(const DemoContext& ctx) {
    DemoHeading("server text");
    const std::string path = ctx.dataDir + "/servertext/table.json";
    std::string why;
    if (!LoadTable(path.c_str(), &why)) {
        std::printf("  %s: %s\n", path.c_str(), why.c_str());
        return;
    }
    std::printf("string table %s: %zu texts\n", path.c_str(), Table().size());
    const char* messages[] = {
        "@@1001 (x2)",
        R"(["@@1002", "Aria", 3, ["@@1003", 1500]])",
        R"(System: ["@@1004", "@@1005", 2.5] Good luck! [1,2])",
        R"(["@@#", "@@1006", 42, true])",
    };
    for (const char* message : messages) {
        std::printf("  %s\n    -> %s\n", message, FormatServerStringToText(message).c_str());
    }
    JsonNode* root = JsonParse(messages[1]);
    std::printf("the nested message as a JSON tree, pretty-printed:\n%s\n",
                JsonPrint(root, true).c_str());
    JsonFree(root);
    SetStringIdCallback(nullptr);
}

}  // namespace pind::tool

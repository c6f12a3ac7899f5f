// `pind text` on the built program: each --fn against a table file, the engine log on stderr,
// table and usage errors.

#include "tool/RunTool.h"

namespace pind::test {
namespace {

TEST(TextTool, RunsEachFunctionAndRejectsBadTablesAndUsage) {
    TempDir dir;
    dir.Write("t.json", R"({"0": "zero", "5": "Hi {}", "6": "Hello", "4294967295": "A\u00e9\"",
                      "7": "{:d}"})");
    const std::string usage = "usage: pind text";
    std::vector<ToolCase> cases = {{"text --table t.json '@@6 (x2)'", 0, "Hello (x2)\n"},
                                   {"text --table t.json @@4294967295", 0, "A\xc3\xa9\"\n"},
                                   {R"(text --table t.json --fn totext ["@@5"])", 0, "\n",
                                    "Error FmtStr:@@5, OriginStr=Hi {}\n"},
                                   {R"(text --table t.json --fn json '["@@7", "@@x"]')", 0, "\n",
                                    "TryGetStringFromStrID x\n\n"},
                                   {"text --table t.json --fn format --cap 5 @@6", 0, "@@6\n",
                                    "FormatServerString: [Buf Too Short!], pszStrBuf=Hello\n"},
                                   {"text --table t.json --fn json [1,", 1, "", "pind: text: "},
                                   {"text", 2, "", usage},
                                   {"text --table t.json", 2, "", usage},
                                   {"text --table t.json --fn print @@1", 2, "", usage},
                                   {"text --table t.json --fn format --cap 3 @@1", 2, "", usage},
                                   {"text --table t.json --cap 0 @@1", 2, "", usage},
                                   {"text --table missing.json @@1", 1, "", "pind: text: "}};
    // Tables that are not an object of decimal ids and strings.
    for (const char* bad : {"{\"1\": \"a\",}", R"(["x"])", R"({"01": "a"})", R"({"-1": "a"})",
                            R"({"4294967296": "a"})", R"({"1": 1})"}) {
        const std::string name = "bad" + std::to_string(cases.size()) + ".json";
        dir.Write(name, bad);
        cases.push_back({"text --table " + name + " @@1", 1, "", "pind: text: "});
    }
    ExpectRuns(cases, dir.Path());
}

}  // namespace
}  // namespace pind::test

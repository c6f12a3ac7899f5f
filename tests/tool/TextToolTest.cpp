// `pind text` on the built program: each --fn against a table file, the engine log on stderr,
// table and usage errors.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

TEST(TextTool, RunsEachFunctionAndRejectsBadTablesAndUsage) {
    pind::test::TempDir dir;
    const std::string table =
        dir.Write("t.json", R"({"0": "zero", "5": "Hi {}", "6": "Hello", "4294967295": "A\u00e9\"",
                      "7": "{:d}"})");
    const std::string log = "FormatServerString: [Buf Too Short!], pszStrBuf=Hello\n";
    const std::string usage = "usage: pind text", failed = "pind: text: ";
    // Arguments after "text", "T" standing for "--table" and the table's path; for failures `err`
    // is a part of stderr.
    const struct {
        std::vector<std::string> args;
        int status;
        std::string out, err;
    } cases[] = {
        // clang-format off
        {{"T", "@@6 (x2)"}, 0, "Hello (x2)\n", ""},
        {{"T", R"(You got ["@@5", ["@@6"]] and [1,2])"}, 0, "You got Hi Hello and [1,2]\n", ""},
        {{"T", "@@4294967295"}, 0, "A\xc3\xa9\"\n", ""},
        {{"T", "@@0"}, 0, "zero\n", ""},
        {{"T", "@@8"}, 0, "\n", ""},  // not in the table: the empty text
        {{"T", "--fn", "totext", R"(["@@5"])"}, 0, "\n", "Error FmtStr:@@5, OriginStr=Hi {}\n"},
        {{"T", "--fn", "json", R"(["@@7", "@@x"])"}, 0, "\n", "TryGetStringFromStrID x\n\n"},
        {{"T", "--fn", "json", R"(["@@#", "a", 7])"}, 0, "a 7\n", ""},
        {{"T", "--fn", "format", "--cap", "6", "@@6"}, 0, "Hello\n", ""},
        {{"T", "--fn", "format", "--cap", "5", "@@6"}, 0, "@@6\n", log},
        {{"T", "--fn", "format", "no at sign"}, 0, "no at sign\n", ""},
        {{"T", "--fn", "json", "[1,"}, 1, "", failed},
        {{}, 2, "", usage}, {{"@@1"}, 2, "", usage}, {{"T"}, 2, "", usage},
        {{"T", "--fn", "print", "@@1"}, 2, "", usage},
        {{"T", "--fn", "format", "--cap", "3", "@@1"}, 2, "", usage},
        {{"T", "--cap", "0", "@@1"}, 2, "", usage},
        {{"T", "--cap", "-5", "@@1"}, 2, "", usage},
        {{"T", "--bogus", "@@1"}, 2, "", usage},
        {{"--help"}, 0, usage, ""}};
    // clang-format on
    for (const auto& c : cases) {
        std::vector<std::string> args = {"text"};
        for (const std::string& a : c.args) {
            if (a == "T") args.push_back("--table");
            args.push_back(a == "T" ? table : a);
        }
        const auto run = RunPind(args);
        SCOPED_TRACE(args.back());
        EXPECT_EQ(run.status, c.status);
        EXPECT_EQ(c.out == usage ? run.out.substr(0, usage.size()) : run.out, c.out);
        if (c.status == 0) {
            EXPECT_EQ(run.err, c.err);
        } else {
            EXPECT_NE(run.err.find(c.err), std::string::npos) << run.err;
        }
    }
    // Tables that are missing or not an object of decimal ids and strings.
    std::vector<std::string> tables = {dir.File("missing.json")};
    for (const char* bad : {"{\"1\": \"a\",}", R"(["x"])", R"({"01": "a"})", R"({"-1": "a"})",
                            R"({"4294967296": "a"})", R"({"1": 1})", R"({"": "a"})"}) {
        tables.push_back(dir.Write("bad" + std::to_string(tables.size()) + ".json", bad));
    }
    for (const std::string& bad : tables) {
        const auto run = RunPind({"text", "--table", bad, "@@1"});
        EXPECT_EQ(run.status, 1) << bad;
        EXPECT_EQ(run.out, "") << bad;
        EXPECT_EQ(run.err.rfind(failed, 0), 0u) << bad;
    }
}

}  // namespace

// `pind text` on the built program: each --fn against a table file, the engine log on stderr,
// table and usage errors.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

class TextTool : public ::testing::Test {
protected:
    pind::test::TempDir m_dir;
    std::string m_table = m_dir.Write(
        "t.json", R"({"0": "zero", "5": "Hi {}", "6": "Hello", "4294967295": "A\u00e9\"",
                      "7": "{:d}"})");
};

TEST_F(TextTool, RunsEachFunction) {
    const struct {
        std::vector<std::string> options;
        std::string text;
        std::string out;
        std::string err;
    } cases[] = {
        {{}, "@@6 (x2)", "Hello (x2)\n", ""},
        {{}, R"(You got ["@@5", ["@@6"]] and [1,2])", "You got Hi Hello and [1,2]\n", ""},
        {{}, "@@4294967295", "A\xc3\xa9\"\n", ""},
        {{}, "@@0", "zero\n", ""},
        {{}, "@@8", "\n", ""},  // not in the table: the empty text
        {{"--fn", "totext"}, R"(["@@5"])", "\n", "Error FmtStr:@@5, OriginStr=Hi {}\n"},
        {{"--fn", "json"}, R"(["@@7", "@@x"])", "\n", "TryGetStringFromStrID x\n\n"},
        {{"--fn", "json"}, R"(["@@#", "a", 7])", "a 7\n", ""},
        {{"--fn", "format", "--cap", "6"}, "@@6", "Hello\n", ""},
        {{"--fn", "format", "--cap", "5"},
         "@@6",
         "@@6\n",
         "FormatServerString: [Buf Too Short!], pszStrBuf=Hello\n"},
        {{"--fn", "format"}, "no at sign", "no at sign\n", ""},
    };
    for (const auto& c : cases) {
        std::vector<std::string> args = {"text", "--table", m_table};
        args.insert(args.end(), c.options.begin(), c.options.end());
        args.push_back(c.text);
        const auto run = RunPind(args);
        EXPECT_EQ(run.status, 0) << c.text;
        EXPECT_EQ(run.out, c.out) << c.text;
        EXPECT_EQ(run.err, c.err) << c.text;
    }
}

TEST_F(TextTool, RejectsBadTablesAndUsage) {
    std::vector<std::string> tables = {m_dir.File("missing.json")};
    for (const char* bad : {"{\"1\": \"a\",}", R"(["x"])", R"({"01": "a"})", R"({"-1": "a"})",
                            R"({"4294967296": "a"})", R"({"1": 1})", R"({"": "a"})"}) {
        tables.push_back(m_dir.Write("bad" + std::to_string(tables.size()) + ".json", bad));
    }
    for (const std::string& table : tables) {
        const auto run = RunPind({"text", "--table", table, "@@1"});
        EXPECT_EQ(run.status, 1) << table;
        EXPECT_EQ(run.out, "") << table;
        EXPECT_EQ(run.err.rfind("pind: text: ", 0), 0u) << table;
    }
    const auto notParsed = RunPind({"text", "--table", m_table, "--fn", "json", "[1,"});
    EXPECT_EQ(notParsed.status, 1);
    EXPECT_EQ(notParsed.out, "");

    for (const auto& args : std::vector<std::vector<std::string>>{
             {"text"},
             {"text", "@@1"},
             {"text", "--table", m_table},
             {"text", "--table", m_table, "--fn", "print", "@@1"},
             {"text", "--table", m_table, "--fn", "format", "--cap", "3", "@@1"},
             {"text", "--table", m_table, "--cap", "0", "@@1"},
             {"text", "--table", m_table, "--cap", "-5", "@@1"},
             {"text", "--table", m_table, "--bogus", "@@1"}}) {
        const auto run = RunPind(args);
        EXPECT_EQ(run.status, 2) << args.back();
        EXPECT_NE(run.err.find("usage: pind text"), std::string::npos) << args.back();
    }
    const auto help = RunPind({"text", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind("usage: pind text", 0), 0u);
}

}  // namespace

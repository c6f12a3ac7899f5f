// `pind json check|fmt` on the built program: exit statuses, the located message, the output.
#include <gtest/gtest.h>

#include <string>

#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

TEST(JsonTool, ChecksAndFormats) {
    pind::test::TempDir dir;
    const std::string good =
        dir.Write("good.json", " {\"a\": [1, 2.5e3, \"\xc4\xe3\"], \"b\": {}}\n");
    const struct {
        std::vector<std::string> args;
        std::string out;
    } cases[] = {
        {{"json", "check", good}, ""},
        {{"json", "fmt", good, "--compact"}, "{\"a\":[1,2500.0,\"\xc4\xe3\"],\"b\":{}}\n"},
        {{"json", "fmt", good},
         "{\n    \"a\": [\n        1,\n        2500.0,\n        \"\xc4\xe3\"\n    ],\n"
         "    \"b\": {}\n}\n"},
    };
    for (const auto& c : cases) {
        const auto run = RunPind(c.args);
        EXPECT_EQ(run.status, 0) << c.args[1];
        EXPECT_EQ(run.out, c.out) << c.args[1];
        EXPECT_EQ(run.err, "") << c.args[1];
    }
}

TEST(JsonTool, FailsWithWhatAndWhere) {
    pind::test::TempDir dir;
    const std::string bad = dir.Write("bad.json", "[1,\n 2,]");
    const std::string nul = dir.Write("nul.json", std::string("[1]\0", 4));
    for (const auto& [args, want] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"json", "check", bad},
              "pind: json: " + bad +
                  ": not valid JSON: trailing comma at byte 7 (line 2, column 4)\n"},
             {{"json", "fmt", nul},
              "pind: json: " + nul +
                  ": not valid JSON: text after the value at byte 3 (line "
                  "1, column 4)\n"},
         }) {
        const auto run = RunPind(args);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, want);
    }
    const auto missing = RunPind({"json", "check", dir.File("none.json")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("cannot open"), std::string::npos);
}

TEST(JsonTool, UsageErrorsAndHelp) {
    for (const auto& args :
         std::vector<std::vector<std::string>>{{"json"},
                                               {"json", "check"},
                                               {"json", "lint", "a"},
                                               {"json", "check", "a", "--compact"},
                                               {"json", "fmt", "a", "--pretty"}}) {
        const auto run = RunPind(args);
        EXPECT_EQ(run.status, 2) << args.size();
        EXPECT_EQ(run.err.rfind("usage: pind json", 0), 0u) << run.err;
    }
    const auto help = RunPind({"json", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind("usage: pind json", 0), 0u);
}

}  // namespace

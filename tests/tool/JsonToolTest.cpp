// `pind json check|fmt` on the built program: exit statuses, the located message, the output.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

TEST(JsonTool, ChecksFormatsAndFailsWithWhatAndWhere) {
    pind::test::TempDir dir;
    const std::string good =
        dir.Write("good.json", " {\"a\": [1, 2.5e3, \"\xc4\xe3\"], \"b\": {}}\n");
    const std::string bad = dir.Write("bad.json", "[1,\n 2,]");
    const std::string nul = dir.Write("nul.json", std::string("[1]\0", 4));
    const std::string usage = "usage: pind json";
    const struct {
        std::vector<std::string> args;
        int status;
        std::string out, err;  // `usage`: the start of the stream
    } cases[] = {
        // clang-format off
        {{"check", good}, 0, "", ""},
        {{"fmt", good, "--compact"}, 0, "{\"a\":[1,2500.0,\"\xc4\xe3\"],\"b\":{}}\n", ""},
        {{"fmt", good}, 0,
         "{\n    \"a\": [\n        1,\n        2500.0,\n        \"\xc4\xe3\"\n    ],\n"
         "    \"b\": {}\n}\n", ""},
        {{"check", bad}, 1, "", "pind: json: " + bad +
                 ": not valid JSON: trailing comma at byte 7 (line 2, column 4)\n"},
        {{"fmt", nul}, 1, "", "pind: json: " + nul +
                 ": not valid JSON: text after the value at byte 3 (line 1, column 4)\n"},
        {{}, 2, "", usage}, {{"check"}, 2, "", usage}, {{"lint", "a"}, 2, "", usage},
        {{"check", "a", "--compact"}, 2, "", usage}, {{"fmt", "a", "--pretty"}, 2, "", usage},
        {{"--help"}, 0, usage, ""}};
    // clang-format on
    for (const auto& c : cases) {
        std::vector<std::string> args = {"json"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const auto run = RunPind(args);
        SCOPED_TRACE(args.size() > 1 ? args[1] : "");
        EXPECT_EQ(run.status, c.status);
        EXPECT_EQ(c.out == usage ? run.out.substr(0, usage.size()) : run.out, c.out);
        EXPECT_EQ(c.err == usage ? run.err.substr(0, usage.size()) : run.err, c.err);
    }
    const auto missing = RunPind({"json", "check", dir.File("none.json")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("cannot open"), std::string::npos);
}

}  // namespace

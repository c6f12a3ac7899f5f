// `pind json check|fmt` on the built program: exit statuses, the located message, the output.

#include "tool/RunTool.h"

namespace pind::test {
namespace {

TEST(JsonTool, ChecksFormatsAndFailsWithWhatAndWhere) {
    TempDir dir;
    dir.Write("good.json", " {\"a\": [1, 2.5e3, \"\xc4\xe3\"], \"b\": {}}\n");
    dir.Write("bad.json", "[1,\n 2,]");
    dir.Write("nul.json", std::string("[1]\0", 4));
    ExpectRuns(
        {{"json check good.json", 0, "", ""},
         {"json fmt good.json --compact", 0, "{\"a\":[1,2500.0,\"\xc4\xe3\"],\"b\":{}}\n", ""},
         {"json fmt good.json", 0,
          "{\n    \"a\": [\n        1,\n        2500.0,\n        \"\xc4\xe3\"\n    ],\n"
          "    \"b\": {}\n}\n",
          ""},
         {"json check bad.json", 1, "",
          "pind: json: bad.json: not valid JSON: trailing comma at byte 7 (line 2, column "
          "4)\n"},
         {"json fmt nul.json", 1, "",
          "pind: json: nul.json: not valid JSON: text after the value at byte 3 (line 1, "
          "column 4)\n"},
         {"json check none.json", 1, "", "cannot open"},
         {"json", 2, "", "usage: pind json"},
         {"json lint a", 2, "", "usage: pind json"},
         {"json check a --compact", 2, "", "usage: pind json"}},
        dir.Path());
}

}  // namespace
}  // namespace pind::test

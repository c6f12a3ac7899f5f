// Server strings against a small string table: bare references, placeholder and concatenation
// arrays, arrays inside text, the in-place buffer rules and the engine-log lines.
// Not covered: exceptions other than formatting errors (only an allocation failure can raise one).
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "pind/json/FmtJson.h"
#include "pind/servertext/ServerString.h"
#include "support/EngineLogCapture.h"

namespace {

using Lines = std::vector<std::string>;

const char* LookUp(uint32_t id) {
    // clang-format off
    static const std::map<uint32_t, std::string> table = {
        {1, "Hello {}"}, {2, "Hello"}, {3, "{:.1f}"}, {4, "{}"}, {5, "You have {} items"},
        {7, "{} and {}"}, {10, "Level {0} of {1}"}, {11, "{:d}"}, {12, "{{}}"},
        {20, "A({})"}, {21, "B({})"}, {22, "C({})"}, {30, "gold"},
        {50, std::string(3000, 'b')}, {4294967295u, "max"}};
    // clang-format on
    const auto it = table.find(id);
    return it != table.end() ? it->second.c_str() : "";
}

class ServerString : public ::testing::Test {
protected:
    void SetUp() override { SetStringIdCallback(LookUp); }
    void TearDown() override { SetStringIdCallback(nullptr); }
    pind::test::EngineLogCapture m_log;
};

TEST_F(ServerString, ConvertsEveryForm) {
    const struct ConvertCase {
        std::string source;
        std::string want;
        Lines log = {};
    } cases[] = {
        // clang-format off
        // Bare references and what follows them.
        {"@@2 (x2)", "Hello (x2)"}, {"@@abc", ""},
        {"@@0002 x", "Hello"},  // "@@2" is not in the text: nothing appended
        // Placeholder mode.
        {R"(["@@1"])", "", {"Error FmtStr:@@1, OriginStr=Hello {}"}},
        {R"(["@@12"])", "", {"Error FmtStr:@@12, OriginStr={{}}"}},
        {R"(["@@3", 1.5])", "1.5"}, {R"(["@@11", -3000000000])", "-3000000000"},
        {R"(["@@20", ["@@21", ["@@22", 5]]])", "A(B(C(5)))"},
        {R"(["@@10", "@@30", "x"])", "Level gold of x"},
        {R"(["@@7", null, {"a":1}])", "NULL and error"},
        // Reference arguments look their ids up like stoul; a failure is logged and gives "".
        {R"(["@@7", "@@ +2x", "@@-4294967294"])", "Hello and Hello"},
        {R"(["@@7", "@@4294967295", "@@999"])", "max and "},
        {R"(["@@7", "@@4294967296", "@@abc"])", " and ",
         {"TryGetStringFromStrID 4294967296\n", "TryGetStringFromStrID abc\n"}},
        {R"(["@@1", "@@"])", "Hello ", {"TryGetStringFromStrID \n"}},
        {R"(["@@1", "@@#5"])", "Hello ", {"TryGetStringFromStrID #5\n"}},
        {R"(["@@11", "str"])", ""},  // wrong type for the field
        // Concatenation mode.
        {R"(["a", "b"])", "ab"}, {"[1,2]", "12"}, {"[]", ""},
        {R"(["@@#", "@@2", 1.5, -3, 3000000000, null, true, false, ["@@2"]])",
         "Hello 1.500000 -3 3000000000 NULL 1 0 Hello"},
        {R"(["x", "@@#y", "z"])", "xz"}, {R"(["@@#", "a", "@@#b", "c"])", "a  c"},
        // Arrays inside text.
        {R"(You got ["@@5",2] and [1,2])", "You got You have 2 items and [1,2]"},
        {R"([["@@2"]] [x] ["@@2"])", "Hello [x] Hello"},
        {R"(see ["@@2")", "see "},             // the unbalanced tail is dropped
        {R"(x ][["@@2"])", R"(x ][["@@2"])"},  // would only ever convert into itself
        // A piece whose text does not fit stays as written; one longer than 2047 bytes is cut,
        // loses its closing bracket and converts to nothing.
        {R"(x ["@@50"] y)", R"(x ["@@50"] y)",
         {"FormatServerString: [Buf Too Short!], pszStrBuf=" + std::string(3000, 'b')}},
        {"x [\"@@4\", \"" + std::string(3000, 'a') + "\"] y", "x  y"},
        // Unchanged.
        {R"(["@@2",])", R"(["@@2",])"}, {"plain text", "plain text"}, {"", ""}};
    // clang-format on
    for (const ConvertCase& c : cases) {
        m_log.Clear();
        std::string out = "junk";
        ConvertServerString(c.source, out);
        EXPECT_EQ(out, c.want) << c.source;
        EXPECT_EQ(m_log.Lines(), c.log) << c.source;
        EXPECT_EQ(FormatServerStringToText(c.source.c_str()), c.want) << c.source;
    }
    EXPECT_EQ(FormatServerStringToText(nullptr), "");
    EXPECT_EQ(FormatJsonServerString(nullptr), "");
    const std::unique_ptr<JsonNode, void (*)(JsonNode*)> root(JsonParse("\"@@2\""), JsonFree);
    EXPECT_EQ(FormatJsonServerString(root.get()), "");  // only arrays are formatted
    std::string out = "junk";
    TryGetStringFromStrID(out, "abc");  // a failed look-up empties the text
    EXPECT_EQ(out, "");
}

TEST_F(ServerString, FormatsInPlaceOnlyWhenTheResultFits) {
    // Text, capacity, result, engine-log lines.
    const std::tuple<const char*, int32_t, const char*, Lines> cases[] = {
        {"@@2", 6, "Hello", {}},
        {"@@2", 5, "@@2", {"FormatServerString: [Buf Too Short!], pszStrBuf=Hello"}},
        {"no at sign [1,2]", 32, "no at sign [1,2]", {}},
        {"@@999", 8, "", {}},
    };
    for (const auto& [text, capacity, result, log] : cases) {
        m_log.Clear();
        const size_t n = std::strlen(text), cap = static_cast<size_t>(capacity);
        std::string buf = text + std::string(1, '\0') + std::string(cap + 3 - n, '#');
        // A rewrite zeroes the whole capacity; otherwise nothing moves; never past it.
        const std::string want =
            std::strcmp(result, text) == 0
                ? buf
                : result + std::string(cap - std::strlen(result), '\0') + "####";
        FormatServerString(buf.data(), capacity);
        EXPECT_EQ(buf, want) << text;
        EXPECT_EQ(m_log.Lines(), log) << text;
    }
    char unterminated[4] = {'@', '@', '2', '2'};
    FormatServerString(unterminated, 4);  // reads stop at the capacity
    FormatServerString(nullptr, 4);
}

TEST_F(ServerString, NestsAsDeepAsTheParserAllows) {
    std::string message, want;
    for (int i = 0; i < 511; ++i) message += "[\"@@20\", ", want += "A(";
    message += "5" + std::string(511, ']');
    EXPECT_EQ(FormatServerStringToText(message.c_str()), want + "5" + std::string(511, ')'));
}

}  // namespace

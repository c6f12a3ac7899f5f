// Server strings against a small string table: bare references, placeholder and concatenation
// arrays, arrays inside text, the in-place buffer rules and the engine-log lines.
// Not covered: exceptions other than formatting errors (only an allocation failure can raise one).
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>
#include <string>
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
        {7, "{} and {}"}, {10, "Level {0} of {1}"}, {11, "{:d}"}, {12, "{{}}"}, {13, "{"},
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
        {R"(["@@4", ["@@5", 2]])", "You have 2 items"},
        {R"(["@@20", ["@@21", ["@@22", 5]]])", "A(B(C(5)))"},
        {R"(["@@10", "@@30", "x"])", "Level gold of x"},
        {R"(["@@7", true, false, null, {}])", "1 and 0"},
        {R"(["@@7", null, {"a":1}])", "NULL and error"},
        {R"(["@@1", "@@#5"])", "Hello ", {"TryGetStringFromStrID #5\n"}},
        {R"(["@@11", "str"])", ""},  // wrong type for the field
        {R"(["@@7", 1])", ""},       // too few arguments
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
}

TEST_F(ServerString, FormatsInPlaceOnlyWhenTheResultFits) {
    const struct Case {
        const char* text;
        int32_t capacity;
        const char* want;
        Lines log;
    } cases[] = {
        {"@@2", 6, "Hello", {}},
        {"@@2", 5, "@@2", {"FormatServerString: [Buf Too Short!], pszStrBuf=Hello"}},
        {"no at sign [1,2]", 32, "no at sign [1,2]", {}},
        {"@@999", 8, "", {}},
    };
    for (const Case& c : cases) {
        m_log.Clear();
        const size_t n = std::strlen(c.text), cap = static_cast<size_t>(c.capacity);
        std::string buf = c.text + std::string(1, '\0') + std::string(cap + 3 - n, '#');
        // A rewrite zeroes the whole capacity; otherwise nothing moves; never past it.
        const std::string want =
            std::strcmp(c.want, c.text) == 0
                ? buf
                : c.want + std::string(cap - std::strlen(c.want), '\0') + "####";
        FormatServerString(buf.data(), c.capacity);
        EXPECT_EQ(buf, want) << c.text;
        EXPECT_EQ(m_log.Lines(), c.log) << c.text;
    }
    char unterminated[4] = {'@', '@', '2', '2'};
    FormatServerString(unterminated, 4);  // reads stop at the capacity
    FormatServerString(nullptr, 4);
}

TEST_F(ServerString, LooksUpIdsLikeStoul) {
    // {id, text}; a null text: stoul fails, the result is empty and the id is logged.
    const std::pair<const char*, const char*> cases[] = {
        // clang-format off
        {" +2x", "Hello"}, {"-4294967294", "Hello"}, {"4294967295", "max"}, {"999", ""},
        {"4294967296", nullptr}, {"abc", nullptr}, {"", nullptr}, {"#5", nullptr}};
    // clang-format on
    for (const auto& [id, want] : cases) {
        m_log.Clear();
        std::string out = "junk";
        TryGetStringFromStrID(out, id);
        EXPECT_EQ(out, want != nullptr ? want : "") << id;
        EXPECT_EQ(m_log.Lines(), want != nullptr
                                     ? Lines{}
                                     : Lines{std::string("TryGetStringFromStrID ") + id + "\n"});
    }
}

TEST_F(ServerString, NestsAsDeepAsTheParserAllows) {
    std::string message, want;
    for (int i = 0; i < 511; ++i) message += "[\"@@20\", ", want += "A(";
    message += "5" + std::string(511, ']');
    EXPECT_EQ(FormatServerStringToText(message.c_str()), want + "5" + std::string(511, ')'));
}

TEST_F(ServerString, FormatsOnlyArrays) {
    EXPECT_EQ(FormatJsonServerString(nullptr), "");
    const std::unique_ptr<JsonNode, void (*)(JsonNode*)> root(JsonParse("\"@@2\""), JsonFree);
    EXPECT_EQ(FormatJsonServerString(root.get()), "");
}

}  // namespace

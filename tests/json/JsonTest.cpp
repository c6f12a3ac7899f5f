// JsonParse/JsonPrint: strictness, number types at the 32/64-bit edges, escapes, nesting limits
// and the accessors. Print -> parse round trips run over the fuzz corpus under ctest.
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "pind/json/FmtJson.h"

namespace {

struct TreeDeleter {
    void operator()(JsonNode* n) const { JsonFree(n); }
};
using Tree = std::unique_ptr<JsonNode, TreeDeleter>;

Tree Parse(const std::string& text) { return Tree(JsonParse(text.data(), text.size())); }

TEST(JsonParse, NumbersTakeTheirTypeAtThe32And64BitEdgesAndPrintShortest) {
    const float inf = std::numeric_limits<float>::infinity();
    const int64_t max = std::numeric_limits<int64_t>::max(), min = -max - 1;
    // Text, type, integer value (0 for reals), float value, compact print.
    const std::tuple<const char*, int32_t, int64_t, float, const char*> cases[] = {
        {"-0", JSON_INT, 0, 0, "0"},
        {"2147483647", JSON_INT, 2147483647, 2147483648.0f, "2147483647"},
        {"2147483648", JSON_INT64, 2147483648LL, 2147483648.0f, "2147483648"},
        {"-2147483648", JSON_INT64, -2147483648LL, -2147483648.0f, "-2147483648"},
        {"9223372036854775807", JSON_INT64, max, 9.223372e18f, "9223372036854775807"},
        {"-9223372036854775808", JSON_INT64, min, -9.223372e18f, "-9223372036854775808"},
        {"9223372036854775808", JSON_REAL, 0, 9.223372e18f, "9.223372e+18"},
        {"123456789012345678901234567890", JSON_REAL, 0, 1.2345679e29f, "1.2345679e+29"},
        {"1E+2", JSON_REAL, 0, 100.0f, "100.0"},
        {"0.30000001", JSON_REAL, 0, 0.3f, "0.3"},
        {"-0.0", JSON_REAL, 0, -0.0f, "-0.0"},
        {"1e20", JSON_REAL, 0, 1e20f, "1e+20"},
        {"-1e999", JSON_REAL, 0, -inf, "-1e999"},
        {"1e-999", JSON_REAL, 0, 0.0f, "0.0"},
        {"1e-45", JSON_REAL, 0, 1e-45f, "1e-45"},
        {"3.4028235e38", JSON_REAL, 0, 3.4028235e38f, "3.4028235e+38"}};
    for (const auto& [text, type, ll, f, printed] : cases) {
        Tree t = Parse(text);
        EXPECT_EQ(t->nType, type) << text;
        EXPECT_EQ(t->fValue, f) << text;
        EXPECT_EQ(type != JSON_REAL ? t->llValue : 0, ll) << text;
        EXPECT_EQ(type == JSON_INT ? t->nValue : ll, ll) << text;
        EXPECT_EQ(JsonPrint(t.get(), false), printed) << text;
    }
}

TEST(JsonParse, RejectsAnythingButStrictJsonWithTheOffset) {
    // clang-format off
    const std::pair<std::string, size_t> cases[] = {
        {" \n", 2}, {"[1,]", 3}, {"{\"a\":1,}", 7}, {"-01", 2}, {"1.", 2}, {".5", 0}, {"1e", 2},
        {"\"a\tb\"", 2}, {"\"\\x\"", 2}, {"/*c*/1", 0}, {"NaN", 0}, {"[1] x", 4}, {"[1 2]", 3},
        {"\"\\udc00\"", 1}, {"\"\\ud800\\u0041\"", 1}, {"\"abc", 4}, {"{\"a\"}", 4}, {"{1:2}", 1},
        {"tru", 3}, {"\"\\u12G4\"", 5}, {std::string("[1]\0", 4), 3},
        {std::string("\"a\0\"", 4), 2}};
    // clang-format on
    for (const auto& [text, offset] : cases) {
        JsonParseError err;
        EXPECT_EQ(JsonParse(text.data(), text.size(), &err), nullptr) << text;
        EXPECT_EQ(err.nOffset, offset) << text << ": " << err.pszWhat;
        EXPECT_STRNE(err.pszWhat, "") << text;
    }
    EXPECT_EQ(JsonParse(nullptr), nullptr);
}

TEST(JsonParse, UnescapesToUtf8AndKeepsHighBytes) {
    // clang-format off
    const std::pair<const char*, std::string> cases[] = {
        {R"("\"\\\/\b\f\n\r\t")", "\"\\/\b\f\n\r\t"}, {R"("")", ""},
        {R"("\u0041\u00e9\u4E2D")", "A\xc3\xa9\xe4\xb8\xad"}, {R"("a\u0000b")", "a"},
        {R"("\ud83d\ude00!")", "\xf0\x9f\x98\x80!"}, {R"("\uDBFF\uDFFF")", "\xf4\x8f\xbf\xbf"},
        {"\"\xc4\xe3\xba\xc3\x7f\"", "\xc4\xe3\xba\xc3\x7f"}};  // GBK "ni hao" as it is
    // clang-format on
    for (const auto& [text, want] : cases) {
        Tree t = Parse(text);
        EXPECT_EQ(t->nType, JSON_STRING);
        EXPECT_EQ(std::string(t->pszValue), want) << text;
    }
}

TEST(JsonParse, NestingStopsAt512LevelsInLinearTime) {
    const auto nested = [](size_t depth) {
        return std::string(depth, '[') + std::string(depth, ']');
    };
    Tree deepest = Parse(nested(512));
    EXPECT_EQ(JsonPrint(deepest.get(), false), nested(512));
    EXPECT_EQ(Parse(nested(513)), nullptr);
    EXPECT_EQ(Parse("[" + nested(512) + ",1]"), nullptr);
    JsonParseError err;
    const std::string hostile(100000, '[');
    EXPECT_EQ(JsonParse(hostile.data(), hostile.size(), &err), nullptr);
    EXPECT_EQ(err.nOffset, 512u);  // stops at the first level too many, not at the end
}

TEST(JsonAccessors, FindMembersAndConvertWithDefaults) {
    Tree o = Parse(R"({"a": [1, "x"], "": null, "a": true})");
    EXPECT_EQ(JsonArraySize(o.get()), 3);
    const JsonNode* a = JsonObjectMember(o.get(), "a");  // the first of two
    EXPECT_EQ(JsonArrayItem(a, 1)->pszName, nullptr);
    EXPECT_EQ(JsonArrayItem(a, 2), nullptr);
    EXPECT_EQ(JsonArrayItem(a, -1), nullptr);
    EXPECT_EQ(JsonObjectMember(o.get(), "")->nType, JSON_NULL);
    EXPECT_EQ(JsonObjectMember(a, "a"), nullptr);  // not an object

    Tree t = Parse("[7, 3000000000, -3000000000, 2.75, -1e999, true, false, \"s\", null]");
    const auto at = [&](int i) { return JsonArrayItem(t.get(), i); };
    const int32_t ints[] = {7, INT32_MAX, INT32_MIN, 2, INT32_MIN, 1, 0, -5, -5};
    const int64_t int64s[] = {7, 3000000000LL, -3000000000LL, 2, INT64_MIN, 1, 0, -5, -5};
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(JsonGetInt(at(i), -5), ints[i]) << i;
        EXPECT_EQ(JsonGetInt64(at(i), -5), int64s[i]) << i;
    }
    EXPECT_EQ(JsonGetFloat(at(1), 0), 3e9f);
    EXPECT_EQ(JsonGetFloat(at(7), 9), 9.0f);
    EXPECT_FALSE(JsonGetBool(at(6), true));
    EXPECT_FALSE(JsonGetBool(at(0), false));  // a number is no boolean: the default
    EXPECT_STREQ(JsonGetString(at(7), nullptr), "s");
    EXPECT_STREQ(JsonGetString(at(8), "d"), "d");
}

TEST(JsonPrint, WritesCompactAndPrettyText) {
    Tree t = Parse(R"({"a":[1,-2.5,"x\u0001\"\n",[],{}],"b":{"c":null},"e":3000000000})");
    EXPECT_EQ(JsonPrint(t.get(), false),
              R"({"a":[1,-2.5,"x\u0001\"\n",[],{}],"b":{"c":null},"e":3000000000})");
    EXPECT_EQ(JsonPrint(t.get(), true),
              "{\n    \"a\": [\n        1,\n        -2.5,\n        \"x\\u0001\\\"\\n\",\n"
              "        [],\n        {}\n    ],\n    \"b\": {\n        \"c\": null\n    },\n"
              "    \"e\": 3000000000\n}");
    EXPECT_EQ(JsonPrint(nullptr, false), "null");
}

TEST(JsonParse, LargeDocumentsGrowTheArenaWithoutLosingNodes) {
    std::string doc = "[0";
    for (int i = 1; i < 100000; ++i) doc += "," + std::to_string(i);
    Tree t = Parse(doc + "]");
    EXPECT_EQ(JsonArraySize(t.get()), 100000);
    EXPECT_EQ(JsonPrint(t.get(), false), doc + "]");
}

}  // namespace

// The checked parsers, UTF-8 conversion and byte masking.
#include <gtest/gtest.h>

#include "support/Printable.h"

#include <cstring>
#include <stdexcept>
#include <string>

#include "pind/strings/Convert.h"

namespace {

struct ParseCase {
    const char* pszText;
    int32_t nInt;      // StrToInt (string object)
    uint32_t nUInt;    // StrToUInt
    uint64_t nUInt64;  // StrToUInt64 and SzToUInt64
    int32_t nSzInt;    // SzToInt (atol, also of a hexadecimal text)
};

void PrintTo(const ParseCase& c, std::ostream* os) { *os << pind::test::Printable(c.pszText); }

class ConvertParse : public ::testing::TestWithParam<ParseCase> {};

TEST_P(ConvertParse, ChecksTheWholeTextThenConverts) {
    const ParseCase& c = GetParam();
    const std::string text = c.pszText;
    EXPECT_EQ(StrToInt(text), c.nInt);
    EXPECT_EQ(StrToUInt(text), c.nUInt);
    EXPECT_EQ(StrToUInt64(text), c.nUInt64);
    EXPECT_EQ(SzToUInt64(c.pszText), c.nUInt64);
    EXPECT_EQ(SzToInt(c.pszText), c.nSzInt);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, ConvertParse,
    ::testing::Values(
        ParseCase{"", 0, 0, 0, 0}, ParseCase{"0", 0, 0, 0, 0}, ParseCase{"42", 42, 42, 42, 42},
        ParseCase{"0x1F", 31, 31, 31, 0}, ParseCase{"0xff", 255, 255, 255, 0},
        ParseCase{"-12", -12, 0xFFFFFFF4u, 0xFFFFFFFFFFFFFFF4u, -12},
        ParseCase{"12a", 0, 0, 0, 0},   // a trailing non-digit fails the whole text
        ParseCase{"0X1F", 0, 0, 0, 0},  // upper-case X is not a prefix
        ParseCase{"-", 0, 0, 0, 0},     // a lone sign
        ParseCase{"0x", 0, 0, 0, 0},    // too short for a prefix
        ParseCase{"0-5", 0, 0, 0, 0},   // a leading 0 never takes a sign
        ParseCase{"-0x5", 0, 0, 0, 0},  // nor does a prefix
        ParseCase{"--1", 0, 0, 0, 0}, ParseCase{" 1", 0, 0, 0, 0}, ParseCase{"+1", 0, 0, 0, 0},
        ParseCase{"0xFFFFFFFF", -1, 0xFFFFFFFFu, 0xFFFFFFFFu, 0},
        ParseCase{"0x123456789", -1, 0xFFFFFFFFu, 0x123456789u, 0},  // 32-bit strtoul saturates
        ParseCase{"2147483648", INT32_MAX, 2147483648u, 2147483648u, INT32_MAX},
        ParseCase{"-2147483649", INT32_MIN, 0x7FFFFFFFu, 0xFFFFFFFF7FFFFFFFu, INT32_MIN},
        ParseCase{"18446744073709551615", INT32_MAX, 0xFFFFFFFFu, UINT64_MAX, INT32_MAX},
        ParseCase{"18446744073709551616", INT32_MAX, 0xFFFFFFFFu, UINT64_MAX, INT32_MAX},
        ParseCase{"0x0000000000000000001", 1, 1, 1, 0}));

TEST(Convert, StringObjectsCheckEveryByteIncludingZeros) {
    EXPECT_EQ(StrToInt(std::string("12\0"
                                   "3",
                                   4)),
              0);
    EXPECT_EQ(StrToUInt64(std::string("7\0", 2)), 0u);
    EXPECT_EQ(SzToUInt64(nullptr), 0u);
    EXPECT_EQ(SzToInt(nullptr), 0);
    EXPECT_EQ(SzToDouble(nullptr), 0.0);
}

TEST(Convert, DoubleAcceptsDotsAnywhere) {
    const std::pair<const char*, double> cases[] = {
        {"3.25", 3.25}, {"1.2.3", 1.2}, {"1e5", 0.0}, {"-.5", -0.5}, {".", 0.0},
        {"-", 0.0},     {"-1.5", -1.5}, {"", 0.0},    {"1,5", 0.0},
    };
    for (const auto& [text, want] : cases) {
        EXPECT_DOUBLE_EQ(SzToDouble(text), want) << text;
    }
}

TEST(Convert, WideToUtf8EncodesEachUnitAlone) {
    const std::pair<char16_t, const char*> units[] = {
        {u'\0', ""},
        {0x7F, "\x7f"},
        {0x80, "\xc2\x80"},
        {0x7FF, "\xdf\xbf"},
        {0x800, "\xe0\xa0\x80"},
        {0xD7FF, "\xed\x9f\xbf"},
        {0xE000, "\xee\x80\x80"},
        {0xFFFF, "\xef\xbf\xbf"},
    };
    for (const auto& [unit, want] : units) {
        EXPECT_EQ(WideToUtf8(unit), std::string(want, unit == 0 ? 1 : std::strlen(want))) << +unit;
    }
    EXPECT_THROW(WideToUtf8(char16_t{0xD800}), std::range_error);
    EXPECT_THROW(WideToUtf8(char16_t{0xDFFF}), std::range_error);
    EXPECT_EQ(WideToUtf8(static_cast<const char16_t*>(nullptr)), "");
    EXPECT_EQ(WideToUtf8(u"a\u00e9\u4e2d"), "a\xc3\xa9\xe4\xb8\xad");  // "aé中"
    try {
        WideToUtf8(u"ok\xd83d\xde00");  // a surrogate pair is two halves, each unencodable
        FAIL() << "no exception";
    } catch (const std::range_error& e) {
        EXPECT_STREQ(e.what(), "bad conversion");
    }
}

TEST(Convert, MaskWithKeyCyclesTheKey) {
    char buffer[] = "abcde";
    ASSERT_TRUE(MaskWithKey(buffer, 5, "k3"));
    EXPECT_EQ(std::string(buffer, 5),
              std::string({'a' ^ 'k', 'b' ^ '3', 'c' ^ 'k', 'd' ^ '3', 'e' ^ 'k'}));
    ASSERT_TRUE(MaskWithKey(buffer, 5, "k3"));
    EXPECT_STREQ(buffer, "abcde");
    EXPECT_FALSE(MaskWithKey(nullptr, 3, "k"));
    EXPECT_FALSE(MaskWithKey(buffer, 3, nullptr));
    EXPECT_TRUE(MaskWithKey(buffer, 0, ""));  // the key is not read for length 0
    EXPECT_TRUE(MaskWithKey(buffer, -1, "k"));
    EXPECT_FALSE(MaskWithKey(buffer, 3, ""));  // would divide by zero: left unchanged
    EXPECT_STREQ(buffer, "abcde");
}

TEST(Convert, MaskRunningStopsWhereAByteBecomesZero) {
    char text[] = "ab";
    ASSERT_TRUE(MaskRunning(text, 'a'));
    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], 'b');

    char word[] = "Hello";
    ASSERT_TRUE(MaskRunning(word, 0x101));  // the start is taken modulo 256: 1
    EXPECT_EQ(std::string(word), std::string({'H' ^ 1, 'e' ^ 2, 'l' ^ 3, 'l' ^ 4, 'o' ^ 5}));
    ASSERT_TRUE(MaskRunning(word, 1));
    EXPECT_STREQ(word, "Hello");

    char stop[] = "Acz";  // 'c' ^ ('b' + 1) == 0: the walk ends there and 'z' is left as it was
    ASSERT_TRUE(MaskRunning(stop, 'b'));
    EXPECT_EQ(std::string(stop, 3), std::string({'A' ^ 'b', '\0', 'z'}));
    EXPECT_FALSE(MaskRunning(nullptr, 0));
    char empty[] = "";
    EXPECT_TRUE(MaskRunning(empty, 9));
}

TEST(Convert, MaskRunningWrapsAt256) {
    char text[] = "\x01\x02\x03";
    ASSERT_TRUE(MaskRunning(text, 0xFE));
    EXPECT_EQ(std::string(text, 3), std::string("\xff\xfd\x03", 3));  // 0xFE, 0xFF, 0x00
}

}  // namespace

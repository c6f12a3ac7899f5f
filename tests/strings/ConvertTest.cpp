// The checked parsers, UTF-8 conversion and byte masking.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>

#include "pind/strings/Convert.h"

namespace {

// Every byte must be a digit (hex after a lower-case "0x"); a leading '-' is allowed only when the
// text does not start with 0. The 32-bit parsers saturate like strtol and strtoul.
TEST(Convert, ParsersCheckEveryByteOfTheTextThenConvert) {
    for (const char* bad : {"", "12a", "0X1F", "-", "0x", "0-5", "-0x5", "--1", " 1", "+1"}) {
        const std::string text = bad;
        EXPECT_EQ(StrToInt(text) + StrToUInt(text) + StrToUInt64(text), 0u) << text;
        EXPECT_EQ(SzToUInt64(bad) + SzToInt(bad), 0u) << text;
    }
    // Text, StrToInt (string object), StrToUInt, StrToUInt64 and SzToUInt64, SzToInt (atol, also
    // of a hexadecimal text).
    const std::tuple<const char*, int32_t, uint32_t, uint64_t, int32_t> cases[] = {
        {"0x1F", 31, 31, 31, 0},
        {"-12", -12, 0xFFFFFFF4u, 0xFFFFFFFFFFFFFFF4u, -12},
        {"0xFFFFFFFF", -1, 0xFFFFFFFFu, 0xFFFFFFFFu, 0},
        {"0x123456789", -1, 0xFFFFFFFFu, 0x123456789u, 0},
        {"2147483648", INT32_MAX, 2147483648u, 2147483648u, INT32_MAX},
        {"-2147483649", INT32_MIN, 0x7FFFFFFFu, 0xFFFFFFFF7FFFFFFFu, INT32_MIN},
        {"18446744073709551615", INT32_MAX, 0xFFFFFFFFu, UINT64_MAX, INT32_MAX},
        {"18446744073709551616", INT32_MAX, 0xFFFFFFFFu, UINT64_MAX, INT32_MAX},
        {"0x0000000000000000001", 1, 1, 1, 0}};
    for (const auto& [text, nInt, nUInt, nUInt64, nSzInt] : cases) {
        EXPECT_EQ(StrToInt(text), nInt) << text;
        EXPECT_EQ(StrToUInt(text), nUInt) << text;
        EXPECT_EQ(StrToUInt64(text), nUInt64) << text;
        EXPECT_EQ(SzToUInt64(text), nUInt64) << text;
        EXPECT_EQ(SzToInt(text), nSzInt) << text;
    }
    // String objects check every byte; null texts give zero.
    EXPECT_EQ(StrToInt(std::string("12\0003", 4)), 0);
    EXPECT_EQ(StrToUInt64(std::string("7\0", 2)), 0u);
    EXPECT_EQ(SzToUInt64(nullptr), 0u);
    EXPECT_EQ(SzToInt(nullptr), 0);
    EXPECT_EQ(SzToDouble(nullptr), 0.0);
}

TEST(Convert, DoubleAcceptsDotsAnywhere) {
    const std::pair<const char*, double> cases[] = {{"1.2.3", 1.2}, {"1e5", 0.0}, {"-.5", -0.5},
                                                    {".", 0.0},     {"-", 0.0},   {"1,5", 0.0}};
    for (const auto& [text, want] : cases) EXPECT_DOUBLE_EQ(SzToDouble(text), want) << text;
}

TEST(Convert, WideToUtf8EncodesEachUnitAlone) {
    const std::pair<char16_t, std::string> units[] = {
        {0, std::string(1, '\0')}, {0x7F, "\x7f"},          {0x80, "\xc2\x80"},
        {0x7FF, "\xdf\xbf"},       {0x800, "\xe0\xa0\x80"}, {0xD7FF, "\xed\x9f\xbf"},
        {0xE000, "\xee\x80\x80"},  {0xFFFF, "\xef\xbf\xbf"}};
    for (const auto& [unit, want] : units) EXPECT_EQ(WideToUtf8(unit), want) << +unit;
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
    EXPECT_EQ(std::string(buffer),
              std::string({'a' ^ 'k', 'b' ^ '3', 'c' ^ 'k', 'd' ^ '3', 'e' ^ 'k'}));
    ASSERT_TRUE(MaskWithKey(buffer, 5, "k3"));  // masking twice gives the text back
    EXPECT_FALSE(MaskWithKey(nullptr, 3, "k"));
    EXPECT_FALSE(MaskWithKey(buffer, 3, nullptr));
    EXPECT_TRUE(MaskWithKey(buffer, 0, ""));  // the key is not read for length 0
    EXPECT_TRUE(MaskWithKey(buffer, -1, "k"));
    EXPECT_FALSE(MaskWithKey(buffer, 3, ""));  // would divide by zero: left unchanged
    EXPECT_STREQ(buffer, "abcde");
}

TEST(Convert, MaskRunningStopsWhereAByteBecomesZero) {
    const std::tuple<std::string, uint32_t, std::string> cases[] = {
        {"ab", 'a', std::string("\0b", 2)},
        {"Hello", 0x101, {'H' ^ 1, 'e' ^ 2, 'l' ^ 3, 'l' ^ 4, 'o' ^ 5}},  // the start is modulo 256
        {"Acz", 'b', {'A' ^ 'b', '\0', 'z'}},     // 'c' ^ ('b' + 1) == 0: the walk ends there
        {"\x01\x02\x03", 0xFE, "\xff\xfd\x03"}};  // the running value wraps: 0xFE, 0xFF, 0x00
    for (auto [text, start, want] : cases) {
        ASSERT_TRUE(MaskRunning(text.data(), start));
        EXPECT_EQ(text, want) << start;
    }
    EXPECT_FALSE(MaskRunning(nullptr, 0));
}

}  // namespace

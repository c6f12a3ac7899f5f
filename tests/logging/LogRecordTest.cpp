#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <tuple>
#include <utility>

#include "pind/logging/LogRecord.h"
#include "support/TempDir.h"

namespace {

using _log::LogAttributes;
using _log::LogRecord;
using _log::LogValue;

std::pair<std::string, std::string> Forms(const LogValue& v) {  // structured and plain
    std::pair<std::string, std::string> forms;
    v.AppendStructured(&forms.first);
    v.AppendPlain(&forms.second);
    return forms;
}

std::string Text(const LogAttributes& header, const LogRecord& record) {
    std::string s;
    _log::FormatRecordText(header, record, &s);
    return s;
}

TEST(LogValue, KindsAndBothPrintedForms) {
    struct Case {
        LogValue value;
        uint32_t nKind;
        std::string strStructured, strPlain;
    };
    const bool bLong32 = sizeof(long) == 4;
    char huge[512];  // a huge double is cut to the 64-byte number buffer
    std::snprintf(huge, sizeof huge, "%f", 1e100);
    const Case cases[] = {
        {LogValue::Empty(), 0, "", ""},
        {LogValue('a'), 1, "a", "a"},
        {LogValue(static_cast<unsigned char>('c')), 2, "c", "c"},
        {LogValue('\0'), 1, "", ""},
        {LogValue(static_cast<uint16_t>(65535)), 3, "65535", "65535"},
        {LogValue(static_cast<int16_t>(-5)), 4, "-5", "-5"},
        {LogValue(UINT32_MAX), 5, "4294967295", "4294967295"},
        {LogValue(INT32_MIN), 6, "-2147483648", "-2147483648"},
        {LogValue(-7L), bLong32 ? 8u : 10u, "-7", "-7"},
        {LogValue(7UL), bLong32 ? 7u : 9u, "7", "7"},
        {LogValue(UINT64_MAX), 9, "18446744073709551615", "18446744073709551615"},
        {LogValue(INT64_MIN), 10, "-9223372036854775808", "-9223372036854775808"},
        {LogValue(1.5f), 11, "1.500000", "1.500000"},
        {LogValue(1e100), 12, std::string(huge, 63), std::string(huge, 63)},
        {LogValue(true), 13, "\"true\"", "true"},
        {LogValue("a\"b"), 14, "\"a\\\"b\"", "a\"b"},
        {LogValue(static_cast<const char*>(nullptr)), 14, "\"\"", ""},
        {LogValue::Raw("{\"k\": \"\t\"}"), 15, "{\"k\": \"\t\"}", "{\"k\": \"\t\"}"},
        {LogValue::Source("a.cpp", 12), 16, "", ""},
        {LogValue::WithKind(8, LogValue(-3)), 8, "-3", "-3"},
        {LogValue::WithKind(99, LogValue(5)), 99, "", ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.value.Kind(), c.nKind) << c.strPlain;
        EXPECT_EQ(Forms(c.value), std::make_pair(c.strStructured, c.strPlain)) << c.nKind;
    }
}

TEST(LogValue, CopyCarriesOnlyThePayloadItsKindNames) {
    // A value of an unknown kind loses its number when copied; relabelling the copy shows zero.
    const LogValue unknown = LogValue::WithKind(99, LogValue(5));
    const LogValue copy = unknown;  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(Forms(LogValue::WithKind(6, copy)).first, "0");
    LogValue target(std::string("old text"));
    target = LogValue::Source("b.cpp", 77);
    EXPECT_EQ(target.Text() + ":" + std::to_string(target.Number32()), "b.cpp:77");
    target = LogValue(42);
    EXPECT_EQ(target.Text(), "");  // the old text is not kept
}

TEST(LogEscape, EscapesEachByteByTheTable) {
    const std::pair<std::string, std::string> cases[] = {
        {"\t\"\x01", "\\t\\\"\\u0001"},
        {"\b\n\f\r", "\\b\\n\\f\\r"},
        {"a\\b", "a\\\\b"},
        {"\x1f\x7f", "\\u001f\x7f"},
        {std::string("a\0b", 3), "a\\u0000b"},
        {"\xb5\xc7\xc2\xbc ok", "\xb5\xc7\xc2\xbc ok"}};  // GBK "login" (登录) passes unchanged
    for (const auto& [in, want] : cases) {
        std::string out;
        _log::AppendEscaped(&out, in.data(), in.size());
        EXPECT_EQ(out, want) << in;
    }
}

TEST(LogRecordText, ShapesFollowWhichListsAreEmpty) {
    const std::string msg = "a\"b";
    const LogAttributes header = {{"logtime", LogValue("t")}, {"ts", LogValue(1000LL)}};
    struct Case {
        LogAttributes header, context, top;
        std::string strWant;
    };
    const LogAttributes top = {{"cate", LogValue("x")}, {"line", LogValue(3u)}};
    const LogAttributes context = {{"ok", LogValue(true)}, {"k\n", LogValue(-5)}};
    const Case cases[] = {
        {{}, {}, {}, "{ \"msg\": \"a\\\"b\"}"},
        {header, {}, {}, "{ \"logtime\": \"t\", \"ts\": 1000, \"msg\": \"a\\\"b\"}"},
        {{}, {}, top, "{ \"msg\": \"a\\\"b\", \"cate\": \"x\", \"line\": 3}"},
        {{},
         context,
         {},
         "{ \"msg\": \"a\\\"b\", \"attr\": { \"c\": {\"ok\": \"true\", \"k\\n\": -5} } }"},
        {header,
         {{"e", LogValue::Empty()}},
         {top[0]},
         "{ \"logtime\": \"t\", \"ts\": 1000, \"msg\": \"a\\\"b\", \"cate\": \"x\", "
         "\"attr\": { \"c\": {\"e\": } } }"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Text(c.header, LogRecord(0, msg, c.context, c.top)), c.strWant);
    }
    // The plain form is empty whenever there is a header.
    const LogRecord plain(1, msg, {{"a", LogValue(1)}, {"t", LogValue("x y")}},
                          {{"cate", LogValue("net")}, {"ok", LogValue(true)}});
    EXPECT_EQ(Text({}, plain), "a\"b a=1 t=x y cate=net ok=true");
    EXPECT_EQ(Text({{"level", LogValue("INFO")}}, plain), "");
}

TEST(LogTime, ZoneTextWidths) {
    const std::tuple<long, long, const char*> cases[] = {
        {-45900, 0, "+1245"}, {39600, 0, "-1100"},     {-20700, 0, "+0545"},
        {-50400, 0, "+1400"}, {18000, -3600, "-0400"}, {-3600, -3600, "+0200"}};
    for (const auto& [nTimezone, nDstBias, want] : cases) {
        EXPECT_EQ(_log::ZoneText(nTimezone, nDstBias), want) << nTimezone << " " << nDstBias;
    }
}

TEST(LogTime, LogTimeIsUtcWallClockWithTheZoneText) {
    const int64_t may = 1715043792;  // 2024-05-07 01:03:12 UTC
    const int64_t jan = 1705320000;  // 2024-01-15 12:00:00 UTC
    const std::tuple<const char*, int64_t, const char*, const char*> cases[] = {
        {"UTC0", may, "2024-5-7 1:3:12 +0000", "2024-05-07 01:03:12"},
        {"CST-8", may, "2024-5-7 1:3:12 +0800", "2024-05-07 09:03:12"},
        {"NST+3:30", may, "2024-5-7 1:3:12 -0330", "2024-05-06 21:33:12"},
        {"IST-5:30", may, "2024-5-7 1:3:12 +0530", "2024-05-07 06:33:12"},
        // Daylight saving: the bias is added whether or not it is in force.
        {"EST5EDT", may, "2024-5-7 1:3:12 -0400", "2024-05-06 21:03:12"},
        {"EST5EDT", jan, "2024-1-15 11:0:0 -0400", "2024-01-15 07:00:00"},
    };
    for (const auto& [tz, nNow, logTime, lineTime] : cases) {
        pind::test::ScopedTz scoped(tz);
        EXPECT_EQ(_log::LogTimeText(nNow), logTime) << tz;
        EXPECT_EQ(_log::LineTimeText(nNow), lineTime) << tz;
    }
}

}  // namespace

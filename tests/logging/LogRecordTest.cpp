#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

#include "pind/logging/LogRecord.h"
#include "support/FakeClock.h"
#include "support/TempDir.h"

namespace {

using _log::LogAttribute;
using _log::LogAttributes;
using _log::LogRecord;
using _log::LogValue;

std::string Structured(const LogValue& v) {
    std::string s;
    v.AppendStructured(&s);
    return s;
}

std::string Plain(const LogValue& v) {
    std::string s;
    v.AppendPlain(&s);
    return s;
}

std::string Text(const LogAttributes& header, const LogRecord& record) {
    std::string s;
    _log::FormatRecordText(header, record, &s);
    return s;
}

struct ValueCase {
    const char* pszWhat;
    LogValue value;
    uint32_t nKind;
    std::string strStructured;
    std::string strPlain;
};

TEST(LogValue, KindsAndBothPrintedForms) {
    const bool bLong32 = sizeof(long) == 4;
    const ValueCase cases[] = {
        {"empty", LogValue::Empty(), 0, "", ""},
        {"char", LogValue('a'), 1, "a", "a"},
        {"signed char", LogValue(static_cast<signed char>('b')), 1, "b", "b"},
        {"unsigned char", LogValue(static_cast<unsigned char>('c')), 2, "c", "c"},
        {"zero char", LogValue('\0'), 1, "", ""},
        {"u16", LogValue(static_cast<uint16_t>(65535)), 3, "65535", "65535"},
        {"i16", LogValue(static_cast<int16_t>(-5)), 4, "-5", "-5"},
        {"u32", LogValue(UINT32_MAX), 5, "4294967295", "4294967295"},
        {"i32", LogValue(INT32_MIN), 6, "-2147483648", "-2147483648"},
        {"long", LogValue(-7L), bLong32 ? 8u : 10u, "-7", "-7"},
        {"unsigned long", LogValue(7UL), bLong32 ? 7u : 9u, "7", "7"},
        {"u64", LogValue(UINT64_MAX), 9, "18446744073709551615", "18446744073709551615"},
        {"i64 min", LogValue(std::numeric_limits<int64_t>::min()), 10, "-9223372036854775808",
         "-9223372036854775808"},
        {"float", LogValue(1.5f), 11, "1.500000", "1.500000"},
        {"double", LogValue(-0.25), 12, "-0.250000", "-0.250000"},
        {"true", LogValue(true), 13, "\"true\"", "true"},
        {"false", LogValue(false), 13, "\"false\"", "false"},
        {"text", LogValue("a\"b"), 14, "\"a\\\"b\"", "a\"b"},
        {"string", LogValue(std::string("x\ty")), 14, "\"x\\ty\"", "x\ty"},
        {"null text", LogValue(static_cast<const char*>(nullptr)), 14, "\"\"", ""},
        {"raw", LogValue::Raw("{\"k\": \"\t\"}"), 15, "{\"k\": \"\t\"}", "{\"k\": \"\t\"}"},
        {"source", LogValue::Source("a.cpp", 12), 16, "", ""},
        {"relabelled 2", LogValue::WithKind(2, LogValue('z')), 2, "z", "z"},
        {"relabelled 7", LogValue::WithKind(7, LogValue(5u)), 7, "5", "5"},
        {"relabelled 8", LogValue::WithKind(8, LogValue(-3)), 8, "-3", "-3"},
        {"unknown kind", LogValue::WithKind(99, LogValue(5)), 99, "", ""},
    };
    for (const ValueCase& c : cases) {
        EXPECT_EQ(c.value.Kind(), c.nKind) << c.pszWhat;
        EXPECT_EQ(Structured(c.value), c.strStructured) << c.pszWhat;
        EXPECT_EQ(Plain(c.value), c.strPlain) << c.pszWhat;
    }
}

TEST(LogValue, CopyCarriesOnlyThePayloadItsKindNames) {
    // A value of an unknown kind loses its number when copied; relabelling the copy shows zero.
    const LogValue unknown = LogValue::WithKind(99, LogValue(5));
    const LogValue copy = unknown;  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(Structured(LogValue::WithKind(6, copy)), "0");

    LogValue target(std::string("old text"));
    target = LogValue::Source("b.cpp", 77);
    EXPECT_EQ(target.Kind(), 16u);
    EXPECT_EQ(target.Text(), "b.cpp");
    EXPECT_EQ(target.Number32(), 77u);

    target = LogValue(42);
    EXPECT_EQ(target.Text(), "");  // the old text is not kept
    EXPECT_EQ(Structured(target), "42");
}

TEST(LogValue, HugeDoubleIsCutToTheNumberBuffer) {
    char full[512];
    std::snprintf(full, sizeof full, "%f", 1e100);
    EXPECT_EQ(Structured(LogValue(1e100)), std::string(full).substr(0, 63));
    EXPECT_EQ(Structured(LogValue(123456789.0)), "123456789.000000");
}

TEST(LogEscape, EscapesEachByteByTheTable) {
    struct Case {
        std::string strIn;
        std::string strOut;
    };
    const Case cases[] = {
        {"\t\"\x01", "\\t\\\"\\u0001"},
        {"\b\n\f\r", "\\b\\n\\f\\r"},
        {"a\\b", "a\\\\b"},
        {"\x1f\x7f", "\\u001f\x7f"},
        {std::string("a\0b", 3), "a\\u0000b"},
        {"\x1b[", "\\u001b["},
        {"\xb5\xc7\xc2\xbc ok", "\xb5\xc7\xc2\xbc ok"},  // GBK "login" (登录) passes unchanged
        {"", ""},
    };
    for (const Case& c : cases) {
        std::string out;
        _log::AppendEscaped(&out, c.strIn.data(), c.strIn.size());
        EXPECT_EQ(out, c.strOut) << c.strIn;
    }
}

TEST(LogRecordText, ShapesFollowWhichListsAreEmpty) {
    const std::string msg = "a\"b";
    const LogAttributes header = {{"logtime", LogValue("t")}, {"ts", LogValue(1000LL)}};
    struct Case {
        const char* pszWhat;
        LogAttributes header;
        LogAttributes context;
        LogAttributes top;
        std::string strWant;
    };
    const Case cases[] = {
        {"bare", {}, {}, {}, "{ \"msg\": \"a\\\"b\"}"},
        {"header", header, {}, {}, "{ \"logtime\": \"t\", \"ts\": 1000, \"msg\": \"a\\\"b\"}"},
        {"top",
         {},
         {},
         {{"cate", LogValue("x")}, {"line", LogValue(3u)}},
         "{ \"msg\": \"a\\\"b\", \"cate\": \"x\", \"line\": 3}"},
        {"context",
         {},
         {{"ok", LogValue(true)}, {"k\n", LogValue(-5)}},
         {},
         "{ \"msg\": \"a\\\"b\", \"attr\": { \"c\": {\"ok\": \"true\", \"k\\n\": -5} } }"},
        {"all",
         header,
         {{"e", LogValue::Empty()}},
         {{"cate", LogValue("x")}},
         "{ \"logtime\": \"t\", \"ts\": 1000, \"msg\": \"a\\\"b\", \"cate\": \"x\", "
         "\"attr\": { \"c\": {\"e\": } } }"},
    };
    for (const Case& c : cases) {
        const LogRecord record(0, msg, c.context, c.top);
        EXPECT_EQ(Text(c.header, record), c.strWant) << c.pszWhat;
    }
}

TEST(LogRecordText, PlainFormIsEmptyWheneverThereIsAHeader) {
    const std::string msg = "hello";
    const LogRecord record(1, msg, {{"a", LogValue(1)}, {"t", LogValue("x y")}},
                           {{"cate", LogValue("net")}, {"ok", LogValue(true)}});
    EXPECT_EQ(Text({}, record), "hello a=1 t=x y cate=net ok=true");
    EXPECT_EQ(Text({{"level", LogValue("INFO")}}, record), "");
}

TEST(LogRecordText, ThePartExampleLine) {
    pind::test::ScopedTz tz("CST-8");
    LogAttributes header;
    _log::MakeHeader(_log::LOG_INFO, "", 1715043792, &header);
    const std::string msg = "login ok";
    const LogRecord record(0, msg, {{"uid", LogValue(42)}}, {{"cate", LogValue("DEFAULT")}});
    EXPECT_EQ(Text(header, record),
              "{ \"logtime\": \"2024-5-7 1:3:12 +0800\", \"ts\": 1715043792000, \"level\": "
              "\"INFO\", \"src\": \"\", \"msg\": \"login ok\", \"cate\": \"DEFAULT\", \"attr\": { "
              "\"c\": {\"uid\": 42} } }");
}

TEST(LogTime, ZoneTextWidths) {
    struct Case {
        long nTimezone;
        long nDstBias;
        const char* pszWant;
    };
    const Case cases[] = {
        {-28800, 0, "+0800"}, {12600, 0, "-0330"},     {-36000, 0, "+1000"}, {0, 0, "+0000"},
        {-19800, 0, "+0530"}, {18000, -3600, "-0400"}, {-45900, 0, "+1245"}, {39600, 0, "-1100"},
        {-20700, 0, "+0545"}, {-3600, -3600, "+0200"}, {-50400, 0, "+1400"}, {34200, 0, "-0930"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(_log::ZoneText(c.nTimezone, c.nDstBias), c.pszWant)
            << c.nTimezone << " " << c.nDstBias;
    }
}

TEST(LogTime, LogTimeIsUtcWallClockWithTheZoneText) {
    struct Case {
        const char* pszTz;
        int64_t nNow;
        const char* pszLogTime;
        const char* pszLineTime;
    };
    const int64_t may = 1715043792;  // 2024-05-07 01:03:12 UTC
    const int64_t jan = 1705320000;  // 2024-01-15 12:00:00 UTC
    const Case cases[] = {
        {"UTC0", may, "2024-5-7 1:3:12 +0000", "2024-05-07 01:03:12"},
        {"CST-8", may, "2024-5-7 1:3:12 +0800", "2024-05-07 09:03:12"},
        {"NST+3:30", may, "2024-5-7 1:3:12 -0330", "2024-05-06 21:33:12"},
        {"IST-5:30", may, "2024-5-7 1:3:12 +0530", "2024-05-07 06:33:12"},
        {"AES-10", may, "2024-5-7 1:3:12 +1000", "2024-05-07 11:03:12"},
        // Daylight saving: the bias is added whether or not it is in force.
        {"EST5EDT", may, "2024-5-7 1:3:12 -0400", "2024-05-06 21:03:12"},
        {"EST5EDT", jan, "2024-1-15 11:0:0 -0400", "2024-01-15 07:00:00"},
    };
    for (const Case& c : cases) {
        pind::test::ScopedTz tz(c.pszTz);
        EXPECT_EQ(_log::LogTimeText(c.nNow), c.pszLogTime) << c.pszTz;
        EXPECT_EQ(_log::LineTimeText(c.nNow), c.pszLineTime) << c.pszTz;
    }
}

}  // namespace

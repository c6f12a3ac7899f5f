// Values, escapes, record texts and times as the writer prints them, and those lines read back.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "pind/logging/LogLineParser.h"
#include "pind/logging/Logger.h"
#include "pind/logging/LoggerWriter.h"
#include "pind/platform/Terminal.h"
#include "support/FakeClock.h"
#include "support/TempDir.h"

namespace {

using _log::LogAttributes;
using _log::LogRecord;
using _log::LogValue;

const std::string kGbk = "\xb5\xc7\xc2\xbc";  // 登录

// Fields as "key=value" with a leading '"' on quoted values, so whole lists compare at once.
std::vector<std::string> Flat(const _log::LogLineFields& fields) {
    std::vector<std::string> out;
    for (const auto& f : fields)
        out.push_back(f.strKey + "=" + (f.bQuoted ? "\"" : "") + f.strValue);
    return out;
}

std::string Text(const LogAttributes& header, const LogRecord& record) {
    std::string s;
    _log::FormatRecordText(header, record, &s);
    return s;
}

// Every value kind with both printed forms; then all of them through the real writer, where
// reading the file back gives the fields that were logged.
TEST(LogRecord, ValueKindsPrintAndReadBack) {
    struct Case {
        LogValue value;
        uint32_t nKind;
        std::string strStructured, strPlain;
        bool bQuoted;  // read back as the plain form in quotes, else as the structured form
    };
    const bool bLong32 = sizeof(long) == 4;
    char huge[512];  // a huge double is cut to the 64-byte number buffer
    std::snprintf(huge, sizeof huge, "%f", 1e100);
    const std::string text = "tab\there \"q\" back\\ \x01 nl\n" + kGbk;
    const std::string raw = "{\"a\": [1, {}], \"k\": \"\t\"}";
    const std::vector<Case> cases = {
        {LogValue::Empty(), 0, "", "", false},
        {LogValue('a'), 1, "a", "a", false},
        {LogValue(static_cast<unsigned char>('}')), 2, "}", "}", false},
        {LogValue('\0'), 1, "", "", false},
        {LogValue(static_cast<uint16_t>(65535)), 3, "65535", "65535", false},
        {LogValue(static_cast<int16_t>(-5)), 4, "-5", "-5", false},
        {LogValue(UINT32_MAX), 5, "4294967295", "4294967295", false},
        {LogValue(INT32_MIN), 6, "-2147483648", "-2147483648", false},
        {LogValue(-7L), bLong32 ? 8u : 10u, "-7", "-7", false},
        {LogValue(7UL), bLong32 ? 7u : 9u, "7", "7", false},
        {LogValue(UINT64_MAX), 9, "18446744073709551615", "18446744073709551615", false},
        {LogValue(INT64_MIN), 10, "-9223372036854775808", "-9223372036854775808", false},
        {LogValue(1.5f), 11, "1.500000", "1.500000", false},
        {LogValue(1e100), 12, std::string(huge, 63), std::string(huge, 63), false},
        {LogValue(true), 13, "\"true\"", "true", true},
        {LogValue(text), 14, "\"tab\\there \\\"q\\\" back\\\\ \\u0001 nl\\n" + kGbk + "\"", text,
         true},
        {LogValue(static_cast<const char*>(nullptr)), 14, "\"\"", "", true},
        {LogValue::Raw(raw), 15, raw, raw, false},
        {LogValue::Raw("\"x\" y"), 15, "\"x\" y", "\"x\" y", false},
        {LogValue::Source("a.cpp", 12), 16, "", "", false},
        {LogValue::WithKind(99, LogValue(5)), 99, "", "", false},
    };
    LogAttributes context;
    std::vector<std::string> readBack;
    for (const Case& c : cases) {
        std::pair<std::string, std::string> forms;
        c.value.AppendStructured(&forms.first);
        c.value.AppendPlain(&forms.second);
        EXPECT_EQ(c.value.Kind(), c.nKind) << c.strPlain;
        EXPECT_EQ(forms, std::make_pair(c.strStructured, c.strPlain)) << c.nKind;
        const std::string key = "k" + std::to_string(context.size());
        context.emplace_back(key, c.value);
        readBack.push_back(key + "=" + (c.bQuoted ? "\"" + c.strPlain : c.strStructured));
    }
    const LogAttributes top = {{"cate", LogValue("combat")},
                               {"line", LogValue(uint32_t{120})},
                               {"k\"\t", LogValue::Empty()}};
    pind::test::TempDir dir;
    pind::test::ScopedCurrentDir cwd(dir.Path());
    pind::test::FakeClock clock;  // 2024-05-07 01:03:12 UTC
    pind::test::ScopedTz tz("UTC0");
    _log::GetLoggerFactory()->SetLogFolder("debug");
    _log::LoggerConfig config;
    config.nMinLevel = _log::LOG_TRACE;
    config.strSource = "gate";
    _log::CLoggerWriterDirctToFile writer(config);
    const std::string msg = "msg \"" + kGbk + "\"\r\\";
    writer.Write(_log::LOG_WARN, LogRecord(0, msg, context, top), true, false);
    writer.Write(_log::LOG_TRACE, LogRecord(0, "bare", {}, {}), true, false);

    std::ifstream file(writer.LastPath());
    std::vector<std::string> lines;
    for (std::string row; std::getline(file, row);) lines.push_back(row);
    ASSERT_EQ(lines.size(), 2u);
    _log::LogLine line;
    ASSERT_TRUE(_log::ParseLogLine(lines[0], &line)) << lines[0];
    EXPECT_EQ(line.strLineTime, "2024-05-07 01:03:12");
    EXPECT_EQ(line.strMsg, msg);
    EXPECT_EQ(Flat(line.vecHeader),
              (std::vector<std::string>{"logtime=\"2024-5-7 1:3:12 +0000", "ts=1715043792000",
                                        "level=\"WARN", "src=\"gate"}));
    EXPECT_EQ(Flat(line.vecContext), readBack);
    EXPECT_EQ(Flat(line.vecTop), (std::vector<std::string>{"cate=\"combat", "line=120", "k\"\t="}));
    ASSERT_TRUE(_log::ParseLogLine(lines[1], &line));
    EXPECT_EQ(line.strMsg, "bare");
    EXPECT_TRUE(line.vecTop.empty() && line.vecContext.empty());
    EXPECT_EQ(_log::LogLine::Find(line.vecHeader, "level")->strValue, "TRACE");
}

// A value of an unknown kind loses its number when copied; relabelling the copy shows zero. A
// source keeps both its text and its line through assignment.
TEST(LogValue, CopyCarriesOnlyThePayloadItsKindNames) {
    const LogValue unknown = LogValue::WithKind(99, LogValue(5));
    const LogValue copy = unknown;  // NOLINT(performance-unnecessary-copy-initialization)
    std::string relabelled;
    LogValue::WithKind(6, copy).AppendStructured(&relabelled);
    EXPECT_EQ(relabelled, "0");
    LogValue target(std::string("old text"));
    target = LogValue::Source("b.cpp", 77);
    EXPECT_EQ(target.Text() + ":" + std::to_string(target.Number32()), "b.cpp:77");
}

TEST(LogEscape, EscapesEachByteByTheTable) {
    const std::pair<std::string, std::string> cases[] = {
        {"\t\"\x01\b\n\f\r", "\\t\\\"\\u0001\\b\\n\\f\\r"},
        {"a\\b\x1f\x7f", "a\\\\b\\u001f\x7f"},
        {std::string("a\0b", 3), "a\\u0000b"},
        {kGbk + " ok", kGbk + " ok"}};  // GBK passes unchanged
    for (const auto& [in, want] : cases) {
        std::string out;
        _log::AppendEscaped(&out, in.data(), in.size());
        EXPECT_EQ(out, want) << in;
    }
}

TEST(LogRecordText, ShapesFollowWhichListsAreEmpty) {
    const std::string msg = "a\"b";
    EXPECT_EQ(Text({}, LogRecord(0, msg, {}, {})), "{ \"msg\": \"a\\\"b\"}");
    EXPECT_EQ(Text({}, LogRecord(0, msg, {{"ok", LogValue(true)}, {"k\n", LogValue(-5)}}, {})),
              "{ \"msg\": \"a\\\"b\", \"attr\": { \"c\": {\"ok\": \"true\", \"k\\n\": -5} } }");
    EXPECT_EQ(Text({{"logtime", LogValue("t")}, {"ts", LogValue(1000LL)}},
                   LogRecord(0, msg, {{"e", LogValue::Empty()}}, {{"cate", LogValue("x")}})),
              "{ \"logtime\": \"t\", \"ts\": 1000, \"msg\": \"a\\\"b\", \"cate\": \"x\", "
              "\"attr\": { \"c\": {\"e\": } } }");
    // The plain form is empty whenever there is a header.
    const LogRecord plain(1, msg, {{"a", LogValue(1)}, {"t", LogValue("x y")}},
                          {{"cate", LogValue("net")}, {"ok", LogValue(true)}});
    EXPECT_EQ(Text({}, plain), "a\"b a=1 t=x y cate=net ok=true");
    EXPECT_EQ(Text({{"level", LogValue("INFO")}}, plain), "");
}

TEST(LogTime, LogTimeIsUtcWallClockWithTheZoneText) {
    const std::tuple<long, long, const char*> zones[] = {{-45900, 0, "+1245"},
                                                         {-3600, -3600, "+0200"}};
    for (const auto& [nTimezone, nDstBias, want] : zones) {
        EXPECT_EQ(_log::ZoneText(nTimezone, nDstBias), want) << nTimezone << " " << nDstBias;
    }
    const int64_t may = 1715043792;  // 2024-05-07 01:03:12 UTC
    const int64_t jan = 1705320000;  // 2024-01-15 12:00:00 UTC
    const std::tuple<const char*, int64_t, const char*, const char*> cases[] = {
        {"CST-8", may, "2024-5-7 1:3:12 +0800", "2024-05-07 09:03:12"},
        {"NST+3:30", may, "2024-5-7 1:3:12 -0330", "2024-05-06 21:33:12"},
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

// Lines that are not records keep their text and line time; a record text without a line time
// (what the callback gets) still reads.
TEST(LogLineParser, NotRecords) {
    const std::string time = "2024-05-07 01:03:12";
    const std::string good =
        time + " { \"ts\": 1, \"msg\": \"m\", \"attr\": { \"c\": {\"a\": 1} } } ";
    const std::vector<std::tuple<std::string, bool, std::string>> cases = {
        {good, true, time},
        {good + "\r", true, time},
        {good.substr(20), true, ""},
        {good.substr(0, good.size() - 9), false, time},  // cut short
        {time + " { \"ts\": 1} ", false, time},          // no message
        {time + " { \"msg\": \"\\x\"} ", false, time},
        {"edited by hand", false, ""},
        {"", false, ""},
        {"2024-05-07 01:03 {}", false, ""},
    };
    for (const auto& [text, bRecord, lineTime] : cases) {
        _log::LogLine line;
        EXPECT_EQ(_log::ParseLogLine(text, &line), bRecord) << text;
        EXPECT_EQ(line.strLineTime, lineTime) << text;
        EXPECT_EQ(line.strLine,
                  text.empty() || text.back() != '\r' ? text : text.substr(0, text.size() - 1));
    }
    // A long line of separators that no reading fits ends in bounded time.
    std::string hostile = "{ \"msg\": \"m\"";
    for (int i = 0; i < 20000; ++i) hostile += ", \"k\": {";
    hostile += "}";
    _log::LogLine line;
    EXPECT_FALSE(_log::ParseRecordText(hostile.data(), hostile.size(), &line));
}

TEST(GbkToUtf8, ConvertsUpToTheFirstBadByte) {
    const std::tuple<std::string, size_t, std::string> cases[] = {
        {kGbk + "!", 5, "\xe7\x99\xbb\xe5\xbd\x95!"},
        {"a\xb5", 1, "a"},  // a cut character
        {"a\xff\xffz", 1, "a"},
    };
    for (const auto& [gbk, used, utf8] : cases) {
        std::string out;
        EXPECT_EQ(pind::platform::GbkToUtf8(gbk.data(), gbk.size(), &out), used) << gbk;
        EXPECT_EQ(out, utf8) << gbk;
    }
}

}  // namespace

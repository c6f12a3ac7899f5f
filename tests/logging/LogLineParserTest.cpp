#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogTestSupport.h"
#include "pind/logging/LogLineParser.h"
#include "pind/logging/LoggerWriter.h"
#include "pind/platform/Terminal.h"

namespace {

using _log::LogValue;
using pind::test::ReadLines;

struct Expect {
    const char* key;
    LogValue value;
    bool bQuoted;
    std::string text;  // what reading the line back gives
};

// Fields as "key=value" with a leading '"' on quoted values, so whole lists compare at once.
std::vector<std::string> Flat(const _log::LogLineFields& fields) {
    std::vector<std::string> out;
    for (const auto& f : fields)
        out.push_back(f.strKey + "=" + (f.bQuoted ? "\"" : "") + f.strValue);
    return out;
}

std::vector<std::string> Flat(const std::vector<Expect>& fields) {
    std::vector<std::string> out;
    for (const Expect& e : fields)
        out.push_back(std::string(e.key) + "=" + (e.bQuoted ? "\"" : "") + e.text);
    return out;
}

class LogLineParserTest : public pind::test::LogTest {};

// Every value kind, escapes, GBK bytes and both attribute lists go through the real writer, and
// reading the file back gives the fields that were logged.
TEST_F(LogLineParserTest, WriterLinesReadBack) {
    const std::string gbk = "\xb5\xc7\xc2\xbc";  // 登录
    const std::vector<Expect> context = {
        {"empty", LogValue::Empty(), false, ""},
        {"ch", LogValue('x'), false, "x"},
        {"uch", LogValue::WithKind(2, LogValue('}')), false, "}"},
        {"u16", LogValue(uint16_t{65535}), false, "65535"},
        {"i16", LogValue(int16_t{-5}), false, "-5"},
        {"u32", LogValue(uint32_t{4294967295u}), false, "4294967295"},
        {"i32", LogValue(int32_t{-2147483647 - 1}), false, "-2147483648"},
        {"ulong", LogValue::WithKind(7, LogValue(uint32_t{7})), false, "7"},
        {"long", LogValue::WithKind(8, LogValue(int32_t{-8})), false, "-8"},
        {"u64", LogValue(18446744073709551615ull), false, "18446744073709551615"},
        {"i64", LogValue(-9223372036854775807ll - 1), false, "-9223372036854775808"},
        {"f", LogValue(1.5f), false, "1.500000"},
        {"d", LogValue(-2.25), false, "-2.250000"},
        {"ok", LogValue(true), true, "true"},
        {"no", LogValue(false), true, "false"},
        {"text", LogValue("tab\there \"q\" back\\ \x01 nl\n" + gbk), true,
         "tab\there \"q\" back\\ \x01 nl\n" + gbk},
        {"empty text", LogValue(""), true, ""},
        {"raw", LogValue::Raw("{\"a\": [1, 2], \"b\": {}}"), false, "{\"a\": [1, 2], \"b\": {}}"},
        {"raw quote", LogValue::Raw("\"x\" y"), false, "\"x\" y"},
        {"src", LogValue::Source("A.cpp", 9), false, ""},
        {"k\"\t", LogValue(1), false, "1"},
    };
    const std::vector<Expect> top = {
        {"cate", LogValue("combat"), true, "combat"},
        {"file", LogValue("Frame.cpp"), true, "Frame.cpp"},
        {"line", LogValue(uint32_t{120}), false, "120"},
        {"tail", LogValue::Empty(), false, ""},
    };
    _log::LoggerConfig config;
    config.nMinLevel = _log::LOG_TRACE;
    config.strSource = "gate";
    _log::CLoggerWriterDirctToFile writer(config);
    auto attrs = [](const std::vector<Expect>& list) {
        _log::LogAttributes out;
        for (const Expect& e : list) out.emplace_back(e.key, e.value);
        return out;
    };
    const std::string msg = "msg \"" + gbk + "\"\r\\";
    writer.Write(_log::LOG_WARN, _log::LogRecord(0, msg, attrs(context), attrs(top)), true, false);
    writer.Write(_log::LOG_TRACE, _log::LogRecord(0, "bare", {}, {}), true, false);
    writer.Write(_log::LOG_INFO, _log::LogRecord(0, "ctx only", attrs({context[1]}), {}), true,
                 false);

    const auto lines = ReadLines(writer.LastPath());
    ASSERT_EQ(lines.size(), 3u);
    _log::LogLine line;
    ASSERT_TRUE(_log::ParseLogLine(lines[0], &line)) << lines[0];
    EXPECT_EQ(line.strLineTime, "2024-05-07 01:03:12");
    EXPECT_EQ(line.strMsg, msg);
    EXPECT_EQ(Flat(line.vecHeader),
              (std::vector<std::string>{"logtime=\"2024-5-7 1:3:12 +0000", "ts=1715043792000",
                                        "level=\"WARN", "src=\"gate"}));
    EXPECT_EQ(Flat(line.vecContext), Flat(context));
    EXPECT_EQ(Flat(line.vecTop), Flat(top));
    ASSERT_TRUE(_log::ParseLogLine(lines[1], &line));
    EXPECT_EQ(line.strMsg, "bare");
    EXPECT_TRUE(line.vecTop.empty() && line.vecContext.empty());
    ASSERT_TRUE(_log::ParseLogLine(lines[2], &line));
    ASSERT_EQ(line.vecContext.size(), 1u);
    EXPECT_EQ(line.vecContext[0].strValue, "x");
    EXPECT_EQ(_log::LogLine::Find(line.vecHeader, "level")->strValue, "INFO");
}

// Lines that are not records keep their text and line time; a record text without a line time
// (what the callback gets) still reads.
TEST(LogLineParser, NotRecords) {
    const std::string good =
        "2024-05-07 01:03:12 { \"ts\": 1, \"msg\": \"m\", \"attr\": { \"c\": {\"a\": 1} } } ";
    struct Case {
        std::string line;
        bool bRecord;
        const char* lineTime;
    };
    const std::vector<Case> cases = {
        {good, true, "2024-05-07 01:03:12"},
        {good + "\r", true, "2024-05-07 01:03:12"},
        {good.substr(20), true, ""},
        {good.substr(0, good.size() - 9), false, "2024-05-07 01:03:12"},  // cut short
        {"2024-05-07 01:03:12 { \"ts\": 1, \"msg\": \"m\"", false, "2024-05-07 01:03:12"},
        {"2024-05-07 01:03:12 { \"ts\": 1} ", false, "2024-05-07 01:03:12"},  // no message
        {"2024-05-07 01:03:12 { \"msg\": 5} ", false, "2024-05-07 01:03:12"},
        {"2024-05-07 01:03:12 { \"msg\": \"\\x\"} ", false, "2024-05-07 01:03:12"},
        {"edited by hand", false, ""},
        {"", false, ""},
        {"2024-05-07 01:03 {}", false, ""},
    };
    for (const Case& c : cases) {
        _log::LogLine line;
        EXPECT_EQ(_log::ParseLogLine(c.line, &line), c.bRecord) << c.line;
        EXPECT_EQ(line.strLineTime, c.lineTime) << c.line;
        EXPECT_EQ(line.strLine, c.line.empty() || c.line.back() != '\r'
                                    ? c.line
                                    : c.line.substr(0, c.line.size() - 1));
    }
}

// A long line of separators that no reading fits ends in bounded time.
TEST(LogLineParser, HostileLineIsRejectedQuickly) {
    std::string text = "{ \"msg\": \"m\"";
    for (int i = 0; i < 20000; ++i) text += ", \"k\": {";
    text += "}";
    _log::LogLine line;
    EXPECT_FALSE(_log::ParseRecordText(text.data(), text.size(), &line));
}

TEST(GbkToUtf8, ConvertsUpToTheFirstBadByte) {
    struct Case {
        std::string gbk;
        size_t used;
        std::string utf8;
    };
    const std::vector<Case> cases = {
        {"ab", 2, "ab"},        {"\xb5\xc7\xc2\xbc!", 5, "\xe7\x99\xbb\xe5\xbd\x95!"},  // 登录!
        {"a\xb5", 1, "a"},  // a cut character
        {"a\xff\xffz", 1, "a"}, {"", 0, ""},
    };
    for (const Case& c : cases) {
        std::string out;
        EXPECT_EQ(pind::platform::GbkToUtf8(c.gbk.data(), c.gbk.size(), &out), c.used) << c.gbk;
        EXPECT_EQ(out, c.utf8) << c.gbk;
    }
}

}  // namespace

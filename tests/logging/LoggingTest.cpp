// Logging: values, escapes, record texts and times as the writer prints them and those lines read
// back; loggers and their writer: levels, destinations, attribute sorting, categories, day files,
// repeated texts and concurrent writers.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <regex>
#include <set>
#include <string>
#include <thread>
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

const char kDayFile[] = "./debug/2024_5_7_x64.log";

// Every line of a file, without its "\n"; empty when the file cannot be read. Read in text mode,
// as the writer writes: on Windows its CR LF line ends come back as "\n".
std::vector<std::string> ReadLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// Runs each test in its own current folder, on a fake clock, in a fixed zone, with the
// written-text memory cleared, and records what reaches the callback.
class LoggerTest : public ::testing::Test, public _log::ILogCallback {
protected:
    LoggerTest() : m_cwd(m_dir.Path()), m_tz("UTC0") {
        _log::GetLoggerFactory()->SetLogFolder("debug");
        _log::GetLoggerFactory()->SetCallback(this);
        pind::detail::ClearWrittenTexts();
    }
    ~LoggerTest() override { _log::GetLoggerFactory()->SetCallback(nullptr); }

    void OnLog(uint32_t nLevel, const char* pszText) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.emplace_back(nLevel, pszText);
    }
    std::vector<std::pair<uint32_t, std::string>> Entries() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_entries;
    }
    size_t Calls() { return Entries().size(); }

    /// A logger of the global factory under a name no other test uses.
    _log::ILogger* NewLogger(const std::string& strName, uint32_t nMinLevel = _log::LOG_INFO,
                             LogAttributes fixed = {}) {
        _log::LoggerConfig config;
        config.strName = strName;
        config.nMinLevel = nMinLevel;
        config.vecFixedAttrs = std::move(fixed);
        return _log::GetLoggerFactory()->GetLogger(config);
    }
    void Write(_log::CLoggerWriterDirctToFile& writer, int32_t nLevel, const std::string& msg,
               bool bToFile = true, bool bToCallback = true) {
        writer.Write(nLevel, _log::LogRecord(writer.Config().nRecordKind, msg, {}, {}), bToFile,
                     bToCallback);
    }

    pind::test::TempDir m_dir;
    pind::test::ScopedCurrentDir m_cwd;
    pind::test::FakeClock m_clock;  // 2024-05-07 01:03:12 UTC
    pind::test::ScopedTz m_tz;
    _log::LoggerConfig m_config;
    std::mutex m_mutex;
    std::vector<std::pair<uint32_t, std::string>> m_entries;
};

TEST_F(LoggerTest, DefaultLoggerWritesTheExampleLine) {
    pind::test::ScopedTz tz("CST-8");
    _log::GetLoggerFactory()->GetDefaultLogger()->Log(_log::LOG_INFO, "login ok",
                                                      {{"uid", LogValue(42)}});
    const std::string want =
        "{ \"logtime\": \"2024-5-7 1:3:12 +0800\", \"ts\": 1715043792000, \"level\": \"INFO\", "
        "\"src\": \"\", \"msg\": \"login ok\", \"cate\": \"DEFAULT\", \"attr\": { \"c\": {\"uid\": "
        "42} } }";
    EXPECT_EQ(Entries(), (std::vector<std::pair<uint32_t, std::string>>{{2u, want}}));
    EXPECT_EQ(ReadLines(kDayFile), std::vector<std::string>{"2024-05-07 09:03:12 " + want + " "});
}

TEST_F(LoggerTest, SameNameGivesTheSameLoggerAndSetLevelChangesNothing) {
    _log::ILogger* logger = NewLogger("level-3", _log::LOG_WARN);
    EXPECT_EQ(NewLogger("level-3", _log::LOG_TRACE), logger);  // the second config is ignored
    logger->Log(_log::LOG_INFO, "info dropped");
    logger->Log(_log::LOG_WARN, "warn kept");
    logger->SetLevel(_log::LOG_TRACE);
    logger->Log(_log::LOG_INFO, "still dropped");
    ASSERT_EQ(Calls(), 1u);
    EXPECT_EQ(Entries()[0].first, 3u);
    EXPECT_EQ(ReadLines(kDayFile).size(), 1u);
}

TEST_F(LoggerTest, OutAndCbKeysChooseTheDestinations) {
    const std::tuple<const char*, LogAttributes, bool, bool> cases[] = {
        {"both", {}, true, true},
        {"callback only", {{"__out__", LogValue(true)}}, true, false},
        {"file only", {{"__cb__", LogValue::Empty()}}, false, true},
        {"neither", {{"__cb__", LogValue(1)}, {"__out__", LogValue(1)}}, false, false},
        {"keys match exactly", {{"__out", LogValue(1)}, {"__cb__x", LogValue(1)}}, true, true}};
    _log::ILogger* logger = NewLogger("switches");
    for (const auto& [msg, attrs, bCallback, bFile] : cases) {
        const size_t before = Calls();
        logger->Log(_log::LOG_INFO, msg, attrs);
        const auto lines = ReadLines(kDayFile);
        EXPECT_EQ(Calls() - before, bCallback ? 1u : 0u) << msg;
        EXPECT_EQ(!lines.empty() && lines.back().find(msg) != std::string::npos, bFile) << msg;
    }
}

TEST_F(LoggerTest, AttributesAreSortedIntoTopLevelAndContext) {
    _log::ILogger* logger =
        NewLogger("sorting", _log::LOG_INFO, {{"zone", LogValue(3)}, {"", LogValue(9)}});
    logger->Log(_log::LOG_INFO, "m",
                {{"cate", LogValue("net")},
                 {"_", LogValue::Source("a.cpp", 12)},
                 {"", LogValue(1)},
                 {"_", LogValue(5)},
                 {"k", LogValue("v")}});
    logger->Log(_log::LOG_INFO, "n", {{"cate", LogValue(7)}});
    logger->SetAttribute({"zone", LogValue(4)});
    logger->SetAttribute({"shard", LogValue("s1")});
    logger->Log(_log::LOG_INFO, "o");
    std::vector<std::string> tails;
    for (const auto& e : Entries()) {
        tails.push_back(e.second.substr(e.second.find("\"msg\"")));
    }
    EXPECT_EQ(tails, (std::vector<std::string>{
                         "\"msg\": \"m\", \"cate\": \"net\", \"file\": \"a.cpp\", \"line\": 12, "
                         "\"attr\": { \"c\": {\"k\": \"v\", \"zone\": 3} } }",
                         "\"msg\": \"n\", \"cate\": \"7\", \"attr\": { \"c\": {\"zone\": 3} } }",
                         "\"msg\": \"o\", \"cate\": \"sorting\", \"attr\": { \"c\": {\"zone\": 4, "
                         "\"shard\": \"s1\"} } }"}));
}

TEST_F(LoggerTest, CategoriesGateRecordsThatNameThem) {
    _log::ILoggerFactory* factory = _log::GetLoggerFactory();
    factory->AddCategoryName("gate-named", "gate-name-a");
    factory->AddCategoryName("categories", "never-enabled");
    _log::ILogger* logger = NewLogger("categories");
    logger->Log(_log::LOG_INFO, "dropped", {{"cate", LogValue("gate-named")}});
    factory->EnableName("gate-name-a");
    logger->Log(_log::LOG_INFO, "kept", {{"cate", LogValue("gate-named")}});
    // The logger's own name is the category only for printing, never for the check.
    logger->Log(_log::LOG_INFO, "implicit");
    EXPECT_EQ(Calls(), 2u);
}

TEST(LoggerFactoryCategories, EnabledRules) {
    // Tags of category "c" (names, ids), the enabled names and ids, and whether "c" is enabled.
    using Names = std::vector<std::string>;
    using Ids = std::vector<uint32_t>;
    const std::tuple<Names, Ids, Names, Ids, bool> cases[] = {
        {{"n"}, {}, {}, {}, false},    {{"n", "o"}, {}, {"a", "o"}, {}, true},
        {{}, {5}, {}, {5}, true},      {{}, {5}, {"5"}, {}, false},  // ids are not names
        {{"N"}, {}, {"n"}, {}, false},                               // names compare bytewise
    };
    for (const auto& [names, ids, activeNames, activeIds, bWant] : cases) {
        _log::CLoggerFactory factory;
        for (const std::string& n : names) factory.AddCategoryName("c", n);
        for (uint32_t id : ids) factory.AddCategoryId("c", id);
        for (const std::string& n : activeNames) factory.EnableName(n);
        for (uint32_t id : activeIds) factory.EnableId(id);
        EXPECT_EQ(factory.IsCategoryEnabled("c"), bWant) << names.size() << ids.size();
        EXPECT_TRUE(factory.IsCategoryEnabled("other"));
    }
}

TEST_F(LoggerTest, SameTextIsWrittenOncePerSecond) {
    _log::CLoggerWriterDirctToFile writer(m_config);
    for (int64_t stepMs : {0, 0, 999, 1}) {  // the last step reaches 01:03:13
        m_clock.AdvanceMs(stepMs);
        Write(writer, _log::LOG_INFO, "again");
    }
    EXPECT_EQ(Calls(), 4u);
    const auto lines = ReadLines(kDayFile);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1].substr(0, 20), "2024-05-07 01:03:13 ");
    EXPECT_NE(lines[1].find("\"ts\": 1715043793000,"), std::string::npos);
}

TEST_F(LoggerTest, LevelFilterAndDestinations) {
    m_config.nMinLevel = _log::LOG_WARN;
    _log::CLoggerWriterDirctToFile writer(m_config);
    Write(writer, _log::LOG_INFO, "below");
    Write(writer, -1, "negative");
    Write(writer, _log::LOG_ERROR, "callback only", /*bToFile=*/false, /*bToCallback=*/true);
    EXPECT_FALSE(std::filesystem::exists("debug"));
    Write(writer, _log::LOG_FATAL, "file only", /*bToFile=*/true, /*bToCallback=*/false);
    ASSERT_EQ(Calls(), 1u);
    EXPECT_EQ(Entries()[0].first, 4u);
    ASSERT_EQ(ReadLines(kDayFile).size(), 1u);
    EXPECT_NE(ReadLines(kDayFile)[0].find("\"level\": \"FATAL\""), std::string::npos);
}

TEST_F(LoggerTest, NewLocalDateStartsANewFile) {
    const std::tuple<const char*, int64_t, const char*, const char*> cases[] = {
        // 2024-05-07 15:59:59 UTC is 23:59:59 in UTC+8.
        {"CST-8", 1715097599000, "./debug/2024_5_7_x64.log", "./debug/2024_5_8_x64.log"},
        {"UTC0", 1735689599000, "./debug/2024_12_31_x64.log", "./debug/2025_1_1_x64.log"}};
    _log::CLoggerWriterDirctToFile writer(m_config);
    for (const auto& [tz, nStartMs, first, second] : cases) {
        pind::test::ScopedTz scoped(tz);
        m_clock.SetUnixTimeMs(nStartMs);
        Write(writer, _log::LOG_INFO, tz);
        EXPECT_EQ(writer.LastPath(), first);
        m_clock.AdvanceMs(1000);
        Write(writer, _log::LOG_INFO, tz);  // the same text, but in another file
        EXPECT_EQ(writer.LastPath(), second);
        EXPECT_EQ(ReadLines(second).size(), 1u) << tz;
    }
}

TEST_F(LoggerTest, FileLineIsTheCallbackTextWhateverItsLength) {
    _log::CLoggerWriterDirctToFile writer(m_config);
    const std::string longMsg(10000, 'x');  // longer than any stdio buffer
    writer.Write(_log::LOG_INFO, _log::LogRecord(0, longMsg, {}, {}), true, true);
    // A raw value may hold a zero byte: the text ends there, in the file as in the callback.
    writer.Write(_log::LOG_INFO,
                 _log::LogRecord(0, "cut", {{"r", LogValue::Raw(std::string("a\0b", 3))}}, {}),
                 true, true);
    const auto entries = Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[1].second.substr(entries[1].second.size() - 6), "\"r\": a");
    EXPECT_EQ(ReadLines(kDayFile),
              (std::vector<std::string>{"2024-05-07 01:03:12 " + entries[0].second + " ",
                                        "2024-05-07 01:03:12 " + entries[1].second + " "}));
}

TEST_F(LoggerTest, UnwritableFolderStillCallsBackAndTheNextGoodFolderWorks) {
    m_dir.Write("blocked", "a file where a folder should be");
    std::filesystem::create_directories("taken/2024_5_7_x64.log");  // a folder with the file's name
    _log::CLoggerWriterDirctToFile writer(m_config);
    _log::GetLoggerFactory()->SetLogFolder("");  // an empty name leaves the folder in force
    _log::GetLoggerFactory()->SetLogFolder(nullptr);
    EXPECT_EQ(pind::detail::GetLogFolderName(), "debug");
    size_t serial = 0;
    for (const char* folder : {"missing/sub", "blocked", "taken"}) {
        _log::GetLoggerFactory()->SetLogFolder(folder);
        Write(writer, _log::LOG_INFO, "lost " + std::to_string(serial++));
        EXPECT_EQ(Calls(), serial) << folder;
    }
    EXPECT_FALSE(std::filesystem::exists("missing"));
    _log::GetLoggerFactory()->SetLogFolder("good");
    Write(writer, _log::LOG_INFO, "kept");
    EXPECT_EQ(ReadLines("./good/2024_5_7_x64.log").size(), 1u);
    // A text that could not be written was not remembered as written.
    _log::GetLoggerFactory()->SetLogFolder("debug");
    Write(writer, _log::LOG_INFO, "lost 0");
    EXPECT_EQ(ReadLines(kDayFile).size(), 1u);
}

// Two loggers of each of four threads write distinct records into one daily file at once.
TEST_F(LoggerTest, ConcurrentLoggersKeepEveryLineWhole) {
    constexpr int kThreads = 4, kLoggers = 2, kRecords = 2000;
    _log::ILogger* loggers[kLoggers] = {NewLogger("concurrent-a"), NewLogger("concurrent-b")};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&loggers, t] {
            for (int i = 0; i < kRecords; ++i) {
                for (_log::ILogger* logger : loggers) {
                    logger->Log(_log::LOG_INFO, "t" + std::to_string(t) + " n" + std::to_string(i),
                                {{"seq", LogValue(i)}});
                }
            }
        });
    }
    for (std::thread& th : threads) th.join();
    const std::regex lineShape(
        "2024-05-07 01:03:12 \\{ \"logtime\": \"2024-5-7 1:3:12 \\+0000\", \"ts\": 1715043792000, "
        "\"level\": \"INFO\", \"src\": \"\", \"msg\": \"(t[0-9] n[0-9]+)\", \"cate\": "
        "\"(concurrent-[ab])\", \"attr\": \\{ \"c\": \\{\"seq\": [0-9]+\\} \\} \\} ");
    std::set<std::string> seen;
    const auto lines = ReadLines(kDayFile);
    for (const std::string& line : lines) {
        std::smatch m;
        ASSERT_TRUE(std::regex_match(line, m, lineShape)) << line;
        EXPECT_TRUE(seen.insert(m[1].str() + " " + m[2].str()).second) << line;
    }
    const size_t total = kThreads * kLoggers * kRecords;
    EXPECT_EQ(seen.size(), total);  // every line matched and none twice, so none is missing
    EXPECT_EQ(Calls(), total);
}

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
TEST_F(LoggerTest, ValueKindsPrintAndReadBack) {
    struct Case {
        LogValue value;
        uint32_t nKind;
        std::string strStructured, strPlain;
    };
    const bool bLong32 = sizeof(long) == 4;
    char huge[512];  // a huge double is cut to the 64-byte number buffer
    std::snprintf(huge, sizeof huge, "%f", 1e100);
    const std::string text = "tab\there \"q\" back\\ \x01 nl\n" + kGbk;
    const std::string raw = "{\"a\": [1, {}], \"k\": \"\t\"}";
    const std::vector<Case> cases = {
        {LogValue::Empty(), 0, "", ""},
        {LogValue('a'), 1, "a", "a"},
        {LogValue(static_cast<unsigned char>('}')), 2, "}", "}"},
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
        {LogValue(text), 14, "\"tab\\there \\\"q\\\" back\\\\ \\u0001 nl\\n" + kGbk + "\"", text},
        {LogValue(static_cast<const char*>(nullptr)), 14, "\"\"", ""},
        {LogValue::Raw(raw), 15, raw, raw},
        {LogValue::Raw("\"x\" y"), 15, "\"x\" y", "\"x\" y"},
        {LogValue::Source("a.cpp", 12), 16, "", ""},
        {LogValue::WithKind(99, LogValue(5)), 99, "", ""},
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
        // Booleans and texts read back as the plain form in quotes, the rest as printed.
        const bool bQuoted = c.nKind == 13 || c.nKind == 14;
        readBack.push_back(key + "=" + (bQuoted ? "\"" + c.strPlain : c.strStructured));
    }
    const LogAttributes top = {{"cate", LogValue("combat")},
                               {"line", LogValue(uint32_t{120})},
                               {"k\"\t", LogValue::Empty()}};
    m_config.nMinLevel = _log::LOG_TRACE;
    m_config.strSource = "gate";
    _log::CLoggerWriterDirctToFile writer(m_config);
    const std::string msg = "msg \"" + kGbk + "\"\r\\";
    writer.Write(_log::LOG_WARN, LogRecord(0, msg, context, top), true, false);

    const auto lines = ReadLines(writer.LastPath());
    ASSERT_EQ(lines.size(), 1u);
    _log::LogLine line;
    ASSERT_TRUE(_log::ParseLogLine(lines[0], &line)) << lines[0];
    EXPECT_EQ(line.strLineTime, "2024-05-07 01:03:12");
    EXPECT_EQ(line.strMsg, msg);
    EXPECT_EQ(Flat(line.vecHeader),
              (std::vector<std::string>{"logtime=\"2024-5-7 1:3:12 +0000", "ts=1715043792000",
                                        "level=\"WARN", "src=\"gate"}));
    EXPECT_EQ(Flat(line.vecContext), readBack);
    EXPECT_EQ(Flat(line.vecTop), (std::vector<std::string>{"cate=\"combat", "line=120", "k\"\t="}));
}

TEST(LogEscape, EscapesEachByteByTheTable) {
    const std::pair<std::string, std::string> cases[] = {
        {"\t\"\x01\b\n\f\r\\\x1f\x7f", "\\t\\\"\\u0001\\b\\n\\f\\r\\\\\\u001f\x7f"},
        {std::string("a\0b", 3), "a\\u0000b"}};
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
    const int64_t may = 1715043792;  // 2024-05-07 01:03:12 UTC
    const int64_t jan = 1705320000;  // 2024-01-15 12:00:00 UTC
    const std::tuple<const char*, int64_t, const char*, const char*> cases[] = {
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

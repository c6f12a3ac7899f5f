// Loggers and their writer: levels, destinations, attribute sorting, categories, day files,
// repeated texts and concurrent writers.
#include <gtest/gtest.h>

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

#include "pind/logging/Logger.h"
#include "pind/logging/LoggerWriter.h"
#include "support/FakeClock.h"
#include "support/TempDir.h"

namespace {

using _log::LogAttributes;
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
    const auto entries = Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].first, 3u);
    EXPECT_NE(entries[0].second.find("\"msg\": \"warn kept\""), std::string::npos);
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
        {{}, {}, {}, {}, true},
        {{"n"}, {}, {}, {}, false},
        {{"n", "o"}, {}, {"a", "o"}, {}, true},
        {{}, {5}, {}, {5}, true},
        {{}, {5}, {"5"}, {}, false},    // ids are not names
        {{"N"}, {}, {"n"}, {}, false},  // names compare bytewise
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

TEST(LoggerConfig, ModuleNameCut) {
    const std::pair<const char*, const char*> cases[] = {{"D:\\x.y\\a.b.c", "a.b"},
                                                         {"dir.v2/prog", "prog"},
                                                         {"C:\\mixed/dir\\tool.exe", "tool"},
                                                         {"", ""}};
    for (const auto& [path, want] : cases) {
        EXPECT_EQ(pind::detail::ModuleNameFromPath(path), want) << path;
    }
    EXPECT_EQ(_log::LoggerConfig().strModule, "pind_logging_tests");
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

TEST_F(LoggerTest, PlainRecordsAreEmptyTextsWrittenOnce) {
    m_config.nRecordKind = 1;
    m_config.strFileSuffix = ".txt";
    _log::CLoggerWriterDirctToFile writer(m_config);
    Write(writer, _log::LOG_INFO, "first");
    m_clock.AdvanceMs(5000);
    Write(writer, _log::LOG_INFO, "second");
    EXPECT_EQ(Entries(), (std::vector<std::pair<uint32_t, std::string>>{{2, ""}, {2, ""}}));
    EXPECT_EQ(ReadLines("./debug/2024_5_7.txt"), std::vector<std::string>{"2024-05-07 01:03:12  "});
}

TEST_F(LoggerTest, FileLineIsTheCallbackTextWhateverItsLength) {
    _log::CLoggerWriterDirctToFile writer(m_config);
    const std::string longMsg(10000, 'x');  // longer than any stdio buffer
    const std::string msg = "cut";
    writer.Write(_log::LOG_INFO, _log::LogRecord(0, longMsg, {}, {}), true, true);
    // A raw value may hold a zero byte: the text ends there, in the file as in the callback.
    writer.Write(_log::LOG_INFO,
                 _log::LogRecord(0, msg, {{"r", LogValue::Raw(std::string("a\0b", 3))}}, {}), true,
                 true);
    const auto entries = Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[1].second.substr(entries[1].second.size() - 6), "\"r\": a");
    EXPECT_EQ(ReadLines(kDayFile),
              (std::vector<std::string>{"2024-05-07 01:03:12 " + entries[0].second + " ",
                                        "2024-05-07 01:03:12 " + entries[1].second + " "}));
}

TEST_F(LoggerTest, UnwritableFolderStillCallsBackAndTheNextGoodFolderWorks) {
    m_dir.Write("blocked", "a file where a folder should be");
    m_dir.Write("taken/keep", "");
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
    EXPECT_EQ(lines.size(), total);
    EXPECT_EQ(seen.size(), total);
    EXPECT_EQ(Calls(), total);
}

}  // namespace

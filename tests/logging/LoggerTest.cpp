#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "LogTestSupport.h"
#include "pind/logging/Logger.h"

namespace {

using _log::LogAttributes;
using _log::LogValue;
using pind::test::ReadLines;

const char kDayFile[] = "./debug/2024_5_7_x64.log";

class LoggerTest : public pind::test::LogTest {};

TEST_F(LoggerTest, DefaultLoggerWritesTheExampleLine) {
    pind::test::ScopedTz tz("CST-8");
    _log::GetLoggerFactory()->GetDefaultLogger()->Log(_log::LOG_INFO, "login ok",
                                                      {{"uid", LogValue(42)}});
    const std::string want =
        "{ \"logtime\": \"2024-5-7 1:3:12 +0800\", \"ts\": 1715043792000, \"level\": \"INFO\", "
        "\"src\": \"\", \"msg\": \"login ok\", \"cate\": \"DEFAULT\", \"attr\": { \"c\": {\"uid\": "
        "42} } }";
    EXPECT_EQ(m_callback.Entries(), (std::vector<std::pair<uint32_t, std::string>>{{2u, want}}));
    EXPECT_EQ(ReadLines(kDayFile), std::vector<std::string>{"2024-05-07 09:03:12 " + want + " "});
}

TEST_F(LoggerTest, SameNameGivesTheSameLoggerAndSetLevelChangesNothing) {
    _log::ILogger* logger = NewLogger("level-3", _log::LOG_WARN);
    EXPECT_EQ(NewLogger("level-3", _log::LOG_TRACE), logger);  // the second config is ignored
    logger->Log(_log::LOG_INFO, "info dropped");
    logger->Log(_log::LOG_WARN, "warn kept");
    logger->SetLevel(_log::LOG_TRACE);
    logger->Log(_log::LOG_INFO, "still dropped");
    const auto entries = m_callback.Entries();
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
    for (const auto& e : m_callback.Entries()) {
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
    auto logCate = [&](const char* cate) {
        const size_t before = Calls();
        logger->Log(_log::LOG_INFO, cate, {{"cate", LogValue(cate)}});
        return Calls() - before;
    };
    EXPECT_EQ(logCate("gate-named"), 0u);
    factory->EnableName("gate-name-a");
    EXPECT_EQ(logCate("gate-named"), 1u);
    // The logger's own name is the category only for printing, never for the check.
    logger->Log(_log::LOG_INFO, "implicit");
    EXPECT_EQ(Calls(), 2u);
}

TEST(LoggerFactoryCategories, EnabledRules) {
    struct Case {
        std::vector<std::string> names;  // tags of category "c"
        std::vector<uint32_t> ids;
        std::vector<std::string> activeNames;
        std::vector<uint32_t> activeIds;
        bool bWant;
    };
    const Case cases[] = {
        {{}, {}, {}, {}, true},         {{"n"}, {}, {}, {}, false},
        {{"n"}, {}, {"m"}, {1}, false}, {{"n", "o"}, {}, {"a", "o"}, {}, true},
        {{}, {5}, {}, {5}, true},       {{}, {5}, {"5"}, {}, false},  // ids are not names
        {{"n"}, {5}, {}, {5}, true},    {{"n"}, {5}, {"n"}, {}, true},
        {{"N"}, {}, {"n"}, {}, false},  // names compare bytewise
    };
    for (const Case& c : cases) {
        _log::CLoggerFactory factory;
        for (const std::string& n : c.names) factory.AddCategoryName("c", n);
        for (uint32_t id : c.ids) factory.AddCategoryId("c", id);
        for (const std::string& n : c.activeNames) factory.EnableName(n);
        for (uint32_t id : c.activeIds) factory.EnableId(id);
        EXPECT_EQ(factory.IsCategoryEnabled("c"), c.bWant) << &c - cases;
        EXPECT_TRUE(factory.IsCategoryEnabled("other")) << &c - cases;
    }
}

TEST(LoggerFactoryConfig, AttributesReachTheDefaultLogger) {
    _log::CLoggerFactory factory;  // owns only its default logger
    factory.SetAttribute({"a", LogValue(1)});
    auto* logger = dynamic_cast<_log::CLogger*>(factory.GetDefaultLogger());
    ASSERT_NE(logger, nullptr);
    auto fixed = [&] {
        std::string s;
        for (const auto& a : logger->Config().vecFixedAttrs) {
            s += a.strKey + "=";
            a.value.AppendPlain(&s);
            s += ";";
        }
        return s;
    };
    EXPECT_EQ(fixed(), "a=1;");
    factory.SetAttribute({"a", LogValue(2)});
    factory.SetAttribute({"b", LogValue("x")});
    EXPECT_EQ(fixed(), "a=2;b=x;");
    _log::LoggerConfig config;
    config.vecFixedAttrs = {{"b", LogValue("y")}, {"c", LogValue(true)}};
    factory.SetConfig(config);
    EXPECT_EQ(fixed(), "a=2;b=y;c=true;");
}

TEST(LoggerConfig, ModuleNameCut) {
    const std::pair<const char*, const char*> cases[] = {{"C:\\game\\bin\\client.exe", "client"},
                                                         {"/usr/local/bin/pind", "pind"},
                                                         {"D:\\x.y\\a.b.c", "a.b"},
                                                         {"dir.v2/prog", "prog"},
                                                         {"C:\\mixed/dir\\tool.exe", "tool"},
                                                         {"noext", "noext"},
                                                         {"", ""}};
    for (const auto& [path, want] : cases) {
        EXPECT_EQ(pind::detail::ModuleNameFromPath(path), want) << path;
    }
    EXPECT_EQ(_log::LoggerConfig().strModule, "pind_logging_tests");
}

}  // namespace

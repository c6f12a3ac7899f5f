#include <gtest/gtest.h>

#include <string>
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
    ASSERT_EQ(m_callback.Entries().size(), 1u);
    EXPECT_EQ(m_callback.Entries()[0].first, 2u);
    EXPECT_EQ(m_callback.Entries()[0].second, want);
    EXPECT_EQ(ReadLines(kDayFile), std::vector<std::string>{"2024-05-07 09:03:12 " + want + " "});
}

TEST_F(LoggerTest, SameNameGivesTheSameLoggerWhateverTheConfigSays) {
    _log::ILogger* first = NewLogger("same-name", _log::LOG_WARN);
    _log::ILogger* second = NewLogger("same-name", _log::LOG_TRACE);
    EXPECT_EQ(first, second);
    second->Log(_log::LOG_INFO, "dropped");
    EXPECT_TRUE(m_callback.Entries().empty());
}

TEST_F(LoggerTest, SetLevelDoesNotChangeWhatIsWritten) {
    _log::ILogger* logger = NewLogger("level-3", _log::LOG_WARN);
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
    struct Case {
        const char* pszMsg;
        LogAttributes attrs;
        bool bCallback;
        bool bFile;
    };
    const Case cases[] = {
        {"both", {}, true, true},
        {"callback only", {{"__out__", LogValue(true)}}, true, false},
        {"file only", {{"__cb__", LogValue::Empty()}}, false, true},
        {"neither", {{"__cb__", LogValue(1)}, {"__out__", LogValue(1)}}, false, false},
        {"keys match exactly", {{"__out", LogValue(1)}, {"__cb__x", LogValue(1)}}, true, true},
    };
    _log::ILogger* logger = NewLogger("switches");
    for (const Case& c : cases) {
        const size_t before = m_callback.Entries().size();
        logger->Log(_log::LOG_INFO, c.pszMsg, c.attrs);
        const std::string needle = std::string("\"msg\": \"") + c.pszMsg + "\"";
        bool inFile = false;
        for (const std::string& line : ReadLines(kDayFile)) {
            inFile = inFile || line.find(needle) != std::string::npos;
        }
        EXPECT_EQ(m_callback.Entries().size() - before, c.bCallback ? 1u : 0u) << c.pszMsg;
        EXPECT_EQ(inFile, c.bFile) << c.pszMsg;
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
    const auto texts = m_callback.Texts();
    ASSERT_EQ(texts.size(), 3u);
    auto tail = [](const std::string& s) { return s.substr(s.find("\"msg\"")); };
    EXPECT_EQ(tail(texts[0]),
              "\"msg\": \"m\", \"cate\": \"net\", \"file\": \"a.cpp\", \"line\": 12, \"attr\": { "
              "\"c\": {\"k\": \"v\", \"zone\": 3} } }");
    EXPECT_EQ(tail(texts[1]),
              "\"msg\": \"n\", \"cate\": \"7\", \"attr\": { \"c\": {\"zone\": 3} } }");
    EXPECT_EQ(tail(texts[2]),
              "\"msg\": \"o\", \"cate\": \"sorting\", \"attr\": { \"c\": {\"zone\": 4, \"shard\": "
              "\"s1\"} } }");
}

TEST_F(LoggerTest, CategoriesGateRecordsThatNameThem) {
    _log::ILoggerFactory* factory = _log::GetLoggerFactory();
    factory->AddCategoryName("gate-named", "gate-name-a");
    factory->AddCategoryId("gate-numbered", 4077);
    _log::ILogger* logger = NewLogger("categories");
    auto logCate = [&](const char* cate) {
        const size_t before = m_callback.Entries().size();
        logger->Log(_log::LOG_INFO, cate, {{"cate", LogValue(cate)}});
        return m_callback.Entries().size() - before;
    };
    EXPECT_EQ(logCate("gate-named"), 0u);
    EXPECT_EQ(logCate("gate-numbered"), 0u);
    EXPECT_EQ(logCate("gate-untagged"), 1u);
    factory->EnableName("gate-name-a");
    EXPECT_EQ(logCate("gate-named"), 1u);
    EXPECT_EQ(logCate("gate-numbered"), 0u);
    factory->EnableId(4077);
    EXPECT_EQ(logCate("gate-numbered"), 1u);
    // The logger's own name is the category only for printing, never for the check.
    factory->AddCategoryName("categories", "never-enabled");
    logger->Log(_log::LOG_INFO, "implicit");
    EXPECT_EQ(m_callback.Entries().size(), 4u);
}

TEST(LoggerFactoryCategories, EnabledRules) {
    struct Case {
        const char* pszWhat;
        std::vector<std::string> names;  // tags of category "c"
        std::vector<uint32_t> ids;
        std::vector<std::string> activeNames;
        std::vector<uint32_t> activeIds;
        bool bWant;
    };
    const Case cases[] = {
        {"untagged", {}, {}, {}, {}, true},
        {"name tag, nothing active", {"n"}, {}, {}, {}, false},
        {"name tag, other active", {"n"}, {}, {"m"}, {1}, false},
        {"name tag, active", {"n", "o"}, {}, {"a", "o"}, {}, true},
        {"id tag, active", {}, {5}, {}, {5}, true},
        {"id tag, name of same text", {}, {5}, {"5"}, {}, false},
        {"both tags, id active", {"n"}, {5}, {}, {5}, true},
        {"both tags, name active", {"n"}, {5}, {"n"}, {}, true},
        {"names compare bytewise", {"N"}, {}, {"n"}, {}, false},
    };
    for (const Case& c : cases) {
        _log::CLoggerFactory factory;
        for (const std::string& n : c.names) factory.AddCategoryName("c", n);
        for (uint32_t id : c.ids) factory.AddCategoryId("c", id);
        for (const std::string& n : c.activeNames) factory.EnableName(n);
        for (uint32_t id : c.activeIds) factory.EnableId(id);
        EXPECT_EQ(factory.IsCategoryEnabled("c"), c.bWant) << c.pszWhat;
        EXPECT_TRUE(factory.IsCategoryEnabled("other")) << c.pszWhat;
    }
}

TEST(LoggerFactoryConfig, AttributesReachTheDefaultLogger) {
    _log::CLoggerFactory factory;  // owns only its default logger
    factory.SetAttribute({"a", LogValue(1)});
    auto* logger = dynamic_cast<_log::CLogger*>(factory.GetDefaultLogger());
    ASSERT_NE(logger, nullptr);
    EXPECT_EQ(factory.GetDefaultLogger(), logger);
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

TEST_F(LoggerTest, EmptyFolderNameLeavesTheFolderInForce) {
    _log::ILoggerFactory* factory = _log::GetLoggerFactory();
    factory->SetLogFolder("");
    factory->SetLogFolder(nullptr);
    EXPECT_EQ(pind::detail::GetLogFolderName(), "debug");
    NewLogger("folder")->Log(_log::LOG_INFO, "x");
    EXPECT_EQ(ReadLines(kDayFile).size(), 1u);
    factory->SetLogFolder("other");
    NewLogger("folder")->Log(_log::LOG_INFO, "y");
    EXPECT_EQ(ReadLines("./other/2024_5_7_x64.log").size(), 1u);
}

TEST(LoggerConfig, ModuleNameCut) {
    const std::pair<const char*, const char*> cases[] = {
        {"C:\\game\\bin\\client.exe", "client"},
        {"/usr/local/bin/pind", "pind"},
        {"D:\\x.y\\a.b.c", "a.b"},
        {"dir.v2/prog", "prog"},
        {"C:\\mixed/dir\\tool.exe", "tool"},
        {"noext", "noext"},
        {"", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(pind::detail::ModuleNameFromPath(c.first), c.second) << c.first;
    }
    EXPECT_EQ(_log::LoggerConfig().strModule, "pind_logging_tests");
}

}  // namespace

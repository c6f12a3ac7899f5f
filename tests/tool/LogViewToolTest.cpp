// `pind log view`: day files read back one record per line, filtered, as text or JSON; lines that
// are not records are shown, marked, and never stop the viewer.

#include <algorithm>
#include <chrono>
#include <fstream>
#include <future>
#include <thread>

#include "pind/json/FmtJson.h"
#include "tool/RunTool.h"

namespace pind::test {
namespace {

// A file line as the writer prints it.
std::string Line(const std::string& time, const std::string& level, const std::string& msg,
                 const std::string& cate, const std::string& context = "") {
    const std::string attr = context.empty() ? "" : ", \"attr\": { \"c\": {" + context + "} } ";
    return time +
           " { \"logtime\": \"2026-11-22 1:0:0 +0000\", \"ts\": 1795309200000, \"level\": \"" +
           level + "\", \"src\": \"\", \"msg\": \"" + msg + "\", \"cate\": \"" + cate + "\"" +
           attr + "} \n";
}

const std::string kGbk = "\xb5\xc7\xc2\xbc";           // 登录 in GBK
const std::string kUtf8 = "\xe7\x99\xbb\xe5\xbd\x95";  // the same in UTF-8

TEST(LogViewTool, FiltersTextFormFoldersAndFailures) {
    const std::string boot = "2026-11-22 09:00:00 DEBUG DEFAULT boot\n";
    const std::string login = "2026-11-22 10:00:00 INFO  net login ok uid=42\n";
    const std::string slow = "2026-11-22 10:30:00 WARN  net slow " + kUtf8 + "\n";
    const std::string hand = "?? hand edit\n";
    const std::string crash = "2026-11-22 11:00:00 ERROR ui crash\\t1\n";
    TempDir dir;
    dir.Write("day.log", Line("2026-11-22 09:00:00", "DEBUG", "boot", "DEFAULT") +
                             Line("2026-11-22 10:00:00", "INFO", "login ok", "net", "\"uid\": 42") +
                             Line("2026-11-22 10:30:00", "WARN", "slow " + kGbk, "net") +
                             "hand edit\n" +
                             Line("2026-11-22 11:00:00", "ERROR", "crash\\t1", "ui"));
    ExpectRuns({{"log view", 1, "", "debug"},
                {"log view missing.log", 1, "", "missing.log"},
                {"log view --level LOUD", 2, "", "unknown level"},
                {"log view --since yesterday", 2, "", "YYYY-MM-DD"},
                {"log view --max x", 2, "", "count"},
                {"log view --colour", 2, "", "unknown option"},
                {"log view day.log", 0, boot + login + slow + hand + crash},
                {"log view day.log --level warn", 0, slow + hand + crash},
                {"log view day.log --cate net --cate ui", 0, login + slow + hand + crash},
                {"log view day.log --since '2026-11-22 10:00' --until '2026-11-22 10:30:00'", 0,
                 login + slow + hand},
                {"log view day.log --grep " + kGbk, 0, slow},
                {"log view day.log --max 2", 0, boot + login},
                {"log view day.log --raw --level WARN --max 1", 0,
                 "2026-11-22 10:30:00 WARN  net slow " + kGbk + "\n"}},
               dir.Path());
    // With no file named, the day files of ./debug in date order.
    dir.Write("debug/2026_11_10_x64.log", Line("2026-11-10 08:00:00", "INFO", "tenth", "c"));
    dir.Write("debug/2026_11_9_x64.log", Line("2026-11-09 08:00:00", "INFO", "ninth", "c"));
    dir.Write("debug/notes.txt", "not a log\n");
    ExpectRuns(
        {{"log view", 0, "2026-11-09 08:00:00 INFO  c ninth\n2026-11-10 08:00:00 INFO  c tenth\n"}},
        dir.Path());
}

TEST(LogViewTool, ReadsWhatTheLoggerWroteAndSurvivesDamage) {
    TempDir dir;
    ASSERT_EQ(RunPind({"log", "a\tb", "n=-7", "name=" + kGbk}, "", dir.Path(), {"TZ=UTC"}).status,
              0);
    ASSERT_EQ(RunPind({"log", "--", "view"}, "", dir.Path(), {"TZ=UTC"}).status, 0);
    const std::string file = "debug/" + TodaysLogName();
    std::ofstream(dir.File(file), std::ios::app)
        << Line("2020-01-01 00:00:00", "INFO", "old", "x") << "9999-12-31 23:59:59 { \"ms";
    const auto run = RunPind({"log", "view", "--since", "-1h"}, "", dir.Path(), {"TZ=UTC"});
    ASSERT_EQ(run.status, 0) << run.err;
    // The old line falls outside the window; the cut one is shown as it is. The logger's lines
    // start with today's time.
    std::string out = run.out;
    ASSERT_GT(out.size(), 19u) << out;
    out.erase(0, 19);
    out.erase(out.find('\n') + 1, 19);
    EXPECT_EQ(out, " INFO  DEFAULT a\\tb n=-7 name=" + kUtf8 +
                       "\n INFO  DEFAULT view\n?? 9999-12-31 23:59:59 { \"ms\n");
}

// One strict JSON object per line: numbers as numbers, booleans as booleans, texts in UTF-8.
TEST(LogViewTool, JsonIsStrictAndTyped) {
    TempDir dir;
    dir.Write("d.log", Line("2026-11-22 10:00:00", "INFO", "m \\\"q\\\" " + kGbk + "\\u0001", "net",
                            "\"uid\": 42, \"ok\": \"true\", \"e\": , \"r\": {\"a\": [1]}, \"f\": "
                            "-1.500000, \"n\": nan, \"c\": ") +
                           "cut \xff line");
    const std::string record =
        "{\"time\":\"2026-11-22 10:00:00\",\"logtime\":\"2026-11-22 1:0:0 +0000\",\"ts\":"
        "1795309200000,\"level\":\"INFO\",\"src\":\"\",\"msg\":\"m \\\"q\\\" " +
        kUtf8 +
        "\\u0001\",\"cate\":\"net\",\"attr\":{\"uid\":42,\"ok\":true,\"e\":null,\"r\":{\"a\": "
        "[1]},\"f\":-1.500000,\"n\":\"nan\",\"c\":null}}\n";
    const std::string cut = "{\"time\":null,\"unparsed\":\"cut \xef\xbf\xbd line\"}\n";
    ExpectRuns({{"log view --json d.log", 0, record + cut}}, dir.Path());
    for (const std::string& line : {record, cut}) {
        JsonNode* parsed = JsonParse(line.c_str());
        EXPECT_NE(parsed, nullptr) << line;
        JsonFree(parsed);
    }
}

// Waits until the file `name` in `dir` holds at least `lines` lines; false after ten seconds.
bool WaitForLines(const TempDir& dir, const std::string& name, size_t lines) {
    for (int i = 0; i < 1000; ++i) {
        const std::string text = dir.Read(name);
        if (static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) >= lines) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

TEST(LogViewTool, FollowReadsAppendedLinesAndTheNextDay) {
    TempDir dir;
    TempDir out;
    const std::string day1 =
        dir.Write("debug/2026_11_22_x64.log", Line("2026-11-22 23:59:58", "INFO", "one", "c"));
    auto tool = std::async(std::launch::async, [&] {
        return RunPind(Words("log view --follow --max 4"), "", dir.Path(), {}, out.File("stdout"));
    });
    ASSERT_TRUE(WaitForLines(out, "stdout", 1));
    // Half a line waits for its end before it is shown.
    std::ofstream(day1, std::ios::app) << "2026-11-22 23:59:59 { \"ts\": 1, \"msg\": \"tw";
    std::this_thread::sleep_for(std::chrono::milliseconds(300));  // a poll or more
    std::ofstream(day1, std::ios::app) << "o\"} \n";
    ASSERT_TRUE(WaitForLines(out, "stdout", 2));
    std::ofstream(day1, std::ios::app) << Line("2026-11-22 23:59:59", "INFO", "three", "c");
    dir.Write("debug/2026_11_23_x64.log", Line("2026-11-23 00:00:01", "INFO", "four", "c"));
    ASSERT_EQ(tool.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(tool.get().status, 0);
    EXPECT_EQ(out.Read("stdout"),
              "2026-11-22 23:59:58 INFO  c one\n2026-11-22 23:59:59 -     - two\n"
              "2026-11-22 23:59:59 INFO  c three\n2026-11-23 00:00:01 INFO  c four\n");
}

}  // namespace
}  // namespace pind::test

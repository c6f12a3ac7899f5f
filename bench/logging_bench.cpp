// Logging costs: records to the callback only and to the daily file, the record text alone against
// fmt::format_to of the same line, and the file append against the fopen/fprintf/fclose floor and
// spdlog's basic file sink flushed per line. Files go to a scratch folder that is removed at the
// end.
#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>

#include "pind/logging/Logger.h"
#include "pind/platform/Clock.h"
#include "pind/platform/System.h"

namespace {

namespace fs = std::filesystem;

// Runs the body in a fresh scratch folder as the current folder.
class ScratchCwd {
public:
    ScratchCwd() : m_old(fs::current_path()) {
        m_dir = fs::temp_directory_path() /
                ("pind-logbench-" + std::to_string(pind::platform::CurrentProcessId()));
        fs::create_directories(m_dir);
        fs::current_path(m_dir);
    }
    ~ScratchCwd() {
        fs::current_path(m_old);
        std::error_code ec;
        fs::remove_all(m_dir, ec);
    }

private:
    fs::path m_old;
    fs::path m_dir;
};

class CountingCallback : public _log::ILogCallback {
public:
    void OnLog(uint32_t, const char* pszText) override {
        benchmark::DoNotOptimize(pszText);
        ++m_nCalls;
    }
    size_t m_nCalls = 0;
};

_log::ILogger* BenchLogger(const char* pszName) {
    _log::LoggerConfig config;
    config.strName = pszName;
    return _log::GetLoggerFactory()->GetLogger(config);
}

// The example line: header, message, category and one context number.
constexpr int64_t kNow = 1715043792;

void BM_RecordText(benchmark::State& state) {
    _log::LogAttributes header;
    _log::MakeHeader(_log::LOG_INFO, "", kNow, &header);
    const std::string msg = "login ok";
    const _log::LogRecord record(0, msg, {{"uid", _log::LogValue(42)}},
                                 {{"cate", _log::LogValue("DEFAULT")}});
    std::string text;
    for (auto _ : state) {
        _log::FormatRecordText(header, record, &text);
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_RecordText);

void BM_RecordTextWithHeader(benchmark::State& state) {
    const std::string msg = "login ok";
    const _log::LogRecord record(0, msg, {{"uid", _log::LogValue(42)}},
                                 {{"cate", _log::LogValue("DEFAULT")}});
    _log::LogAttributes header;
    std::string text;
    for (auto _ : state) {
        _log::MakeHeader(_log::LOG_INFO, "", kNow, &header);
        _log::FormatRecordText(header, record, &text);
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(BM_RecordTextWithHeader);

void BM_FmtFormatToSameLine(benchmark::State& state) {
    const std::string logtime = _log::LogTimeText(kNow);
    std::string text;
    for (auto _ : state) {
        text.clear();
        fmt::format_to(
            std::back_inserter(text),
            "{{ \"logtime\": \"{}\", \"ts\": {}, \"level\": \"{}\", \"src\": \"{}\", "
            "\"msg\": \"{}\", \"cate\": \"{}\", \"attr\": {{ \"c\": {{\"uid\": {}}} }} }}",
            logtime, kNow * 1000, "INFO", "", "login ok", "DEFAULT", 42);
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(BM_FmtFormatToSameLine);

void BM_LoggerToCallbackOnly(benchmark::State& state) {
    CountingCallback callback;
    _log::GetLoggerFactory()->SetCallback(&callback);
    _log::ILogger* logger = BenchLogger("bench-callback");
    int seq = 0;
    for (auto _ : state) {
        logger->Log(_log::LOG_INFO, "login ok",
                    {{"uid", _log::LogValue(seq++)}, {"__out__", _log::LogValue(true)}});
    }
    _log::GetLoggerFactory()->SetCallback(nullptr);
    state.SetItemsProcessed(static_cast<int64_t>(callback.m_nCalls));
}
BENCHMARK(BM_LoggerToCallbackOnly);

void BM_LoggerToFile(benchmark::State& state) {
    ScratchCwd cwd;
    pind::detail::ClearWrittenTexts();
    _log::ILogger* logger = BenchLogger("bench-file");
    int seq = 0;
    for (auto _ : state) {
        logger->Log(_log::LOG_INFO, "login ok", {{"uid", _log::LogValue(seq++)}});
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    const size_t lines = pind::detail::WrittenTextCount();
    state.counters["dedup_bytes_per_line"] =
        lines != 0 ? static_cast<double>(pind::detail::WrittenTextBytes()) / lines : 0.0;
    pind::detail::ClearWrittenTexts();
}
BENCHMARK(BM_LoggerToFile);

// The same bytes per line as the logger writes, with none of its work: the floor of a design that
// opens and closes the file per line.
std::string SampleLine() {
    _log::LogAttributes header;
    const int64_t now = pind::platform::Time64();
    _log::MakeHeader(_log::LOG_INFO, "", now, &header);
    const std::string msg = "login ok";
    const _log::LogRecord record(0, msg, {{"uid", _log::LogValue(123456)}},
                                 {{"cate", _log::LogValue("bench-file")}});
    std::string text;
    _log::FormatRecordText(header, record, &text);
    return _log::LineTimeText(now) + " " + text;
}

void BM_FloorFopenFprintfFclose(benchmark::State& state) {
    ScratchCwd cwd;
    const std::string line = SampleLine();
    fs::create_directories("debug");
    for (auto _ : state) {
        std::FILE* file = std::fopen("./debug/floor.log", "a+");
        std::fprintf(file, "%s \n", line.c_str());
        std::fclose(file);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_FloorFopenFprintfFclose);

void BM_SpdlogBasicFileFlushEachLine(benchmark::State& state) {
    ScratchCwd cwd;
    auto sink = std::make_shared<spdlog::sinks::basic_file_sink_st>("debug/spdlog.log");
    spdlog::logger logger("bench", sink);
    logger.set_pattern("%Y-%m-%d %H:%M:%S %v ");
    logger.flush_on(spdlog::level::info);
    const std::string logtime = _log::LogTimeText(kNow);
    int seq = 0;
    for (auto _ : state) {
        logger.info(
            "{{ \"logtime\": \"{}\", \"ts\": {}, \"level\": \"{}\", \"src\": \"{}\", \"msg\": "
            "\"{}\", \"cate\": \"{}\", \"attr\": {{ \"c\": {{\"uid\": {}}} }} }}",
            logtime, kNow * 1000, "INFO", "", "login ok", "bench-file", seq++);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_SpdlogBasicFileFlushEachLine);

}  // namespace

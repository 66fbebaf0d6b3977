// Measures the time of a line in the helper's log, which rotates between two files of 100 KB. For comparison spdlog
// writes a line to rotating files of the same size and flushes it.
#include "app/log/Logger.h"
#include "bench/MeasuredPanel.h"

#include <benchmark/benchmark.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>

namespace {

constexpr const char* text = "IPCDispatcher;message received 5";
constexpr std::uint32_t fileSize = 100 * 1024;

void logLine(benchmark::State& state) {
    const MeasuredPanel panel;
    Logger log;
    log.setDirectory(L"\\MMCMemory");
    log.setMaxFiles(2);
    log.setMaxFileSize(fileSize);
    for ([[maybe_unused]] auto iteration : state)
        log.write(text, LogLevel::Info);
    if (!std::filesystem::exists(panel.hostPath("\\MMCMemory\\log0.txt")))
        state.SkipWithError("no line was written");
}

void logLineWithSpdlog(benchmark::State& state) {
    const MeasuredPanel panel;
    const std::string file = panel.hostPath("\\MMCMemory\\log.txt");
    spdlog::logger log("log", std::make_shared<spdlog::sinks::rotating_file_sink_mt>(file, fileSize, 1));
    log.set_pattern("%Y-%m-%d %H:%M:%S,%e;%l;%v", spdlog::pattern_time_type::utc);
    log.flush_on(spdlog::level::info);
    for ([[maybe_unused]] auto iteration : state)
        log.info(text);
}

} // namespace

BENCHMARK(logLine)->Unit(benchmark::kMicrosecond);
BENCHMARK(logLineWithSpdlog)->Unit(benchmark::kMicrosecond);

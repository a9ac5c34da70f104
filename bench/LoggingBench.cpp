// Log lines per second with the file flushed after every line: our logger
// against spdlog's file sink set to flush on every message, and against the
// floor of any such logger, fprintf and fflush of the same line.
#include "bench/BenchData.h"

#include "common/source/source_utilities/uLogger.h"

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <memory>
#include <string>

namespace devid_bench {

namespace {

// A line the loader writes for every module.
const char* const kName = "M0042_funnel";
const char* const kKind = "funnel";
const char* const kProc = "core2";
const char* const kVersion = "4.1";

std::string LogPath(benchmark::State& state, const char* name)
{
    std::string error;
    const std::string folder = BenchData::Get().LogFolder(error);
    if (folder.empty()) {
        state.SkipWithError(error.c_str());
        return "";
    }
    const std::string path = folder + "/" + name;
    std::remove(path.c_str());
    return path;
}

void LogULogger(benchmark::State& state)
{
    const std::string path = LogPath(state, "ulogger.txt");
    if (path.empty())
        return;
    {
        MORA_LUX::uLogger logger(path.c_str(), false);
        for (auto _ : state)
            logger.Log(1, MORA_LUX::uLogger::TD_TIME, "DevId: Module added name: %s, kind:%s, access proc:%s, version=%s",
                       kName, kKind, kProc, kVersion);
    }
    state.SetItemsProcessed(state.iterations());
    std::remove(path.c_str());
}

void LogSpdlog(benchmark::State& state)
{
    const std::string path = LogPath(state, "spdlog.txt");
    if (path.empty())
        return;
    {
        auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(path, true);
        spdlog::logger logger("bench", sink);
        logger.flush_on(spdlog::level::trace);
        for (auto _ : state)
            logger.info("DevId: Module added name: {}, kind:{}, access proc:{}, version={}", kName, kKind, kProc,
                        kVersion);
    }
    state.SetItemsProcessed(state.iterations());
    std::remove(path.c_str());
}

void LogFprintf(benchmark::State& state)
{
    const std::string path = LogPath(state, "fprintf.txt");
    if (path.empty())
        return;
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) {
        state.SkipWithError(("cannot write " + path).c_str());
        return;
    }
    for (auto _ : state) {
        std::fprintf(file, "DevId: Module added name: %s, kind:%s, access proc:%s, version=%s\n", kName, kKind,
                     kProc, kVersion);
        std::fflush(file);
    }
    std::fclose(file);
    state.SetItemsProcessed(state.iterations());
    std::remove(path.c_str());
}

} // namespace

BENCHMARK(LogFprintf);
BENCHMARK(LogSpdlog);
BENCHMARK(LogULogger);

} // namespace devid_bench

// devid_bench: every speed goal of the library, each benchmark beside its
// baseline, with the ratios summed up at the end.
//
//   devid_bench [--bench_data=DIR] [Google Benchmark options]
//
// DIR holds the generated databases and files (default: bench-data in the
// build folder); they are kept between runs.
#include "bench/BenchData.h"
#include "bench/RatioReporter.h"

#include "common/source/source_utilities/uDll.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

const char kDataOption[] = "--bench_data=";

const std::vector<devid_bench::RatioGoal> kGoals = {
    {"identification, 200 files", "IdentifyFirstInstance/files:200", "ParseFloor/files:200",
     devid_bench::RatioGoal::TimeRatio, 1.3},
    {"identification, 1000 files", "IdentifyFirstInstance/files:1000", "ParseFloor/files:1000",
     devid_bench::RatioGoal::TimeRatio, 1.3},
    {"second instance, create to first source", "IdentifyCached", "ParseMatchingFile",
     devid_bench::RatioGoal::TimeRatio, 3.0},
    {"reload of the 250-module file", "ReloadMatching", "ParseMatchingFile", devid_bench::RatioGoal::TimeRatio,
     2.0},
    {"reload of the large device", "LargeReload", "LargeParse", devid_bench::RatioGoal::TimeRatio, 2.0},
    {"large device: linking all sources and routes", "LargeNormalize", "LargeLoad", devid_bench::RatioGoal::Share,
     0.10},
    {"log lines per second, flushed, against spdlog", "LogULogger", "LogSpdlog",
     devid_bench::RatioGoal::Throughput, 1.0},
    {"log lines per second, flushed, against fprintf", "LogULogger", "LogFprintf",
     devid_bench::RatioGoal::Throughput, 0.9},
    {"TDF: find the last of 10,000 sections", "TdfFindLast", "TdfReadOnce", devid_bench::RatioGoal::TimeRatio, 2.0},
};

const std::vector<devid_bench::MemoryGoal> kMemoryGoals = {
    {"large device: whole process, start-up and load", "LargeLoad", "process_MiB", {}, 40e6 / (1024.0 * 1024.0)},
    {"large device: heap peak", "LargeLoad", "peak_MiB", {"pugixml_MiB", "model_MiB"}, 0},
    {"large device: the model kept", "LargeLoad", "model_MiB", {"file_MiB"}, 0},
};

std::string TakeDataOption(int& argc, char** argv)
{
    std::string folder = DEVID_BENCH_DEFAULT_DATA;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], kDataOption, sizeof kDataOption - 1) == 0)
            folder = argv[i] + sizeof kDataOption - 1;
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    return folder;
}

std::string CpuModel()
{
    std::ifstream cpuinfo("/proc/cpuinfo");
    for (std::string line; std::getline(cpuinfo, line);) {
        if (line.compare(0, 10, "model name") == 0)
            return line.substr(line.find(':') + 2);
    }
    return "unknown";
}

} // namespace

int main(int argc, char** argv)
{
    const std::string data = std::filesystem::absolute(TakeDataOption(argc, argv)).string();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;

    // The heap keeps what is freed: otherwise a parse that frees its document
    // at the top of the heap hands the pages back to the kernel and faults them
    // in again for the next file, and the timings measure that, not parsing.
    mallopt(M_MMAP_THRESHOLD, 256 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 1024 * 1024 * 1024);

    // Logging off, and the library's trace folders kept out of the user's home.
    unsetenv("MORA_TRACE_LOGGING");
    const std::string home = data + "/home";
    std::filesystem::create_directories(home);
    setenv("HOME", home.c_str(), 1);

    // Held for the whole run, so that identifiers made and destroyed one after
    // the other measure the search, not the loading of the parser library.
    MORA_LUX::uDll parserLibrary;
    if (!parserLibrary.FindAndLoad("libmora_targetdb_parser.so", -1)) {
        std::cerr << "devid_bench: cannot load libmora_targetdb_parser.so: " << parserLibrary.GetError() << "\n";
        return 1;
    }

    devid_bench::BenchData::SetRoot(data);
    devid_bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintSummary(std::cout, kGoals);
    reporter.PrintSummary(std::cout, kMemoryGoals);
    std::cout << "Machine: " << std::thread::hardware_concurrency() << " CPUs, " << CpuModel() << "\n";
    benchmark::Shutdown();
    return 0;
}

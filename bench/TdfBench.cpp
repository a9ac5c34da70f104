// Finding the last of many sections in a trace data file, against the least
// any reader must do: read the file's bytes once.
#include "bench/BenchData.h"

#include "devid/target/HexkitError.h"
#include "tdf/TDFHandler.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace devid_bench {

namespace {

constexpr uint32_t kSections = 10000;

std::string SectionFileOrSkip(benchmark::State& state)
{
    std::string error;
    const std::string path = BenchData::Get().SectionFile(kSections, error);
    if (path.empty())
        state.SkipWithError(error.c_str());
    return path;
}

void TdfFindLast(benchmark::State& state)
{
    const std::string path = SectionFileOrSkip(state);
    if (path.empty())
        return;
    Mora::Lux::Trace::TDFHandler tdf;
    for (auto _ : state) {
        uint32_t position = 0;
        uint32_t length = 0;
        try {
            tdf.GetSectionDataPosition(path.c_str(), "DEVID", 1, position, length);
        } catch (const Mora::Lux::Hexkit::HexkitError& error) {
            state.SkipWithError(error.what());
            break;
        }
        benchmark::DoNotOptimize(position);
    }
}

void TdfReadOnce(benchmark::State& state)
{
    const std::string path = SectionFileOrSkip(state);
    if (path.empty())
        return;
    std::vector<char> buffer(64 * 1024);
    for (auto _ : state) {
        std::FILE* file = std::fopen(path.c_str(), "rb");
        if (file == nullptr) {
            state.SkipWithError("cannot open the section file");
            break;
        }
        std::size_t total = 0;
        for (std::size_t got; (got = std::fread(buffer.data(), 1, buffer.size(), file)) > 0;)
            total += got;
        std::fclose(file);
        benchmark::DoNotOptimize(total);
    }
}

} // namespace

BENCHMARK(TdfReadOnce)->Unit(benchmark::kMicrosecond);
BENCHMARK(TdfFindLast)->Unit(benchmark::kMicrosecond);

} // namespace devid_bench

// Identification without a board: a new device identifier picks the matching
// file from the database folder and builds its model, up to the point where a
// first GetProcInfo would hand out a source. The floor is pugixml parsing the
// same files in the same order.
#include "bench/BenchData.h"

#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DeviceXmlCache.h"
#include "devid/model/CSourceInfoImpl.h"
#include "common/source/source_utilities/uProcess.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

namespace devid_bench {

namespace {

using Mora::Lux::Trace::CDeviceIdentifierImpl;
using Mora::Lux::Trace::CSourceInfo;

const GeneratedDatabase* DatabaseOrSkip(benchmark::State& state, uint32_t files)
{
    std::string error;
    const GeneratedDatabase* database = BenchData::Get().Database(files, error);
    if (database == nullptr)
        state.SkipWithError(error.c_str());
    return database;
}

// GetProcInfo itself would first ask the live target for its device IDs; with
// no board the search is started directly for the ID, and the first source is
// linked to its modules as GetProcInfo does before returning it.
CSourceInfo* FirstProcInfo(CDeviceIdentifierImpl& identifier, uint32_t deviceId)
{
    if (!identifier.LoadDeviceDatabase(deviceId) || identifier.GetSources().empty())
        return nullptr;
    identifier.GetSources().front()->Normalize(&identifier);
    return identifier.GetSources().front().get();
}

// One identifier per iteration, timed from its construction to its first
// source; its teardown is not timed. A first instance of a process finds
// nothing remembered and searches the folder; a later one takes the
// remembered file at once.
void Identify(benchmark::State& state, const GeneratedDatabase& database, bool firstInstance)
{
    setenv("TRACE_XMLDB_DEVICES", database.folder.c_str(), 1);
    for (auto _ : state) {
        if (firstInstance)
            Mora::Lux::Trace::InvalidateDeviceXmlName();
        auto identifier = std::make_unique<CDeviceIdentifierImpl>();
        CSourceInfo* source = FirstProcInfo(*identifier, kMatchingId);
        if (source == nullptr || identifier->GetLoadedDeviceFile() != database.matchingFile) {
            state.SkipWithError("the matching description was not loaded");
            break;
        }
        benchmark::DoNotOptimize(source);
        state.PauseTiming();
        identifier.reset();
        state.ResumeTiming();
    }
}

void IdentifyFirstInstance(benchmark::State& state)
{
    const GeneratedDatabase* database = DatabaseOrSkip(state, static_cast<uint32_t>(state.range(0)));
    if (database != nullptr)
        Identify(state, *database, true);
}

void ParseFiles(benchmark::State& state, const std::vector<std::string>& paths)
{
    // One document for all files, as the parser library keeps one.
    pugi::xml_document document;
    for (auto _ : state) {
        for (const std::string& path : paths) {
            if (!document.load_file(path.c_str())) {
                state.SkipWithError(("pugixml cannot parse " + path).c_str());
                return;
            }
            benchmark::DoNotOptimize(document.first_child().internal_object());
        }
    }
}

void ParseFloor(benchmark::State& state)
{
    if (const GeneratedDatabase* database = DatabaseOrSkip(state, static_cast<uint32_t>(state.range(0))))
        ParseFiles(state, database->filesInDirectoryOrder);
}

void IdentifyCached(benchmark::State& state)
{
    const GeneratedDatabase* database = DatabaseOrSkip(state, 200);
    if (database == nullptr)
        return;
    // The first identification of the process leaves the matching file in the cache.
    Mora::Lux::Trace::InvalidateDeviceXmlName();
    setenv("TRACE_XMLDB_DEVICES", database->folder.c_str(), 1);
    {
        CDeviceIdentifierImpl first;
        if (FirstProcInfo(first, kMatchingId) == nullptr ||
            CDeviceIdentifierImpl::GetMatchedDeviceFile() != database->matchingFile) {
            state.SkipWithError("the first identification did not remember the matching file");
            return;
        }
    }
    Identify(state, *database, false);
}

// Reloading the remembered file into an identifier that holds it already:
// the old model freed, the file parsed, the new model built.
void ReloadMatching(benchmark::State& state)
{
    const GeneratedDatabase* database = DatabaseOrSkip(state, 200);
    if (database == nullptr)
        return;
    setenv("TRACE_XMLDB_DEVICES", database->folder.c_str(), 1);
    CDeviceIdentifierImpl identifier;
    // The first load searches the folder and remembers the file; the reloads take it at once.
    bool loaded = FirstProcInfo(identifier, kMatchingId) != nullptr;
    for (auto _ : state) {
        identifier.Reset();
        loaded = loaded && FirstProcInfo(identifier, kMatchingId) != nullptr &&
                 identifier.GetLoadedDeviceFile() == database->matchingFile;
        if (!loaded) {
            state.SkipWithError("the matching description was not loaded");
            break;
        }
    }
}

// Start-up of an identifier without a board or a trace server: log set-up,
// loading the parser library, looking for a running trace server.
void CreateIdentifier(benchmark::State& state)
{
    for (auto _ : state) {
        auto identifier = std::make_unique<CDeviceIdentifierImpl>();
        benchmark::DoNotOptimize(identifier.get());
        state.PauseTiming();
        identifier.reset();
        state.ResumeTiming();
    }
}

// The part of start-up that grows with the machine: one look at every
// process's executable, as no trace server runs here.
void FindTraceServer(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(MORA_LUX::uProcess::LookupProcess("TraceServer", 0));
    std::error_code error;
    int processes = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error))
        processes += std::isdigit(static_cast<unsigned char>(entry.path().filename().string()[0])) ? 1 : 0;
    state.counters["processes"] = processes;
}

void ParseMatchingFile(benchmark::State& state)
{
    if (const GeneratedDatabase* database = DatabaseOrSkip(state, 200))
        ParseFiles(state, {database->matchingFile});
}

} // namespace

BENCHMARK(ParseFloor)->ArgName("files")->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(IdentifyFirstInstance)->ArgName("files")->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseFloor)->ArgName("files")->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(IdentifyFirstInstance)->ArgName("files")->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseMatchingFile)->Unit(benchmark::kMicrosecond);
BENCHMARK(IdentifyCached)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReloadMatching)->Unit(benchmark::kMicrosecond);
BENCHMARK(CreateIdentifier)->Unit(benchmark::kMicrosecond);
BENCHMARK(FindTraceServer)->Unit(benchmark::kMicrosecond);

} // namespace devid_bench

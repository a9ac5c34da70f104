// The largest device: loading it offline from a saved session, the heap it
// takes, and linking every source and route afterwards, which should stay a
// small part of the load.
#include "bench/AllocationCounter.h"
#include "bench/BenchData.h"

#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DeviceXmlCache.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CSourceInfoImpl.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace devid_bench {

namespace {

using Mora::Lux::Trace::CDeviceIdentifierImpl;
using Mora::Lux::Trace::eTraceDataFileDCM;

constexpr double kMiB = 1024.0 * 1024.0;

struct LargeDevice {
    std::string folder;
    std::string session;
};

bool Prepare(benchmark::State& state, LargeDevice& device)
{
    std::string error;
    device.folder = BenchData::Get().LargeDeviceFolder(error);
    if (!device.folder.empty())
        device.session = BenchData::Get().LargeDeviceSession(error);
    if (device.session.empty()) {
        state.SkipWithError(error.c_str());
        return false;
    }
    setenv("TRACE_XMLDB_DEVICES", device.folder.c_str(), 1);
    return true;
}

// Start-up and the first load as a client without a target does it: restore
// the session, then load the databases for its device ID.
std::unique_ptr<CDeviceIdentifierImpl> Load(const LargeDevice& device)
{
    // A file remembered from another folder would be taken without a test.
    Mora::Lux::Trace::InvalidateDeviceXmlName();
    auto identifier = std::make_unique<CDeviceIdentifierImpl>();
    if (!identifier->LoadConfiguration(device.session, eTraceDataFileDCM) ||
        !identifier->LoadAllDeviceDatabases(false) ||
        identifier->GetModules().size() != DatabaseGenerator::LargeDevice().modules)
        return nullptr;
    return identifier;
}

void LargeLoad(benchmark::State& state)
{
    LargeDevice device;
    if (!Prepare(state, device))
        return;

    double peak = 0;
    double held = 0;
    {
        AllocationWindow window;
        auto identifier = Load(device);
        peak = static_cast<double>(window.PeakBytes());
        held = static_cast<double>(window.CurrentBytes());
    }
    double documentPeak = 0;
    {
        AllocationWindow window;
        pugi::xml_document document;
        document.load_file((device.folder + "/device_large.xml").c_str());
        documentPeak = static_cast<double>(window.PeakBytes());
    }

    for (auto _ : state) {
        auto identifier = Load(device);
        if (!identifier) {
            state.SkipWithError("the large device did not load");
            break;
        }
        state.PauseTiming();
        identifier.reset();
        state.ResumeTiming();
    }
    state.counters["peak_MiB"] = peak / kMiB;
    state.counters["model_MiB"] = held / kMiB;
    state.counters["pugixml_MiB"] = documentPeak / kMiB;
}

// A warm reload: the identifier frees its model and loads the file again.
void LargeReload(benchmark::State& state)
{
    LargeDevice device;
    if (!Prepare(state, device))
        return;
    auto identifier = Load(device);
    if (!identifier) {
        state.SkipWithError("the large device did not load");
        return;
    }
    for (auto _ : state) {
        if (!identifier->LoadAllDeviceDatabases(true)) {
            state.SkipWithError("the large device did not load again");
            break;
        }
    }
}

// The floor of a reload: pugixml parsing the same file into a document it reuses.
void LargeParse(benchmark::State& state)
{
    LargeDevice device;
    if (!Prepare(state, device))
        return;
    const std::string path = device.folder + "/device_large.xml";
    pugi::xml_document document;
    for (auto _ : state) {
        if (!document.load_file(path.c_str())) {
            state.SkipWithError(("pugixml cannot parse " + path).c_str());
            break;
        }
        benchmark::DoNotOptimize(document.first_child().internal_object());
    }
}

void LargeNormalize(benchmark::State& state)
{
    LargeDevice device;
    if (!Prepare(state, device))
        return;
    for (auto _ : state) {
        state.PauseTiming();
        auto identifier = Load(device);
        if (!identifier) {
            state.SkipWithError("the large device did not load");
            break;
        }
        std::vector<std::string> ids;
        for (const auto& source : identifier->GetSources())
            ids.push_back(source->GetID());
        state.ResumeTiming();

        benchmark::DoNotOptimize(identifier->GetTraceRoutes());
        for (const std::string& id : ids) {
            if (identifier->GetProcInfo(id) == nullptr) {
                state.SkipWithError("a source was not found by its ID");
                break;
            }
        }

        state.PauseTiming();
        identifier.reset();
        state.ResumeTiming();
    }
}

} // namespace

BENCHMARK(LargeLoad)->Unit(benchmark::kMillisecond);
BENCHMARK(LargeNormalize)->Unit(benchmark::kMillisecond);
BENCHMARK(LargeParse)->Unit(benchmark::kMillisecond);
BENCHMARK(LargeReload)->Unit(benchmark::kMillisecond);

} // namespace devid_bench

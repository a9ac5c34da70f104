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

#include <sys/resource.h>
#include <sys/wait.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <thread>
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

// The peak resident size of a whole process that loads the device, as a client
// sees it: the devid tool beside this program, restoring the session in a fresh
// process. 0 when the tool is missing or fails.
double ProcessPeakMiB(const LargeDevice& device)
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::string tool = (self.parent_path() / "devid").string();
    if (error || access(tool.c_str(), X_OK) != 0)
        return 0;
    const pid_t child = fork();
    if (child == 0) {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
        execl(tool.c_str(), tool.c_str(), "--db", device.folder.c_str(), "--load", device.session.c_str(), "procs",
              static_cast<char*>(nullptr));
        _exit(127);
    }
    if (child < 0)
        return 0;
    int status = 0;
    struct rusage usage {};
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    pid_t done = 0;
    while ((done = wait4(child, &status, WNOHANG, &usage)) == 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (done == 0) {
        kill(child, SIGKILL);
        waitpid(child, &status, 0);
        return 0;
    }
    const bool loaded = done == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    // ru_maxrss is in KiB on Linux.
    return loaded ? static_cast<double>(usage.ru_maxrss) / 1024.0 : 0;
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
    state.counters["file_MiB"] =
        static_cast<double>(std::filesystem::file_size(device.folder + "/device_large.xml")) / kMiB;
    state.counters["process_MiB"] = ProcessPeakMiB(device);
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

// Entry points of libProbeTargetAdapter.so.
#include "simboard/SimBoardReader.h"
#include "simboard/SimTargetAdapter.h"

#include <new>

extern "C" int NewTargetAdapter(const char* deviceName, Mora::Lux::Hexkit::TargetAdapter** adapter)
{
    using namespace Mora::Lux::Sim;
    if (adapter == nullptr)
        return 1;
    *adapter = nullptr;
    if (deviceName == nullptr)
        return 1;
    SimBoardReadResult read = SimBoardReader::ReadFromEnvironment();
    const SimDevice* device = read.ok ? read.board.FindDevice(deviceName) : nullptr;
    if (device == nullptr || !device->adapterAvailable)
        return 1;
    *adapter = new (std::nothrow) SimTargetAdapter(*device);
    return *adapter != nullptr ? 0 : 1;
}

extern "C" void FreeTargetAdapter(Mora::Lux::Hexkit::TargetAdapter* adapter)
{
    delete adapter;
}

// Entry points of libProbeTargetAdapter.so.
#include "simboard/OpenOcdBoard.h"
#include "simboard/OpenOcdTargetAdapter.h"
#include "simboard/SimTargetAdapter.h"

#include <new>

// Through OpenOCD, throws Mora::Lux::Hexkit::HexkitError with OpenOCD's message
// when OpenOCD cannot be reached or fails to list the scan chain.
extern "C" int NewTargetAdapter(const char* deviceName, Mora::Lux::Hexkit::TargetAdapter** adapter)
{
    using namespace Mora::Lux::Sim;
    if (adapter == nullptr)
        return 1;
    *adapter = nullptr;
    if (deviceName == nullptr)
        return 1;
    SimBoardReadResult read = OpenOcdBoard::ReadDescription();
    if (!read.ok)
        return 1;
    if (!read.board.throughOpenOcd) {
        const SimDevice* device = read.board.FindDevice(deviceName);
        if (device == nullptr || !device->adapterAvailable)
            return 1;
        *adapter = new (std::nothrow) SimTargetAdapter(*device);
        return *adapter != nullptr ? 0 : 1;
    }
    // Each adapter keeps its own connection; OpenOCD serves several at once.
    std::unique_ptr<OpenOcdClient> client = OpenOcdBoard::Connect(read.board);
    const SimBoard board = OpenOcdBoard::Discover(*client, read.board);
    const SimDevice* device = board.FindDevice(deviceName);
    if (device == nullptr || !device->adapterAvailable)
        return 1;
    const SimDevice* router = device->tap.empty() ? board.FindDevice(device->parent) : device;
    *adapter = new OpenOcdTargetAdapter(std::move(client), *device, router != nullptr ? *router : SimDevice());
    return 0;
}

extern "C" void FreeTargetAdapter(Mora::Lux::Hexkit::TargetAdapter* adapter)
{
    delete adapter;
}

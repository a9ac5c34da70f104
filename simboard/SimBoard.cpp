#include "simboard/SimBoard.h"

#include <algorithm>

namespace Mora {
namespace Lux {
namespace Sim {

const SimRegister* SimDevice::FindRegister(const std::string& registerName) const
{
    auto it = std::find_if(registers.begin(), registers.end(),
                           [&](const SimRegister& r) { return r.name == registerName; });
    return it == registers.end() ? nullptr : &*it;
}

const SimMemoryWord* SimDevice::FindMemory(uint32_t address) const
{
    auto it = std::find_if(memory.begin(), memory.end(),
                           [&](const SimMemoryWord& m) { return m.address == address; });
    return it == memory.end() ? nullptr : &*it;
}

const SimDevice* SimBoard::FindDevice(const std::string& deviceName) const
{
    auto it = std::find_if(devices.begin(), devices.end(),
                           [&](const SimDevice& d) { return d.name == deviceName; });
    return it == devices.end() ? nullptr : &*it;
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

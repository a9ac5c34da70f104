#include "simboard/SimTargetAdapter.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Sim {

namespace {

// Handles start away from 0 so that a caller who confuses the lookup's result
// (0 = found) with the handle reads nothing instead of the first register.
const uint32_t FirstHandle = 0x100;
const uint32_t NotFound = 0xFFFFFFFF;
const uint32_t ReadFailed = 1;

} // namespace

SimTargetAdapter::SimTargetAdapter(SimDevice device) : m_device(std::move(device))
{
}

uint32_t SimTargetAdapter::ReadMemory(uint32_t& value, uint32_t address, uint32_t, bool)
{
    const SimMemoryWord* word = m_device.FindMemory(address);
    if (word == nullptr)
        return ReadFailed;
    value = word->value;
    return 0;
}

uint32_t SimTargetAdapter::ReadRegister(uint32_t handle, uint32_t& value)
{
    if (handle < FirstHandle || handle - FirstHandle >= m_device.registers.size())
        return ReadFailed;
    const SimRegister& reg = m_device.registers[handle - FirstHandle];
    if (reg.failsOnRead)
        return ReadFailed;
    value = reg.value;
    return 0;
}

uint32_t SimTargetAdapter::FindRegister(const char* name, uint32_t& handle)
{
    if (name == nullptr)
        return NotFound;
    for (size_t i = 0; i < m_device.registers.size(); ++i) {
        if (m_device.registers[i].name == name) {
            handle = FirstHandle + static_cast<uint32_t>(i);
            return 0;
        }
    }
    return NotFound;
}

bool SimTargetAdapter::IsReady()
{
    return m_device.ready;
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

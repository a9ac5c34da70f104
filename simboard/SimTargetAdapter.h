// Target adapter of one simulated device: answers register and memory reads
// from a copy of that device's entry on the board.
#ifndef MORA_LUX_SIM_SIMTARGETADAPTER_H
#define MORA_LUX_SIM_SIMTARGETADAPTER_H

#include "devid/target/TargetAdapter.h"
#include "simboard/SimBoard.h"

namespace Mora {
namespace Lux {
namespace Sim {

class SimTargetAdapter : public Hexkit::TargetAdapter {
public:
    explicit SimTargetAdapter(SimDevice device);

    /// Non-zero, value untouched, when no memory word sits at the address.
    uint32_t ReadMemory(uint32_t& value, uint32_t address, uint32_t addressableUnit, bool paged) override;
    /// Non-zero, value untouched, for an unknown handle or a register marked to fail.
    uint32_t ReadRegister(uint32_t handle, uint32_t& value) override;
    /// 0xFFFFFFFF, handle untouched, for an unknown or null name.
    uint32_t FindRegister(const char* name, uint32_t& handle) override;
    bool IsReady() override;

private:
    SimDevice m_device;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

// Target adapter of one device reached through OpenOCD: its router's IDCODE,
// registers by name and memory words.
#ifndef MORA_LUX_SIM_OPENOCDTARGETADAPTER_H
#define MORA_LUX_SIM_OPENOCDTARGETADAPTER_H

#include "devid/target/TargetAdapter.h"
#include "simboard/OpenOcdClient.h"
#include "simboard/SimBoard.h"

#include <memory>
#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Sim {

class OpenOcdTargetAdapter : public Hexkit::TargetAdapter {
public:
    /// router is the device itself when it stands for a TAP, else its parent.
    OpenOcdTargetAdapter(std::unique_ptr<OpenOcdClient> client, SimDevice device, SimDevice router);

    /// Through the device's OpenOCD target (read_memory) or, without one, the
    /// MEM-AP of its router's debug port. Non-zero, value untouched, when
    /// OpenOCD refuses; Hexkit::HexkitError when OpenOCD cannot be reached.
    uint32_t ReadMemory(uint32_t& value, uint32_t address, uint32_t addressableUnit, bool paged) override;
    /// The router's IDCODE, read anew, or a register of the device's OpenOCD
    /// target. Non-zero, value untouched, for an unknown handle or when OpenOCD
    /// refuses; Hexkit::HexkitError when OpenOCD cannot be reached.
    uint32_t ReadRegister(uint32_t handle, uint32_t& value) override;
    /// 0xFFFFFFFF for an unknown or null name, and for any name but the ID
    /// register on a device without an OpenOCD target.
    uint32_t FindRegister(const char* name, uint32_t& handle) override;
    bool IsReady() override;

private:
    /// Runs a command whose failure is OpenOCD's refusal, not a lost connection: false then.
    bool TryRun(const std::string& command, uint32_t& value);

    std::unique_ptr<OpenOcdClient> m_client;
    SimDevice m_device;
    SimDevice m_router;
    std::vector<std::string> m_targetRegisters;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

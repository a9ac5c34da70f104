// Setup adapter over the simulated board: reports the board configuration
// file and the scan chain that simboard.xml describes, or, for a board reached
// through OpenOCD, the chain that OpenOCD reports.
#ifndef MORA_LUX_SIM_SIMSETUPADAPTER_H
#define MORA_LUX_SIM_SIMSETUPADAPTER_H

#include "devid/target/SetupAdapter.h"
#include "simboard/OpenOcdProcess.h"
#include "simboard/SimBoard.h"

#include <memory>

namespace Mora {
namespace Lux {
namespace Sim {

class SimSetupAdapter : public Trace::SetupAdapter {
public:
    /// Reads the board, through OpenOCD when it goes through OpenOCD (starting
    /// OpenOCD when the board says so); false with the reason in the string when
    /// it cannot, and then no devices.
    bool Open(std::string& nameOrError) override;
    /// "" before a successful Open.
    void GetBoardConfigFile(std::string& path) override;
    /// False, outputs untouched, for a device without parent or an unknown or null name.
    bool GetParent(std::string& parentName, uint32_t& parentType, const char* deviceName) override;
    /// False and 0 without a board.
    bool GetDeviceCount(int32_t& count) override;
    /// Outputs untouched for an index out of range.
    void GetDevice(int32_t index, std::string& name, uint32_t& type) override;
    /// Output untouched for an index out of range.
    void GetTraceId(int32_t index, uint32_t& traceId) override;
    /// "" for an unknown device or without a board.
    void GetDAPName(std::string deviceName, std::string& dapName) override;

private:
    const SimDevice* DeviceAt(int32_t index) const;

    /// Reads the scan chain through OpenOCD; throws Hexkit::HexkitError when it cannot.
    SimBoard Discover(const SimBoard& described);

    SimBoard m_board;
    bool m_open = false;
    /// The OpenOCD this adapter started, stopped with it.
    std::unique_ptr<OpenOcdProcess> m_openOcd;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

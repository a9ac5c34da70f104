// What one simulated board holds: the scan chain with each device's registers
// and memory words, readiness, output file names and the test switches of the
// trace factory. Filled by SimBoardReader; the sibling libraries only read it.
#ifndef MORA_LUX_SIM_SIMBOARD_H
#define MORA_LUX_SIM_SIMBOARD_H

#include <cstdint>
#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Sim {

struct SimRegister {
    std::string name;
    uint32_t value = 0;
    /// Found by name, but every read of it fails.
    bool failsOnRead = false;
};

struct SimMemoryWord {
    uint32_t address = 0;
    uint32_t value = 0;
};

struct SimDevice {
    std::string name;
    uint32_t type = 0;
    /// Empty for a device without parent router.
    std::string parent;
    uint32_t traceId = 0;
    std::string dapName;
    std::string outputFile;
    bool ready = true;
    /// False when no target adapter can be made for the device.
    bool adapterAvailable = true;
    /// Instruction register length of a router's TAP on the simulated scan chain.
    uint32_t irLength = 4;
    /// Through OpenOCD: the TAP a router stands for ("" = the next one on the chain).
    std::string tap;
    /// Through OpenOCD: the target that answers this device's register and memory reads.
    std::string target;
    std::vector<SimRegister> registers;
    std::vector<SimMemoryWord> memory;

    /// Null when the device has no register of that name.
    const SimRegister* FindRegister(const std::string& registerName) const;
    /// Null when no memory word sits at that address.
    const SimMemoryWord* FindMemory(uint32_t address) const;
};

/// Where a board reached through OpenOCD finds it; at most one of the two is set.
struct SimOpenOcd {
    /// "HOST:PORT" of the Tcl RPC server of a running OpenOCD.
    std::string address;
    /// Full path of the configuration file to start OpenOCD with.
    std::string script;
    /// Time limit of each exchange with OpenOCD.
    uint32_t timeoutMs = 5000;
};

/// How the trace factory answers a connection request.
enum class SimConnectMode { Ok, Fail, Throw };

struct SimBoard {
    /// Full path of the board configuration file.
    std::string configFile;
    SimConnectMode connectMode = SimConnectMode::Ok;
    /// Text of the exception when connectMode is Throw.
    std::string connectMessage = "simulated board refuses the channel server connection";
    /// In scan-chain order.
    std::vector<SimDevice> devices;
    /// True when registers and memory are read through OpenOCD rather than from this file.
    bool throughOpenOcd = false;
    SimOpenOcd openOcd;

    /// Null when no device has that name.
    const SimDevice* FindDevice(const std::string& deviceName) const;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

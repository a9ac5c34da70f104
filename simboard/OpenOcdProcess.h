// An OpenOCD that the setup adapter starts from the board's configuration file
// and stops again when it is destroyed. While it runs, DEVID_OPENOCD names its
// Tcl RPC port, so that the target adapters of the process find it.
#ifndef MORA_LUX_SIM_OPENOCDPROCESS_H
#define MORA_LUX_SIM_OPENOCDPROCESS_H

#include <cstdint>
#include <string>
#include <sys/types.h>

namespace Mora {
namespace Lux {
namespace Sim {

class OpenOcdProcess {
public:
    /// Starts "openocd -f script" with its Tcl RPC on a free loopback port and
    /// waits up to timeoutMs until it answers. Throws Hexkit::HexkitError when
    /// it cannot be started or does not answer in time (it is stopped then).
    OpenOcdProcess(const std::string& script, uint32_t timeoutMs);
    /// Stops OpenOCD (SIGTERM, then SIGKILL) and reaps it.
    ~OpenOcdProcess();
    OpenOcdProcess(const OpenOcdProcess&) = delete;
    OpenOcdProcess& operator=(const OpenOcdProcess&) = delete;

private:
    void Stop();

    pid_t m_pid = -1;
    std::string m_address;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

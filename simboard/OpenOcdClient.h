// One connection to the Tcl RPC server of OpenOCD: each command and each
// answer ends with the byte 0x1a.
#ifndef MORA_LUX_SIM_OPENOCDCLIENT_H
#define MORA_LUX_SIM_OPENOCDCLIENT_H

#include <cstdint>
#include <string>

namespace Mora {
namespace Lux {
namespace Sim {

class OpenOcdClient {
public:
    /// Connects within timeoutMs. Throws Hexkit::HexkitError ("cannot reach
    /// OpenOCD at HOST:PORT: REASON") when it cannot.
    OpenOcdClient(const std::string& host, uint16_t port, uint32_t timeoutMs);
    ~OpenOcdClient();
    OpenOcdClient(const OpenOcdClient&) = delete;
    OpenOcdClient& operator=(const OpenOcdClient&) = delete;

    /// Runs one Tcl command and returns its result. Throws Hexkit::HexkitError
    /// with OpenOCD's message when the command fails, and when the connection
    /// breaks or the answer does not come within the time limit.
    std::string Run(const std::string& command);

    /// False once an exchange broke and the connection was dropped.
    bool Connected() const { return m_socket >= 0; }

    /// Splits "HOST:PORT"; false for a missing host, or a port that is not 1 to 65535.
    static bool ParseAddress(const std::string& text, std::string& host, uint16_t& port);

private:
    [[noreturn]] void Fail(const std::string& what);
    /// Waits for the socket to be ready for events until the deadline; false on timeout.
    bool WaitFor(short events, int64_t deadlineMs);

    int m_socket = -1;
    uint32_t m_timeoutMs;
    std::string m_address;
    std::string m_pending;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

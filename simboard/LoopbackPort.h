// A loopback port for a server that cannot report the one it picks (OpenOCD's
// Tcl RPC port); header-only, so that the tests share it without linking.
#ifndef MORA_LUX_SIM_LOOPBACKPORT_H
#define MORA_LUX_SIM_LOOPBACKPORT_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>

namespace Mora {
namespace Lux {
namespace Sim {

/// A port on 127.0.0.1 that was free a moment ago; 0 when none can be had.
inline uint16_t FreeLoopbackPort()
{
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return 0;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    uint16_t port = 0;
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        port = ntohs(address.sin_port);
    close(fd);
    return port;
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

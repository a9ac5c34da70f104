// Serves a JtagChain to one client over the remote_bitbang protocol of OpenOCD,
// on the loopback address only.
#ifndef MORA_LUX_SIM_REMOTEBITBANGSERVER_H
#define MORA_LUX_SIM_REMOTEBITBANGSERVER_H

#include "simboard/JtagChain.h"

#include <csignal>
#include <cstdint>
#include <string>

namespace Mora {
namespace Lux {
namespace Sim {

class RemoteBitbangServer {
public:
    explicit RemoteBitbangServer(JtagChain& chain) : m_chain(chain) {}
    ~RemoteBitbangServer();
    RemoteBitbangServer(const RemoteBitbangServer&) = delete;
    RemoteBitbangServer& operator=(const RemoteBitbangServer&) = delete;

    /// Listens on 127.0.0.1:port (0: a free port). False with the reason in error.
    bool Listen(uint16_t port, std::string& error);
    uint16_t Port() const { return m_port; }
    /// Serves the first client until it quits or goes away, or until stop is set.
    /// False with the reason in error on a socket failure.
    bool ServeOne(const volatile std::sig_atomic_t& stop, std::string& error);

private:
    /// Handles received bytes; appends the answers to TDO reads. False on quit.
    bool Handle(const char* data, size_t size, std::string& answers);

    JtagChain& m_chain;
    int m_listener = -1;
    bool m_tckHigh = false;
    uint16_t m_port = 0;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

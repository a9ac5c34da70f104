// Trace factory of the simulated board. It owns the channel servers it makes,
// so a client that forgets to disconnect does not leak them.
#ifndef MORA_LUX_SIM_SIMTRACEFACTORY_H
#define MORA_LUX_SIM_SIMTRACEFACTORY_H

#include "devid/target/TraceFactory.h"
#include "simboard/SimChannelServer.h"

#include <memory>
#include <vector>

namespace Mora {
namespace Lux {
namespace Sim {

class SimTraceFactory : public Trace::TraceFactory {
public:
    /// Leaves *server null when the board cannot be read or refuses; throws
    /// Hexkit::HexkitError when the board asks for it. A null server does nothing.
    void ConnectChannelServer(Trace::ChannelServer** server, int mode) override;
    /// Frees a server made here; any other pointer, null included, is ignored.
    void DisconnectChannelServer(Trace::ChannelServer* server, int mode) override;

private:
    std::vector<std::unique_ptr<SimChannelServer>> m_servers;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

#include "simboard/SimTraceFactory.h"

#include "devid/target/HexkitError.h"
#include "simboard/OpenOcdBoard.h"

#include <algorithm>

namespace Mora {
namespace Lux {
namespace Sim {

void SimTraceFactory::ConnectChannelServer(Trace::ChannelServer** server, int)
{
    if (server == nullptr)
        return;
    *server = nullptr;
    SimBoardReadResult read = OpenOcdBoard::ReadDescription();
    if (!read.ok || read.board.connectMode == SimConnectMode::Fail)
        return;
    if (read.board.connectMode == SimConnectMode::Throw)
        throw Hexkit::HexkitError(read.board.connectMessage, Hexkit::HexkitErrorIF::SEVERITY_ERROR);

    std::map<std::string, std::string> outputFiles;
    for (const SimDevice& device : read.board.devices)
        outputFiles[device.name] = device.outputFile;
    m_servers.push_back(std::make_unique<SimChannelServer>(std::move(outputFiles)));
    *server = m_servers.back().get();
}

void SimTraceFactory::DisconnectChannelServer(Trace::ChannelServer* server, int)
{
    auto it = std::find_if(m_servers.begin(), m_servers.end(),
                           [&](const std::unique_ptr<SimChannelServer>& owned) { return owned.get() == server; });
    if (it != m_servers.end())
        m_servers.erase(it);
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

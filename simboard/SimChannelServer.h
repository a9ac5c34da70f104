// Channel server of the simulated board: gives each device's trace output
// file name as the board listed it when the server was connected.
#ifndef MORA_LUX_SIM_SIMCHANNELSERVER_H
#define MORA_LUX_SIM_SIMCHANNELSERVER_H

#include "devid/target/TraceFactory.h"

#include <map>
#include <string>

namespace Mora {
namespace Lux {
namespace Sim {

class SimChannelServer : public Trace::ChannelServer {
public:
    explicit SimChannelServer(std::map<std::string, std::string> outputFiles);

    /// "" for a name the board does not list.
    void GetOutputFileName(const std::string& procName, std::string& fileName) override;

private:
    std::map<std::string, std::string> m_outputFiles;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

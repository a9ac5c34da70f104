#include "simboard/SimChannelServer.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Sim {

SimChannelServer::SimChannelServer(std::map<std::string, std::string> outputFiles)
    : m_outputFiles(std::move(outputFiles))
{
}

void SimChannelServer::GetOutputFileName(const std::string& procName, std::string& fileName)
{
    auto it = m_outputFiles.find(procName);
    fileName = it != m_outputFiles.end() ? it->second : std::string();
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

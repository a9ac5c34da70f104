#include "simboard/SimSetupAdapter.h"

#include "devid/target/HexkitError.h"
#include "simboard/OpenOcdBoard.h"
#include "simboard/SimBoardReader.h"

#include <cstdlib>

namespace Mora {
namespace Lux {
namespace Sim {

bool SimSetupAdapter::Open(std::string& nameOrError)
{
    SimBoardReadResult read = OpenOcdBoard::ReadDescription();
    m_board = SimBoard();
    m_open = false;
    if (!read.ok) {
        nameOrError = "cannot open the simulated board: " + read.description;
        return false;
    }
    if (!read.board.throughOpenOcd) {
        m_board = std::move(read.board);
        m_open = true;
        return true;
    }
    try {
        m_board = Discover(read.board);
        m_open = true;
    } catch (const Hexkit::HexkitError& error) {
        nameOrError = error.what();
    }
    return m_open;
}

SimBoard SimSetupAdapter::Discover(const SimBoard& described)
{
    const char* running = std::getenv(OpenOcdBoard::AddressVariable);
    const bool useRunning = running != nullptr && *running != '\0';
    if (!useRunning && !described.openOcd.script.empty() && m_openOcd == nullptr)
        m_openOcd = std::make_unique<OpenOcdProcess>(described.openOcd.script, described.openOcd.timeoutMs);
    std::unique_ptr<OpenOcdClient> client = OpenOcdBoard::Connect(described);
    return OpenOcdBoard::Discover(*client, described);
}

void SimSetupAdapter::GetBoardConfigFile(std::string& path)
{
    path = m_board.configFile;
}

bool SimSetupAdapter::GetParent(std::string& parentName, uint32_t& parentType, const char* deviceName)
{
    const SimDevice* device = deviceName != nullptr ? m_board.FindDevice(deviceName) : nullptr;
    const SimDevice* parent = device != nullptr ? m_board.FindDevice(device->parent) : nullptr;
    if (parent == nullptr)
        return false;
    parentName = parent->name;
    parentType = parent->type;
    return true;
}

bool SimSetupAdapter::GetDeviceCount(int32_t& count)
{
    count = static_cast<int32_t>(m_board.devices.size());
    return m_open;
}

void SimSetupAdapter::GetDevice(int32_t index, std::string& name, uint32_t& type)
{
    if (const SimDevice* device = DeviceAt(index)) {
        name = device->name;
        type = device->type;
    }
}

void SimSetupAdapter::GetTraceId(int32_t index, uint32_t& traceId)
{
    if (const SimDevice* device = DeviceAt(index))
        traceId = device->traceId;
}

void SimSetupAdapter::GetDAPName(std::string deviceName, std::string& dapName)
{
    const SimDevice* device = m_board.FindDevice(deviceName);
    dapName = device != nullptr ? device->dapName : std::string();
}

const SimDevice* SimSetupAdapter::DeviceAt(int32_t index) const
{
    if (index < 0 || static_cast<size_t>(index) >= m_board.devices.size())
        return nullptr;
    return &m_board.devices[static_cast<size_t>(index)];
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

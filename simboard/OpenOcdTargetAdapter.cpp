#include "simboard/OpenOcdTargetAdapter.h"

#include "devid/target/HexkitError.h"
#include "simboard/OpenOcdBoard.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Sim {

namespace {

// Handles start away from 0 so that a caller who confuses the lookup's result
// (0 = found) with the handle reads nothing.
const uint32_t IdHandle = 0x100;
const uint32_t FirstTargetHandle = 0x101;
const uint32_t NotFound = 0xFFFFFFFF;
const uint32_t Refused = 1;

} // namespace

OpenOcdTargetAdapter::OpenOcdTargetAdapter(std::unique_ptr<OpenOcdClient> client, SimDevice device, SimDevice router)
    : m_client(std::move(client)), m_device(std::move(device)), m_router(std::move(router))
{
}

bool OpenOcdTargetAdapter::TryRun(const std::string& command, uint32_t& value)
{
    std::string answer;
    try {
        answer = m_client->Run(command);
    } catch (const Hexkit::HexkitError&) {
        if (!m_client->Connected())
            throw;
        return false;
    }
    return OpenOcdBoard::ParseNumber(answer, value);
}

uint32_t OpenOcdTargetAdapter::ReadMemory(uint32_t& value, uint32_t address, uint32_t, bool)
{
    uint32_t word = 0;
    bool read;
    if (!m_device.target.empty()) {
        read = TryRun("lindex [" + m_device.target + " read_memory " + OpenOcdBoard::Hex(address) + " 32 1] 0", word);
    } else if (m_router.tap.empty()) {
        return Refused;
    } else {
        // A debug port can be declared after init, but only "dap init" connects it.
        // Then word size without address increment, TAR, and one DRW read on access port 0.
        const std::string port = "devid." + m_router.tap;
        read = TryRun("if {[lsearch -exact [dap names] " + port + "] < 0} {dap create " + port +
                          " -chain-position " + m_router.tap + "; dap init}; " + port + " apreg 0 0x0 [expr {([" +
                          port + " apreg 0 0x0] & ~0x37) | 0x2}]; " + port + " apreg 0 0x4 " +
                          OpenOcdBoard::Hex(address) + "; " + port + " apreg 0 0xc",
                      word);
    }
    if (!read)
        return Refused;
    value = word;
    return 0;
}

uint32_t OpenOcdTargetAdapter::ReadRegister(uint32_t handle, uint32_t& value)
{
    uint32_t read = 0;
    bool ok;
    if (handle == IdHandle && !m_device.registers.empty())
        ok = TryRun("jtag cget " + m_router.tap + " -idcode", read);
    else if (handle >= FirstTargetHandle && handle - FirstTargetHandle < m_targetRegisters.size())
        ok = TryRun("dict get [" + m_device.target + " get_reg -force {" +
                        m_targetRegisters[handle - FirstTargetHandle] + "}] " +
                        m_targetRegisters[handle - FirstTargetHandle],
                    read);
    else
        return Refused;
    if (!ok)
        return Refused;
    value = read;
    return 0;
}

uint32_t OpenOcdTargetAdapter::FindRegister(const char* name, uint32_t& handle)
{
    if (name == nullptr)
        return NotFound;
    // Discovery leaves a router at most its one ID register.
    if (!m_device.registers.empty() && m_device.registers.front().name == name) {
        handle = IdHandle;
        return 0;
    }
    if (m_device.target.empty())
        return NotFound;
    for (size_t i = 0; i < m_targetRegisters.size(); ++i) {
        if (m_targetRegisters[i] == name) {
            handle = FirstTargetHandle + static_cast<uint32_t>(i);
            return 0;
        }
    }
    uint32_t ignored = 0;
    if (!TryRun("dict get [" + m_device.target + " get_reg {" + name + "}] " + name, ignored))
        return NotFound;
    m_targetRegisters.push_back(name);
    handle = FirstTargetHandle + static_cast<uint32_t>(m_targetRegisters.size() - 1);
    return 0;
}

bool OpenOcdTargetAdapter::IsReady()
{
    return m_device.ready;
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

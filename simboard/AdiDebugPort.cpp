#include "simboard/AdiDebugPort.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Sim {

namespace {

const uint32_t Abort = 0x8;
const uint32_t DpAccess = 0xA;
const uint32_t ApAccess = 0xB;
const uint64_t AckOk = 0x2;

const uint32_t DpCtrlStat = 0x4;
const uint32_t DpSelect = 0x8;
const uint32_t DpReadBuffer = 0xC;

const uint32_t ApCsw = 0x00;
const uint32_t ApTar = 0x04;
const uint32_t ApDrw = 0x0C;
const uint32_t ApBankedFirst = 0x10;
const uint32_t ApBankedLast = 0x1C;
const uint32_t ApCfg = 0xF4;
const uint32_t ApBase = 0xF8;
const uint32_t ApIdr = 0xFC;
// An AHB MEM-AP of the ARM designer code; base register: no debug ROM table.
const uint32_t MemApIdentity = 0x24770011;
const uint32_t NoRomTable = 0x00000002;
const uint32_t CswDeviceEnabled = 1u << 6;
const uint32_t CswIncrementSingle = 1u << 4;
const uint32_t CswIncrementMask = 3u << 4;

} // namespace

AdiDebugPort::AdiDebugPort(std::map<uint32_t, uint32_t> memory) : m_memory(std::move(memory))
{
}

bool AdiDebugPort::Selects(uint32_t instruction)
{
    return instruction == Abort || instruction == DpAccess || instruction == ApAccess;
}

uint64_t AdiDebugPort::Capture() const
{
    return (static_cast<uint64_t>(m_readResult) << 3) | AckOk;
}

void AdiDebugPort::Update(uint32_t instruction, uint64_t scan)
{
    const bool read = (scan & 1) != 0;
    const uint32_t address = static_cast<uint32_t>(scan & 6) << 1;
    const uint32_t value = static_cast<uint32_t>(scan >> 3);
    if (instruction == ApAccess) {
        // Banked by SELECT; only access port 0 exists.
        const uint32_t apAddress = (m_select & 0xF0) | address;
        if ((m_select >> 24) != 0)
            m_readResult = 0;
        else if (read)
            m_readResult = ReadAp(apAddress);
        else
            WriteAp(apAddress, value);
        return;
    }
    if (instruction != DpAccess)
        return;
    if (!read) {
        if (address == DpCtrlStat)
            m_ctrlStat = value;
        else if (address == DpSelect)
            m_select = value;
        return;
    }
    if (address == DpCtrlStat) {
        // Every power-up and reset request is acknowledged at once (each ACK is one bit above its REQ).
        const uint32_t requests = m_ctrlStat & ((1u << 30) | (1u << 28) | (1u << 26));
        m_readResult = m_ctrlStat | (requests << 1);
    } else if (address == DpSelect) {
        m_readResult = m_select;
    } else if (address != DpReadBuffer) {
        m_readResult = 0;
    }
}

uint32_t AdiDebugPort::ReadAp(uint32_t address)
{
    auto word = [this](uint32_t at) {
        auto it = m_memory.find(at & ~3u);
        return it == m_memory.end() ? 0u : it->second;
    };
    switch (address) {
    case ApCsw:
        return m_csw | CswDeviceEnabled;
    case ApTar:
        return m_tar;
    case ApDrw: {
        uint32_t value = word(m_tar);
        if ((m_csw & CswIncrementMask) == CswIncrementSingle)
            m_tar += 4;
        return value;
    }
    case ApCfg:
        return 0;
    case ApBase:
        return NoRomTable;
    case ApIdr:
        return MemApIdentity;
    default:
        if (address >= ApBankedFirst && address <= ApBankedLast)
            return word((m_tar & ~0xFu) | (address - ApBankedFirst));
        return 0;
    }
}

void AdiDebugPort::WriteAp(uint32_t address, uint32_t value)
{
    if (address == ApCsw)
        m_csw = value;
    else if (address == ApTar)
        m_tar = value;
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

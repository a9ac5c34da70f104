#include "simboard/JtagTap.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Sim {

JtagTap::JtagTap(unsigned irLength, bool hasIdcode, uint32_t idcode, std::unique_ptr<AdiDebugPort> debugPort)
    : m_irLength(irLength), m_hasIdcode(hasIdcode), m_idcode(idcode), m_debugPort(std::move(debugPort))
{
    Reset();
}

void JtagTap::Reset()
{
    const uint32_t bypass = static_cast<uint32_t>((uint64_t(1) << m_irLength) - 1);
    // IDCODE is the all-ones opcode less one, as on ARM debug ports (0xE of 4 bits).
    m_ir = m_hasIdcode ? bypass - 1 : bypass;
}

bool JtagTap::IsIdcode() const
{
    const uint32_t bypass = static_cast<uint32_t>((uint64_t(1) << m_irLength) - 1);
    return m_hasIdcode && m_ir == bypass - 1;
}

unsigned JtagTap::DrLength() const
{
    if (IsIdcode())
        return 32;
    if (m_debugPort != nullptr && m_irLength == AdiDebugPort::IrLength && AdiDebugPort::Selects(m_ir))
        return AdiDebugPort::ScanLength;
    return 1;
}

void JtagTap::CaptureIr()
{
    // The 0b...01 pattern is how a probe finds where one TAP's IR ends.
    m_irShift = 1;
}

void JtagTap::CaptureDr()
{
    if (IsIdcode())
        m_drShift = m_idcode;
    else if (DrLength() == AdiDebugPort::ScanLength)
        m_drShift = m_debugPort->Capture();
    else
        m_drShift = 0;
}

bool JtagTap::ShiftIr(bool tdi)
{
    bool out = (m_irShift & 1) != 0;
    m_irShift = (m_irShift >> 1) | (static_cast<uint32_t>(tdi) << (m_irLength - 1));
    return out;
}

bool JtagTap::ShiftDr(bool tdi)
{
    bool out = (m_drShift & 1) != 0;
    m_drShift = (m_drShift >> 1) | (static_cast<uint64_t>(tdi) << (DrLength() - 1));
    return out;
}

void JtagTap::UpdateIr()
{
    m_ir = m_irShift;
}

void JtagTap::UpdateDr()
{
    if (DrLength() == AdiDebugPort::ScanLength)
        m_debugPort->Update(m_ir, m_drShift);
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

// One TAP of the simulated scan chain: its instruction register, BYPASS,
// IDCODE and, when it has one, the ARM debug port behind it.
#ifndef MORA_LUX_SIM_JTAGTAP_H
#define MORA_LUX_SIM_JTAGTAP_H

#include "simboard/AdiDebugPort.h"

#include <cstdint>
#include <memory>

namespace Mora {
namespace Lux {
namespace Sim {

class JtagTap {
public:
    /// irLength 2 to 32. hasIdcode false: the TAP comes out of reset in BYPASS.
    /// A null debugPort makes every instruction but IDCODE select BYPASS.
    JtagTap(unsigned irLength, bool hasIdcode, uint32_t idcode, std::unique_ptr<AdiDebugPort> debugPort);

    /// Test-Logic-Reset: IDCODE selected when there is one, else BYPASS.
    void Reset();

    void CaptureIr();
    void CaptureDr();
    /// One bit through the selected register; returns the bit that falls out.
    bool ShiftIr(bool tdi);
    bool ShiftDr(bool tdi);
    void UpdateIr();
    void UpdateDr();
    /// The bit the TAP presents on TDO while shifting.
    bool IrOut() const { return (m_irShift & 1) != 0; }
    bool DrOut() const { return (m_drShift & 1) != 0; }

private:
    unsigned DrLength() const;
    bool IsIdcode() const;

    unsigned m_irLength;
    bool m_hasIdcode;
    uint32_t m_idcode;
    std::unique_ptr<AdiDebugPort> m_debugPort;
    uint32_t m_ir = 0;
    uint32_t m_irShift = 0;
    uint64_t m_drShift = 0;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

// ARM debug port (ADIv5 JTAG-DP) with one memory access port over the
// simulated memory words of the devices behind a TAP.
#ifndef MORA_LUX_SIM_ADIDEBUGPORT_H
#define MORA_LUX_SIM_ADIDEBUGPORT_H

#include <cstdint>
#include <map>

namespace Mora {
namespace Lux {
namespace Sim {

class AdiDebugPort {
public:
    static const unsigned IrLength = 4;
    /// RnW, A[3:2] and 32 data bits.
    static const unsigned ScanLength = 35;

    explicit AdiDebugPort(std::map<uint32_t, uint32_t> memory);

    /// True for the DPACC, APACC and ABORT instructions.
    static bool Selects(uint32_t instruction);
    /// The acknowledge (always OK) and the result of the previous read.
    uint64_t Capture() const;
    /// Performs the access shifted in under that instruction.
    void Update(uint32_t instruction, uint64_t scan);

private:
    uint32_t ReadAp(uint32_t address);
    void WriteAp(uint32_t address, uint32_t value);

    std::map<uint32_t, uint32_t> m_memory;
    uint32_t m_ctrlStat = 0;
    uint32_t m_select = 0;
    uint32_t m_csw = 0;
    uint32_t m_tar = 0;
    uint32_t m_readResult = 0;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

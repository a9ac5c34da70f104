// The simulated scan chain: the TAP state machine that all TAPs share and the
// TAPs in chain order, the first one nearest TDO.
#ifndef MORA_LUX_SIM_JTAGCHAIN_H
#define MORA_LUX_SIM_JTAGCHAIN_H

#include "simboard/JtagTap.h"
#include "simboard/SimBoard.h"

#include <memory>
#include <vector>

namespace Mora {
namespace Lux {
namespace Sim {

class JtagChain {
public:
    /// One TAP per router (device without parent): IDCODE from its IP_TAPID
    /// register, else its DEVICE_ID, else none. A TAP with a 4-bit IR also holds
    /// a debug port over the memory words of the router and the devices behind it.
    static JtagChain FromBoard(const SimBoard& board);

    /// Test-Logic-Reset, as TRST does.
    void Reset();
    /// One rising edge of TCK.
    void Clock(bool tms, bool tdi);
    bool Tdo() const;

    size_t TapCount() const { return m_taps.size(); }

private:
    enum class State {
        Reset, Idle,
        SelectDr, CaptureDr, ShiftDr, Exit1Dr, PauseDr, Exit2Dr, UpdateDr,
        SelectIr, CaptureIr, ShiftIr, Exit1Ir, PauseIr, Exit2Ir, UpdateIr
    };
    static State Next(State state, bool tms);

    State m_state = State::Reset;
    std::vector<std::unique_ptr<JtagTap>> m_taps;
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

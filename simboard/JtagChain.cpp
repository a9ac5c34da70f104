#include "simboard/JtagChain.h"

#include <map>

namespace Mora {
namespace Lux {
namespace Sim {

JtagChain JtagChain::FromBoard(const SimBoard& board)
{
    JtagChain chain;
    for (const SimDevice& router : board.devices) {
        if (!router.parent.empty())
            continue;
        const SimRegister* id = router.FindRegister("IP_TAPID");
        if (id == nullptr)
            id = router.FindRegister("DEVICE_ID");
        std::unique_ptr<AdiDebugPort> debugPort;
        if (router.irLength == AdiDebugPort::IrLength) {
            std::map<uint32_t, uint32_t> memory;
            for (const SimDevice& device : board.devices)
                if (&device == &router || device.parent == router.name)
                    for (const SimMemoryWord& word : device.memory)
                        memory.emplace(word.address, word.value);
            debugPort = std::make_unique<AdiDebugPort>(std::move(memory));
        }
        chain.m_taps.push_back(std::make_unique<JtagTap>(router.irLength, id != nullptr, id != nullptr ? id->value : 0,
                                                         std::move(debugPort)));
    }
    return chain;
}

void JtagChain::Reset()
{
    m_state = State::Reset;
    for (auto& tap : m_taps)
        tap->Reset();
}

bool JtagChain::Tdo() const
{
    if (m_taps.empty())
        return false;
    if (m_state == State::ShiftIr)
        return m_taps.front()->IrOut();
    if (m_state == State::ShiftDr)
        return m_taps.front()->DrOut();
    return false;
}

void JtagChain::Clock(bool tms, bool tdi)
{
    // TDI enters the TAP farthest from TDO; each TAP passes its old bit on.
    switch (m_state) {
    case State::CaptureIr:
        for (auto& tap : m_taps)
            tap->CaptureIr();
        break;
    case State::CaptureDr:
        for (auto& tap : m_taps)
            tap->CaptureDr();
        break;
    case State::ShiftIr:
        for (auto it = m_taps.rbegin(); it != m_taps.rend(); ++it)
            tdi = (*it)->ShiftIr(tdi);
        break;
    case State::ShiftDr:
        for (auto it = m_taps.rbegin(); it != m_taps.rend(); ++it)
            tdi = (*it)->ShiftDr(tdi);
        break;
    case State::UpdateIr:
        for (auto& tap : m_taps)
            tap->UpdateIr();
        break;
    case State::UpdateDr:
        for (auto& tap : m_taps)
            tap->UpdateDr();
        break;
    default:
        break;
    }
    State next = Next(m_state, tms);
    if (next == State::Reset && m_state != State::Reset)
        Reset();
    m_state = next;
}

JtagChain::State JtagChain::Next(State state, bool tms)
{
    switch (state) {
    case State::Reset: return tms ? State::Reset : State::Idle;
    case State::Idle: return tms ? State::SelectDr : State::Idle;
    case State::SelectDr: return tms ? State::SelectIr : State::CaptureDr;
    case State::CaptureDr: return tms ? State::Exit1Dr : State::ShiftDr;
    case State::ShiftDr: return tms ? State::Exit1Dr : State::ShiftDr;
    case State::Exit1Dr: return tms ? State::UpdateDr : State::PauseDr;
    case State::PauseDr: return tms ? State::Exit2Dr : State::PauseDr;
    case State::Exit2Dr: return tms ? State::UpdateDr : State::ShiftDr;
    case State::UpdateDr: return tms ? State::SelectDr : State::Idle;
    case State::SelectIr: return tms ? State::Reset : State::CaptureIr;
    case State::CaptureIr: return tms ? State::Exit1Ir : State::ShiftIr;
    case State::ShiftIr: return tms ? State::Exit1Ir : State::ShiftIr;
    case State::Exit1Ir: return tms ? State::UpdateIr : State::PauseIr;
    case State::PauseIr: return tms ? State::Exit2Ir : State::PauseIr;
    case State::Exit2Ir: return tms ? State::UpdateIr : State::ShiftIr;
    case State::UpdateIr: return tms ? State::SelectDr : State::Idle;
    }
    return State::Reset;
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

// What the trace tooling labels a session with: debugger, emulator, port and
// each processor's trace output file, live from the channel server or, after
// a configuration load, from the saved map.
#include "devid/CDeviceIdentifierImpl.h"

#include "devid/DevIdLog.h"
#include "devid/target/TraceFactory.h"

#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

std::string CDeviceIdentifierImpl::GetSessionSetting(const std::string& name, _eSessionSetting setting)
{
    if (!m_board)
        LoadDeviceConnectionInfo();
    if (!m_board)
        return std::string();

    switch (setting) {
    case eSessionSettingDebuggerName:
        DevIdLog(1, "DevId: eSessionSettingDebuggerName - Quarry Workbench");
        return "Quarry Workbench";
    case eSessionSettingEmuName:
        DevIdLog(1, "DevId: eSessionSettingEmuName - %s", m_board->emulatorName.c_str());
        return m_board->emulatorName;
    case eSessionSettingEmuPort:
        DevIdLog(1, "DevId: eSessionSettingEmuPort - %s", m_board->emulatorPort.c_str());
        return m_board->emulatorPort;
    case eSessionSettingOutFile: {
        const std::string outFile = GetOutFileName(name);
        DevIdLog(1, "DevId: eSessionSettingOutFile - %s", outFile.c_str());
        return outFile;
    }
    }
    return std::string();
}

std::string CDeviceIdentifierImpl::GetOutFileName(const std::string& name)
{
    DevIdLog(1, "DevId: GetOutFileName called cpuName=%s, this=%s", name.c_str(), HexAddress(this).c_str());

    if (m_configLoaded) {
        const auto entry = m_outFiles.find(name);
        return entry == m_outFiles.end() ? std::string() : entry->second;
    }

    m_lastOutFile.clear();
    if (m_channelServer == nullptr) {
        DevIdLog(16, "DevId: GetOutFileName called with no channel Server(cpuName=%s)", name.c_str());
        return m_lastOutFile;
    }
    try {
        m_channelServer->GetOutputFileName(name, m_lastOutFile);
        // An empty answer means the server knows no file; keep what the map has.
        if (!m_lastOutFile.empty())
            m_outFiles[name] = m_lastOutFile;
    } catch (...) {
        // A failing server must not take the client down; the answer so far stands.
    }
    return m_lastOutFile;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

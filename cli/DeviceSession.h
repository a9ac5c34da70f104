// The tool's hold on the process's device identifier: created through the
// library's exported functions, destroyed when the command is done, and
// optionally switched to a saved configuration (offline, no target).
#ifndef DEVID_CLI_DEVICESESSION_H
#define DEVID_CLI_DEVICESESSION_H

#include "cli/DeviceViews.h"
#include "devid/CDeviceIdentifier.h"

#include <cstdint>
#include <string>
#include <utility>

namespace Mora {
namespace Lux {
namespace Trace {
class CDeviceIdentifierImpl;
}
} // namespace Lux
} // namespace Mora

namespace devid_cli {

class DeviceSession {
public:
    /// Throws ToolError (Internal) when the library hands out no device
    /// identifier or one that is not the library's own implementation.
    DeviceSession();
    ~DeviceSession();
    DeviceSession(const DeviceSession&) = delete;
    DeviceSession& operator=(const DeviceSession&) = delete;

    Mora::Lux::Trace::CDeviceIdentifier& device() { return *m_device; }
    /// The same object, for what the client interface does not show.
    Mora::Lux::Trace::CDeviceIdentifierImpl& impl() { return *m_impl; }

    /// Loads a DCM file (a path, or a name in the trace logging folder) or the
    /// DEVID section of a ".tdf" file. Throws ToolError (File) when the file
    /// can't be found or read or holds no configuration.
    LoadView LoadConfiguration(const std::string& file);

    /// True after LoadConfiguration: the session works from the saved text.
    bool Offline() const { return m_offline; }
    /// After a load: the saved device ID whose description the session uses
    /// and that file; {0, ""} when no description matches a saved ID.
    const std::pair<uint32_t, std::string>& LoadedDescription() const { return m_loadedDescription; }

private:
    void Open();
    void Close();

    Mora::Lux::Trace::CDeviceIdentifier* m_device = nullptr;
    Mora::Lux::Trace::CDeviceIdentifierImpl* m_impl = nullptr;
    bool m_offline = false;
    std::pair<uint32_t, std::string> m_loadedDescription;
};

} // namespace devid_cli

#endif

// Sets up state inside a device identifier by hand, so that queries, linking,
// name conversion and the saved session can be tested without a database or
// a target.
#ifndef DEVID_TESTS_DEVICEIDENTIFIERTESTACCESS_H
#define DEVID_TESTS_DEVICEIDENTIFIERTESTACCESS_H

#include "devid/CDeviceIdentifierImpl.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CSourceInfoImpl.h"
#include "devid/model/CTraceRouteInfoImpl.h"

#include <map>
#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

class DeviceIdentifierTestAccess {
public:
    explicit DeviceIdentifierTestAccess(CDeviceIdentifierImpl& devId) : d(devId) {}

    CModuleInfoImpl* AddModule(const std::string& name)
    {
        return d.m_modules.emplace_back(new CModuleInfoImpl(name, "kind", "proc", "1")).get();
    }
    CSourceInfoImpl* AddSource(const std::string& id, const std::string& name, std::vector<std::string> parts = {})
    {
        return d.m_sources.emplace_back(new CSourceInfoImpl(id, name, parts, {}, false)).get();
    }
    CTraceRouteInfoImpl* AddRoute(const std::string& source, std::vector<std::string> links, const std::string& sink,
                                  const std::string& drm)
    {
        return d.m_routes.emplace_back(new CTraceRouteInfoImpl(source, links, sink, drm)).get();
    }
    void AddConnection(uint32_t deviceType, uint32_t traceId, const std::string& name, const std::string& parent)
    {
        d.m_connections.push_back({deviceType, traceId, name, parent});
    }
    void AddFamily(uint32_t id, const std::string& family) { d.m_families.push_back({id, family}); }
    std::vector<DeviceConnectionInfo>& Connections() { return d.m_connections; }
    std::map<std::string, std::string>& OutFiles() { return d.m_outFiles; }
    void SetBoard() { d.m_board.reset(new BoardConfig{"kmr990", "1"}); }
    void SetChannelServer(ChannelServer* server) { d.m_channelServer = server; }
    /// The processor name a client asked for last, which name conversion starts from.
    void SelectProc(const std::string& name) { d.m_selectedProcName = name; }

    /// Queries then take the model built so far as the loaded one.
    void MarkLoaded() { d.m_databasesLoaded = true; }
    /// Offline without device IDs: the next load fails without touching a target.
    void GoOffline()
    {
        d.m_configFromFile = true;
        d.m_deviceIds.clear();
    }

private:
    CDeviceIdentifierImpl& d;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

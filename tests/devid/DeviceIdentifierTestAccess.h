// Builds a description model inside a device identifier by hand, so that the
// queries and the linking can be tested without a database or a target.
#ifndef DEVID_TESTS_DEVICEIDENTIFIERTESTACCESS_H
#define DEVID_TESTS_DEVICEIDENTIFIERTESTACCESS_H

#include "devid/CDeviceIdentifierImpl.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CSourceInfoImpl.h"
#include "devid/model/CTraceRouteInfoImpl.h"

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
    /// Queries then take the hand-built model as the loaded one.
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

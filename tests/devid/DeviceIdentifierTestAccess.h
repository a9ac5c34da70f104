// Builds a description model inside a device identifier by hand, so that the
// queries and the linking can be tested without a database or a target.
#ifndef DEVID_TESTS_DEVICEIDENTIFIERTESTACCESS_H
#define DEVID_TESTS_DEVICEIDENTIFIERTESTACCESS_H

#include "devid/CDeviceIdentifierImpl.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CSourceInfoImpl.h"
#include "devid/model/CTraceRouteInfoImpl.h"

#include <memory>
#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

class DeviceIdentifierTestAccess {
public:
    explicit DeviceIdentifierTestAccess(CDeviceIdentifierImpl& devId) : m_devId(devId) {}

    CModuleInfoImpl* AddModule(const std::string& name)
    {
        m_devId.m_modules.push_back(std::make_unique<CModuleInfoImpl>(name, "kind", "proc", "1"));
        return m_devId.m_modules.back().get();
    }
    CSourceInfoImpl* AddSource(const std::string& id, const std::string& name,
                               std::vector<std::string> components = {})
    {
        m_devId.m_sources.push_back(std::make_unique<CSourceInfoImpl>(id, name, std::move(components),
                                                                      std::vector<CCharacteristic*>(), false));
        return m_devId.m_sources.back().get();
    }
    CTraceRouteInfoImpl* AddRoute(const std::string& sourceId, std::vector<std::string> links,
                                  const std::string& sink, const std::string& drm)
    {
        m_devId.m_routes.push_back(std::make_unique<CTraceRouteInfoImpl>(sourceId, std::move(links), sink, drm));
        return m_devId.m_routes.back().get();
    }
    // Queries then use the hand-built model as the loaded one.
    void MarkLoaded() { m_devId.m_databasesLoaded = true; }
    // Offline and without device IDs: the next load fails without touching any target.
    void GoOffline()
    {
        m_devId.m_configFromFile = true;
        m_devId.m_deviceIds.clear();
    }

private:
    CDeviceIdentifierImpl& m_devId;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

// Client queries over the description model and the lookups that link it.
#include "devid/CDeviceIdentifierImpl.h"

#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CSourceInfoImpl.h"
#include "devid/model/CTraceRouteInfoImpl.h"
#include "devid/model/OwnedList.h"
#include "common/source/source_utilities/uString.h"

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

// "family/Core" names the core "Core"; anything not split in exactly two
// parts is taken whole.
std::string CoreName(const std::string& name)
{
    std::vector<std::string> parts;
    if (MORA_LUX::uString::Split(parts, name.c_str(), "/") == 2)
        return parts[1];
    return name;
}

// Saved configurations may name a core the way older tools did.
bool LooselyEqual(const std::string& key, const std::string& name)
{
    return key == name || (key == "CortxA8" && name == "CortexA8_0") || (key == "CortexR4" && name == "CortexR4_0");
}

} // namespace

CSourceInfo* CDeviceIdentifierImpl::GetProcInfo(const std::string& procName)
{
    if (!procName.empty()) {
        m_selectedProcName = procName;
        if (!LoadAllDeviceDatabases(false))
            return nullptr;
        // The indexes name the first source with that name and the first with that
        // ID; whichever comes first in the list is the answer. The walk to it only
        // compares pointers, so asking for every source stays linear overall.
        const CSourceInfo* byName = LookupProcInfoByProcName(procName);
        const CSourceInfo* byId = LookupProcInfoById(procName);
        for (const auto& source : m_sources) {
            if (!source)
                continue;
            source->Normalize(this);
            if (source.get() == byName || source.get() == byId)
                return source.get();
        }
    }
    if (!m_configFromFile)
        return nullptr;

    const std::string key = CoreName(procName);
    for (const auto& source : m_sources) {
        if (source && LooselyEqual(key, CoreName(source->GetName())))
            return source.get();
    }
    return nullptr;
}

std::vector<CTraceRouteInfo*> CDeviceIdentifierImpl::GetTraceRoutes()
{
    if (LoadAllDeviceDatabases(false)) {
        for (const auto& route : m_routes) {
            if (route)
                route->Normalize(this);
        }
    }
    return RawPointers<CTraceRouteInfo>(m_routes);
}

std::vector<CTraceRouteInfo*> CDeviceIdentifierImpl::GetTraceRoutesForProc(const std::string& procName)
{
    std::vector<CTraceRouteInfo*> result;
    m_selectedProcName = procName;
    if (!LoadAllDeviceDatabases(false))
        return result;
    for (const auto& route : m_routes) {
        if (!route)
            continue;
        route->Normalize(this);
        CSourceInfo* source = route->GetSourceInfo();
        if (source != nullptr && source->GetName() == procName)
            result.push_back(route.get());
    }
    return result;
}

CSourceInfo* CDeviceIdentifierImpl::LookupProcInfoByProcName(std::string name)
{
    RefreshLookupIndex();
    auto found = m_sourceByName.find(name);
    return found == m_sourceByName.end() ? nullptr : found->second;
}

CSourceInfo* CDeviceIdentifierImpl::LookupProcInfoById(std::string id)
{
    RefreshLookupIndex();
    auto found = m_sourceById.find(id);
    return found == m_sourceById.end() ? nullptr : found->second;
}

CModuleInfo* CDeviceIdentifierImpl::LookupModuleInfo(std::string name)
{
    RefreshLookupIndex();
    auto found = m_moduleByName.find(name);
    return found == m_moduleByName.end() ? nullptr : found->second;
}

void CDeviceIdentifierImpl::RefreshLookupIndex()
{
    // The lists only grow between resets, so only the new tail is indexed;
    // emplace keeps the first object of each name, as a list walk would.
    if (m_indexedModules > m_modules.size() || m_indexedSources > m_sources.size()) {
        m_moduleByName.clear();
        m_sourceById.clear();
        m_sourceByName.clear();
        m_indexedModules = 0;
        m_indexedSources = 0;
    }
    // Sized once for the whole model: the first query indexes every object.
    m_moduleByName.reserve(m_modules.size());
    m_sourceById.reserve(m_sources.size());
    m_sourceByName.reserve(m_sources.size());
    for (; m_indexedModules < m_modules.size(); ++m_indexedModules) {
        if (CModuleInfoImpl* module = m_modules[m_indexedModules].get())
            m_moduleByName.emplace(module->GetName(), module);
    }
    for (; m_indexedSources < m_sources.size(); ++m_indexedSources) {
        if (CSourceInfoImpl* source = m_sources[m_indexedSources].get()) {
            m_sourceById.emplace(source->GetID(), source);
            m_sourceByName.emplace(source->GetName(), source);
        }
    }
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

#include "devid/model/CTraceRouteInfoImpl.h"

#include "devid/CDeviceIdentifierImpl.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Trace {

CTraceRouteInfoImpl::CTraceRouteInfoImpl(const std::string& sourceId, std::vector<std::string> linkNames,
                                         std::string sinkName, std::string drmName)
    : m_linkNames(std::move(linkNames)), m_sourceId(sourceId), m_sinkName(std::move(sinkName)),
      m_drmName(std::move(drmName))
{
}

// Source, links, sink and DRM belong to the device identifier.
CTraceRouteInfoImpl::~CTraceRouteInfoImpl() = default;

CSourceInfo* CTraceRouteInfoImpl::GetSourceInfo() { return m_source; }
std::vector<CModuleInfo*> CTraceRouteInfoImpl::GetLinkInfo() { return m_links; }
CModuleInfo* CTraceRouteInfoImpl::GetSinkInfo() { return m_sink; }
CModuleInfo* CTraceRouteInfoImpl::GetDRMInfo() { return m_drm; }

bool CTraceRouteInfoImpl::IsNormalized() const { return m_normalized; }
const std::string& CTraceRouteInfoImpl::GetSourceId() const { return m_sourceId; }
const std::vector<std::string>& CTraceRouteInfoImpl::GetLinkNames() const { return m_linkNames; }
const std::string& CTraceRouteInfoImpl::GetSinkName() const { return m_sinkName; }
const std::string& CTraceRouteInfoImpl::GetDRMName() const { return m_drmName; }

void CTraceRouteInfoImpl::Normalize(CDeviceIdentifierImpl* owner)
{
    if (m_normalized || owner == nullptr)
        return;
    m_source = owner->LookupProcInfoById(m_sourceId);
    for (const std::string& linkName : m_linkNames) {
        if (CModuleInfo* module = owner->LookupModuleInfo(linkName))
            m_links.push_back(module);
    }
    m_sink = owner->LookupModuleInfo(m_sinkName);
    m_drm = owner->LookupModuleInfo(m_drmName);
    m_normalized = true;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

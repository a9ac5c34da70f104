// A trace route: a source, the link modules its trace passes, the sink and an
// optional DRM module. Stored by name and linked to the model on first use;
// it owns none of the objects it points to.
#ifndef MORA_LUX_TRACE_CTRACEROUTEINFOIMPL_H
#define MORA_LUX_TRACE_CTRACEROUTEINFOIMPL_H

#include "devid/CDeviceIdentifier.h"

#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

class CDeviceIdentifierImpl;

class CTraceRouteInfoImpl : public CTraceRouteInfo {
public:
    CTraceRouteInfoImpl(const std::string& sourceId, std::vector<std::string> linkNames, std::string sinkName,
                        std::string drmName);
    ~CTraceRouteInfoImpl() override;
    CTraceRouteInfoImpl(const CTraceRouteInfoImpl&) = delete;
    CTraceRouteInfoImpl& operator=(const CTraceRouteInfoImpl&) = delete;

    CSourceInfo* GetSourceInfo() override;
    std::vector<CModuleInfo*> GetLinkInfo() override;
    /// Null until linked or when the sink name is unknown.
    CModuleInfo* GetSinkInfo() override;
    /// Null until linked, without a DRM, or when its name is unknown.
    CModuleInfo* GetDRMInfo() override;

    bool IsNormalized() const;
    // The names as the database gives them, resolved or not.
    const std::string& GetSourceId() const;
    const std::vector<std::string>& GetLinkNames() const;
    const std::string& GetSinkName() const;
    const std::string& GetDRMName() const;
    /// Resolves source, links, sink and DRM against the owner's lists, once;
    /// unknown names stay null or are skipped. Does nothing for a null owner.
    void Normalize(CDeviceIdentifierImpl* owner);

private:
    bool m_normalized = false;
    std::vector<CModuleInfo*> m_links;
    CModuleInfo* m_sink = nullptr;
    CModuleInfo* m_drm = nullptr;
    CSourceInfo* m_source = nullptr;
    std::vector<std::string> m_linkNames;
    std::string m_sourceId;
    std::string m_sinkName;
    std::string m_drmName;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

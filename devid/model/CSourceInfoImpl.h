// A trace source of the device (normally a processor). It is stored with the
// names of its component modules and linked to the modules on first use.
#ifndef MORA_LUX_TRACE_CSOURCEINFOIMPL_H
#define MORA_LUX_TRACE_CSOURCEINFOIMPL_H

#include "devid/CDeviceIdentifier.h"

#include <memory>
#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

class CDeviceIdentifierImpl;

class CSourceInfoImpl : public CSourceInfo {
public:
    /// Takes ownership of the characteristics.
    CSourceInfoImpl(std::string id, std::string name, std::vector<std::string> componentNames,
                    std::vector<CCharacteristic*> characteristics, bool stmMaster);
    ~CSourceInfoImpl() override;
    CSourceInfoImpl(const CSourceInfoImpl&) = delete;
    CSourceInfoImpl& operator=(const CSourceInfoImpl&) = delete;

    std::string GetName() override;
    bool IsSTMMaster() override;
    std::vector<CCharacteristic*> GetCharacteristics() override;
    std::vector<CModuleInfo*> GetComponents() override;
    std::string LookupCharacteristicValue(const std::string& name) override;
    CModuleInfo* GetModuleInfo(const std::string& name) override;

    std::string GetID() const;
    bool IsNormalized() const;
    /// The component names as the database gives them, resolved or not.
    const std::vector<std::string>& GetComponentNames() const;
    /// Resolves the component names against the owner's modules, once;
    /// unknown names are skipped. Does nothing for a null owner.
    void Normalize(CDeviceIdentifierImpl* owner);

private:
    std::vector<std::string> m_componentNames;
    std::vector<CModuleInfo*> m_components;
    std::vector<std::unique_ptr<CCharacteristic>> m_characteristics;
    std::string m_name;
    std::string m_id;
    bool m_stmMaster;
    bool m_normalized = false;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

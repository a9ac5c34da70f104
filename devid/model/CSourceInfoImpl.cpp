#include "devid/model/CSourceInfoImpl.h"

#include "devid/CDeviceIdentifierImpl.h"
#include "devid/model/CCharacteristicImpl.h"
#include "devid/model/OwnedList.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Trace {

CSourceInfoImpl::CSourceInfoImpl(std::string id, std::string name, std::vector<std::string> componentNames,
                                 std::vector<CCharacteristic*> characteristics, bool stmMaster)
    : m_componentNames(std::move(componentNames)), m_name(std::move(name)), m_id(std::move(id)),
      m_stmMaster(stmMaster)
{
    AdoptReplacing(m_characteristics, characteristics);
}

// The components belong to the device identifier's module list.
CSourceInfoImpl::~CSourceInfoImpl() = default;

std::string CSourceInfoImpl::GetName() { return m_name; }
bool CSourceInfoImpl::IsSTMMaster() { return m_stmMaster; }

std::vector<CCharacteristic*> CSourceInfoImpl::GetCharacteristics()
{
    return RawPointers<CCharacteristic>(m_characteristics);
}

std::vector<CModuleInfo*> CSourceInfoImpl::GetComponents() { return m_components; }

std::string CSourceInfoImpl::LookupCharacteristicValue(const std::string& name)
{
    return Trace::LookupCharacteristicValue(m_characteristics, name);
}

CModuleInfo* CSourceInfoImpl::GetModuleInfo(const std::string& name)
{
    for (CModuleInfo* module : m_components) {
        if (module->GetName() == name)
            return module;
    }
    return nullptr;
}

std::string CSourceInfoImpl::GetID() const { return m_id; }
bool CSourceInfoImpl::IsNormalized() const { return m_normalized; }
const std::vector<std::string>& CSourceInfoImpl::GetComponentNames() const { return m_componentNames; }

void CSourceInfoImpl::Normalize(CDeviceIdentifierImpl* owner)
{
    if (m_normalized || owner == nullptr)
        return;
    for (const std::string& componentName : m_componentNames) {
        if (CModuleInfo* module = owner->LookupModuleInfo(componentName))
            m_components.push_back(module);
    }
    m_normalized = true;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

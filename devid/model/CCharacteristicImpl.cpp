#include "devid/model/CCharacteristicImpl.h"

#include "devid/model/TextArena.h"

namespace Mora {
namespace Lux {
namespace Trace {

CCharacteristicImpl::CCharacteristicImpl(const char* name, const char* value, const char* description)
    : m_name(name), m_value(value), m_description(description)
{
}

std::string CCharacteristicImpl::GetName() { return TextOf(m_name); }
std::string CCharacteristicImpl::GetDescription() { return TextOf(m_description); }
std::string CCharacteristicImpl::GetValue() { return TextOf(m_value); }

std::string LookupCharacteristicValue(const std::vector<std::unique_ptr<CCharacteristic>>& list,
                                      const std::string& name)
{
    for (const auto& characteristic : list) {
        if (characteristic->GetName() == name)
            return characteristic->GetValue();
    }
    return std::string();
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

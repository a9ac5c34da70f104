#include "devid/model/CCharacteristicImpl.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Trace {

CCharacteristicImpl::CCharacteristicImpl(std::string name, std::string value, std::string description)
    : m_name(std::move(name)), m_value(std::move(value)), m_description(std::move(description))
{
}

std::string CCharacteristicImpl::GetName() { return m_name; }
std::string CCharacteristicImpl::GetDescription() { return m_description; }
std::string CCharacteristicImpl::GetValue() { return m_value; }

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

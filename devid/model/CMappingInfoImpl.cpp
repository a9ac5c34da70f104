#include "devid/model/CMappingInfoImpl.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Trace {

CMappingInfoImpl::CMappingInfoImpl(std::string key, std::string value)
    : m_key(std::move(key)), m_value(std::move(value))
{
}

std::string CMappingInfoImpl::GetKey() { return m_key; }
std::string CMappingInfoImpl::GetValue() { return m_value; }

} // namespace Trace
} // namespace Lux
} // namespace Mora

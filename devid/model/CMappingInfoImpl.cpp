#include "devid/model/CMappingInfoImpl.h"

#include "devid/model/TextArena.h"

namespace Mora {
namespace Lux {
namespace Trace {

CMappingInfoImpl::CMappingInfoImpl(const char* key, const char* value) : m_key(key), m_value(value) {}

std::string CMappingInfoImpl::GetKey() { return TextOf(m_key); }
std::string CMappingInfoImpl::GetValue() { return TextOf(m_value); }

} // namespace Trace
} // namespace Lux
} // namespace Mora

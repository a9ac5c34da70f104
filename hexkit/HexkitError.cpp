#include "devid/target/HexkitError.h"

namespace Mora {
namespace Lux {
namespace Hexkit {

HexkitError::HexkitError(const std::string& message, Severity_Type severity)
    : m_message(message), m_severity(severity)
{
}

// Defined out of line so the vtable and typeinfo live in libhexkit.so and
// catch clauses in other libraries match the one type.
HexkitError::~HexkitError() = default;

const char* HexkitError::what() const noexcept
{
    return m_message.c_str();
}

HexkitErrorIF::Severity_Type HexkitError::GetSeverity() const
{
    return m_severity;
}

} // namespace Hexkit
} // namespace Lux
} // namespace Mora

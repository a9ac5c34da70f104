#include "devid/NumberText.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <limits>

namespace Mora {
namespace Lux {
namespace Trace {

uint32_t ParseUnsigned32(const char* text, int base)
{
    if (text == nullptr)
        return 0;
    while (std::isspace(static_cast<unsigned char>(*text)))
        ++text;
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+')
        ++text;
    // strtoull would accept a second sign or more blanks here; strtoul does not.
    const unsigned char first = static_cast<unsigned char>(*text);
    if (base == 16 ? !std::isxdigit(first) : !std::isdigit(first))
        return 0;
    errno = 0;
    const unsigned long long magnitude = std::strtoull(text, nullptr, base);
    if (errno == ERANGE || magnitude > std::numeric_limits<uint32_t>::max())
        return std::numeric_limits<uint32_t>::max();
    const uint32_t value = static_cast<uint32_t>(magnitude);
    return negative ? static_cast<uint32_t>(0u - value) : value;
}

int32_t ParseSigned32(const char* text)
{
    if (text == nullptr)
        return 0;
    const long long value = std::strtoll(text, nullptr, 10);
    if (value > std::numeric_limits<int32_t>::max())
        return std::numeric_limits<int32_t>::max();
    if (value < std::numeric_limits<int32_t>::min())
        return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(value);
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

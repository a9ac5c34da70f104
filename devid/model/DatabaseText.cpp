#include "devid/model/DatabaseText.h"

#include <cerrno>
#include <cstdlib>
#include <limits>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

char FoldCase(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// Skips the blanks and one sign the way strtoul/strtol do; true for "-".
bool SkipBlanksAndSign(const char*& text)
{
    while (IsBlank(*text))
        ++text;
    bool negative = *text == '-';
    if (*text == '-' || *text == '+')
        ++text;
    return negative;
}

} // namespace

uint32_t DatabaseUnsigned(const char* text)
{
    if (text == nullptr)
        return 0;
    bool negative = SkipBlanksAndSign(text);
    // Every base-0 number starts with a decimal digit; anything else (a second
    // sign, a blank) would be skipped by strtoull but not by strtoul.
    if (*text < '0' || *text > '9')
        return 0;
    errno = 0;
    unsigned long long magnitude = std::strtoull(text, nullptr, 0);
    if (errno == ERANGE || magnitude > std::numeric_limits<uint32_t>::max())
        return std::numeric_limits<uint32_t>::max();
    uint32_t value = static_cast<uint32_t>(magnitude);
    return negative ? static_cast<uint32_t>(0u - value) : value;
}

int32_t DatabaseDecimal(const char* text)
{
    if (text == nullptr)
        return 0;
    long long value = std::strtoll(text, nullptr, 10);
    if (value > std::numeric_limits<int32_t>::max())
        return std::numeric_limits<int32_t>::max();
    if (value < std::numeric_limits<int32_t>::min())
        return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(value);
}

bool DatabaseNameIs(const char* name, const char* wanted)
{
    if (name == nullptr || wanted == nullptr)
        return false;
    for (; *name != '\0' && *wanted != '\0'; ++name, ++wanted) {
        if (FoldCase(*name) != FoldCase(*wanted))
            return false;
    }
    return *name == *wanted;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

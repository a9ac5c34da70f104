#include "devid/NumberText.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <limits>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

// Digit values of every byte, 16 for a byte that is no digit: one load per digit
// instead of three range tests.
struct DigitTable {
    unsigned char value[256];
    constexpr DigitTable() : value()
    {
        for (int c = 0; c < 256; ++c)
            value[c] = 16;
        for (int c = '0'; c <= '9'; ++c)
            value[c] = static_cast<unsigned char>(c - '0');
        for (int c = 'a'; c <= 'f'; ++c) {
            value[c] = static_cast<unsigned char>(c - 'a' + 10);
            value[c - 'a' + 'A'] = static_cast<unsigned char>(c - 'a' + 10);
        }
    }
};

constexpr DigitTable kDigits;

int DigitValue(char c)
{
    return kDigits.value[static_cast<unsigned char>(c)];
}

// The plain decimal and "0x" numbers that fill a description, read without the C
// library's locale and errno handling (a load reads hundreds of thousands). False
// for anything else (blanks, signs, octal, more than 16 digits): strtoull decides.
bool ParsePlainNumber(const char* text, uint32_t& value)
{
    int radix = 10;
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        radix = 16;
        text += 2;
    } else if (text[0] == '0' && DigitValue(text[1]) < 10) {
        return false;
    }
    uint64_t total = 0;
    int digits = 0;
    for (int digit = DigitValue(*text); digit < radix; digit = DigitValue(*++text)) {
        if (++digits > 16)
            return false;
        total = total * static_cast<uint64_t>(radix) + static_cast<uint64_t>(digit);
    }
    if (digits == 0)
        return false;
    value = total > std::numeric_limits<uint32_t>::max() ? std::numeric_limits<uint32_t>::max()
                                                          : static_cast<uint32_t>(total);
    return true;
}

} // namespace

uint32_t ParseUnsigned32(const char* text, int base)
{
    if (text == nullptr)
        return 0;
    uint32_t plain = 0;
    if (base == 0 && DigitValue(*text) < 10 && ParsePlainNumber(text, plain))
        return plain;
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

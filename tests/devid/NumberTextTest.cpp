#include "devid/NumberText.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>

using Mora::Lux::Trace::ParseUnsigned32;

namespace {

// strtoul of a host with a 32-bit unsigned long, the behaviour the readers keep.
uint32_t Reference(const char* text)
{
    errno = 0;
    const unsigned long long value = std::strtoull(text, nullptr, 0);
    const bool negative = std::string(text).find('-') != std::string::npos;
    if (errno == ERANGE || (!negative && value > UINT32_MAX) || (negative && 0ull - value > UINT32_MAX))
        return UINT32_MAX;
    return static_cast<uint32_t>(value);
}

} // namespace

TEST(NumberText, PlainAndUnusualNumbersReadAsStrtoulDoes)
{
    for (const char* text :
         {"0", "7", "42", "00", "010", "09", "0x", "0X1f", "0xg", "0x0", "12ab", "4294967295", "4294967296",
          "0xFFFFFFFF", "0x100000000", "9999999999999999", "99999999999999999", "18446744073709551616",
          "0x000000000000000000001", "0000000000000000000000007", " 5", "-1", "+3", ""})
        EXPECT_EQ(Reference(text), ParseUnsigned32(text, 0)) << '"' << text << '"';
}

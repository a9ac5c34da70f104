// Numbers in database, alias and session texts, read the way the C library of
// a 32-bit host reads them, so that 32-bit and 64-bit builds agree on every
// value (unsigned long is 32 bits wide there).
#ifndef MORA_LUX_TRACE_NUMBERTEXT_H
#define MORA_LUX_TRACE_NUMBERTEXT_H

#include <cstdint>

namespace Mora {
namespace Lux {
namespace Trace {

/// strtoul(text, nullptr, base) with a 32-bit result: 0 for null or no digits,
/// 0xFFFFFFFF on overflow, a leading "-" negates modulo 2^32. Base 0 detects
/// "0x" hexadecimal and leading-zero octal; base 16 accepts an optional "0x".
uint32_t ParseUnsigned32(const char* text, int base);

/// strtol(text, nullptr, 10) with a 32-bit result: 0 for null or no digits,
/// clamped to the int32_t range on overflow.
int32_t ParseSigned32(const char* text);

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

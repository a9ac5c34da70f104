// How the target database's texts are read: numbers the way the 32-bit C
// library converts them (so 32-bit and 64-bit hosts agree), and tag and
// attribute names without regard to ASCII case.
#ifndef MORA_LUX_TRACE_DATABASETEXT_H
#define MORA_LUX_TRACE_DATABASETEXT_H

#include <cstdint>

namespace Mora {
namespace Lux {
namespace Trace {

/// strtoul with base 0 and a 32-bit unsigned long: 0 for null or no digits,
/// 0xFFFFFFFF on overflow, a leading "-" negates modulo 2^32.
uint32_t DatabaseUnsigned(const char* text);

/// strtol with base 10 and a 32-bit long: 0 for null or no digits, clamped to
/// the int32_t range on overflow.
int32_t DatabaseDecimal(const char* text);

/// ASCII case-insensitive equality; a null name equals nothing.
bool DatabaseNameIs(const char* name, const char* wanted);

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

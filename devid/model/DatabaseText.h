// Tag and attribute names of the target database are compared without regard
// to ASCII case.
#ifndef MORA_LUX_TRACE_DATABASETEXT_H
#define MORA_LUX_TRACE_DATABASETEXT_H

namespace Mora {
namespace Lux {
namespace Trace {

/// ASCII case-insensitive equality; a null name equals nothing.
bool DatabaseNameIs(const char* name, const char* wanted);

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

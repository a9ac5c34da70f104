// The process-wide memory of the device description file that matched last.
// It outlives device identifier instances, so a new instance or a reload tries
// that file before scanning the database directory.
#ifndef MORA_LUX_TRACE_DEVICEXMLCACHE_H
#define MORA_LUX_TRACE_DEVICEXMLCACHE_H

#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

/// Remembers `path` and marks it valid. False, and the cache left as it was,
/// when the path does not fit the 4132-byte buffer (or holds a NUL byte).
bool CacheDeviceXmlName(const std::string& path);

/// Remembers `path` up to its first NUL byte, cut to the 4131 bytes the
/// buffer holds beside its terminator, and marks it valid.
void SetDeviceXmlName(const std::string& path);

/// Marks the remembered path unusable; the next search scans the directory.
void InvalidateDeviceXmlName();

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

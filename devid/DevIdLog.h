// The device identifier's way into the process log: every caller tests the
// stored logging level first, so these helpers do that test for it.
#ifndef MORA_LUX_TRACE_DEVIDLOG_H
#define MORA_LUX_TRACE_DEVIDLOG_H

#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

/// The logging level stored in the process-wide log system.
int LoggingLevel();

/// One line at `level` (1 M, 2 W, 4 F, 16 E) with the time stamp, written only
/// when the stored level is above 0 and a logger exists.
void DevIdLog(unsigned level, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// The function-entry line "<source> #<line>  <function>(...)" at level 4 without
/// time stamp, written only when the stored level is above 2.
void DevIdTraceEntry(const char* source, int line, const char* function);

/// An address as "0x" and lower-case hex digits without leading zeros, the way
/// "0x%x" prints it on a 32-bit host, at the pointer width of this host.
std::string HexAddress(const void* address);

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

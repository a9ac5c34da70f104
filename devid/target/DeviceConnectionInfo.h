// One device on the scan chain, as connection discovery or a loaded
// configuration reports it.
#ifndef MORA_LUX_TRACE_DEVICECONNECTIONINFO_H
#define MORA_LUX_TRACE_DEVICECONNECTIONINFO_H

#include <cstdint>
#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

struct DeviceConnectionInfo {
    uint32_t deviceType = 0xFFFF;
    /// 0 when the device has no trace ID.
    uint32_t traceId = 0;
    std::string name;
    /// The device's own name when it has no parent router.
    std::string parentName;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

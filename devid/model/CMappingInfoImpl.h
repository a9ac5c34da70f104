// One key/value pair of a module's mapping table.
#ifndef MORA_LUX_TRACE_CMAPPINGINFOIMPL_H
#define MORA_LUX_TRACE_CMAPPINGINFOIMPL_H

#include "devid/CDeviceIdentifier.h"

#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

class CMappingInfoImpl : public CMappingInfo {
public:
    CMappingInfoImpl(std::string key, std::string value);

    std::string GetKey() override;
    std::string GetValue() override;

private:
    std::string m_key;
    std::string m_value;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

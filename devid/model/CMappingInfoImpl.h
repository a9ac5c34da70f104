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
    /// The texts must outlive the object (the loaders keep them in the model's
    /// text arena); null reads as "".
    CMappingInfoImpl(const char* key, const char* value);

    std::string GetKey() override;
    std::string GetValue() override;

private:
    const char* m_key;
    const char* m_value;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

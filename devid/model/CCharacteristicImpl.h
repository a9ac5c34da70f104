// One named characteristic of a module or a source, as the database lists it.
#ifndef MORA_LUX_TRACE_CCHARACTERISTICIMPL_H
#define MORA_LUX_TRACE_CCHARACTERISTICIMPL_H

#include "devid/CDeviceIdentifier.h"

#include <memory>
#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

class CCharacteristicImpl : public CCharacteristic {
public:
    /// The texts must outlive the object (the loaders keep them in the model's
    /// text arena); null reads as "".
    CCharacteristicImpl(const char* name, const char* value, const char* description);

    std::string GetName() override;
    std::string GetDescription() override;
    std::string GetValue() override;

private:
    const char* m_name;
    const char* m_value;
    const char* m_description;
};

/// The value of the first characteristic named `name`, or "" when none is.
std::string LookupCharacteristicValue(const std::vector<std::unique_ptr<CCharacteristic>>& list,
                                      const std::string& name);

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

// One register of a module or a processor's identifier register. The loaders
// create it with its name and then fill the public fields directly.
#ifndef MORA_LUX_TRACE_CREGISTERINFOIMPL_H
#define MORA_LUX_TRACE_CREGISTERINFOIMPL_H

#include "devid/CDeviceIdentifier.h"

#include <cstdint>
#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

class CRegisterInfoImpl : public CRegisterInfo {
public:
    explicit CRegisterInfoImpl(std::string name);

    std::string GetName() override;
    bool IsMemoryMapped() override;
    unsigned int GetMemoryAddress() override;
    unsigned int GetMemoryPage() override;
    unsigned int GetAddresableUnit() override;
    std::string GetDriverRegisterName() override;
    unsigned int GetWidthInBits() override;

    std::string name;
    /// True when reached through memoryAddress, false when the debug driver
    /// knows it as driverRegisterName.
    bool memoryMapped = false;
    uint32_t memoryAddress = 0;
    uint32_t memoryPage = 0;
    uint32_t addressableUnit = 0;
    uint32_t widthInBits = 0;
    std::string driverRegisterName;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

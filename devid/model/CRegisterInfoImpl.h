// One register of a module or a processor's identifier register. The loaders
// create it with its name and then fill the public fields directly. Its texts
// are kept where the loader put them (the model's text arena), so a register
// is a few words, however many a device has.
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
    /// `name` must outlive the register; null reads as "".
    explicit CRegisterInfoImpl(const char* name);

    std::string GetName() override;
    bool IsMemoryMapped() override;
    unsigned int GetMemoryAddress() override;
    unsigned int GetMemoryPage() override;
    unsigned int GetAddresableUnit() override;
    std::string GetDriverRegisterName() override;
    unsigned int GetWidthInBits() override;

    const char* name;
    /// True when reached through memoryAddress, false when the debug driver
    /// knows it as driverRegisterName (which must outlive the register).
    bool memoryMapped = false;
    uint32_t memoryAddress = 0;
    uint32_t memoryPage = 0;
    uint32_t addressableUnit = 0;
    uint32_t widthInBits = 0;
    const char* driverRegisterName = nullptr;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

#include "devid/model/CRegisterInfoImpl.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Trace {

CRegisterInfoImpl::CRegisterInfoImpl(std::string registerName) : name(std::move(registerName)) {}

std::string CRegisterInfoImpl::GetName() { return name; }
bool CRegisterInfoImpl::IsMemoryMapped() { return memoryMapped; }
unsigned int CRegisterInfoImpl::GetMemoryAddress() { return memoryAddress; }
unsigned int CRegisterInfoImpl::GetMemoryPage() { return memoryPage; }
unsigned int CRegisterInfoImpl::GetAddresableUnit() { return addressableUnit; }
std::string CRegisterInfoImpl::GetDriverRegisterName() { return driverRegisterName; }
unsigned int CRegisterInfoImpl::GetWidthInBits() { return widthInBits; }

} // namespace Trace
} // namespace Lux
} // namespace Mora

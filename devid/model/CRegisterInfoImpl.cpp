#include "devid/model/CRegisterInfoImpl.h"

#include "devid/model/TextArena.h"

namespace Mora {
namespace Lux {
namespace Trace {

CRegisterInfoImpl::CRegisterInfoImpl(const char* registerName) : name(registerName) {}

std::string CRegisterInfoImpl::GetName() { return TextOf(name); }
bool CRegisterInfoImpl::IsMemoryMapped() { return memoryMapped; }
unsigned int CRegisterInfoImpl::GetMemoryAddress() { return memoryAddress; }
unsigned int CRegisterInfoImpl::GetMemoryPage() { return memoryPage; }
unsigned int CRegisterInfoImpl::GetAddresableUnit() { return addressableUnit; }
std::string CRegisterInfoImpl::GetDriverRegisterName() { return TextOf(driverRegisterName); }
unsigned int CRegisterInfoImpl::GetWidthInBits() { return widthInBits; }

} // namespace Trace
} // namespace Lux
} // namespace Mora

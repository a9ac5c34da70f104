#include "devid/model/CModuleInfoImpl.h"

#include "devid/model/CCharacteristicImpl.h"
#include "devid/model/OwnedList.h"

#include <utility>

namespace Mora {
namespace Lux {
namespace Trace {

CModuleInfoImpl::CModuleInfoImpl(std::string name, std::string kind, std::string access, std::string version)
    : m_name(std::move(name)), m_access(std::move(access)), m_kind(std::move(kind)), m_version(std::move(version))
{
}

CModuleInfoImpl::~CModuleInfoImpl()
{
    // Registers, characteristics, then mappings: the order the owners expect.
    ClearRegisters();
    m_characteristics.clear();
    m_mappings.clear();
}

std::string CModuleInfoImpl::GetName() { return m_name; }
std::string CModuleInfoImpl::GetVersion() { return m_version; }
std::string CModuleInfoImpl::GetModuleKindStr() { return m_kind; }
std::string CModuleInfoImpl::GetModuleAccessStr() { return m_access; }

std::vector<CRegisterInfo*> CModuleInfoImpl::GetRegisterInfo()
{
    std::vector<CRegisterInfo*> out;
    out.reserve(m_registers.size());
    for (CRegisterInfoImpl& reg : m_registers)
        out.push_back(&reg);
    return out;
}

std::vector<std::string> CModuleInfoImpl::GetMapIds()
{
    // Filled once: clients rely on the IDs staying as they first saw them.
    if (m_mapIdCache.empty()) {
        for (const auto& entry : m_mappings)
            m_mapIdCache.push_back(entry.first);
    }
    return m_mapIdCache;
}

std::vector<CMappingInfo*> CModuleInfoImpl::GetMappingInfo(const std::string& mapId)
{
    auto found = m_mappings.find(mapId);
    if (found == m_mappings.end())
        return {};
    return RawPointers<CMappingInfo>(found->second);
}

std::vector<CCharacteristic*> CModuleInfoImpl::GetCharacteristics()
{
    return RawPointers<CCharacteristic>(m_characteristics);
}

std::string CModuleInfoImpl::LookupCharacteristicValue(const std::string& name)
{
    return Trace::LookupCharacteristicValue(m_characteristics, name);
}

void CModuleInfoImpl::ReserveRegisters(std::size_t count)
{
    m_registers.reserve(m_registers.size() + count);
}

CRegisterInfoImpl& CModuleInfoImpl::AddRegister(const char* name)
{
    m_registers.emplace_back(name);
    return m_registers.back();
}

void CModuleInfoImpl::ClearRegisters()
{
    m_registers.clear();
}

void CModuleInfoImpl::AddMappingInfo(const std::string& mapId, std::vector<CMappingInfo*> list)
{
    AdoptReplacing(m_mappings[mapId], list);
}

void CModuleInfoImpl::AddCharacteristics(std::vector<CCharacteristic*> list)
{
    AdoptReplacing(m_characteristics, list);
}

void CModuleInfoImpl::TakeMappingInfo(const std::string& mapId, std::vector<std::unique_ptr<CMappingInfo>> list)
{
    m_mappings[mapId] = std::move(list);
}

void CModuleInfoImpl::TakeCharacteristics(std::vector<std::unique_ptr<CCharacteristic>> list)
{
    m_characteristics = std::move(list);
}

void CModuleInfoImpl::UpdateProcName(std::string name)
{
    m_access = std::move(name);
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

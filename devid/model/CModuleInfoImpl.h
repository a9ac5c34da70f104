// A trace-capable module of the device with its registers, mapping tables and
// characteristics; it owns all of them.
#ifndef MORA_LUX_TRACE_CMODULEINFOIMPL_H
#define MORA_LUX_TRACE_CMODULEINFOIMPL_H

#include "devid/CDeviceIdentifier.h"
#include "devid/model/CRegisterInfoImpl.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

class CModuleInfoImpl : public CModuleInfo {
public:
    CModuleInfoImpl(std::string name, std::string kind, std::string access, std::string version);
    ~CModuleInfoImpl() override;
    CModuleInfoImpl(const CModuleInfoImpl&) = delete;
    CModuleInfoImpl& operator=(const CModuleInfoImpl&) = delete;

    std::string GetName() override;
    std::string GetVersion() override;
    std::string GetModuleKindStr() override;
    /// The access processor's name.
    std::string GetModuleAccessStr() override;
    std::vector<CRegisterInfo*> GetRegisterInfo() override;
    /// The map IDs as they stood at the first call that found any; later
    /// additions are not reported.
    std::vector<std::string> GetMapIds() override;
    /// Empty when no list is stored under mapId.
    std::vector<CMappingInfo*> GetMappingInfo(const std::string& mapId) override;
    std::vector<CCharacteristic*> GetCharacteristics() override;
    std::string LookupCharacteristicValue(const std::string& name) override;

    /// Room for `count` more registers. The registers are stored in one block, so
    /// pointers handed out by GetRegisterInfo stay valid only while none is added.
    void ReserveRegisters(std::size_t count);
    /// A new register named `name`, for the caller to fill in.
    CRegisterInfoImpl& AddRegister(const char* name);
    void ClearRegisters();
    /// Takes ownership of the list and stores it under mapId, replacing (and
    /// freeing) a stored list; objects passed again in the new list are kept.
    void AddMappingInfo(const std::string& mapId, std::vector<CMappingInfo*> list);
    /// Takes ownership and replaces the characteristics; replaced objects that
    /// are not in the new list are freed, so an accumulating list may be passed again.
    void AddCharacteristics(std::vector<CCharacteristic*> list);
    /// The loaders' forms of the two above, for lists of fresh objects: the
    /// list replaces what was stored, which is freed.
    void TakeMappingInfo(const std::string& mapId, std::vector<std::unique_ptr<CMappingInfo>> list);
    void TakeCharacteristics(std::vector<std::unique_ptr<CCharacteristic>> list);
    void UpdateProcName(std::string name);

private:
    std::vector<CRegisterInfoImpl> m_registers;
    std::string m_name;
    std::string m_access;
    std::string m_kind;
    std::string m_version;
    std::vector<std::string> m_mapIdCache;
    std::map<std::string, std::vector<std::unique_ptr<CMappingInfo>>> m_mappings;
    std::vector<std::unique_ptr<CCharacteristic>> m_characteristics;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

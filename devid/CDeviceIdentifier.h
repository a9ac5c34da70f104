// Client interface of the device identifier: what a debugger trace tool sees.
// The order of every virtual function below is binary interface: clients built
// against another header with the same layout call into this library, so never
// reorder, insert or remove a virtual function.
#ifndef MORA_LUX_TRACE_CDEVICEIDENTIFIER_H
#define MORA_LUX_TRACE_CDEVICEIDENTIFIER_H

#include <string>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

enum eTraceDataFileType {
    eTraceDataFileTDF = 0,
    eTraceDataFileDCM = 4,
    eTraceDataFileDeviceXML = 5
};

typedef enum _eSessionSetting {
    eSessionSettingDebuggerName = 0,
    eSessionSettingEmuName = 1,
    eSessionSettingEmuPort = 2,
    eSessionSettingOutFile = 3
} eSessionSetting;

// Model interfaces. Objects are owned by the device identifier and stay valid
// until the next database load or its destruction; clients never delete them.

class CCharacteristic {
public:
    virtual std::string GetName() = 0;
    virtual std::string GetDescription() = 0;
    virtual std::string GetValue() = 0;
    virtual ~CCharacteristic() {}
};

class CMappingInfo {
public:
    virtual std::string GetKey() = 0;
    virtual std::string GetValue() = 0;
    virtual ~CMappingInfo() {}
};

class CRegisterInfo {
public:
    virtual std::string GetName() = 0;
    virtual bool IsMemoryMapped() = 0;
    virtual unsigned int GetMemoryAddress() = 0;
    virtual unsigned int GetMemoryPage() = 0;
    virtual unsigned int GetAddresableUnit() = 0;
    virtual std::string GetDriverRegisterName() = 0;
    virtual unsigned int GetWidthInBits() = 0;
    virtual ~CRegisterInfo() {}
};

class CModuleInfo {
public:
    virtual std::string GetName() = 0;
    virtual std::string GetVersion() = 0;
    virtual std::string GetModuleKindStr() = 0;
    virtual std::string GetModuleAccessStr() = 0;
    virtual std::vector<CRegisterInfo*> GetRegisterInfo() = 0;
    virtual std::vector<std::string> GetMapIds() = 0;
    virtual std::vector<CMappingInfo*> GetMappingInfo(const std::string& mapId) = 0;
    virtual std::vector<CCharacteristic*> GetCharacteristics() = 0;
    /// Returns "" when no characteristic has that name.
    virtual std::string LookupCharacteristicValue(const std::string& name) = 0;
    virtual ~CModuleInfo() {}
};

class CSourceInfo {
public:
    virtual std::string GetName() = 0;
    virtual bool IsSTMMaster() = 0;
    virtual std::vector<CCharacteristic*> GetCharacteristics() = 0;
    /// Empty until the source has been linked to its modules.
    virtual std::vector<CModuleInfo*> GetComponents() = 0;
    /// Returns "" when no characteristic has that name.
    virtual std::string LookupCharacteristicValue(const std::string& name) = 0;
    /// Returns null when no component has that name.
    virtual CModuleInfo* GetModuleInfo(const std::string& name) = 0;
    virtual ~CSourceInfo() {}
};

class CTraceRouteInfo {
public:
    /// Null when the route's source ID names no known source.
    virtual CSourceInfo* GetSourceInfo() = 0;
    virtual std::vector<CModuleInfo*> GetLinkInfo() = 0;
    virtual CModuleInfo* GetSinkInfo() = 0;
    virtual CModuleInfo* GetDRMInfo() = 0;
    virtual ~CTraceRouteInfo() {}
};

class CDeviceIdentifier {
public:
    virtual ~CDeviceIdentifier() {}
    /// Null when the databases cannot be loaded or no source has that name or ID.
    virtual CSourceInfo* GetProcInfo(const std::string& procName) = 0;
    /// "" when the name is unknown or no channel server answers.
    virtual std::string GetOutFileName(const std::string& name) = 0;
    /// Empty when the databases cannot be loaded.
    virtual std::vector<CTraceRouteInfo*> GetTraceRoutes() = 0;
    virtual std::vector<CTraceRouteInfo*> GetTraceRoutesForProc(const std::string& procName) = 0;
    /// "" when no board record can be obtained or the setting is unknown.
    virtual std::string GetSessionSetting(const std::string& name, _eSessionSetting setting) = 0;
    virtual bool SaveConfiguration(const std::string& fileName, eTraceDataFileType type) = 0;
    virtual bool LoadConfiguration(const std::string& fileName, eTraceDataFileType type) = 0;
    /// Marks the databases stale; the next query loads them again.
    virtual void ReLoadDeviceDatabase() = 0;
    virtual bool LoadConfiguration(unsigned int deviceId) = 0;
    virtual bool DeviceMatch(unsigned int id, unsigned int mask) = 0;
    /// "" before connection discovery has made a setup adapter.
    virtual std::string GetDAPName(std::string procName) = 0;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

extern "C" {
/// Returns the process-wide shared instance, creating it on first use.
Mora::Lux::Trace::CDeviceIdentifier* CreateDeviceIdentifier();
/// Drops one reference; destroys the instance at zero or when forced. A pointer
/// that is not the shared instance destroys nothing.
void DestroyDeviceIdentifier(Mora::Lux::Trace::CDeviceIdentifier* deviceIdentifier, bool force);
void TmpDestroyDeviceIdentifier(Mora::Lux::Trace::CDeviceIdentifier* deviceIdentifier, bool force);
/// Only logs that the test mode is not supported.
void SetInternalTestMode();
}

#endif

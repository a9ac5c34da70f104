// A device description file made of the bytes, alone in a database folder,
// loaded the way a restored session loads it, then asked every query, with
// every object of the model visited through the client interfaces.
#include "fuzz/entries/FuzzEntries.h"
#include "fuzz/entries/FuzzWorkspace.h"

#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CSourceInfoImpl.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace devid_fuzz {

namespace {

using namespace Mora::Lux::Trace;

const char kEntry[] = "device_database";

// Reads everything a client may read, so the sanitizers see any object that
// is gone or was never there.
void VisitCharacteristics(const std::vector<CCharacteristic*>& characteristics)
{
    for (CCharacteristic* item : characteristics) {
        DEVID_FUZZ_CHECK(kEntry, item != nullptr, "characteristic lists hold no null");
        item->GetName();
        item->GetValue();
        item->GetDescription();
    }
}

void VisitModule(CModuleInfo* module)
{
    if (module == nullptr)
        return;
    module->GetName();
    module->GetVersion();
    module->GetModuleKindStr();
    module->GetModuleAccessStr();
    for (CRegisterInfo* reg : module->GetRegisterInfo()) {
        DEVID_FUZZ_CHECK(kEntry, reg != nullptr, "register lists hold no null");
        reg->GetName();
        reg->GetDriverRegisterName();
        reg->GetMemoryAddress();
        reg->GetWidthInBits();
    }
    for (const std::string& mapId : module->GetMapIds())
        for (CMappingInfo* entry : module->GetMappingInfo(mapId)) {
            DEVID_FUZZ_CHECK(kEntry, entry != nullptr, "mapping lists hold no null");
            entry->GetKey();
            entry->GetValue();
        }
    VisitCharacteristics(module->GetCharacteristics());
    module->LookupCharacteristicValue("id");
}

void VisitSource(CSourceInfo* source)
{
    if (source == nullptr)
        return;
    source->GetName();
    source->IsSTMMaster();
    source->LookupCharacteristicValue("id");
    VisitCharacteristics(source->GetCharacteristics());
    for (CModuleInfo* component : source->GetComponents()) {
        DEVID_FUZZ_CHECK(kEntry, component != nullptr, "components are resolved modules");
        VisitModule(component);
    }
}

void VisitRoutes(const std::vector<CTraceRouteInfo*>& routes)
{
    for (CTraceRouteInfo* route : routes) {
        DEVID_FUZZ_CHECK(kEntry, route != nullptr, "route lists hold no null");
        VisitSource(route->GetSourceInfo());
        for (CModuleInfo* link : route->GetLinkInfo())
            VisitModule(link);
        VisitModule(route->GetSinkInfo());
        VisitModule(route->GetDRMInfo());
    }
}

void QueryEverything(CDeviceIdentifierImpl& devId)
{
    VisitRoutes(devId.GetTraceRoutes());

    // Copied first: a query that has to load again replaces the lists.
    std::vector<std::string> names;
    for (const auto& source : devId.GetSources()) {
        names.push_back(source->GetName());
        names.push_back(source->GetID());
    }
    for (const auto& module : devId.GetModules())
        VisitModule(module.get());
    for (const std::string& name : names) {
        VisitSource(devId.GetProcInfo(name));
        VisitRoutes(devId.GetTraceRoutesForProc(name));
        devId.GetDAPName(name);
    }
}

} // namespace

int DeviceDatabase(const uint8_t* data, size_t size)
{
    FuzzWorkspace& workspace = FuzzWorkspace::Get();
    const std::string folder = workspace.Folder("db");
    workspace.WriteFile(folder + "/device_fuzz.xml", data, size);
    setenv("TRACE_XMLDB_DEVICES", folder.c_str(), 1);
    unsetenv("COMMON_VEXIF");

    auto devId = workspace.MakeDeviceIdentifier();
    // A device ID given by the client takes the first file with a device
    // element, whatever identifier the file claims.
    devId->LoadConfiguration(0x1u);
    QueryEverything(*devId);

    // A reload builds the model again; nothing may still point into the old one.
    devId->ReLoadDeviceDatabase();
    QueryEverything(*devId);
    return 0;
}

} // namespace devid_fuzz

#include "cli/DeviceSurvey.h"

#include "cli/ToolError.h"
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/model/CProcIdentifier.h"
#include "devid/model/CSourceInfoImpl.h"
#include "devid/model/CTraceRouteInfoImpl.h"

#include <algorithm>
#include <exception>

namespace devid_cli {

using namespace Mora::Lux::Trace;

namespace {

RegisterView DescribeRegister(CRegisterInfo& reg)
{
    RegisterView view;
    view.name = reg.GetName();
    view.memoryMapped = reg.IsMemoryMapped();
    view.address = reg.GetMemoryAddress();
    view.driverName = reg.GetDriverRegisterName();
    view.page = reg.GetMemoryPage();
    view.unit = reg.GetAddresableUnit();
    view.width = reg.GetWidthInBits();
    return view;
}

std::vector<CharacteristicView> DescribeCharacteristics(const std::vector<CCharacteristic*>& list)
{
    std::vector<CharacteristicView> views;
    for (CCharacteristic* characteristic : list)
        if (characteristic != nullptr)
            views.push_back({characteristic->GetName(), characteristic->GetValue(), characteristic->GetDescription()});
    return views;
}

ModuleView DescribeModule(CModuleInfo& module)
{
    ModuleView view;
    view.name = module.GetName();
    view.kind = module.GetModuleKindStr();
    view.version = module.GetVersion();
    view.access = module.GetModuleAccessStr();
    for (CRegisterInfo* reg : module.GetRegisterInfo())
        if (reg != nullptr)
            view.registers.push_back(DescribeRegister(*reg));
    view.characteristics = DescribeCharacteristics(module.GetCharacteristics());
    for (const std::string& id : module.GetMapIds()) {
        MappingView mapping{id, {}};
        for (CMappingInfo* entry : module.GetMappingInfo(id))
            if (entry != nullptr)
                mapping.entries.emplace_back(entry->GetKey(), entry->GetValue());
        view.mappings.push_back(std::move(mapping));
    }
    return view;
}

ModuleRef Reference(const std::string& name, CModuleInfo* module)
{
    return ModuleRef{name, module != nullptr ? module->GetModuleKindStr() : "", module != nullptr};
}

// The source as the description names it, linked to its modules.
SourceView DescribeSource(CSourceInfo& source, bool withModules)
{
    SourceView view;
    view.name = source.GetName();
    view.stmMaster = source.IsSTMMaster();
    view.characteristics = DescribeCharacteristics(source.GetCharacteristics());
    if (auto* impl = dynamic_cast<CSourceInfoImpl*>(&source)) {
        view.id = impl->GetID();
        for (const std::string& name : impl->GetComponentNames())
            view.components.push_back(Reference(name, source.GetModuleInfo(name)));
    } else {
        for (CModuleInfo* module : source.GetComponents())
            view.components.push_back(Reference(module->GetName(), module));
    }
    if (withModules)
        for (CModuleInfo* module : source.GetComponents())
            if (module != nullptr)
                view.modules.push_back(DescribeModule(*module));
    return view;
}

RouteView DescribeRoute(CTraceRouteInfo& route, CDeviceIdentifierImpl& owner)
{
    RouteView view;
    CSourceInfo* source = route.GetSourceInfo();
    if (source != nullptr)
        view.sourceName = source->GetName();
    auto* impl = dynamic_cast<CTraceRouteInfoImpl*>(&route);
    if (impl == nullptr)
        throw ToolError(ErrorKind::Internal, "a trace route is not the library's own");
    view.source = ModuleRef{impl->GetSourceId(), "", source != nullptr};
    for (const std::string& name : impl->GetLinkNames())
        view.links.push_back(Reference(name, owner.LookupModuleInfo(name)));
    view.sink = Reference(impl->GetSinkName(), route.GetSinkInfo());
    view.drm = Reference(impl->GetDRMName(), route.GetDRMInfo());
    return view;
}

} // namespace

bool DeviceSurvey::Matched()
{
    if (m_session.impl().GetLoadedDeviceFile().empty())
        return false;
    // Without a match for the saved IDs, a loaded configuration falls back on
    // the first file of the database, which says nothing about the device.
    return !m_session.Offline() || !m_session.LoadedDescription().second.empty();
}

bool DeviceSurvey::Identify()
{
    m_session.device().GetTraceRoutes();
    return Matched();
}

std::string DeviceSurvey::DescriptionOf(uint32_t id)
{
    if (m_session.Offline())
        return m_session.LoadedDescription().first == id ? m_session.LoadedDescription().second : "";
    // The instance keeps only the file it loaded last; matching the ID once
    // more names the file for this ID. It appends to the model, so this comes
    // after everything else has been read from it.
    CDeviceIdentifierImpl& impl = m_session.impl();
    try {
        return impl.LoadDeviceDatabase(id) ? impl.GetLoadedDeviceFile() : "";
    } catch (const std::exception&) {
        return "";
    }
}

void DeviceSurvey::RequireDevice()
{
    if (!Identify())
        throw ToolError(ErrorKind::NoDevice, "no device description matches the device IDs read");
}

IdentifyView DeviceSurvey::Identification()
{
    IdentifyView view;
    view.matched = Identify();
    CDeviceIdentifierImpl& impl = m_session.impl();
    for (const DeviceConnectionInfo& connection : impl.GetConnections()) {
        ChainDeviceView device{connection.name, connection.parentName, connection.deviceType, connection.traceId, ""};
        try {
            device.dap = m_session.device().GetDAPName(connection.name);
        } catch (const std::exception&) {
            // The setup adapter may refuse a name; the DAP stays unknown then.
        }
        view.chain.push_back(std::move(device));
    }
    view.deviceIds = impl.GetDeviceIds();
    for (uint32_t id : view.deviceIds) {
        const bool seen = std::any_of(view.descriptions.begin(), view.descriptions.end(),
                                      [id](const auto& description) { return description.first == id; });
        if (!seen)
            view.descriptions.emplace_back(id, DescriptionOf(id));
    }
    return view;
}

ProcessorsView DeviceSurvey::Processors()
{
    RequireDevice();
    CDeviceIdentifierImpl& impl = m_session.impl();
    ProcessorsView view;
    for (const auto& source : impl.GetSources()) {
        // Linking happens on the first query for a source; a listing must do it too.
        source->Normalize(&impl);
        view.sources.push_back(DescribeSource(*source, false));
    }
    for (const auto& proc : impl.GetProcessors()) {
        ProcessorView processor;
        processor.id = proc->id;
        processor.name = proc->procName;
        processor.kind = proc->kind;
        processor.traceId = proc->traceId;
        processor.idValue = proc->idValue;
        if (proc->idRegister) {
            processor.hasIdRegister = true;
            processor.idRegister = DescribeRegister(*proc->idRegister);
        }
        view.processors.push_back(std::move(processor));
    }
    return view;
}

void DeviceSurvey::RequireProcessor(const std::string& name)
{
    if (m_session.device().GetProcInfo(name) != nullptr)
        return;
    RequireDevice();
    std::string known;
    for (const auto& source : m_session.impl().GetSources())
        known += (known.empty() ? "" : ", ") + source->GetName();
    throw ToolError(ErrorKind::UnknownProcessor,
                    "the device has no processor \"" + name + "\" (it has: " + (known.empty() ? "none" : known) + ")");
}

SourceView DeviceSurvey::Processor(const std::string& name)
{
    RequireProcessor(name);
    return DescribeSource(*m_session.device().GetProcInfo(name), true);
}

std::vector<RouteView> DeviceSurvey::Routes(const std::string& procName)
{
    std::vector<CTraceRouteInfo*> routes;
    if (procName.empty()) {
        RequireDevice();
        routes = m_session.device().GetTraceRoutes();
    } else {
        RequireProcessor(procName);
        routes = m_session.device().GetTraceRoutesForProc(procName);
    }
    std::vector<RouteView> views;
    for (CTraceRouteInfo* route : routes)
        if (route != nullptr)
            views.push_back(DescribeRoute(*route, m_session.impl()));
    return views;
}

SettingsView DeviceSurvey::Settings(const std::string& procName)
{
    CDeviceIdentifier& device = m_session.device();
    SettingsView view;
    view.debugger = device.GetSessionSetting(procName, eSessionSettingDebuggerName);
    if (view.debugger.empty())
        throw ToolError(ErrorKind::NoDevice, "no board configuration: the setup adapter could not be reached");
    view.emulator = device.GetSessionSetting(procName, eSessionSettingEmuName);
    view.port = device.GetSessionSetting(procName, eSessionSettingEmuPort);

    const auto& connections = m_session.impl().GetConnections();
    if (!procName.empty()) {
        const bool onChain = std::any_of(connections.begin(), connections.end(),
                                         [&](const DeviceConnectionInfo& c) { return c.name == procName; });
        if (!onChain)
            RequireProcessor(procName);
        view.outFiles.emplace_back(procName, device.GetSessionSetting(procName, eSessionSettingOutFile));
        return view;
    }
    for (const DeviceConnectionInfo& connection : connections)
        view.outFiles.emplace_back(connection.name, device.GetSessionSetting(connection.name, eSessionSettingOutFile));
    return view;
}

} // namespace devid_cli

#include "cli/JsonFormatter.h"

namespace devid_cli {

JsonFormatter::JsonFormatter(std::ostream& out, const std::string& command) : m_json(out)
{
    m_json.beginObject().field("schema", kSchema).field("command", command);
}

void JsonFormatter::HexList(const std::vector<uint32_t>& numbers)
{
    m_json.beginArray();
    for (uint32_t number : numbers)
        m_json.hex(number);
    m_json.endArray();
}

void JsonFormatter::Configuration(const LoadView& view)
{
    m_json.key("configuration").beginObject().field("path", view.path).field("kind", view.kind);
    m_json.key("deviceIds");
    HexList(view.deviceIds);
    m_json.field("chainDevices", view.chainDevices).endObject();
}

void JsonFormatter::Identification(const IdentifyView& view)
{
    m_json.field("database", view.databaseDir).field("board", view.boardDir);
    m_json.key("chain").beginArray();
    for (const ChainDeviceView& device : view.chain) {
        m_json.beginObject().field("name", device.name).field("parent", device.parent);
        m_json.key("type").hex(device.type);
        m_json.field("traceId", device.traceId).field("dap", device.dap).endObject();
    }
    m_json.endArray().key("deviceIds");
    HexList(view.deviceIds);
    m_json.key("descriptions").beginArray();
    for (const auto& [id, file] : view.descriptions) {
        m_json.beginObject().key("deviceId").hex(id).key("file");
        if (file.empty())
            m_json.null();
        else
            m_json.value(file);
        m_json.endObject();
    }
    m_json.endArray().field("matched", view.matched);
}

void JsonFormatter::Register(const RegisterView& reg)
{
    m_json.beginObject().field("name", reg.name).field("memoryMapped", reg.memoryMapped).key("address");
    if (reg.memoryMapped)
        m_json.hex(reg.address);
    else
        m_json.null();
    m_json.key("driverName");
    if (reg.memoryMapped)
        m_json.null();
    else
        m_json.value(reg.driverName);
    m_json.field("page", reg.page).field("unit", reg.unit).field("width", reg.width).endObject();
}

void JsonFormatter::Characteristics(const std::vector<CharacteristicView>& list)
{
    m_json.key("characteristics").beginArray();
    for (const CharacteristicView& c : list)
        m_json.beginObject().field("name", c.name).field("value", c.value).field("description", c.description).endObject();
    m_json.endArray();
}

void JsonFormatter::Reference(const ModuleRef& ref)
{
    m_json.beginObject().field("name", ref.name).field("kind", ref.kind).field("resolved", ref.resolved).endObject();
}

void JsonFormatter::Module(const ModuleView& module)
{
    m_json.beginObject()
        .field("name", module.name)
        .field("kind", module.kind)
        .field("version", module.version)
        .field("access", module.access);
    m_json.key("registers").beginArray();
    for (const RegisterView& reg : module.registers)
        Register(reg);
    m_json.endArray();
    Characteristics(module.characteristics);
    m_json.key("mappings").beginArray();
    for (const MappingView& mapping : module.mappings) {
        m_json.beginObject().field("id", mapping.id).key("entries").beginArray();
        for (const auto& [key, value] : mapping.entries)
            m_json.beginObject().field("key", key).field("value", value).endObject();
        m_json.endArray().endObject();
    }
    m_json.endArray().endObject();
}

void JsonFormatter::Route(const RouteView& route)
{
    m_json.beginObject().key("source").beginObject().field("id", route.source.name).key("name");
    if (route.source.resolved)
        m_json.value(route.sourceName);
    else
        m_json.null();
    m_json.field("resolved", route.source.resolved).endObject();
    m_json.key("links").beginArray();
    for (const ModuleRef& link : route.links)
        Reference(link);
    m_json.endArray();
    for (const auto& [key, end] : {std::make_pair("sink", &route.sink), std::make_pair("drm", &route.drm)}) {
        m_json.key(key);
        if (end->name.empty())
            m_json.null();
        else
            Reference(*end);
    }
    m_json.endObject();
}

void JsonFormatter::RouteList(const std::vector<RouteView>& routes)
{
    m_json.key("routes").beginArray();
    for (const RouteView& route : routes)
        Route(route);
    m_json.endArray();
}

void JsonFormatter::Processors(const ProcessorsView& view)
{
    m_json.key("sources").beginArray();
    for (const SourceView& source : view.sources) {
        m_json.beginObject().field("name", source.name).field("id", source.id).field("stmMaster", source.stmMaster);
        m_json.key("components").beginArray();
        for (const ModuleRef& component : source.components)
            Reference(component);
        m_json.endArray();
        Characteristics(source.characteristics);
        m_json.endObject();
    }
    m_json.endArray().key("processors").beginArray();
    for (const ProcessorView& proc : view.processors) {
        m_json.beginObject().field("id", proc.id).field("name", proc.name).field("kind", proc.kind).field("traceId", proc.traceId);
        m_json.key("idRegister");
        if (proc.hasIdRegister)
            Register(proc.idRegister);
        else
            m_json.null();
        m_json.key("idValue").hex(proc.idValue).endObject();
    }
    m_json.endArray();
}

void JsonFormatter::Processor(const SourceView& source, const std::vector<RouteView>& routes)
{
    m_json.key("processor").beginObject().field("name", source.name).field("id", source.id).field("stmMaster", source.stmMaster);
    Characteristics(source.characteristics);
    m_json.key("components").beginArray();
    for (const ModuleRef& component : source.components)
        Reference(component);
    m_json.endArray().key("modules").beginArray();
    for (const ModuleView& module : source.modules)
        Module(module);
    m_json.endArray().endObject();
    RouteList(routes);
}

void JsonFormatter::Routes(const std::vector<RouteView>& routes) { RouteList(routes); }

void JsonFormatter::Settings(const SettingsView& view)
{
    m_json.field("debugger", view.debugger).field("emulator", view.emulator).field("port", view.port);
    m_json.key("outFiles").beginArray();
    for (const auto& [name, file] : view.outFiles)
        m_json.beginObject().field("name", name).field("file", file).endObject();
    m_json.endArray();
}

void JsonFormatter::Saved(const SaveView& view)
{
    m_json.field("path", view.path).field("format", view.tdf ? "tdf" : "dcm").key("section");
    if (view.tdf)
        m_json.beginObject()
            .field("name", "DEVID")
            .field("version", 1)
            .field("offset", view.sectionOffset)
            .field("length", view.sectionLength)
            .field("shadowed", view.shadowed)
            .endObject();
    else
        m_json.null();
    m_json.field("text", view.text);
}

void JsonFormatter::TdfSections(const std::string& file, const std::vector<TdfSectionView>& sections)
{
    m_json.field("file", file).key("sections").beginArray();
    for (const TdfSectionView& s : sections)
        m_json.beginObject()
            .field("name", s.name)
            .field("version", s.version)
            .field("offset", s.offset)
            .field("length", s.length)
            .field("dataOffset", s.dataOffset)
            .field("dataLength", s.dataLength)
            .endObject();
    m_json.endArray();
}

void JsonFormatter::Problems(const std::vector<CheckProblem>& problems)
{
    m_json.key("problems").beginArray();
    for (const CheckProblem& problem : problems) {
        m_json.beginObject().field("severity", problem.error ? "error" : "warning").field("element", problem.element);
        m_json.key("line");
        if (problem.line != 0)
            m_json.value(problem.line);
        else
            m_json.null();
        m_json.field("message", problem.message).endObject();
    }
    m_json.endArray();
}

void JsonFormatter::DatabaseCheck(const DatabaseReport& report)
{
    m_json.field("directory", report.directory).key("files").beginArray();
    for (const CheckedFile& file : report.files) {
        m_json.beginObject().field("path", file.path).field("read", file.read).key("device");
        if (file.hasValue || !file.deviceId.empty()) {
            m_json.beginObject().field("id", file.deviceId).key("value");
            if (file.hasValue)
                m_json.hex(file.value);
            else
                m_json.null();
            m_json.key("mask");
            if (file.hasMask)
                m_json.hex(file.mask);
            else
                m_json.null();
            m_json.endObject();
        } else {
            m_json.null();
        }
        m_json.key("counts")
            .beginObject()
            .field("procs", file.procs)
            .field("modules", file.modules)
            .field("sources", file.sources)
            .field("routes", file.routes)
            .endObject();
        Problems(file.problems);
        m_json.endObject();
    }
    m_json.endArray();
    Problems(report.problems);
    m_json.field("errors", report.Count(true)).field("warnings", report.Count(false));
}

void JsonFormatter::Finish(const ToolError* error, const std::string& logFile)
{
    m_json.field("ok", error == nullptr);
    if (error != nullptr)
        m_json.key("error").beginObject().field("code", error->code()).field("message", error->what()).endObject();
    m_json.key("log");
    if (logFile.empty())
        m_json.null();
    else
        m_json.value(logFile);
    m_json.endObject();
}

} // namespace devid_cli

#include "cli/JsonFormatter.h"

namespace devid_cli {

namespace {

using Json = nlohmann::ordered_json;

template <typename T, typename Describe>
Json ListOf(const std::vector<T>& items, Describe describe)
{
    Json list = Json::array();
    for (const T& item : items)
        list.push_back(describe(item));
    return list;
}

Json HexList(const std::vector<uint32_t>& numbers) { return ListOf(numbers, Hex32); }

Json HexOrNull(bool present, uint32_t number) { return present ? Json(Hex32(number)) : Json(); }

Json TextOrNull(bool present, const std::string& text) { return present ? Json(text) : Json(); }

Json Register(const RegisterView& reg)
{
    return {{"name", reg.name},
            {"memoryMapped", reg.memoryMapped},
            {"address", HexOrNull(reg.memoryMapped, reg.address)},
            {"driverName", TextOrNull(!reg.memoryMapped, reg.driverName)},
            {"page", reg.page},
            {"unit", reg.unit},
            {"width", reg.width}};
}

Json Characteristics(const std::vector<CharacteristicView>& list)
{
    return ListOf(list, [](const CharacteristicView& c) {
        return Json{{"name", c.name}, {"value", c.value}, {"description", c.description}};
    });
}

Json Reference(const ModuleRef& ref) { return {{"name", ref.name}, {"kind", ref.kind}, {"resolved", ref.resolved}}; }

Json References(const std::vector<ModuleRef>& refs) { return ListOf(refs, Reference); }

Json Module(const ModuleView& module)
{
    Json mappings = ListOf(module.mappings, [](const MappingView& mapping) {
        const auto entry = [](const auto& e) { return Json{{"key", e.first}, {"value", e.second}}; };
        return Json{{"id", mapping.id}, {"entries", ListOf(mapping.entries, entry)}};
    });
    return {{"name", module.name},
            {"kind", module.kind},
            {"version", module.version},
            {"access", module.access},
            {"registers", ListOf(module.registers, Register)},
            {"characteristics", Characteristics(module.characteristics)},
            {"mappings", std::move(mappings)}};
}

Json Route(const RouteView& route)
{
    // The view leaves the name empty where the route has no sink or DRM module.
    const auto end = [](const ModuleRef& ref) { return ref.name.empty() ? Json() : Reference(ref); };
    Json source = {{"id", route.source.name},
                   {"name", TextOrNull(route.source.resolved, route.sourceName)},
                   {"resolved", route.source.resolved}};
    return {{"source", std::move(source)},
            {"links", References(route.links)},
            {"sink", end(route.sink)},
            {"drm", end(route.drm)}};
}

Json Problems(const std::vector<CheckProblem>& problems)
{
    return ListOf(problems, [](const CheckProblem& problem) {
        return Json{{"severity", problem.error ? "error" : "warning"},
                    {"element", problem.element},
                    {"line", problem.line != 0 ? Json(problem.line) : Json()},
                    {"message", problem.message}};
    });
}

} // namespace

JsonFormatter::JsonFormatter(std::ostream& out, const std::string& command) : m_out(out)
{
    m_doc["schema"] = kSchema;
    m_doc["command"] = command;
}

void JsonFormatter::Configuration(const LoadView& view)
{
    m_doc["configuration"] = {{"path", view.path},
                              {"kind", view.kind},
                              {"deviceIds", HexList(view.deviceIds)},
                              {"chainDevices", view.chainDevices}};
}

void JsonFormatter::Identification(const IdentifyView& view)
{
    m_doc["database"] = view.databaseDir;
    m_doc["board"] = view.boardDir;
    m_doc["chain"] = ListOf(view.chain, [](const ChainDeviceView& device) {
        return Json{{"name", device.name},
                    {"parent", device.parent},
                    {"type", Hex32(device.type)},
                    {"traceId", device.traceId},
                    {"dap", device.dap}};
    });
    m_doc["deviceIds"] = HexList(view.deviceIds);
    m_doc["descriptions"] = ListOf(view.descriptions, [](const auto& description) {
        const auto& [id, file] = description;
        return Json{{"deviceId", Hex32(id)}, {"file", TextOrNull(!file.empty(), file)}};
    });
    m_doc["matched"] = view.matched;
}

void JsonFormatter::Processors(const ProcessorsView& view)
{
    m_doc["sources"] = ListOf(view.sources, [](const SourceView& source) {
        return Json{{"name", source.name},
                    {"id", source.id},
                    {"stmMaster", source.stmMaster},
                    {"components", References(source.components)},
                    {"characteristics", Characteristics(source.characteristics)}};
    });
    m_doc["processors"] = ListOf(view.processors, [](const ProcessorView& proc) {
        return Json{{"id", proc.id},
                    {"name", proc.name},
                    {"kind", proc.kind},
                    {"traceId", proc.traceId},
                    {"idRegister", proc.hasIdRegister ? Register(proc.idRegister) : Json()},
                    {"idValue", Hex32(proc.idValue)}};
    });
}

void JsonFormatter::Processor(const SourceView& source, const std::vector<RouteView>& routes)
{
    m_doc["processor"] = {{"name", source.name},
                          {"id", source.id},
                          {"stmMaster", source.stmMaster},
                          {"characteristics", Characteristics(source.characteristics)},
                          {"components", References(source.components)},
                          {"modules", ListOf(source.modules, Module)}};
    Routes(routes);
}

void JsonFormatter::Routes(const std::vector<RouteView>& routes) { m_doc["routes"] = ListOf(routes, Route); }

void JsonFormatter::Settings(const SettingsView& view)
{
    m_doc["debugger"] = view.debugger;
    m_doc["emulator"] = view.emulator;
    m_doc["port"] = view.port;
    m_doc["outFiles"] = ListOf(view.outFiles, [](const auto& outFile) {
        return Json{{"name", outFile.first}, {"file", outFile.second}};
    });
}

void JsonFormatter::Saved(const SaveView& view)
{
    m_doc["path"] = view.path;
    m_doc["format"] = view.tdf ? "tdf" : "dcm";
    m_doc["section"] = view.tdf ? Json{{"name", "DEVID"},
                                       {"version", 1},
                                       {"offset", view.sectionOffset},
                                       {"length", view.sectionLength},
                                       {"shadowed", view.shadowed}}
                                : Json();
    m_doc["text"] = view.text;
}

void JsonFormatter::TdfSections(const std::string& file, const std::vector<TdfSectionView>& sections)
{
    m_doc["file"] = file;
    m_doc["sections"] = ListOf(sections, [](const TdfSectionView& s) {
        return Json{{"name", s.name},
                    {"version", s.version},
                    {"offset", s.offset},
                    {"length", s.length},
                    {"dataOffset", s.dataOffset},
                    {"dataLength", s.dataLength}};
    });
}

void JsonFormatter::DatabaseCheck(const DatabaseReport& report)
{
    m_doc["directory"] = report.directory;
    m_doc["files"] = ListOf(report.files, [](const CheckedFile& file) {
        Json device;
        if (file.hasValue || !file.deviceId.empty())
            device = {{"id", file.deviceId},
                      {"value", HexOrNull(file.hasValue, file.value)},
                      {"mask", HexOrNull(file.hasMask, file.mask)}};
        Json counts = {
            {"procs", file.procs}, {"modules", file.modules}, {"sources", file.sources}, {"routes", file.routes}};
        return Json{{"path", file.path},
                    {"read", file.read},
                    {"device", std::move(device)},
                    {"counts", std::move(counts)},
                    {"problems", Problems(file.problems)}};
    });
    m_doc["problems"] = Problems(report.problems);
    m_doc["errors"] = report.Count(true);
    m_doc["warnings"] = report.Count(false);
}

void JsonFormatter::Finish(const ToolError* error, const std::string& logFile)
{
    m_doc["ok"] = error == nullptr;
    if (error != nullptr)
        m_doc["error"] = {{"code", error->code()}, {"message", error->what()}};
    m_doc["log"] = TextOrNull(!logFile.empty(), logFile);
    m_out << m_doc.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace devid_cli

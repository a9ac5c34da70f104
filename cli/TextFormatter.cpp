#include "cli/TextFormatter.h"

#include <algorithm>
#include <filesystem>

namespace devid_cli {

namespace {

// Columns padded to their widest cell; the last column is not padded.
class Table {
public:
    explicit Table(std::vector<std::string> header) { m_rows.push_back(std::move(header)); }
    void Add(std::vector<std::string> row) { m_rows.push_back(std::move(row)); }

    void Print(std::ostream& out, const std::string& indent) const
    {
        std::vector<std::size_t> widths;
        for (const auto& row : m_rows) {
            widths.resize(std::max(widths.size(), row.size()), 0);
            for (std::size_t i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], row[i].size());
        }
        for (const auto& row : m_rows) {
            std::string line = indent;
            for (std::size_t i = 0; i < row.size(); ++i) {
                line += row[i];
                if (i + 1 < row.size())
                    line += std::string(widths[i] - row[i].size() + 2, ' ');
            }
            line.erase(line.find_last_not_of(' ') + 1);
            out << line << '\n';
        }
    }

private:
    std::vector<std::vector<std::string>> m_rows;
};

std::string OrDash(const std::string& text) { return text.empty() ? "-" : text; }

std::string Join(const std::vector<std::string>& parts, const std::string& separator)
{
    std::string joined;
    for (const std::string& part : parts)
        joined += (joined.empty() ? "" : separator) + part;
    return joined;
}

// Unresolved names carry a "?" so that they stand out in a table.
std::string Name(const ModuleRef& ref) { return ref.resolved ? ref.name : ref.name + "?"; }

std::string Location(const RegisterView& reg)
{
    return reg.memoryMapped ? Hex32(reg.address) : "driver " + reg.driverName;
}

void PrintRegisters(std::ostream& out, const std::vector<RegisterView>& registers, const std::string& indent)
{
    Table table({"register", "address / driver name", "page", "unit", "width"});
    for (const RegisterView& reg : registers)
        table.Add({reg.name, Location(reg), std::to_string(reg.page), std::to_string(reg.unit), std::to_string(reg.width)});
    table.Print(out, indent);
}

void PrintCharacteristics(std::ostream& out, const std::vector<CharacteristicView>& list, const std::string& indent)
{
    for (const CharacteristicView& c : list)
        out << indent << c.name << " = " << c.value << (c.description.empty() ? "" : "  (" + c.description + ")")
            << '\n';
}

std::string Plural(std::size_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

void PrintRouteTable(std::ostream& out, const std::vector<RouteView>& routes)
{
    Table table({"#", "source", "links", "sink", "DRM"});
    bool unresolved = false;
    for (std::size_t i = 0; i < routes.size(); ++i) {
        const RouteView& route = routes[i];
        std::string source = Name(route.source);
        if (!route.sourceName.empty() && route.sourceName != route.source.name)
            source += " (" + route.sourceName + ")";
        std::vector<std::string> links;
        for (const ModuleRef& link : route.links)
            links.push_back(Name(link));
        table.Add({std::to_string(i), source, OrDash(Join(links, " -> ")), route.sink.name.empty() ? "-" : Name(route.sink),
                   route.drm.name.empty() ? "-" : Name(route.drm)});
        unresolved = unresolved || !route.source.resolved || !route.sink.resolved ||
                     (!route.drm.name.empty() && !route.drm.resolved) ||
                     std::any_of(route.links.begin(), route.links.end(), [](const ModuleRef& l) { return !l.resolved; });
    }
    table.Print(out, "  ");
    if (unresolved)
        out << "  (? = the name matches nothing in the device description)\n";
}

} // namespace

void TextFormatter::Configuration(const LoadView& view)
{
    m_out << "Offline, from the saved configuration " << view.path << " (" << view.kind << ")\n";
    if (view.deviceIds.size() > 1)
        m_out << "Note: the library loads a description once for each of the " << view.deviceIds.size()
              << " saved device IDs, so what it lists may repeat\n";
    m_out << '\n';
}

void TextFormatter::Identification(const IdentifyView& view)
{
    m_out << "Scan chain (" << Plural(view.chain.size(), "device") << ")\n";
    Table chain({"#", "device", "parent", "type", "trace ID", "DAP"});
    for (std::size_t i = 0; i < view.chain.size(); ++i) {
        const ChainDeviceView& device = view.chain[i];
        chain.Add({std::to_string(i), device.name, device.parent == device.name ? "-" : device.parent, Hex32(device.type),
                   device.traceId == 0 ? "-" : std::to_string(device.traceId), OrDash(device.dap)});
    }
    chain.Print(m_out, "  ");
    m_out << "\nDevice IDs and the descriptions they match\n";
    Table descriptions({"device ID", "description file"});
    for (const auto& [id, file] : view.descriptions)
        descriptions.Add({Hex32(id), file.empty() ? "none matched" : file});
    if (view.descriptions.empty())
        m_out << "  none read\n";
    else
        descriptions.Print(m_out, "  ");
    if (view.deviceIds.size() > view.descriptions.size())
        m_out << "  (" << view.deviceIds.size() << " IDs held, repeats included)\n";
    m_out << "\nDatabase:  " << OrDash(view.databaseDir) << '\n';
    m_out << "Board:     " << OrDash(view.boardDir) << '\n';
}

void TextFormatter::Processors(const ProcessorsView& view)
{
    m_out << "Sources (" << view.sources.size() << ")\n";
    Table sources({"name", "ID", "STM master", "components"});
    for (const SourceView& source : view.sources) {
        std::vector<std::string> components;
        for (const ModuleRef& component : source.components)
            components.push_back(Name(component));
        sources.Add({source.name, source.id, source.stmMaster ? "yes" : "no", OrDash(Join(components, ", "))});
    }
    sources.Print(m_out, "  ");

    m_out << "\nProcessors (" << view.processors.size() << ")\n";
    Table processors({"ID", "name", "kind", "trace ID", "ID register", "ID value"});
    for (const ProcessorView& proc : view.processors) {
        processors.Add({proc.id, proc.name, OrDash(proc.kind), proc.traceId == 0 ? "-" : std::to_string(proc.traceId),
                        proc.hasIdRegister ? proc.idRegister.name + " at " + Location(proc.idRegister) : "-",
                        proc.hasIdRegister ? Hex32(proc.idValue) : "-"});
    }
    processors.Print(m_out, "  ");
}

void TextFormatter::Processor(const SourceView& source, const std::vector<RouteView>& routes)
{
    m_out << "Processor " << source.name << "  (source ID " << source.id
          << ", STM master: " << (source.stmMaster ? "yes" : "no") << ")\n";
    if (!source.characteristics.empty()) {
        m_out << "Characteristics\n";
        PrintCharacteristics(m_out, source.characteristics, "  ");
    }
    std::vector<std::string> missing;
    for (const ModuleRef& component : source.components)
        if (!component.resolved)
            missing.push_back(component.name);
    m_out << "Modules (" << source.modules.size() << ")\n";
    for (const ModuleView& module : source.modules) {
        m_out << "  " << module.name << "  kind " << module.kind << ", version " << module.version << ", access "
              << module.access << '\n';
        if (!module.registers.empty())
            PrintRegisters(m_out, module.registers, "    ");
        if (!module.characteristics.empty()) {
            m_out << "    characteristics\n";
            PrintCharacteristics(m_out, module.characteristics, "      ");
        }
        for (const MappingView& mapping : module.mappings) {
            std::vector<std::string> entries;
            for (const auto& [key, value] : mapping.entries)
                entries.push_back(key + " -> " + value);
            m_out << "    mapping " << mapping.id << ": " << (entries.empty() ? "empty" : Join(entries, ", ")) << '\n';
        }
    }
    if (!missing.empty())
        m_out << "  not in the description: " << Join(missing, ", ") << '\n';
    m_out << "Routes (" << routes.size() << ")\n";
    if (!routes.empty())
        PrintRouteTable(m_out, routes);
}

void TextFormatter::Routes(const std::vector<RouteView>& routes)
{
    m_out << "Routes (" << routes.size() << ")\n";
    if (!routes.empty())
        PrintRouteTable(m_out, routes);
}

void TextFormatter::Settings(const SettingsView& view)
{
    m_out << "Debugger:  " << view.debugger << '\n' << "Emulator:  " << view.emulator << '\n'
          << "Port:      " << view.port << '\n' << "Output files\n";
    Table files({"device", "file"});
    for (const auto& [name, file] : view.outFiles)
        files.Add({name, OrDash(file)});
    files.Print(m_out, "  ");
}

void TextFormatter::Saved(const SaveView& view)
{
    if (view.tdf) {
        m_out << "Saved the DEVID section (version 1) to " << view.path << " at offset " << view.sectionOffset << ", "
              << view.sectionLength << " bytes with its header\n";
        if (view.shadowed)
            m_out << "Note: the file already held a DEVID section; loading reads the first one, not this one\n";
    } else {
        m_out << "Saved the configuration to " << view.path << '\n';
    }
    m_out << '\n' << view.text;
    if (!view.text.empty() && view.text.back() != '\n')
        m_out << '\n';
}

void TextFormatter::TdfSections(const std::string& file, const std::vector<TdfSectionView>& sections)
{
    m_out << file << ": " << Plural(sections.size(), "section") << '\n';
    Table table({"name", "version", "offset", "length", "data offset", "data length"});
    for (const TdfSectionView& s : sections)
        table.Add({s.name, std::to_string(s.version), std::to_string(s.offset), std::to_string(s.length),
                   std::to_string(s.dataOffset), std::to_string(s.dataLength)});
    if (!sections.empty())
        table.Print(m_out, "  ");
}

void TextFormatter::DatabaseCheck(const DatabaseReport& report)
{
    const auto print = [this](const std::string& where, const CheckProblem& problem) {
        m_out << where;
        if (problem.line != 0)
            m_out << ':' << problem.line;
        m_out << ": " << (problem.error ? "error" : "warning") << ": ";
        if (!problem.element.empty())
            m_out << problem.element << ": ";
        m_out << problem.message << '\n';
    };
    std::size_t described = 0;
    for (const CheckedFile& file : report.files) {
        const std::string name = std::filesystem::path(file.path).filename().string();
        described += file.read ? 1 : 0;
        if (file.problems.empty())
            m_out << name << ": ok (" << Plural(file.procs, "processor") << ", " << Plural(file.modules, "module")
                  << ", " << Plural(file.sources, "source") << ", " << Plural(file.routes, "route") << ")\n";
        for (const CheckProblem& problem : file.problems)
            print(name, problem);
    }
    for (const CheckProblem& problem : report.problems)
        print(report.directory, problem);
    m_out << Plural(described, "description file") << " in " << report.directory << ": "
          << Plural(report.Count(true), "error") << ", " << Plural(report.Count(false), "warning") << '\n';
}

void TextFormatter::Finish(const ToolError* error, const std::string& logFile)
{
    if (error != nullptr)
        m_err << "devid: error: " << error->what() << '\n';
    if (!logFile.empty())
        m_err << "devid: library log: " << logFile << '\n';
}

} // namespace devid_cli

#include "cli/DatabaseChecker.h"

#include "cli/DeviceViews.h"
#include "devid/NumberText.h"
#include "devid/model/DatabaseText.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <set>
#include <sstream>

namespace devid_cli {

namespace fs = std::filesystem;
using Mora::Lux::Trace::DatabaseNameIs;
using Mora::Lux::Trace::ParseUnsigned32;
using pugi::xml_node;

namespace {

// The library's own rule for which folder entries are descriptions.
bool IsDescriptionName(const std::string& name)
{
    return name.find("device") != std::string::npos && name.find("xml") != std::string::npos;
}

// A file the library never reads, with the reason.
CheckedFile Unread(const std::string& path, const std::string& why)
{
    CheckedFile file;
    file.path = path;
    file.read = false;
    file.problems.push_back({false, "", 0, why});
    return file;
}

bool HasXmlExtension(const std::string& name)
{
    std::string extension = fs::path(name).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".xml";
}

// Attribute and tag names are matched without regard to case, as the loader does.
const char* Attribute(xml_node node, const char* name)
{
    for (pugi::xml_attribute attribute : node.attributes())
        if (DatabaseNameIs(attribute.name(), name))
            return attribute.value();
    return nullptr;
}

bool TagIs(xml_node node, const char* tag) { return DatabaseNameIs(node.name(), tag); }

std::vector<xml_node> Elements(xml_node parent)
{
    std::vector<xml_node> children;
    for (xml_node child : parent.children())
        if (child.type() == pugi::node_element)
            children.push_back(child);
    return children;
}

// Whether the whole text is a number in the loader's sense (base 0 or 10).
bool IsNumber(const char* text, int base)
{
    if (text == nullptr)
        return false;
    const char* start = text;
    while (std::isspace(static_cast<unsigned char>(*start)))
        ++start;
    if (*start == '+' || *start == '-')
        ++start;
    if (!std::isdigit(static_cast<unsigned char>(*start)))
        return false;
    char* end = nullptr;
    std::strtoull(text, &end, base);
    while (std::isspace(static_cast<unsigned char>(*end)))
        ++end;
    return *end == '\0';
}

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

class FileCheck {
public:
    FileCheck(CheckedFile& report, const std::string& content) : m_report(report)
    {
        m_lineStarts.push_back(0);
        for (std::size_t i = 0; i < content.size(); ++i)
            if (content[i] == '\n')
                m_lineStarts.push_back(i + 1);
    }

    void Run(xml_node device)
    {
        const char* id = Attribute(device, "id");
        const char* value = Attribute(device, "value");
        const char* mask = Attribute(device, "mask");
        if (id == nullptr || value == nullptr) {
            Problem(true, device, "device",
                    std::string("missing required attribute ") + (id == nullptr ? "\"id\"" : "\"value\"") +
                        ": the library skips this file");
        }
        if (id != nullptr)
            m_report.deviceId = id;
        if (value != nullptr) {
            m_report.hasValue = true;
            m_report.value = ParseUnsigned32(value, 0);
            CheckNumber(device, "device", "value", 0);
        }
        if (mask != nullptr) {
            m_report.hasMask = true;
            m_report.mask = *mask == '\0' ? 0x0FFFFFFFu : ParseUnsigned32(mask, 0);
            if (*mask != '\0')
                CheckNumber(device, "device", "mask", 0);
        }

        for (xml_node section : Elements(device)) {
            if (TagIs(section, "procs"))
                Procs(section);
            else if (TagIs(section, "modules"))
                Modules(section);
            else if (TagIs(section, "sources"))
                Sources(section);
            else if (TagIs(section, "trace_routes"))
                Routes(section);
            else
                Problem(true, section, section.name(), "unknown section: the library ignores it");
        }
        Resolve();
    }

private:
    struct Reference {
        xml_node node;
        std::string element;
        std::string name;
        bool toModule; // else to a source ID
    };

    void Problem(bool error, xml_node node, const std::string& element, const std::string& message)
    {
        std::size_t line = 0;
        const std::ptrdiff_t offset = node.offset_debug();
        if (offset >= 0) {
            const auto after = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(),
                                                static_cast<std::size_t>(offset));
            line = static_cast<std::size_t>(std::distance(m_lineStarts.begin(), after));
        }
        m_report.problems.push_back(CheckProblem{error, element, line, message});
    }

    // True when every listed attribute is present; each missing one is an error.
    bool Require(xml_node node, const std::string& element, std::initializer_list<const char*> names,
                 const std::string& consequence = "")
    {
        bool complete = true;
        for (const char* name : names) {
            if (Attribute(node, name) == nullptr) {
                Problem(true, node, element, "missing required attribute " + Quoted(name) + consequence);
                complete = false;
            }
        }
        return complete;
    }

    void CheckNumber(xml_node node, const std::string& element, const char* name, int base)
    {
        const char* text = Attribute(node, name);
        if (text != nullptr && !IsNumber(text, base)) {
            const std::string reads = base == 10 ? std::to_string(Mora::Lux::Trace::ParseSigned32(text))
                                                 : std::to_string(ParseUnsigned32(text, 0));
            Problem(false, node, element,
                    Quoted(name) + " " + Quoted(text) + " is not a" + (base == 10 ? " decimal " : " ") +
                        "number: it reads as " + reads);
        }
    }

    static std::string Label(xml_node node, std::size_t index, const char* key = "id")
    {
        const char* name = key != nullptr ? Attribute(node, key) : nullptr;
        return std::string(node.name()) + "[" + (name != nullptr ? std::string(name) : "#" + std::to_string(index)) +
               "]";
    }

    void Duplicate(std::set<std::string>& seen, xml_node node, const std::string& element, const char* what)
    {
        const char* id = Attribute(node, "id");
        if (id != nullptr && !seen.insert(id).second)
            Problem(true, node, element,
                    std::string("another ") + what + " with id " + Quoted(id) + " comes first and shadows this one");
    }

    void Procs(xml_node procs)
    {
        std::set<std::string> seen;
        std::size_t index = 0;
        for (xml_node proc : Elements(procs)) {
            const std::string element = Label(proc, ++index);
            ++m_report.procs;
            Require(proc, element, {"id"});
            Duplicate(seen, proc, element, "processor");
            CheckNumber(proc, element, "traceid", 10);
            if (const char* id = Attribute(proc, "id"))
                m_procIds.insert(id);

            const std::vector<xml_node> children = Elements(proc);
            for (std::size_t i = 1; i < children.size(); ++i)
                if (TagIs(children[i], "identifier"))
                    Problem(false, children[i], element + "/identifier",
                            "not the processor's first element: the library ignores it");
            if (!children.empty() && TagIs(children.front(), "identifier"))
                Identifier(children.front(), element + "/identifier");
        }
    }

    void Identifier(xml_node identifier, const std::string& element)
    {
        const std::vector<xml_node> children = Elements(identifier);
        if (children.empty() || !TagIs(children.front(), "register")) {
            Problem(false, identifier, element, "its first element is not \"register\": the processor has no ID register");
            return;
        }
        xml_node reg = children.front();
        const std::string regElement = element + "/register";
        Require(reg, regElement, {"id", "address", "page", "addrunit", "width"});
        const char* type = Attribute(reg, "type");
        if (type == nullptr || !DatabaseNameIs(type, "reg"))
            CheckNumber(reg, regElement, "address", 0);
        for (const char* name : {"page", "addrunit", "width"})
            CheckNumber(reg, regElement, name, 0);
        for (std::size_t i = 2; i < children.size(); ++i)
            if (TagIs(children[i], "value"))
                Problem(false, children[i], element + "/value",
                        "not right after \"register\": the library ignores it");
        if (children.size() > 1 && TagIs(children[1], "value"))
            CheckNumber(children[1], element + "/value", "idvalue", 0);
    }

    void Characteristics(xml_node container, const std::string& element)
    {
        std::size_t index = 0;
        for (xml_node characteristic : Elements(container)) {
            ++index;
            if (Attribute(characteristic, "id") == nullptr || Attribute(characteristic, "value") == nullptr)
                Problem(false, characteristic, element + "/" + Label(characteristic, index),
                        "a characteristic needs \"id\" and \"value\": the library drops it");
        }
    }

    void Modules(xml_node modules)
    {
        std::set<std::string> seen;
        std::size_t index = 0;
        for (xml_node module : Elements(modules)) {
            const std::string element = Label(module, ++index);
            ++m_report.modules;
            Require(module, element, {"id", "kind", "proc"}, ": the library rejects the whole description");
            Duplicate(seen, module, element, "module");
            if (const char* id = Attribute(module, "id"))
                m_moduleNames.insert(id);
            if (const char* proc = Attribute(module, "proc"))
                RequireProcessor(module, element, proc);

            for (xml_node part : Elements(module)) {
                if (TagIs(part, "registers"))
                    Registers(part, element + "/" + part.name());
                else if (TagIs(part, "characteristics"))
                    Characteristics(part, element + "/" + part.name());
                else if (TagIs(part, "mapping"))
                    Mapping(part, element + "/" + Label(part, 0));
                else
                    Problem(false, part, element + "/" + part.name(), "unknown element: the library ignores it");
            }
        }
    }

    void Registers(xml_node registers, const std::string& element)
    {
        std::size_t index = 0;
        for (xml_node reg : Elements(registers)) {
            const std::string regElement = element + "/" + Label(reg, ++index);
            Require(reg, regElement, {"id", "type", "address", "page", "addrunit", "width"},
                    ": the library rejects the whole description");
            const char* type = Attribute(reg, "type");
            if (type != nullptr && DatabaseNameIs(type, "mem"))
                CheckNumber(reg, regElement, "address", 0);
            for (const char* name : {"page", "addrunit", "width"})
                CheckNumber(reg, regElement, name, 0);
        }
    }

    void Mapping(xml_node mapping, const std::string& element)
    {
        if (!Require(mapping, element, {"id"}, ": the library rejects the whole description"))
            return;
        const std::string id = Attribute(mapping, "id");
        // The id names the two attributes of every entry, as "key.value".
        std::vector<std::string> names;
        std::istringstream parts(id);
        for (std::string part; std::getline(parts, part, '.');)
            if (!part.empty())
                names.push_back(part);
        const std::vector<xml_node> entries = Elements(mapping);
        if (entries.empty())
            return;
        if (names.size() < 2) {
            Problem(false, mapping, element,
                    "the id " + Quoted(id) + " names no \"key.value\" attribute pair: every entry is dropped");
            return;
        }
        std::size_t index = 0;
        for (xml_node entry : entries) {
            ++index;
            if (Attribute(entry, names[0].c_str()) == nullptr || Attribute(entry, names[1].c_str()) == nullptr)
                Problem(false, entry, element + "/" + Label(entry, index, nullptr),
                        "an entry needs the attributes " + Quoted(names[0]) + " and " + Quoted(names[1]) +
                            ": the library drops it");
        }
    }

    // Modules and sources see only the processors listed before them.
    void RequireProcessor(xml_node node, const std::string& element, const std::string& proc)
    {
        if (m_procIds.count(proc) == 0)
            Problem(true, node, element,
                    "\"proc\" " + Quoted(proc) + " names no processor listed before it (procs must come first)");
    }

    void Sources(xml_node sources)
    {
        std::set<std::string> seen;
        std::size_t index = 0;
        for (xml_node source : Elements(sources)) {
            const std::string element = Label(source, ++index);
            ++m_report.sources;
            const bool kept =
                Require(source, element, {"id", "proc", "stmmaster"}, ": the library drops the source");
            if (!kept)
                continue;
            Duplicate(seen, source, element, "source");
            m_sourceIds.insert(Attribute(source, "id"));
            RequireProcessor(source, element, Attribute(source, "proc"));
            const std::string stm = Attribute(source, "stmmaster");
            if (!DatabaseNameIs(stm.c_str(), "true") && !DatabaseNameIs(stm.c_str(), "false"))
                Problem(false, source, element, "\"stmmaster\" " + Quoted(stm) + " is neither true nor false: it reads as false");

            for (xml_node part : Elements(source)) {
                if (TagIs(part, "components")) {
                    std::size_t componentIndex = 0;
                    for (xml_node component : Elements(part)) {
                        const std::string componentElement = element + "/" + Label(component, ++componentIndex, "module");
                        if (const char* module = Attribute(component, "module"))
                            m_references.push_back({component, componentElement, module, true});
                        else
                            Problem(false, component, componentElement, "no \"module\" attribute: the library drops it");
                    }
                } else if (TagIs(part, "characteristics")) {
                    Characteristics(part, element + "/" + part.name());
                } else {
                    Problem(false, part, element + "/" + part.name(), "unknown element: the library ignores it");
                }
            }
        }
    }

    void Routes(xml_node routes)
    {
        std::size_t index = 0;
        for (xml_node route : Elements(routes)) {
            const std::string element = std::string(route.name()) + "[#" + std::to_string(++index) + "]";
            ++m_report.routes;
            bool hasSource = false;
            bool hasSink = false;
            for (xml_node part : Elements(route)) {
                const std::string partElement = element + "/" + part.name();
                const bool isSource = TagIs(part, "source");
                if (!isSource && !TagIs(part, "link") && !TagIs(part, "sink") && !TagIs(part, "pin")) {
                    Problem(false, part, partElement, "unknown element: the library ignores it");
                    continue;
                }
                const char* attribute = isSource ? "source" : "module";
                const char* name = Attribute(part, attribute);
                if (name == nullptr || *name == '\0') {
                    Problem(true, part, partElement, "no " + Quoted(attribute) + " name");
                    continue;
                }
                if ((isSource && hasSource) || (TagIs(part, "sink") && hasSink))
                    Problem(false, part, partElement, "a second one: it replaces the first");
                hasSource = hasSource || isSource;
                hasSink = hasSink || TagIs(part, "sink");
                m_references.push_back({part, partElement, name, !isSource});
            }
            if (!hasSource)
                Problem(true, route, element, "the route has no source");
            if (!hasSink)
                Problem(true, route, element, "the route has no sink");
        }
    }

    // Sources and routes are linked by name once the whole file is read.
    void Resolve()
    {
        for (const Reference& reference : m_references) {
            const bool known = reference.toModule ? m_moduleNames.count(reference.name) != 0
                                                  : m_sourceIds.count(reference.name) != 0;
            if (!known)
                Problem(true, reference.node, reference.element,
                        Quoted(reference.name) + " names no " + (reference.toModule ? "module" : "source") +
                            " of this description");
        }
    }

    CheckedFile& m_report;
    std::vector<std::size_t> m_lineStarts;
    std::set<std::string> m_procIds;
    std::set<std::string> m_moduleNames;
    std::set<std::string> m_sourceIds;
    std::vector<Reference> m_references;
};

std::string MaskText(const CheckedFile& file)
{
    return file.hasMask ? "mask " + Hex32(file.mask) : "no mask";
}

} // namespace

std::size_t DatabaseReport::Count(bool errors) const
{
    std::size_t count = 0;
    for (const CheckProblem& problem : problems)
        count += problem.error == errors ? 1 : 0;
    for (const CheckedFile& file : files)
        for (const CheckProblem& problem : file.problems)
            count += problem.error == errors ? 1 : 0;
    return count;
}

CheckedFile DatabaseChecker::CheckFile(const std::string& path)
{
    CheckedFile report;
    report.path = path;
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        report.problems.push_back({true, "", 0, "cannot read the file"});
        return report;
    }
    const std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());

    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(content.data(), content.size());
    if (!parsed) {
        const std::size_t offset = std::min(static_cast<std::size_t>(std::max<std::ptrdiff_t>(parsed.offset, 0)), content.size());
        const std::size_t line = 1 + static_cast<std::size_t>(std::count(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(offset), '\n'));
        report.problems.push_back({true, "", line, std::string("not well-formed XML: ") + parsed.description()});
        return report;
    }
    xml_node root = document.document_element();
    xml_node device;
    for (xml_node child : root.children())
        if (child.type() == pugi::node_element) {
            device = child;
            break;
        }
    if (!device) {
        report.problems.push_back({true, "", 0, "no device element (the first element inside the root element)"});
        return report;
    }
    FileCheck(report, content).Run(device);
    return report;
}

DatabaseReport DatabaseChecker::CheckFolder(const std::string& directory)
{
    DatabaseReport report;
    report.directory = directory;
    std::vector<std::string> names;
    std::vector<std::string> irregular;
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code ignored;
        (entry->is_regular_file(ignored) ? names : irregular).push_back(entry->path().filename().string());
    }
    if (error) {
        report.problems.push_back({true, "", 0, "cannot read the folder: " + error.message()});
        return report;
    }
    std::sort(names.begin(), names.end());
    std::sort(irregular.begin(), irregular.end());
    for (const std::string& name : irregular) {
        if (IsDescriptionName(name))
            report.files.push_back(Unread((fs::path(directory) / name).string(),
                                          "not a regular file (a folder, FIFO, socket or device): the library skips it"));
    }

    for (const std::string& name : names) {
        const std::string path = (fs::path(directory) / name).string();
        if (IsDescriptionName(name)) {
            report.files.push_back(CheckFile(path));
        } else if (HasXmlExtension(name)) {
            report.files.push_back(
                Unread(path, "the library never reads this file: a description's name contains \"device\" and \"xml\" (case matters)"));
        }
    }

    std::vector<CheckedFile*> described;
    bool anyMask = false;
    for (CheckedFile& file : report.files) {
        if (file.read && file.hasValue && !file.deviceId.empty()) {
            described.push_back(&file);
            anyMask = anyMask || file.hasMask;
        }
    }
    if (described.empty())
        report.problems.push_back({true, "", 0, "no device description in this folder"});

    for (std::size_t i = 0; i < described.size(); ++i) {
        CheckedFile& a = *described[i];
        if (!a.hasMask && anyMask)
            a.problems.push_back({false, "device", 0,
                                  "no mask: the library then applies the mask of the file it read before this one; "
                                  "write mask=\"0xffffffff\" for an exact match"});
        for (std::size_t j = i + 1; j < described.size(); ++j) {
            CheckedFile& b = *described[j];
            if (((a.value ^ b.value) & a.mask & b.mask) != 0)
                continue;
            const auto describe = [](const CheckedFile& file) {
                return fs::path(file.path).filename().string() + " (value " + Hex32(file.value) + ", " + MaskText(file) + ")";
            };
            const std::string text = " accept the same device IDs: the file the folder lists first wins";
            a.problems.push_back({true, "device", 0, "this file and " + describe(b) + text});
            b.problems.push_back({true, "device", 0, "this file and " + describe(a) + text});
        }
    }
    return report;
}

} // namespace devid_cli

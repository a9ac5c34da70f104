#include "simboard/SimBoardReader.h"

#include <pugixml.hpp>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <set>
#include <strings.h>

namespace Mora {
namespace Lux {
namespace Sim {

const char* const SimBoardReader::FolderVariable = "COMMON_VEXIF";
const char* const SimBoardReader::FileName = "simboard.xml";

namespace {

// Raised inside this file only; ReadFolder turns it into a failed result.
struct BoardError {
    std::string text;
};

std::string Describe(const pugi::xml_node& element)
{
    std::string text = "<" + std::string(element.name());
    const char* name = element.attribute("name").value();
    if (*name != '\0')
        text += " name=\"" + std::string(name) + "\"";
    return text + ">";
}

[[noreturn]] void Fail(const pugi::xml_node& element, const std::string& what)
{
    throw BoardError{Describe(element) + ": " + what};
}

// Unknown attributes are refused so that a misspelt one cannot silently take
// its default.
void CheckAttributes(const pugi::xml_node& element, std::initializer_list<const char*> known)
{
    for (const pugi::xml_attribute& attribute : element.attributes()) {
        bool found = false;
        for (const char* name : known)
            found = found || std::strcmp(attribute.name(), name) == 0;
        if (!found)
            Fail(element, "unknown attribute \"" + std::string(attribute.name()) + "\"");
    }
}

uint32_t ParseNumber(const pugi::xml_node& element, const char* attributeName, const char* text)
{
    // strtoull alone would accept a sign, blanks and trailing text.
    bool startsWithDigit = *text >= '0' && *text <= '9';
    char* end = nullptr;
    errno = 0;
    unsigned long long value = startsWithDigit ? std::strtoull(text, &end, 0) : 0;
    if (!startsWithDigit || *end != '\0' || errno == ERANGE || value > 0xFFFFFFFFULL)
        Fail(element, "attribute \"" + std::string(attributeName) + "\" is not a 32-bit number: \"" +
                          text + "\"");
    return static_cast<uint32_t>(value);
}

uint32_t RequiredNumber(const pugi::xml_node& element, const char* attributeName)
{
    pugi::xml_attribute attribute = element.attribute(attributeName);
    if (!attribute)
        Fail(element, "missing attribute \"" + std::string(attributeName) + "\"");
    return ParseNumber(element, attributeName, attribute.value());
}

uint32_t OptionalNumber(const pugi::xml_node& element, const char* attributeName, uint32_t fallback)
{
    pugi::xml_attribute attribute = element.attribute(attributeName);
    return attribute ? ParseNumber(element, attributeName, attribute.value()) : fallback;
}

bool OptionalBool(const pugi::xml_node& element, const char* attributeName, bool fallback)
{
    pugi::xml_attribute attribute = element.attribute(attributeName);
    if (!attribute)
        return fallback;
    const char* text = attribute.value();
    if (strcasecmp(text, "true") == 0 || std::strcmp(text, "1") == 0)
        return true;
    if (strcasecmp(text, "false") == 0 || std::strcmp(text, "0") == 0)
        return false;
    Fail(element, "attribute \"" + std::string(attributeName) + "\" is not true or false: \"" + text + "\"");
}

std::string RequiredName(const pugi::xml_node& element)
{
    std::string name = element.attribute("name").value();
    if (name.empty())
        Fail(element, "missing or empty attribute \"name\"");
    return name;
}

// Calls visit for each child element; text between elements has no meaning
// in a board file and is refused.
template <typename Visit>
void ForEachElement(const pugi::xml_node& element, Visit visit)
{
    for (const pugi::xml_node& child : element.children()) {
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            Fail(element, "unexpected text \"" + std::string(child.value()) + "\"");
        if (child.type() == pugi::node_element)
            visit(child);
    }
}

SimRegister ReadRegister(const pugi::xml_node& element)
{
    CheckAttributes(element, {"name", "value", "fail"});
    SimRegister result;
    result.name = RequiredName(element);
    result.value = RequiredNumber(element, "value");
    result.failsOnRead = OptionalBool(element, "fail", false);
    return result;
}

SimMemoryWord ReadMemoryWord(const pugi::xml_node& element)
{
    CheckAttributes(element, {"address", "value"});
    SimMemoryWord result;
    result.address = RequiredNumber(element, "address");
    result.value = RequiredNumber(element, "value");
    return result;
}

SimDevice ReadDevice(const pugi::xml_node& element, bool boardReady)
{
    CheckAttributes(element, {"name", "type", "parent", "traceid", "dap", "outfile", "ready", "adapter", "irlen", "tap", "target"});
    SimDevice device;
    device.name = RequiredName(element);
    device.type = RequiredNumber(element, "type");
    device.parent = element.attribute("parent").value();
    device.traceId = OptionalNumber(element, "traceid", 0);
    device.dapName = element.attribute("dap").value();
    device.outputFile = element.attribute("outfile").value();
    device.ready = OptionalBool(element, "ready", boardReady);
    device.adapterAvailable = OptionalBool(element, "adapter", true);
    device.irLength = OptionalNumber(element, "irlen", device.irLength);
    device.tap = element.attribute("tap").value();
    device.target = element.attribute("target").value();
    if (device.parent == device.name)
        Fail(element, "a device cannot be its own parent");
    if (device.irLength < 2 || device.irLength > 32)
        Fail(element, "attribute \"irlen\" must be 2 to 32");

    ForEachElement(element, [&](const pugi::xml_node& child) {
        if (std::strcmp(child.name(), "register") == 0) {
            SimRegister reg = ReadRegister(child);
            if (device.FindRegister(reg.name) != nullptr)
                Fail(child, "duplicate register in device \"" + device.name + "\"");
            device.registers.push_back(reg);
        } else if (std::strcmp(child.name(), "memory") == 0) {
            SimMemoryWord word = ReadMemoryWord(child);
            if (device.FindMemory(word.address) != nullptr)
                Fail(child, "duplicate address in device \"" + device.name + "\"");
            device.memory.push_back(word);
        } else {
            Fail(child, "unknown element in device \"" + device.name + "\"");
        }
    });
    return device;
}

void ReadTraceFactory(const pugi::xml_node& element, SimBoard& board)
{
    CheckAttributes(element, {"connect", "message"});
    std::string connect = element.attribute("connect").as_string("ok");
    if (connect == "ok")
        board.connectMode = SimConnectMode::Ok;
    else if (connect == "fail")
        board.connectMode = SimConnectMode::Fail;
    else if (connect == "throw")
        board.connectMode = SimConnectMode::Throw;
    else
        Fail(element, "attribute \"connect\" must be ok, fail or throw: \"" + connect + "\"");
    if (pugi::xml_attribute message = element.attribute("message"))
        board.connectMessage = message.value();
}

void ReadOpenOcd(const pugi::xml_node& element, const std::string& folder, SimBoard& board)
{
    CheckAttributes(element, {"address", "script", "timeout"});
    board.openOcd.address = element.attribute("address").value();
    std::string script = element.attribute("script").value();
    if (board.openOcd.address.empty() == script.empty())
        Fail(element, "exactly one of \"address\" and \"script\" must be given");
    if (!script.empty())
        board.openOcd.script = script[0] == '/' ? script : folder + "/" + script;
    board.openOcd.timeoutMs = OptionalNumber(element, "timeout", board.openOcd.timeoutMs);
    board.throughOpenOcd = true;
}

SimBoard ReadBoard(const pugi::xml_node& root, const std::string& folder)
{
    if (std::strcmp(root.name(), "simboard") != 0)
        Fail(root, "the root element must be <simboard>");
    CheckAttributes(root, {"config", "ready"});

    SimBoard board;
    std::string config = root.attribute("config").value();
    if (config.empty())
        Fail(root, "missing or empty attribute \"config\"");
    board.configFile = config[0] == '/' ? config : folder + "/" + config;
    bool boardReady = OptionalBool(root, "ready", true);

    bool haveTraceFactory = false;
    std::set<std::string> names;
    ForEachElement(root, [&](const pugi::xml_node& child) {
        if (std::strcmp(child.name(), "device") == 0) {
            SimDevice device = ReadDevice(child, boardReady);
            if (!names.insert(device.name).second)
                Fail(child, "duplicate device name");
            board.devices.push_back(std::move(device));
        } else if (std::strcmp(child.name(), "tracefactory") == 0) {
            if (haveTraceFactory)
                Fail(child, "only one <tracefactory> is allowed");
            haveTraceFactory = true;
            ReadTraceFactory(child, board);
        } else if (std::strcmp(child.name(), "openocd") == 0) {
            if (board.throughOpenOcd)
                Fail(child, "only one <openocd> is allowed");
            ReadOpenOcd(child, folder, board);
        } else {
            Fail(child, "unknown element in <simboard>");
        }
    });
    // Parents may be listed after their children, so they are checked last.
    for (const SimDevice& device : board.devices)
        if (!device.parent.empty() && names.count(device.parent) == 0)
            throw BoardError{"<device name=\"" + device.name + "\">: parent \"" + device.parent +
                             "\" is not a device of this board"};
    return board;
}

} // namespace

SimBoardReadResult SimBoardReader::ReadFolder(const std::string& folder)
{
    SimBoardReadResult result;
    if (folder.empty()) {
        result.description = "no board folder given";
        return result;
    }
    std::string path = folder + "/" + FileName;
    // Opening a FIFO would wait for a writer; only a regular file is read.
    std::error_code ignored;
    if (std::filesystem::exists(path, ignored) && !std::filesystem::is_regular_file(path, ignored)) {
        result.description = path + ": not a regular file";
        return result;
    }
    try {
        pugi::xml_document document;
        pugi::xml_parse_result parsed = document.load_file(path.c_str());
        if (!parsed) {
            result.description = path + ": " + parsed.description();
            if (parsed.status != pugi::status_file_not_found && parsed.status != pugi::status_io_error)
                result.description += " at offset " + std::to_string(parsed.offset);
            return result;
        }
        result.board = ReadBoard(document.document_element(), folder);
        result.ok = true;
    } catch (const BoardError& error) {
        result.description = path + ": " + error.text;
    } catch (const std::exception& error) {
        result.description = path + ": " + error.what();
    }
    return result;
}

SimBoardReadResult SimBoardReader::ReadFromEnvironment()
{
    const char* folder = std::getenv(FolderVariable);
    if (folder == nullptr || *folder == '\0') {
        SimBoardReadResult result;
        result.description = std::string(FolderVariable) + " is not set; there is no simulated board to read";
        return result;
    }
    return ReadFolder(folder);
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

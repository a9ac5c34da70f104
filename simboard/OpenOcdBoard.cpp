#include "simboard/OpenOcdBoard.h"

#include "devid/target/HexkitError.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace Mora {
namespace Lux {
namespace Sim {

const char* const OpenOcdBoard::AddressVariable = "DEVID_OPENOCD";

namespace {

// Routers that OpenOCD reports and no board names: their own parent, so that
// their IDCODE is read like any router's.
const uint32_t UnnamedRouterType = 0;

struct Tap {
    std::string name;
    bool enabled = true;
    uint32_t idcode = 0;
    uint32_t irLength = 0;
    uint32_t expected = 0;
    bool taken = false;
};

[[noreturn]] void Fail(const std::string& what)
{
    throw Hexkit::HexkitError(what, Hexkit::HexkitErrorIF::SEVERITY_ERROR);
}

uint32_t Number(const std::string& text, const std::string& what)
{
    uint32_t value = 0;
    if (!OpenOcdBoard::ParseNumber(text, value))
        Fail("OpenOCD gave \"" + text + "\" for " + what);
    return value;
}

std::vector<Tap> ReadTaps(OpenOcdClient& client)
{
    std::vector<Tap> taps;
    std::istringstream names(client.Run("jtag names"));
    for (std::string name; names >> name;) {
        Tap tap;
        tap.name = name;
        tap.idcode = Number(client.Run("jtag cget " + name + " -idcode"), name + " -idcode");
        tap.enabled = client.Run("jtag tapisenabled " + name) == "1";
        taps.push_back(tap);
    }
    // The IR length and expected ID are only in the scan_chain table:
    // "  0 NAME  Y  0xIDCODE 0xEXPECTED IRLEN 0xCAP 0xMASK".
    std::istringstream table(client.Run("scan_chain"));
    for (std::string line; std::getline(table, line);) {
        std::istringstream row(line);
        std::string index, name, enabled, idcode, expected, irLength;
        if (!(row >> index >> name >> enabled >> idcode >> expected >> irLength))
            continue;
        for (Tap& tap : taps) {
            if (tap.name == name) {
                OpenOcdBoard::ParseNumber(expected, tap.expected);
                OpenOcdBoard::ParseNumber(irLength, tap.irLength);
            }
        }
    }
    return taps;
}

Tap* NextTap(std::vector<Tap>& taps, const std::string& wanted)
{
    for (Tap& tap : taps)
        if (!tap.taken && (wanted.empty() || tap.name == wanted))
            return &tap;
    return nullptr;
}

// The ID register the board gives the router (DEVICE_ID for a debug router
// that reports its ID there), IP_TAPID when it gives none.
std::string IdRegisterName(const SimDevice& router, bool& hasExpected, uint32_t& expected)
{
    for (const char* name : {"IP_TAPID", "DEVICE_ID"}) {
        if (const SimRegister* reg = router.FindRegister(name)) {
            hasExpected = true;
            expected = reg->value;
            return name;
        }
    }
    hasExpected = false;
    return "IP_TAPID";
}

void TieToTap(SimDevice& router, Tap& tap)
{
    tap.taken = true;
    bool hasExpected = false;
    uint32_t expected = 0;
    const std::string idRegister = IdRegisterName(router, hasExpected, expected);
    const std::string found = "TAP " + tap.name + ": IDCODE " + OpenOcdBoard::Hex(tap.idcode);
    if (tap.expected != 0 && tap.idcode != 0 && tap.idcode != tap.expected)
        Fail(found + " where -expected-id is " + OpenOcdBoard::Hex(tap.expected));
    if (hasExpected && tap.idcode != 0 && tap.idcode != expected)
        Fail(found + " where the board expects " + OpenOcdBoard::Hex(expected) + " of " + router.name);
    router.tap = tap.name;
    if (tap.irLength != 0)
        router.irLength = tap.irLength;
    router.registers.clear();
    router.memory.clear();
    // A TAP without IDCODE, or one switched off, has no ID to read.
    if (tap.enabled && tap.idcode != 0)
        router.registers.push_back(SimRegister{idRegister, tap.idcode, false});
}

} // namespace

std::string OpenOcdBoard::Hex(uint32_t value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", value);
    return text;
}

bool OpenOcdBoard::ParseNumber(const std::string& text, uint32_t& value)
{
    if (text.empty() || text[0] < '0' || text[0] > '9')
        return false;
    char* end = nullptr;
    errno = 0;
    unsigned long long parsed = std::strtoull(text.c_str(), &end, 0);
    if (*end != '\0' || errno == ERANGE || parsed > 0xFFFFFFFFULL)
        return false;
    value = static_cast<uint32_t>(parsed);
    return true;
}

SimBoardReadResult OpenOcdBoard::ReadDescription()
{
    const char* address = std::getenv(AddressVariable);
    const char* folder = std::getenv(SimBoardReader::FolderVariable);
    if (address != nullptr && *address != '\0' && (folder == nullptr || *folder == '\0')) {
        SimBoardReadResult result;
        result.ok = true;
        result.board.throughOpenOcd = true;
        return result;
    }
    SimBoardReadResult result = SimBoardReader::ReadFromEnvironment();
    if (result.ok && address != nullptr && *address != '\0')
        result.board.throughOpenOcd = true;
    return result;
}

std::unique_ptr<OpenOcdClient> OpenOcdBoard::Connect(const SimBoard& described)
{
    const char* fromEnvironment = std::getenv(AddressVariable);
    const std::string address =
        fromEnvironment != nullptr && *fromEnvironment != '\0' ? fromEnvironment : described.openOcd.address;
    std::string host;
    uint16_t port = 0;
    if (!OpenOcdClient::ParseAddress(address, host, port))
        Fail("no OpenOCD address (HOST:PORT) in " + std::string(AddressVariable) + " or the board: \"" + address +
             "\"");
    return std::make_unique<OpenOcdClient>(host, port, described.openOcd.timeoutMs);
}

SimBoard OpenOcdBoard::Discover(OpenOcdClient& client, SimBoard described)
{
    std::vector<Tap> taps = ReadTaps(client);
    for (SimDevice& device : described.devices) {
        Tap* tap = device.parent.empty() ? NextTap(taps, device.tap) : nullptr;
        if (tap != nullptr) {
            TieToTap(device, *tap);
            continue;
        }
        if (!device.tap.empty())
            Fail("the board names TAP \"" + device.tap + "\", which OpenOCD does not know");
        device.registers.clear();
        device.memory.clear();
    }
    for (Tap& tap : taps) {
        if (tap.taken)
            continue;
        SimDevice router;
        router.name = tap.name;
        router.type = UnnamedRouterType;
        TieToTap(router, tap);
        described.devices.push_back(router);
    }
    for (SimDevice& router : described.devices) {
        bool hasChildren = false;
        for (const SimDevice& device : described.devices)
            hasChildren = hasChildren || device.parent == router.name;
        if (router.parent.empty() && !router.tap.empty() && !hasChildren)
            router.parent = router.name;
    }
    return described;
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

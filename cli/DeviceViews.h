// Plain records of what the tool shows about a device. DeviceSurvey fills
// them from the device identifier; the formatters print them. Keeping the two
// apart lets both output formats show exactly the same facts.
#ifndef DEVID_CLI_DEVICEVIEWS_H
#define DEVID_CLI_DEVICEVIEWS_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace devid_cli {

/// A 32-bit identifier or address the way the tool always shows one: "0x" and eight hex digits.
inline std::string Hex32(uint32_t number)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "0x%08x", static_cast<unsigned>(number));
    return buffer;
}

struct ChainDeviceView {
    std::string name;
    std::string parent;
    uint32_t type = 0;
    uint32_t traceId = 0;
    std::string dap;
};

struct IdentifyView {
    std::string databaseDir;
    std::string boardDir;
    std::vector<ChainDeviceView> chain;
    /// As the library holds them, repeats included.
    std::vector<uint32_t> deviceIds;
    /// Each distinct device ID with the description file it matches ("" for none).
    std::vector<std::pair<uint32_t, std::string>> descriptions;
    bool matched = false;
};

struct RegisterView {
    std::string name;
    bool memoryMapped = false;
    uint32_t address = 0;
    std::string driverName;
    uint32_t page = 0;
    uint32_t unit = 0;
    uint32_t width = 0;
};

struct CharacteristicView {
    std::string name;
    std::string value;
    std::string description;
};

struct MappingView {
    std::string id;
    std::vector<std::pair<std::string, std::string>> entries;
};

struct ModuleView {
    std::string name;
    std::string kind;
    std::string version;
    std::string access;
    std::vector<RegisterView> registers;
    std::vector<CharacteristicView> characteristics;
    std::vector<MappingView> mappings;
};

struct ProcessorView {
    std::string id;
    std::string name;
    std::string kind;
    int32_t traceId = 0;
    bool hasIdRegister = false;
    RegisterView idRegister;
    uint32_t idValue = 0;
};

/// A module named by a source or route: the name the description gives and
/// whether it names a known module (for a route's source: a known source).
struct ModuleRef {
    std::string name;
    std::string kind;
    bool resolved = false;
};

struct SourceView {
    std::string name;
    std::string id;
    bool stmMaster = false;
    std::vector<CharacteristicView> characteristics;
    /// The component names as the description lists them.
    std::vector<ModuleRef> components;
    /// The components that resolved, in full.
    std::vector<ModuleView> modules;
};

struct ProcessorsView {
    std::vector<SourceView> sources;
    std::vector<ProcessorView> processors;
};

struct RouteView {
    /// The source ID; kind is empty.
    ModuleRef source;
    /// The processor name of the source, when it resolved.
    std::string sourceName;
    std::vector<ModuleRef> links;
    ModuleRef sink;
    /// Empty name: the route has no DRM module.
    ModuleRef drm;
};

struct SettingsView {
    std::string debugger;
    std::string emulator;
    std::string port;
    /// Processor or device name and the trace output file the session gives it.
    std::vector<std::pair<std::string, std::string>> outFiles;
};

struct SaveView {
    std::string path;
    bool tdf = false;
    /// TDF only: where the DEVID section was written.
    uint32_t sectionOffset = 0;
    uint32_t sectionLength = 0;
    /// TDF only: an earlier DEVID section shadows the one written.
    bool shadowed = false;
    std::string text;
};

/// The configuration the session was loaded from, when it was.
struct LoadView {
    std::string path;
    std::string kind; // "dcm" or "tdf"
    std::vector<uint32_t> deviceIds;
    std::size_t chainDevices = 0;
};

struct TdfSectionView {
    std::string name;
    uint32_t version = 0;
    uint32_t offset = 0;
    uint32_t length = 0;
    uint32_t dataOffset = 0;
    uint32_t dataLength = 0;
};

} // namespace devid_cli

#endif

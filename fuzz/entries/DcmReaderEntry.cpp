// The saved-session text: read by a fresh device identifier, written again,
// and read back once more.
#include "fuzz/entries/FuzzEntries.h"
#include "fuzz/entries/FuzzWorkspace.h"

#include <string>

namespace devid_fuzz {

namespace {

const char kEntry[] = "dcm_reader";

// Whether the reader took the input; `text` is what the writer made of what
// was read, empty when the writer refused it.
bool ReadAndCompose(FuzzWorkspace& workspace, const uint8_t* data, size_t size, std::string& text)
{
    auto devId = workspace.MakeDeviceIdentifier();
    text.clear();
    if (!devId->LoadConfigurationDCMFile(workspace.Stream(data, size).get()))
        return false;

    // Offline answers come from what was read and must not reach for a target.
    for (const auto& record : devId->GetConnections())
        devId->GetSessionSetting(record.name, Mora::Lux::Trace::eSessionSettingOutFile);
    devId->GetSessionSetting("", Mora::Lux::Trace::eSessionSettingEmuName);
    devId->GetSessionSetting("", Mora::Lux::Trace::eSessionSettingEmuPort);

    if (!devId->ComposeConfiguration(text))
        text.clear();
    return true;
}

const uint8_t* Bytes(const std::string& text) { return reinterpret_cast<const uint8_t*>(text.data()); }

} // namespace

int DcmReader(const uint8_t* data, size_t size)
{
    FuzzWorkspace& workspace = FuzzWorkspace::Get();
    std::string first;
    if (!ReadAndCompose(workspace, data, size, first) || first.empty())
        return 0;
    // Some inputs lose detail on the first pass (a repeated DEVICEID line, a
    // TRACEID naming two devices); a text the writer made from what was read
    // must then read back exactly as written. Every DEVICEID piece reads back
    // as the first ID, so a list whose first ID is the longest may grow past
    // the longest line and be refused by the writer on the second pass.
    std::string second;
    const bool readBack = ReadAndCompose(workspace, Bytes(first), first.size(), second);
    DEVID_FUZZ_CHECK(kEntry, readBack, "a written configuration reads back");
    if (second.empty())
        return 0;
    std::string third;
    ReadAndCompose(workspace, Bytes(second), second.size(), third);
    DEVID_FUZZ_CHECK(kEntry, third == second, "a written configuration reads back unchanged");
    return 0;
}

} // namespace devid_fuzz

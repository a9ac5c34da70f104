// The saved-session text: read by a fresh device identifier, written again,
// and read back once more.
#include "fuzz/entries/FuzzEntries.h"
#include "fuzz/entries/FuzzWorkspace.h"

#include <string>

namespace devid_fuzz {

namespace {

const char kEntry[] = "dcm_reader";

// A text the writer made from what the reader understood; empty when the
// reader refused the input or the writer refused what was read.
std::string ReadAndCompose(FuzzWorkspace& workspace, const uint8_t* data, size_t size)
{
    auto devId = workspace.MakeDeviceIdentifier();
    std::string text;
    if (!devId->LoadConfigurationDCMFile(workspace.Stream(data, size).get()))
        return text;

    // Offline answers come from what was read and must not reach for a target.
    for (const auto& record : devId->GetConnections())
        devId->GetSessionSetting(record.name, Mora::Lux::Trace::eSessionSettingOutFile);
    devId->GetSessionSetting("", Mora::Lux::Trace::eSessionSettingEmuName);
    devId->GetSessionSetting("", Mora::Lux::Trace::eSessionSettingEmuPort);

    if (!devId->ComposeConfiguration(text))
        text.clear();
    return text;
}

const uint8_t* Bytes(const std::string& text) { return reinterpret_cast<const uint8_t*>(text.data()); }

} // namespace

int DcmReader(const uint8_t* data, size_t size)
{
    FuzzWorkspace& workspace = FuzzWorkspace::Get();
    const std::string first = ReadAndCompose(workspace, data, size);
    if (first.empty())
        return 0;
    // Some inputs lose detail on the first pass (a repeated DEVICEID line, a
    // TRACEID naming two devices); a text the writer made from what was read
    // must then read back exactly as written.
    const std::string second = ReadAndCompose(workspace, Bytes(first), first.size());
    DEVID_FUZZ_CHECK(kEntry, !second.empty(), "a written configuration reads back");
    const std::string third = ReadAndCompose(workspace, Bytes(second), second.size());
    DEVID_FUZZ_CHECK(kEntry, third == second, "a written configuration reads back unchanged");
    return 0;
}

} // namespace devid_fuzz

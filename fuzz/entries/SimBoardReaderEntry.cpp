// The simulated board's own file: read, and on success every device, register
// and memory word found again by the lookups the sibling libraries use.
#include "fuzz/entries/FuzzEntries.h"
#include "fuzz/entries/FuzzWorkspace.h"

#include "simboard/SimBoardReader.h"

#include <string>

namespace devid_fuzz {

const char kEntry[] = "simboard_reader";

int SimBoardReader(const uint8_t* data, size_t size)
{
    using Mora::Lux::Sim::SimBoardReader;

    FuzzWorkspace& workspace = FuzzWorkspace::Get();
    const std::string folder = workspace.Folder("simboard");
    workspace.WriteFile(folder + "/" + SimBoardReader::FileName, data, size);

    const Mora::Lux::Sim::SimBoardReadResult result = SimBoardReader::ReadFolder(folder);
    if (!result.ok) {
        DEVID_FUZZ_CHECK(kEntry, !result.description.empty(), "a refused board says why");
        DEVID_FUZZ_CHECK(kEntry, result.board.devices.empty(), "a refused board is empty");
        return 0;
    }
    for (const auto& device : result.board.devices) {
        DEVID_FUZZ_CHECK(kEntry, result.board.FindDevice(device.name) == &device, "device names are unique");
        for (const auto& reg : device.registers)
            DEVID_FUZZ_CHECK(kEntry, device.FindRegister(reg.name) == &reg, "register names are unique");
        for (const auto& word : device.memory)
            DEVID_FUZZ_CHECK(kEntry, device.FindMemory(word.address) == &word, "memory addresses are unique");
        DEVID_FUZZ_CHECK(kEntry, device.parent.empty() || result.board.FindDevice(device.parent) != nullptr,
                         "every parent is a device of the board");
    }
    return 0;
}

} // namespace devid_fuzz

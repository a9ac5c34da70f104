// The two line-scanned files of the board folder: the bytes serve as the board
// configuration file and as the alias file that names the device families.
#include "fuzz/entries/FuzzEntries.h"
#include "fuzz/entries/FuzzWorkspace.h"

#include <cstdlib>
#include <memory>
#include <string>

namespace devid_fuzz {

const char kEntry[] = "board_files";
// Values and family names are cut to what the readers' 32-byte buffers hold.
const size_t kLongestValue = 31;

int BoardFiles(const uint8_t* data, size_t size)
{
    FuzzWorkspace& workspace = FuzzWorkspace::Get();
    const std::string folder = workspace.Folder("board");
    const std::string boardFile = folder + "/board.cfg";
    workspace.WriteFile(boardFile, data, size);
    workspace.WriteFile(folder + "/kmralias.cfg", data, size);
    setenv("COMMON_VEXIF", folder.c_str(), 1);
    unsetenv("TRACE_XMLDB_DEVICES");

    // Construction reads the alias file into the family table.
    auto devId = workspace.MakeDeviceIdentifier();
    for (const auto& family : devId->GetFamilies()) {
        DEVID_FUZZ_CHECK(kEntry, family.id != 0, "an alias of 0 adds no family");
        DEVID_FUZZ_CHECK(kEntry, family.family.size() <= kLongestValue, "family names are cut to 31 characters");
    }

    std::unique_ptr<Mora::Lux::Trace::BoardConfig> board(devId->ParseBoardConfigFile(boardFile.c_str()));
    DEVID_FUZZ_CHECK(kEntry, board != nullptr, "a board file that opens gives a board record");
    DEVID_FUZZ_CHECK(kEntry, !board->emulatorName.empty(), "the emulator name is never empty");
    DEVID_FUZZ_CHECK(kEntry, board->emulatorName.size() <= kLongestValue && board->emulatorPort.size() <= kLongestValue,
                     "board values are cut to 31 characters");
    unsetenv("COMMON_VEXIF");
    return 0;
}

} // namespace devid_fuzz

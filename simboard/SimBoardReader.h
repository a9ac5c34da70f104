// Reads a simulated board folder into a SimBoard. Never throws: a missing or
// malformed board comes back as a failed result with a readable description.
#ifndef MORA_LUX_SIM_SIMBOARDREADER_H
#define MORA_LUX_SIM_SIMBOARDREADER_H

#include "simboard/SimBoard.h"

#include <string>

namespace Mora {
namespace Lux {
namespace Sim {

struct SimBoardReadResult {
    bool ok = false;
    /// Why the board could not be read (file, element, attribute, text); "" on success.
    std::string description;
    /// Empty unless ok.
    SimBoard board;
};

class SimBoardReader {
public:
    /// Environment variable naming the board folder.
    static const char* const FolderVariable;
    /// Name of the simulated target file inside the folder.
    static const char* const FileName;

    /// Reads <folder>/simboard.xml. Fails for an empty folder name, a missing or
    /// ill-formed file, or any broken rule of the board format.
    static SimBoardReadResult ReadFolder(const std::string& folder);

    /// Reads the folder named by COMMON_VEXIF; fails when it is unset or empty.
    static SimBoardReadResult ReadFromEnvironment();
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

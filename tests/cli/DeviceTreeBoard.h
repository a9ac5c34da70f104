// A simulated board whose JTAG router answers one device ID, for running the
// library on descriptions that `devid db import` wrote.
#ifndef DEVID_TESTS_CLI_DEVICETREEBOARD_H
#define DEVID_TESTS_CLI_DEVICETREEBOARD_H

#include "tests/common/TempDir.h"

#include <string>

namespace devid_test {

inline const std::string kImportedId = "0x4BA00477";

/// Writes the board into `folder` below the scratch folder and returns its path.
inline std::string WriteRouterBoard(const TempDir& scratch, const std::string& folder)
{
    scratch.write(folder + "/board.cfg", "bench\n$ emulator\n  com_drvr = kmr770u.out\n$\n");
    scratch.write(folder + "/kmralias.cfg", "families\n~ arm,cortex-a53\n  alias = 0x51A00010\n~\n");
    scratch.write(folder + "/simboard.xml",
                  "<simboard config=\"board.cfg\">\n"
                  "  <device name=\"JTAG\" type=\"0x38000101\"><register name=\"IP_TAPID\" value=\"" + kImportedId +
                      "\"/></device>\n"
                      "  <device name=\"CORE0\" type=\"0x51A00010\" parent=\"JTAG\"/>\n"
                      "</simboard>\n");
    return scratch.file(folder);
}

} // namespace devid_test

#endif

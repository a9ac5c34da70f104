// devid db import: device description files from device trees.
#ifndef DEVID_CLI_DEVICETREEIMPORT_H
#define DEVID_CLI_DEVICETREEIMPORT_H

#include "cli/ToolOptions.h"

#include <ostream>

namespace devid_cli {

class DeviceTreeImport {
public:
    /// Writes OUT/device_NAME.xml for every tree of options.importTrees and
    /// names each file on `out`; what was left out of a tree goes to `err`
    /// as warnings. Throws ToolError for a bad option, and after the other
    /// trees are written when a tree cannot be read or holds no component.
    static void Run(const ToolOptions& options, std::ostream& out, std::ostream& err);
};

} // namespace devid_cli

#endif

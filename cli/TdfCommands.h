// The "tdf" commands: list the sections of a trace data file, or copy one
// section's raw data out.
#ifndef DEVID_CLI_TDFCOMMANDS_H
#define DEVID_CLI_TDFCOMMANDS_H

#include "cli/Formatter.h"

#include <cstdint>
#include <ostream>
#include <string>

namespace devid_cli {

class TdfCommands {
public:
    /// Throws ToolError (File) for a file that is not a readable TDF or has a
    /// damaged section (the intact sections before it are shown first).
    static void List(const std::string& file, Formatter& formatter);
    /// Writes the data of the first section with that name and version.
    /// Throws ToolError (File) when there is none or the file is no TDF.
    static void Cat(const std::string& file, const std::string& name, uint32_t version, std::ostream& out);
};

} // namespace devid_cli

#endif

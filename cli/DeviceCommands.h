// The commands that ask the device identifier: identify, procs, proc, routes,
// settings, save and load. Each runs in a fresh session of the library.
#ifndef DEVID_CLI_DEVICECOMMANDS_H
#define DEVID_CLI_DEVICECOMMANDS_H

#include "cli/DeviceSession.h"
#include "cli/Formatter.h"
#include "cli/ToolOptions.h"

#include <ostream>

namespace devid_cli {

class DeviceCommands {
public:
    /// `out` receives the Graphviz text of `routes --dot` and the lines of
    /// `procs --names`; everything else goes to the formatter.
    DeviceCommands(const ToolOptions& options, Formatter& formatter, std::ostream& out)
        : m_options(options), m_formatter(formatter), m_out(out)
    {
    }

    /// Runs options.command. Throws ToolError when the device, a processor or
    /// a file is not there; what was found before that is already printed.
    void Run();

private:
    void Save(DeviceSession& session);
    void SaveTdf(DeviceSession& session, SaveView& view);

    const ToolOptions& m_options;
    Formatter& m_formatter;
    std::ostream& m_out;
};

} // namespace devid_cli

#endif

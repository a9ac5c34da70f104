// The process environment the device identifier reads: which database and
// board folders it uses, the logging level, and where its files end up.
#ifndef DEVID_CLI_TOOLENVIRONMENT_H
#define DEVID_CLI_TOOLENVIRONMENT_H

#include "cli/ToolOptions.h"

#include <string>

namespace devid_cli {

class ToolEnvironment {
public:
    /// Picks each folder from its option, else from its variable, else from
    /// the bundled examples, and exports both with the logging level. Call
    /// before the device identifier is created. A folder found nowhere stays
    /// unset; the device query then reports that nothing matched.
    static ToolEnvironment Prepare(const ToolOptions& options);

    const std::string& databaseDir() const { return m_databaseDir; }
    const std::string& boardDir() const { return m_boardDir; }

    /// The library's log file in this process; "" while logging is off.
    static std::string LogFile();
    /// Where the library logs and saves ".dim" files (the trace user folder).
    /// "" when HOME is not set.
    static std::string TraceLoggingDir();
    /// The folder holding the bundled db/ and board/ examples, "" when none is found.
    static std::string BundledExamples();

private:
    std::string m_databaseDir;
    std::string m_boardDir;
};

} // namespace devid_cli

#endif

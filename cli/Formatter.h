// How a command's answer is printed: as text for people or as one JSON
// document (schema "devid/1") for programs. A command calls the methods for
// what it found, then Finish exactly once.
#ifndef DEVID_CLI_FORMATTER_H
#define DEVID_CLI_FORMATTER_H

#include "cli/DatabaseChecker.h"
#include "cli/DeviceViews.h"
#include "cli/ToolError.h"

#include <string>
#include <vector>

namespace devid_cli {

class Formatter {
public:
    virtual ~Formatter() = default;

    /// The saved configuration the session runs from.
    virtual void Configuration(const LoadView& view) = 0;
    virtual void Identification(const IdentifyView& view) = 0;
    virtual void Processors(const ProcessorsView& view) = 0;
    virtual void Processor(const SourceView& source, const std::vector<RouteView>& routes) = 0;
    virtual void Routes(const std::vector<RouteView>& routes) = 0;
    virtual void Settings(const SettingsView& view) = 0;
    virtual void Saved(const SaveView& view) = 0;
    virtual void TdfSections(const std::string& file, const std::vector<TdfSectionView>& sections) = 0;
    virtual void DatabaseCheck(const DatabaseReport& report) = 0;
    /// Ends the output with the failure (null on success) and the library's
    /// log file ("" when logging is off).
    virtual void Finish(const ToolError* error, const std::string& logFile) = 0;
};

} // namespace devid_cli

#endif

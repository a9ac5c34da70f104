// Asks the device identifier what the tool shows: the client interface where
// it has the answer, the read-only views of the implementation for the rest
// (scan chain, device IDs read, every source, the matched file).
#ifndef DEVID_CLI_DEVICESURVEY_H
#define DEVID_CLI_DEVICESURVEY_H

#include "cli/DeviceSession.h"
#include "cli/DeviceViews.h"

#include <cstdint>
#include <string>
#include <vector>

namespace devid_cli {

class DeviceSurvey {
public:
    explicit DeviceSurvey(DeviceSession& session) : m_session(session) {}

    /// Identifies the device through a route query; false when no description
    /// file matched (then the other queries throw ToolError NoDevice).
    bool Identify();
    /// The scan chain and IDs read, also when nothing matched. Call it last:
    /// naming the file of each ID adds to the model.
    IdentifyView Identification();

    ProcessorsView Processors();
    /// Throws ToolError (UnknownProcessor) when the device has no such source.
    SourceView Processor(const std::string& name);
    /// All routes, or those of one processor (which must exist, as above).
    std::vector<RouteView> Routes(const std::string& procName);
    /// The processor (or scan-chain device) must exist when it is given; without one,
    /// every device on the scan chain is listed with its output file.
    SettingsView Settings(const std::string& procName);

private:
    bool Matched();
    std::string DescriptionOf(uint32_t id);
    void RequireDevice();
    void RequireProcessor(const std::string& name);

    DeviceSession& m_session;
};

} // namespace devid_cli

#endif

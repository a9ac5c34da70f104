// Output for programs: one JSON object per run on standard output, schema
// "devid/1" (docs/cli.md), with errors inside the same object.
#ifndef DEVID_CLI_JSONFORMATTER_H
#define DEVID_CLI_JSONFORMATTER_H

#include "cli/Formatter.h"

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>

namespace devid_cli {

class JsonFormatter : public Formatter {
public:
    static constexpr const char* kSchema = "devid/1";

    /// Starts the document; `command` is the name the envelope carries.
    JsonFormatter(std::ostream& out, const std::string& command);

    void Configuration(const LoadView& view) override;
    void Identification(const IdentifyView& view) override;
    void Processors(const ProcessorsView& view) override;
    void Processor(const SourceView& source, const std::vector<RouteView>& routes) override;
    void Routes(const std::vector<RouteView>& routes) override;
    void Settings(const SettingsView& view) override;
    void Saved(const SaveView& view) override;
    void TdfSections(const std::string& file, const std::vector<TdfSectionView>& sections) override;
    void DatabaseCheck(const DatabaseReport& report) override;
    /// Writes the whole document. Text that is not valid UTF-8 comes out with
    /// U+FFFD in place of each bad byte sequence, so the JSON stays valid.
    void Finish(const ToolError* error, const std::string& logFile) override;

private:
    std::ostream& m_out;
    // Members keep the order they were added in, which the schema documents.
    nlohmann::ordered_json m_doc;
};

} // namespace devid_cli

#endif

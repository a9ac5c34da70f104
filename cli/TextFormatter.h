// Output for people: aligned tables on standard output; errors and the log
// file note on standard error.
#ifndef DEVID_CLI_TEXTFORMATTER_H
#define DEVID_CLI_TEXTFORMATTER_H

#include "cli/Formatter.h"

#include <ostream>

namespace devid_cli {

class TextFormatter : public Formatter {
public:
    TextFormatter(std::ostream& out, std::ostream& err) : m_out(out), m_err(err) {}

    void Configuration(const LoadView& view) override;
    void Identification(const IdentifyView& view) override;
    void Processors(const ProcessorsView& view) override;
    void Processor(const SourceView& source, const std::vector<RouteView>& routes) override;
    void Routes(const std::vector<RouteView>& routes) override;
    void Settings(const SettingsView& view) override;
    void Saved(const SaveView& view) override;
    void TdfSections(const std::string& file, const std::vector<TdfSectionView>& sections) override;
    void DatabaseCheck(const DatabaseReport& report) override;
    void Finish(const ToolError* error, const std::string& logFile) override;

private:
    std::ostream& m_out;
    std::ostream& m_err;
};

} // namespace devid_cli

#endif

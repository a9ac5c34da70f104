#include "cli/ToolEnvironment.h"

#include "common/source/source_utilities/uEnvironment.h"
#include "common/source/source_utilities/uLogger.h"

#include <filesystem>
#include <system_error>

namespace devid_cli {

namespace fs = std::filesystem;
using MORA_LUX::uEnvironment;

namespace {

bool IsDirectory(const fs::path& path)
{
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

// Option first, then the variable as the user set it, then the bundled copy.
std::string ChooseFolder(const std::string& option, const char* variable, const char* bundledName)
{
    if (!option.empty())
        return option;
    const std::string fromEnvironment = uEnvironment::GetVar(variable);
    if (!fromEnvironment.empty())
        return fromEnvironment;
    const std::string examples = ToolEnvironment::BundledExamples();
    if (examples.empty())
        return "";
    const fs::path bundled = fs::path(examples) / bundledName;
    return IsDirectory(bundled) ? bundled.string() : "";
}

} // namespace

ToolEnvironment ToolEnvironment::Prepare(const ToolOptions& options)
{
    ToolEnvironment environment;
    environment.m_databaseDir = ChooseFolder(options.databaseDir, "TRACE_XMLDB_DEVICES", "db");
    // Through OpenOCD the chain is what OpenOCD reports, so only a board asked for describes it.
    environment.m_boardDir =
        options.openOcd.empty() ? ChooseFolder(options.boardDir, "COMMON_VEXIF", "board") : options.boardDir;
    if (!options.openOcd.empty()) {
        uEnvironment::SetVar("DEVID_OPENOCD", options.openOcd.c_str());
        if (environment.m_boardDir.empty())
            uEnvironment::SetVar("COMMON_VEXIF", "");
    }
    if (!environment.m_databaseDir.empty())
        uEnvironment::SetVar("TRACE_XMLDB_DEVICES", environment.m_databaseDir.c_str());
    if (!environment.m_boardDir.empty())
        uEnvironment::SetVar("COMMON_VEXIF", environment.m_boardDir.c_str());
    if (options.logLevel >= 0)
        uEnvironment::SetVar("MORA_TRACE_LOGGING", std::to_string(options.logLevel).c_str());
    return environment;
}

std::string ToolEnvironment::LogFile()
{
    MORA_LUX::uLogSystem* system = MORA_LUX::uLogSystem::GetLogSystem();
    if (system == nullptr || system->GetLoggingLevel() <= 0 || system->GetLogger() == nullptr)
        return "";
    return system->GetLogger()->GetName();
}

std::string ToolEnvironment::TraceLoggingDir()
{
    const std::string fromLibrary = uEnvironment::GetVar("MORA_TRACE_LOGGING_DIR");
    if (!fromLibrary.empty())
        return fromLibrary;
    std::string directory;
    try {
        MORA_LUX::GetTraceUserDirectory(directory);
    } catch (const MORA_LUX::source_utilities_error&) {
        return "";
    }
    return directory;
}

std::string ToolEnvironment::BundledExamples()
{
    std::string executable;
    uEnvironment::GetCurrentExecutablePath(executable);
    if (!executable.empty()) {
        // <prefix>/bin/devid next to <prefix>/share/devid/examples.
        const fs::path installed = fs::path(executable).parent_path().parent_path() / DEVID_EXAMPLES_INSTALL_SUBDIR;
        if (IsDirectory(installed))
            return installed.string();
    }
    return IsDirectory(DEVID_EXAMPLES_SOURCE_DIR) ? DEVID_EXAMPLES_SOURCE_DIR : "";
}

} // namespace devid_cli

// Everything the command line asked for, filled by CommandLine and read by the
// command runners.
#ifndef DEVID_CLI_TOOLOPTIONS_H
#define DEVID_CLI_TOOLOPTIONS_H

#include <cstdint>
#include <string>
#include <vector>

namespace devid_cli {

enum class Command {
    None,
    Identify,
    Procs,
    Proc,
    Routes,
    Settings,
    Save,
    Load,
    TdfList,
    TdfCat,
    DbCheck,
    DbImport
};

/// The name a command is called by, as the JSON envelope carries it.
const char* CommandName(Command command);

struct ToolOptions {
    Command command = Command::None;

    // Common to the device commands.
    std::string databaseDir;
    std::string boardDir;
    std::string openOcd; // HOST:PORT of a running OpenOCD, "" for none
    std::string loadFile;
    int logLevel = -1; // -1: leave MORA_TRACE_LOGGING as it is
    bool json = false;

    // Command arguments.
    std::string procName;
    bool names = false;
    bool dot = false;
    std::string saveFile;
    bool saveTdf = false;
    std::string tdfFile;
    std::string sectionName;
    uint32_t sectionVersion = 0;
    std::string checkDir;
    std::vector<std::string> importTrees;
    std::string importOut;
    std::string importId;
    std::string importMask;
    std::string importName;
    bool importAll = false;
};

} // namespace devid_cli

#endif

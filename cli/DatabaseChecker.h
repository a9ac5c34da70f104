// Checks the device description files of a database folder the way the
// device identifier will read them, and reports what it would trip over or
// silently ignore: missing required attributes, unknown sections, names that
// do not resolve, and device IDs that more than one file would accept.
#ifndef DEVID_CLI_DATABASECHECKER_H
#define DEVID_CLI_DATABASECHECKER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace devid_cli {

struct CheckProblem {
    /// Errors make the check fail; warnings point at things the loader drops or bends.
    bool error = true;
    /// Where in the file, e.g. "module[ETM0]/registers/reg[2]"; "" for the file as a whole.
    std::string element;
    /// 1-based line of the element; 0 when unknown.
    std::size_t line = 0;
    std::string message;
};

struct CheckedFile {
    std::string path;
    /// False for a file the library never reads because of its name or kind.
    bool read = true;
    std::string deviceId;
    bool hasValue = false;
    uint32_t value = 0;
    bool hasMask = false;
    /// The mask as the library applies it (an empty attribute ignores the top four bits).
    uint32_t mask = 0xFFFFFFFF;
    std::size_t procs = 0;
    std::size_t modules = 0;
    std::size_t sources = 0;
    std::size_t routes = 0;
    std::vector<CheckProblem> problems;
};

struct DatabaseReport {
    std::string directory;
    std::vector<CheckedFile> files;
    /// About the folder as a whole (unreadable, no description files).
    std::vector<CheckProblem> problems;

    std::size_t Count(bool errors) const;
};

class DatabaseChecker {
public:
    /// Checks every file of the folder whose name the library takes as a
    /// description, in name order, then the device IDs across files. Never
    /// throws for bad content: every fault is a problem of the report.
    static DatabaseReport CheckFolder(const std::string& directory);
    /// One file on its own (no cross-file checks).
    static CheckedFile CheckFile(const std::string& path);
};

} // namespace devid_cli

#endif

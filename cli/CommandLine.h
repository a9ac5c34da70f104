// The command line of devid: options and sub-commands, their help with
// examples, and the exit status of a run.
#ifndef DEVID_CLI_COMMANDLINE_H
#define DEVID_CLI_COMMANDLINE_H

#include <ostream>

namespace devid_cli {

class CommandLine {
public:
    /// Parses and runs one command. Answers go to `out`, messages for people
    /// to `err` (with --json, errors go into the document on `out`). Returns
    /// the exit status: 0 success, 1 no device matched or the database check
    /// failed, 2 bad command line, 3 unknown processor, 4 file problem, 5 internal error.
    static int Run(int argc, char** argv, std::ostream& out, std::ostream& err);
};

} // namespace devid_cli

#endif

// Keeps the library's console echo of log lines (written to stdout at some
// logging levels) out of the tool's own output: while the shield stands,
// file descriptor 1 points to standard error.
#ifndef DEVID_CLI_STDOUTSHIELD_H
#define DEVID_CLI_STDOUTSHIELD_H

namespace devid_cli {

class StdoutShield {
public:
    /// Does nothing when the descriptors can't be duplicated.
    StdoutShield();
    /// Puts standard output back.
    ~StdoutShield();
    StdoutShield(const StdoutShield&) = delete;
    StdoutShield& operator=(const StdoutShield&) = delete;

private:
    int m_savedStdout = -1;
};

} // namespace devid_cli

#endif

// What goes wrong in a devid command: a kind that decides the exit status and
// the JSON error code, and a message for people.
#ifndef DEVID_CLI_TOOLERROR_H
#define DEVID_CLI_TOOLERROR_H

#include <stdexcept>
#include <string>

namespace devid_cli {

enum class ErrorKind {
    NoDevice,         // no device description matched the device IDs read
    CheckFailed,      // a database check found problems
    Usage,            // bad command line
    UnknownProcessor, // the device has no processor of that name
    File,             // a file that can't be read, written or is not what it claims
    Internal          // the library failed in a way the tool did not expect
};

class ToolError : public std::runtime_error {
public:
    ToolError(ErrorKind kind, const std::string& message) : std::runtime_error(message), m_kind(kind) {}

    ErrorKind kind() const { return m_kind; }

    /// The process exit status for this kind of failure (never 0).
    int exitCode() const
    {
        switch (m_kind) {
        case ErrorKind::NoDevice: return 1;
        case ErrorKind::CheckFailed: return 1;
        case ErrorKind::Usage: return 2;
        case ErrorKind::UnknownProcessor: return 3;
        case ErrorKind::File: return 4;
        case ErrorKind::Internal: break;
        }
        return 5;
    }

    /// The stable name of the kind in JSON output.
    const char* code() const
    {
        switch (m_kind) {
        case ErrorKind::NoDevice: return "no-device";
        case ErrorKind::CheckFailed: return "check-failed";
        case ErrorKind::Usage: return "usage";
        case ErrorKind::UnknownProcessor: return "unknown-processor";
        case ErrorKind::File: return "file";
        case ErrorKind::Internal: break;
        }
        return "internal";
    }

private:
    ErrorKind m_kind;
};

} // namespace devid_cli

#endif

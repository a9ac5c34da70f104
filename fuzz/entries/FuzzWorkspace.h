// The scratch folder and process environment that the fuzz entries share:
// HOME, the trace folders and the log all live in one temporary folder that
// disappears when the process ends.
#ifndef DEVID_FUZZ_FUZZWORKSPACE_H
#define DEVID_FUZZ_FUZZWORKSPACE_H

#include "devid/CDeviceIdentifierImpl.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace devid_fuzz {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

class FuzzWorkspace {
public:
    /// The process's workspace, made on first use; aborts when no folder can be made.
    static FuzzWorkspace& Get();

    ~FuzzWorkspace();

    /// <workspace>/<name>, created when missing.
    std::string Folder(const std::string& name) const;

    /// Replaces the file's content with the bytes; aborts when it cannot.
    void WriteFile(const std::string& path, const uint8_t* data, size_t size) const;

    /// A stream that reads the bytes from their start; aborts when none can be made.
    FilePtr Stream(const uint8_t* data, size_t size) const;

    /// A device identifier built in this environment. The process log is
    /// written (so every log line is formatted) but goes to /dev/null.
    std::unique_ptr<Mora::Lux::Trace::CDeviceIdentifierImpl> MakeDeviceIdentifier();

private:
    FuzzWorkspace();

    std::string m_root;
    bool m_logSilenced = false;
};

/// Reports a broken rule of a reader and aborts, which both the fuzzer and the
/// replay test count as a failure.
[[noreturn]] void Violation(const char* entry, const char* rule);

} // namespace devid_fuzz

/// Aborts with the entry's name and the rule when the condition does not hold.
#define DEVID_FUZZ_CHECK(entry, condition, rule)                                                          \
    do {                                                                                                    \
        if (!(condition))                                                                                   \
            ::devid_fuzz::Violation(entry, rule);                                                         \
    } while (false)

#endif

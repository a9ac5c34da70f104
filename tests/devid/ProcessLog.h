// Points the process log at a scratch HOME and reads it back.
#ifndef DEVID_TESTS_PROCESSLOG_H
#define DEVID_TESTS_PROCESSLOG_H

#include "tests/common/TempDir.h"

#include <filesystem>

namespace devid_test {

class ProcessLog {
public:
    /// Must exist before the first device identifier of the process.
    explicit ProcessLog(const char* level = "1")
    {
        setenv("HOME", m_home.path().c_str(), 1);
        setenv("MORA_TRACE_LOGGING", level, 1);
    }

    std::string traceDirectory() const { return m_home.file(".MORA-trace"); }

    /// The process's one log file, or "" before its first line.
    std::string path() const
    {
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(traceDirectory(), none))
            if (entry.path().filename().string().rfind("mora_trace_log_", 0) == 0)
                return entry.path().string();
        return "";
    }

    std::string text() const { return readFile(path()); }

    std::size_t count(const std::string& needle) const
    {
        std::string all = text();
        std::size_t n = 0;
        for (std::size_t at = all.find(needle); at != std::string::npos; at = all.find(needle, at + 1))
            ++n;
        return n;
    }

private:
    TempDir m_home;
};

} // namespace devid_test

#endif

// A database folder of our own, a device identifier reading it without any
// board, and this process's log.
#ifndef DEVID_TESTS_DATABASETESTSUPPORT_H
#define DEVID_TESTS_DATABASETESTSUPPORT_H

#include "devid/DeviceXmlCache.h"
#include "devid/model/CProcIdentifier.h"
#include "tests/common/DeviceIdentifierTestAccess.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

namespace devid_test {

using namespace Mora::Lux::Trace;

/// A device description file: `attributes` on the device element, `body` inside it.
inline std::string DeviceXml(const std::string& attributes, const std::string& body = "")
{
    return "<?xml version=\"1.0\"?>\n<database>\n<device " + attributes + ">\n" + body + "\n</device>\n</database>\n";
}

inline std::size_t CountOf(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

/// No board is configured, so nothing asks a target and processor names stay as the files give them.
class DatabaseTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("TRACE_XMLDB_DEVICES", db.path().c_str(), 1);
        setenv("MORA_TRACE_LOGGING", "1", 1);
        setenv("MORA_TRACE_DEBUGCLIENT_PID", std::to_string(getpid()).c_str(), 1);
        unsetenv("COMMON_VEXIF");
        std::filesystem::create_directories(std::getenv("HOME"));
        InvalidateDeviceXmlName();
    }
    void TearDown() override { InvalidateDeviceXmlName(); }

    std::unique_ptr<CDeviceIdentifierImpl> MakeDevId() { return std::make_unique<CDeviceIdentifierImpl>(); }
    std::string Path(const std::string& name) const { return db.path() + "/" + name; }

    /// Everything this process has logged so far.
    std::string Log() const
    {
        const char* folder = std::getenv("MORA_TRACE_LOGGING_DIR");
        const std::string suffix = "_" + std::to_string(getpid()) + ".txt";
        std::string text;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder ? folder : "", error)) {
            std::string name = entry.path().filename().string();
            if (name.size() > suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
                text += readFile(entry.path().string());
        }
        return text;
    }
    std::string LogSince(std::size_t mark) const { return Log().substr(mark); }

    TempDir db;
};

} // namespace devid_test

#endif

// A device identifier for one test, with HOME in a scratch folder and the
// members a live session would fill reachable from the test.
#ifndef DEVID_TESTS_CONFIGTESTSUPPORT_H
#define DEVID_TESTS_CONFIGTESTSUPPORT_H

#include "devid/CDeviceIdentifierImpl.h"
#include "tests/common/DeviceIdentifierTestAccess.h"
#include "devid/target/TraceFactory.h"
#include "tests/common/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

namespace devid_test {

using Access = Mora::Lux::Trace::DeviceIdentifierTestAccess;
using Mora::Lux::Trace::CDeviceIdentifierImpl;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

// Answers every name, so an empty answer shows that it was never asked.
class FakeChannelServer : public Mora::Lux::Trace::ChannelServer {
public:
    void GetOutputFileName(const std::string& name, std::string& file) override { file = name + ".tdf"; }
};

class ConfigTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("HOME", home.path().c_str(), 1);
        setenv("MORA_TRACE_LOGGING", "1", 1);
        unsetenv("TRACE_XMLDB_DEVICES");
    }

    static std::unique_ptr<CDeviceIdentifierImpl> Make() { return std::make_unique<CDeviceIdentifierImpl>(); }

    static bool LoadText(CDeviceIdentifierImpl& d, const std::string& text)
    {
        FILE* file = std::tmpfile();
        std::fwrite(text.data(), 1, text.size(), file);
        std::rewind(file);
        const bool result = d.LoadConfigurationDCMFile(file);
        std::fclose(file);
        return result;
    }

    std::string TraceDir() const { return home.file(".MORA-trace"); }

    // Every log file of the folder: a forked child writes its own.
    std::string Log() const
    {
        std::string all;
        for (const auto& entry : std::filesystem::directory_iterator(TraceDir()))
            if (entry.path().filename().string().rfind("mora_trace_log", 0) == 0)
                all += readFile(entry.path().string());
        return all;
    }

    TempDir home;
};

} // namespace devid_test

#endif

// Nothing a user saved may be lost: a save that cannot write everything says
// so, and a save into a trace data file leaves every other section intact.
#include "devid/CDeviceIdentifierImpl.h"
#include "tdf/TDFHandler.h"
#include "tests/hardening/HardeningSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace Mora::Lux::Trace;
using ::testing::HasSubstr;

namespace {

struct Section {
    std::string name;
    uint32_t version;
    std::string data;
};

std::string Header(uint32_t length, uint32_t version, const std::string& name)
{
    std::string bytes;
    for (uint32_t word : {length, version, static_cast<uint32_t>(name.size())})
        for (int shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>((word >> shift) & 0xFF);
    return bytes + name;
}

class SaveIntegrity : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("HOME", home.path().c_str(), 1);
        setenv("MORA_TRACE_LOGGING", "1", 1);
        unsetenv("TRACE_XMLDB_DEVICES");
        unsetenv("COMMON_VEXIF");
    }
    // A device identifier holding a restored session, so saving needs no target.
    std::unique_ptr<CDeviceIdentifierImpl> Restored()
    {
        auto devId = std::make_unique<CDeviceIdentifierImpl>();
        EXPECT_TRUE(devId->LoadConfiguration(home.write("restored.dim", devid_test::SessionText()), eTraceDataFileDCM));
        return devId;
    }
    std::string TraceFolder() const { return home.file(".MORA-trace"); }
    std::string Log() const { return devid_test::ProcessLogIn(TraceFolder()); }

    devid_test::TempDir home;
};

TEST_F(SaveIntegrity, FullDiskIsReportedNotIgnored)
{
    auto devId = Restored();
    ASSERT_EQ(symlink("/dev/full", (TraceFolder() + "/full.dim").c_str()), 0);
    EXPECT_FALSE(devId->SaveConfiguration("full", eTraceDataFileDCM));
    EXPECT_THAT(Log(), HasSubstr("DevId: Cannot write file " + TraceFolder() + "/full.dim"));

    EXPECT_TRUE(devId->SaveConfiguration("whole", eTraceDataFileDCM));
    EXPECT_EQ(devid_test::readFile(TraceFolder() + "/whole.dim"), devid_test::SessionText());

    // A trace data file on a full disk: the failure is logged, nothing claimed.
    ASSERT_EQ(symlink("/dev/full", home.file("full.tdf").c_str()), 0);
    EXPECT_FALSE(devId->SaveConfiguration(home.file("full.tdf"), eTraceDataFileTDF));
}

TEST_F(SaveIntegrity, TdfSaveLeavesEverySectionAsItWas)
{
    std::string blob(100000, '\0');
    for (size_t i = 0; i < blob.size(); ++i)
        blob[i] = static_cast<char>(i * 131 % 251);
    const std::vector<Section> sections = {
        {"TRACE", 3, blob}, {"DEVID", 2, "older version"}, {"", 0, ""}, {"NOTES", 1, "notes\r\n\0x"}, {"TRACE", 4, "tail"}};
    const std::string file = home.file("session.tdf");
    TDFHandler tdf;
    tdf.CreateTDFFile(file.c_str());
    for (const Section& section : sections) {
        uint32_t offset = 0;
        uint32_t length = 0;
        tdf.SaveSectionHeader(file.c_str(), section.name.c_str(), section.version, offset);
        tdf.SaveSectionData(file.c_str(), section.name.c_str(), offset, section.data.data(), 1, section.data.size(), length);
    }
    const std::string before = devid_test::readFile(file);

    auto devId = Restored();
    devId->SaveConfiguration(file, eTraceDataFileTDF);
    devId->SaveConfiguration(file, eTraceDataFileTDF);

    // The old bytes are untouched; two whole DEVID sections follow them.
    const std::string after = devid_test::readFile(file);
    ASSERT_GT(after.size(), before.size());
    EXPECT_EQ(after.compare(0, before.size(), before), 0);
    const std::string text = devid_test::SessionText();
    const std::string section = Header(static_cast<uint32_t>(17 + text.size()), 1, "DEVID") + text;
    EXPECT_EQ(after.substr(before.size()), section + section);

    for (const Section& section : sections) {
        std::vector<char> buffer(section.data.size() + 1);
        uint32_t read = 0;
        tdf.LoadSectionData(file.c_str(), section.name.c_str(), section.version, buffer.data(), static_cast<uint32_t>(buffer.size()), read);
        EXPECT_EQ(std::string(buffer.data(), read), section.data) << section.name << " " << section.version;
    }
    auto reloaded = std::make_unique<CDeviceIdentifierImpl>();
    EXPECT_TRUE(reloaded->LoadConfiguration(file, eTraceDataFileTDF));
    EXPECT_EQ(reloaded->GetConnections().size(), 2u);
}

TEST_F(SaveIntegrity, TdfSaveBehindADamagedSectionKeepsTheWholeOnes)
{
    // The last section claims more bytes than the file holds, as after a crash.
    const std::string whole = Header(12 + 5 + 4, 1, "FIRST") + "data";
    const std::string file = home.write("damaged.tdf", "TDF2" + whole + Header(5000, 1, "CUT") + "partial");
    Restored()->SaveConfiguration(file, eTraceDataFileTDF);
    const std::string after = devid_test::readFile(file);
    EXPECT_EQ(after.compare(0, 4 + whole.size(), "TDF2" + whole), 0);
    TDFHandler tdf;
    char buffer[8] = {};
    uint32_t read = 0;
    tdf.LoadSectionData(file.c_str(), "FIRST", 1, buffer, sizeof buffer, read);
    EXPECT_EQ(std::string(buffer, read), "data");
}

} // namespace

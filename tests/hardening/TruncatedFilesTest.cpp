// Files cut short, as a crash or a full disk leaves them: every format is read
// at many cut points, never crashes, keeps what is whole and says what is not.
#include "devid/CDeviceIdentifierImpl.h"
#include "simboard/SimBoardReader.h"
#include "tdf/TDFHandler.h"
#include "tests/hardening/HardeningSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

using namespace Mora::Lux::Trace;
using ::testing::HasSubstr;

namespace {

// Every line end, the bytes around it, and a stride through the rest.
std::vector<size_t> CutPoints(const std::string& text, size_t stride)
{
    std::set<size_t> cuts{0, 1, 3, 4, 5};
    for (size_t at = 0; at < text.size(); at += stride)
        cuts.insert(at);
    for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
        cuts.insert(at);
        cuts.insert(at + 1);
    }
    std::vector<size_t> result;
    for (size_t cut : cuts)
        if (cut < text.size())
            result.push_back(cut);
    return result;
}

bool IsPrefixOf(const std::string& part, const std::string& whole)
{
    return whole.compare(0, part.size(), part) == 0 && part.size() <= whole.size();
}

class Truncated : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("HOME", home.path().c_str(), 1);
        setenv("MORA_TRACE_LOGGING", "1", 1);
        unsetenv("TRACE_XMLDB_DEVICES");
        unsetenv("COMMON_VEXIF");
    }
    std::unique_ptr<CDeviceIdentifierImpl> Make() { return std::make_unique<CDeviceIdentifierImpl>(); }
    std::string Log() const { return devid_test::ProcessLogIn(home.file(".MORA-trace")); }

    devid_test::TempDir home;
    devid_test::TempDir scratch;
};

TEST_F(Truncated, SessionTextKeepsItsWholeLinesAndWarnsOfACutOne)
{
    const std::string text = devid_test::SessionText();
    const size_t emuEnd = text.find('\n') + 1;
    const size_t devinfoEnd = text.find('\n', text.find("DEVINFO=")) + 1;
    for (size_t cut : CutPoints(text, 11)) {
        SCOPED_TRACE(cut);
        auto devId = Make();
        EXPECT_TRUE(devId->LoadConfiguration(scratch.write("cut.dim", text.substr(0, cut)), eTraceDataFileDCM));
        const std::string emulator = devId->GetBoardConfig()->emulatorName;
        EXPECT_TRUE(cut >= emuEnd ? emulator == "kmr770u" : IsPrefixOf(emulator, "kmr770u")) << emulator;
        if (cut >= devinfoEnd) {
            EXPECT_EQ(devId->GetConnections().size(), 2u);
        }
    }
    EXPECT_THAT(Log(), HasSubstr("DevId: DCM file ends inside a line; its last value may be incomplete."));
}

TEST_F(Truncated, TdfSectionCutAnywhereIsRefused)
{
    const std::string whole = scratch.file("whole.tdf");
    TDFHandler tdf;
    tdf.CreateTDFFile(whole.c_str());
    uint32_t offset = 0;
    uint32_t length = 0;
    const std::string other(300, 'o');
    tdf.SaveSectionHeader(whole.c_str(), "OTHER", 3, offset);
    tdf.SaveSectionData(whole.c_str(), "OTHER", offset, other.data(), 1, other.size(), length);
    const std::string session = devid_test::SessionText();
    tdf.SaveSectionHeader(whole.c_str(), "DEVID", 1, offset);
    tdf.SaveSectionData(whole.c_str(), "DEVID", offset, session.data(), 1, session.size(), length);
    const std::string bytes = devid_test::readFile(whole);

    // A refused load changes nothing, so one instance serves every cut.
    auto devId = Make();
    for (size_t cut : CutPoints(bytes, 13)) {
        SCOPED_TRACE(cut);
        EXPECT_FALSE(devId->LoadConfiguration(scratch.write("cut.tdf", bytes.substr(0, cut)), eTraceDataFileTDF));
    }
    EXPECT_TRUE(devId->GetConnections().empty());
    EXPECT_TRUE(Make()->LoadConfiguration(whole, eTraceDataFileTDF));
    const std::string log = Log();
    EXPECT_THAT(log, HasSubstr("Devid: Section size cannot be located in the file."));
    EXPECT_THAT(log, HasSubstr("cut.tdf is not a TDF file"));
}

TEST_F(Truncated, BoardAndAliasFilesGiveWhatTheyHold)
{
    const std::string board = "# bench\n$ emulator\n  com_drvr = kmr770u.out\n  com_port=0x240\n$\n";
    const std::string alias = "# families\n~ Talon\n  alias = 0x51A00010 alias = 0x51A00011\n~\n~ Finch\n  alias = 0x51B00001\n~\n";
    setenv("COMMON_VEXIF", scratch.path().c_str(), 1);
    auto devId = Make();
    for (size_t cut : CutPoints(board, 3)) {
        SCOPED_TRACE(cut);
        std::unique_ptr<BoardConfig> record(devId->ParseBoardConfigFile(scratch.write("board.cfg", board.substr(0, cut)).c_str()));
        ASSERT_NE(record, nullptr);
        EXPECT_TRUE(record->emulatorName == "kmr770" || IsPrefixOf(record->emulatorName, "kmr770u")) << record->emulatorName;
        EXPECT_TRUE(IsPrefixOf(record->emulatorPort, "0x240")) << record->emulatorPort;
    }
    for (size_t cut : CutPoints(alias, 3)) {
        SCOPED_TRACE(cut);
        scratch.write("kmralias.cfg", alias.substr(0, cut));
        const size_t before = devId->GetFamilies().size();
        devId->PopulateId2Family();
        const auto& families = devId->GetFamilies();
        ASSERT_LE(families.size() - before, 3u);
        for (size_t i = before; i < families.size(); ++i)
            EXPECT_TRUE(families[i].family == "Talon" || families[i].family == "Finch") << families[i].family;
    }
    std::remove(scratch.file("kmralias.cfg").c_str());
    devId->PopulateId2Family();
    EXPECT_THAT(Log(), HasSubstr("DevId: Cannot open kmralias.cfg file"));
}

TEST_F(Truncated, DeviceFileCutAnywhereIsSkippedWithAReason)
{
    setenv("TRACE_XMLDB_DEVICES", scratch.path().c_str(), 1);
    const std::string device = devid_test::SmallDevice();
    const std::string path = scratch.write("device_grebe.xml", device);
    auto devId = Make();
    ASSERT_TRUE(devId->LoadConfiguration(0x1A2B302Fu));
    // The last byte is the final line feed, without which the file is whole.
    for (size_t cut : CutPoints(device.substr(0, device.size() - 1), 29)) {
        SCOPED_TRACE(cut);
        scratch.write("device_grebe.xml", device.substr(0, cut));
        EXPECT_FALSE(devId->LoadAllDeviceDatabases(true));
        EXPECT_TRUE(devId->GetRoutes().empty());
    }
    EXPECT_THAT(Log(), HasSubstr("DevId: Cannot read " + path + " as XML; skipped."));
    scratch.write("device_grebe.xml", device);
    EXPECT_TRUE(devId->LoadAllDeviceDatabases(true));
    EXPECT_EQ(devId->GetRoutes().size(), 2u);
}

TEST_F(Truncated, SimulatedBoardCutAnywhereIsRefusedWithAReason)
{
    const std::string board = devid_test::readFile(std::string(DEVID_SOURCE_DIR) + "/examples/board/simboard.xml");
    ASSERT_FALSE(board.empty());
    const std::string closing = "</simboard>";
    for (size_t cut : CutPoints(board.substr(0, board.rfind(closing) + closing.size() - 1), 17)) {
        SCOPED_TRACE(cut);
        scratch.write("simboard.xml", board.substr(0, cut));
        const auto result = Mora::Lux::Sim::SimBoardReader::ReadFolder(scratch.path());
        EXPECT_FALSE(result.ok);
        EXPECT_THAT(result.description, HasSubstr("simboard.xml"));
    }

    // The device identifier meets the broken board first through the trace
    // factory, which can only refuse the channel.
    scratch.write("simboard.xml", board.substr(0, board.size() / 2));
    setenv("COMMON_VEXIF", scratch.path().c_str(), 1);
    auto devId = Make();
    devId->LoadDeviceConnectionInfo();
    EXPECT_TRUE(devId->GetConnections().empty());
    EXPECT_THAT(Log(), HasSubstr("DevId: channel driver is not valid in LoadDeviceConnectionInfo()"));
}

} // namespace

// Files cut short, as a crash or a full disk leaves them: every format is read
// at many cut points, never crashes, keeps what is whole and says what is not.
#include "simboard/SimBoardReader.h"
#include "tests/hardening/HardeningSupport.h"

#include <set>

using namespace Mora::Lux::Trace;
using namespace devid_test;

namespace {

// Every line end, the bytes around it, and a stride through the rest.
std::set<size_t> CutPoints(const std::string& text, size_t stride)
{
    std::set<size_t> cuts{0, 1, 3, 4, 5};
    for (size_t at = 0; at < text.size(); at += stride)
        cuts.insert(at);
    for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1))
        cuts.insert({at, at + 1});
    cuts.erase(cuts.lower_bound(text.size()), cuts.end());
    return cuts;
}

bool IsPrefixOf(const std::string& part, const std::string& whole)
{
    return whole.rfind(part, 0) == 0;
}

using Truncated = HardeningTest;

TEST_F(Truncated, SessionTextKeepsItsWholeLines)
{
    const std::string text = SessionText();
    const size_t emuEnd = text.find('\n') + 1;
    const size_t devinfoEnd = text.find('\n', text.find("DEVINFO=")) + 1;
    for (size_t cut : CutPoints(text, 11)) {
        SCOPED_TRACE(cut);
        auto devId = Make();
        EXPECT_TRUE(devId->LoadConfiguration(scratch.write("cut.dim", text.substr(0, cut)), eTraceDataFileDCM));
        const std::string emulator = devId->GetBoardConfig()->emulatorName;
        EXPECT_TRUE(cut >= emuEnd ? emulator == "kmr770u" : IsPrefixOf(emulator, "kmr770u")) << emulator;
        EXPECT_TRUE(cut < devinfoEnd || devId->GetConnections().size() == 2u);
    }
    // Log readers know every line a load writes; a cut last line adds none.
    EXPECT_THAT(Log(), Not(HasSubstr("DevId: DCM file ends inside a line")));
}

TEST_F(Truncated, TdfSectionCutAnywhereIsRefused)
{
    const std::string whole = WriteTdf(scratch.file("whole.tdf"), {{"OTHER", 3, std::string(300, 'o')}, {"DEVID", 1, SessionText()}});
    const std::string bytes = readFile(whole);
    // A refused load changes nothing, so one instance serves every cut.
    auto devId = Make();
    for (size_t cut : CutPoints(bytes, 13)) {
        SCOPED_TRACE(cut);
        EXPECT_FALSE(devId->LoadConfiguration(scratch.write("cut.tdf", bytes.substr(0, cut)), eTraceDataFileTDF));
    }
    EXPECT_TRUE(devId->GetConnections().empty());
    EXPECT_TRUE(Make()->LoadConfiguration(whole, eTraceDataFileTDF));
    EXPECT_THAT(Log(), AllOf(HasSubstr("Devid: Section size cannot be located in the file."), Not(HasSubstr("is not a TDF file"))));
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
        ASSERT_TRUE(record);
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

TEST_F(Truncated, DeviceFileCutAnywhereIsSkipped)
{
    setenv("TRACE_XMLDB_DEVICES", scratch.path().c_str(), 1);
    const std::string device = SmallDevice();
    scratch.write("device_grebe.xml", device);
    auto devId = Make();
    ASSERT_TRUE(devId->LoadConfiguration(0x1A2B302Fu));
    // The last byte is the final line feed, without which the file is whole.
    for (size_t cut : CutPoints(device.substr(0, device.size() - 1), 29)) {
        SCOPED_TRACE(cut);
        scratch.write("device_grebe.xml", device.substr(0, cut));
        EXPECT_FALSE(devId->LoadAllDeviceDatabases(true));
        EXPECT_TRUE(devId->GetRoutes().empty());
    }
    EXPECT_THAT(Log(), Not(HasSubstr("skipped.")));
    scratch.write("device_grebe.xml", device);
    EXPECT_TRUE(devId->LoadAllDeviceDatabases(true));
    EXPECT_EQ(devId->GetRoutes().size(), 2u);
}

TEST_F(Truncated, SimulatedBoardCutAnywhereIsRefusedWithAReason)
{
    const std::string board = readFile(std::string(DEVID_SOURCE_DIR) + "/examples/board/simboard.xml");
    for (size_t cut : CutPoints(board.substr(0, board.rfind("</simboard>") + 10), 17)) {
        SCOPED_TRACE(cut);
        scratch.write("simboard.xml", board.substr(0, cut));
        const auto result = Mora::Lux::Sim::SimBoardReader::ReadFolder(scratch.path());
        EXPECT_FALSE(result.ok);
        EXPECT_THAT(result.description, HasSubstr("simboard.xml"));
    }
}

} // namespace

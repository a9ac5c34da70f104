// Inputs far beyond what any tool writes: huge files, huge names, huge
// folders. Each must finish in reasonable time with a clear result.
#include "devid/model/CSourceInfoImpl.h"
#include "devid/target/HexkitError.h"
#include "tests/hardening/HardeningSupport.h"

#include <chrono>

using namespace Mora::Lux::Trace;
using namespace devid_test;

namespace {

const std::string kLongName(10000, 'n');

// The scratch folder is the database folder; each case must end well within two minutes.
class Hostile : public HardeningTest {
protected:
    void SetUp() override
    {
        HardeningTest::SetUp();
        setenv("TRACE_XMLDB_DEVICES", scratch.path().c_str(), 1);
    }
    void TearDown() override { EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(120)); }
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
};

// Writes `head`, then 100 blocks of 1 MB of `filler`, then `tail`.
std::string WriteHundredMegabytes(const std::string& path, const std::string& head, const std::string& filler, const std::string& tail)
{
    std::ofstream out(path, std::ios::binary);
    out << head;
    std::string block;
    while (block.size() < (1u << 20))
        block += filler;
    for (int i = 0; i < 100; ++i)
        out << block;
    out << tail;
    return path;
}

TEST_F(Hostile, HundredMegabyteDeviceFiles)
{
    // A whole description padded with a comment loads like the small one.
    const std::string device = SmallDevice();
    const size_t split = device.find("</device>");
    WriteHundredMegabytes(scratch.file("device_big.xml"), device.substr(0, split) + "<!--", "padding ", "-->" + device.substr(split));
    auto devId = Make();
    ASSERT_TRUE(devId->LoadConfiguration(0x1A2B302Fu));
    EXPECT_EQ(devId->GetTraceRoutes().size(), 2u);

    // 100 MB of something else is skipped like a file that does not match.
    std::remove(scratch.file("device_big.xml").c_str());
    WriteHundredMegabytes(scratch.file("device_junk.xml"), "", "\x01junk<>&", "");
    EXPECT_FALSE(devId->LoadAllDeviceDatabases(true));
    EXPECT_THAT(Log(), AllOf(HasSubstr("DevId: Next XML file not found."), Not(HasSubstr("skipped."))));
}

TEST_F(Hostile, TenThousandCharacterNames)
{
    // Processor and module names: kept whole in the model, cut in the log.
    const std::string n = kLongName;
    scratch.write("device_long.xml",
                  DeviceFile("0x1", "<procs><proc id=\"" + n + "\" kind=\"Talon\"/></procs><modules><module id=\"M" + n + "\" kind=\"etm\" proc=\"" +
                                        n + "\"/></modules><sources><source id=\"" + n + "\" proc=\"" + n +
                                        "\" stmmaster=\"false\"><components><component module=\"M" + n +
                                        "\"/></components></source></sources><trace_routes><route><source source=\"" + n +
                                        "\"/><sink module=\"M" + n + "\"/></route></trace_routes>"));
    auto devId = Make();
    ASSERT_TRUE(devId->LoadConfiguration(0x1u));
    CSourceInfo* source = devId->GetProcInfo(n);
    ASSERT_TRUE(source && source->GetComponents().size() == 1u);
    EXPECT_EQ(source->GetComponents()[0]->GetName(), "M" + n);
    EXPECT_EQ(devId->GetTraceRoutesForProc(n).size(), 1u);

    // File names: every operation refuses them and says so.
    const std::string longPath = home.path() + "/" + n;
    EXPECT_FALSE(devId->LoadConfiguration(longPath + ".dim", eTraceDataFileDCM));
    EXPECT_FALSE(devId->LoadConfiguration(longPath + ".tdf", eTraceDataFileTDF));
    EXPECT_FALSE(devId->LoadConfiguration(longPath + ".dim", eTraceDataFileDeviceXML));
    EXPECT_FALSE(devId->SaveConfiguration(n, eTraceDataFileDCM));
    setenv("TRACE_XMLDB_DEVICES", longPath.c_str(), 1);
    setenv("COMMON_VEXIF", longPath.c_str(), 1);
    EXPECT_FALSE(Make()->LoadConfiguration(0x1u));

    // Board and alias section names, and their values, are cut to their buffers.
    TempDir board;
    board.write("kmralias.cfg", "#\n~ " + n + "\n  alias = 0x51A00010\n~\n");
    board.write("board.cfg", "#\n$ " + n + "\n  com_drvr = " + n + "\n$\n");
    setenv("COMMON_VEXIF", board.path().c_str(), 1);
    auto boarded = Make();
    ASSERT_EQ(boarded->GetFamilies().size(), 1u);
    EXPECT_EQ(boarded->GetFamilies()[0].family, n.substr(0, 31));
    std::unique_ptr<BoardConfig> record(boarded->ParseBoardConfigFile(board.file("board.cfg").c_str()));
    EXPECT_EQ(record ? record->emulatorName : "", n.substr(0, 31));

    // A trace data file section name no reader can take is refused before anything is written.
    const std::string file = home.file("trace.tdf");
    TDFHandler tdf;
    tdf.CreateTDFFile(file.c_str());
    uint32_t offset = 0;
    EXPECT_THROW(tdf.SaveSectionHeader(file.c_str(), n.c_str(), 1, offset), Mora::Lux::Hexkit::HexkitError);
    EXPECT_EQ(readFile(file), "TDF2");

    const std::string log = Log();
    for (const char* line : {"Devid: error loading settings from ", "DevId: Cannot open file ", "DevId: No XML file found."})
        EXPECT_THAT(log, HasSubstr(line));
    // Log lines are cut at the line buffer, never run into the next one.
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);)
        ASSERT_LT(line.size(), 4096u);
}

TEST_F(Hostile, TenThousandCandidatesThatDoNotMatch)
{
    for (int i = 0; i < 10000; ++i)
        scratch.write("device_" + std::to_string(i) + ".xml", DeviceFile("0x" + std::to_string(1000 + i), ""));
    auto devId = Make();
    EXPECT_FALSE(devId->LoadDeviceDatabase(0x1A2B302Fu));
    EXPECT_THAT(Log(), HasSubstr("DevId: Next XML file not found."));
    scratch.write("device_match.xml", SmallDevice());
    EXPECT_TRUE(devId->LoadDeviceDatabase(0x1A2B302Fu));
    EXPECT_EQ(devId->GetRoutes().size(), 2u);
}

// FIFOs named like the files the library reads and writes: each is refused at
// once. Opening one the ordinary way waits for its other end, here for ever,
// so the child has a time limit.
TEST_F(Hostile, FifosAreRefusedWithoutWaiting)
{
    scratch.write("device_grebe.xml", SmallDevice());
    TempDir board;
    const std::string dim = home.file("session.dim");
    const std::string trace = home.file("session.tdf");
    for (const std::string& fifo : {scratch.file("device_fifo.xml"), dim, trace, board.file("kmralias.cfg"), board.file("board.cfg")})
        ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0) << fifo;
    setenv("COMMON_VEXIF", board.path().c_str(), 1);

    RunInChild(false, [&] {
        alarm(60);
        auto devId = Make();
        EXPECT_TRUE(devId->GetFamilies().empty());
        EXPECT_FALSE(devId->LoadDeviceDatabase(0x1u)) << "every candidate is tried";
        EXPECT_TRUE(devId->LoadDeviceDatabase(0x1A2B302Fu));
        EXPECT_EQ(devId->ParseBoardConfigFile(board.file("board.cfg").c_str()), nullptr);
        EXPECT_FALSE(devId->LoadConfiguration(dim, eTraceDataFileDCM));
        EXPECT_FALSE(devId->LoadConfiguration(trace, eTraceDataFileTDF));
        EXPECT_FALSE(devId->SaveConfiguration(trace, eTraceDataFileTDF));
        EXPECT_EQ(FileSize(trace.c_str()), 0u);
        EXPECT_THROW(TDFHandler().CreateTDFFile(trace.c_str()), Mora::Lux::Hexkit::HexkitError);
        ASSERT_EQ(mkfifo((TraceFolder() + "/run1.dim").c_str(), 0600), 0);
        EXPECT_FALSE(devId->SaveConfiguration("run1", eTraceDataFileDCM));
    });
}

} // namespace

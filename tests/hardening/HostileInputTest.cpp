// Inputs far beyond what any tool writes: huge files, huge names, huge
// folders. Each must finish in reasonable time with a clear result.
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/model/CSourceInfoImpl.h"
#include "tdf/TDFHandler.h"
#include "devid/target/HexkitError.h"
#include "tests/hardening/HardeningSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

using namespace Mora::Lux::Trace;
using ::testing::HasSubstr;

namespace {

const size_t kHundredMegabytes = 100u << 20;
const std::string kLongName(10000, 'n');

class Hostile : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("HOME", home.path().c_str(), 1);
        setenv("MORA_TRACE_LOGGING", "1", 1);
        setenv("TRACE_XMLDB_DEVICES", db.path().c_str(), 1);
        unsetenv("COMMON_VEXIF");
        started = std::chrono::steady_clock::now();
    }
    void TearDown() override
    {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - started);
        EXPECT_LT(seconds.count(), 120) << "too slow to call it anything but a hang";
    }
    std::unique_ptr<CDeviceIdentifierImpl> Make() { return std::make_unique<CDeviceIdentifierImpl>(); }
    std::string Log() const { return devid_test::ProcessLogIn(home.file(".MORA-trace")); }

    devid_test::TempDir home;
    devid_test::TempDir db;
    std::chrono::steady_clock::time_point started;
};

// Writes `head`, then `filler` repeated up to 100 MB, then `tail`.
std::string WriteHundredMegabytes(const std::string& path, const std::string& head, const std::string& filler,
                                  const std::string& tail)
{
    std::ofstream out(path, std::ios::binary);
    out << head;
    std::string block;
    while (block.size() < (1u << 20))
        block += filler;
    for (size_t written = head.size(); written + block.size() + tail.size() <= kHundredMegabytes; written += block.size())
        out << block;
    out << tail;
    return path;
}

TEST_F(Hostile, HundredMegabyteDeviceFiles)
{
    // A whole description padded with a comment loads like the small one.
    const std::string device = devid_test::SmallDevice();
    const size_t split = device.find("</device>");
    WriteHundredMegabytes(db.file("device_big.xml"), device.substr(0, split) + "<!--", "padding ", "-->" + device.substr(split));
    auto devId = Make();
    ASSERT_TRUE(devId->LoadConfiguration(0x1A2B302Fu));
    EXPECT_EQ(devId->GetTraceRoutes().size(), 2u);
    ASSERT_NE(devId->GetProcInfo("core0"), nullptr);

    // 100 MB of something else is refused with a reason.
    std::remove(db.file("device_big.xml").c_str());
    const std::string junk = WriteHundredMegabytes(db.file("device_junk.xml"), "", "\x01junk<>&", "");
    EXPECT_FALSE(devId->LoadAllDeviceDatabases(true));
    EXPECT_THAT(Log(), HasSubstr("DevId: Cannot read " + junk + " as XML; skipped."));
}

TEST_F(Hostile, ManyElementsLoadInLinearTime)
{
    // 30,000 processors, modules, sources and routes: lookups that walk lists
    // per element would take minutes here.
    const int count = 30000;
    std::ostringstream procs, modules, sources, routes;
    for (int i = 0; i < count; ++i) {
        const std::string n = std::to_string(i);
        procs << "<proc id=\"p" << n << "\" kind=\"Talon\" traceid=\"" << n << "\"/>";
        modules << "<module id=\"m" << n << "\" kind=\"etm\" proc=\"p" << n << "\"/>";
        sources << "<source id=\"p" << n << "\" proc=\"p" << n << "\" stmmaster=\"false\"><components><component module=\"m" << n
                << "\"/></components></source>";
        routes << "<route><source source=\"p" << n << "\"/><sink module=\"m" << n << "\"/></route>";
    }
    db.write("device_many.xml", devid_test::DeviceFile("0x1", "<procs>" + procs.str() + "</procs><modules>" + modules.str() +
                                                                  "</modules><sources>" + sources.str() + "</sources><trace_routes>" +
                                                                  routes.str() + "</trace_routes>"));
    auto devId = Make();
    ASSERT_TRUE(devId->LoadConfiguration(0x1u));
    const auto all = devId->GetTraceRoutes();
    ASSERT_EQ(all.size(), static_cast<size_t>(count));
    ASSERT_NE(all.back()->GetSourceInfo(), nullptr);
    EXPECT_EQ(all.back()->GetSinkInfo()->GetName(), "m" + std::to_string(count - 1));
    EXPECT_EQ(devId->GetProcInfo("p" + std::to_string(count / 2))->GetComponents().size(), 1u);
}

TEST_F(Hostile, TenThousandCharacterNames)
{
    // Processor and module names: kept whole in the model, cut in the log.
    db.write("device_long.xml",
             devid_test::DeviceFile("0x1", "<procs><proc id=\"" + kLongName + "\" kind=\"Talon\"/></procs><modules><module id=\"M" +
                                               kLongName + "\" kind=\"etm\" proc=\"" + kLongName + "\"/></modules><sources><source id=\"" +
                                               kLongName + "\" proc=\"" + kLongName +
                                               "\" stmmaster=\"false\"><components><component module=\"M" + kLongName +
                                               "\"/></components></source></sources><trace_routes><route><source source=\"" +
                                               kLongName + "\"/><sink module=\"M" + kLongName + "\"/></route></trace_routes>"));
    auto devId = Make();
    ASSERT_TRUE(devId->LoadConfiguration(0x1u));
    CSourceInfo* source = devId->GetProcInfo(kLongName);
    ASSERT_NE(source, nullptr);
    ASSERT_EQ(source->GetComponents().size(), 1u);
    EXPECT_EQ(source->GetComponents()[0]->GetName(), "M" + kLongName);
    ASSERT_EQ(devId->GetTraceRoutesForProc(kLongName).size(), 1u);

    // File names: every operation refuses them and says so.
    const std::string longPath = home.path() + "/" + kLongName + ".dim";
    EXPECT_FALSE(devId->LoadConfiguration(longPath, eTraceDataFileDCM));
    EXPECT_FALSE(devId->LoadConfiguration(home.path() + "/" + kLongName + ".tdf", eTraceDataFileTDF));
    EXPECT_FALSE(devId->LoadConfiguration(longPath, eTraceDataFileDeviceXML));
    EXPECT_FALSE(devId->SaveConfiguration(kLongName, eTraceDataFileDCM));
    setenv("TRACE_XMLDB_DEVICES", (home.path() + "/" + kLongName).c_str(), 1);
    setenv("COMMON_VEXIF", (home.path() + "/" + kLongName).c_str(), 1);
    auto elsewhere = Make();
    EXPECT_FALSE(elsewhere->LoadConfiguration(0x1u));

    // Board and alias section names, and their values, are cut to their buffers.
    devid_test::TempDir board;
    board.write("kmralias.cfg", "#\n~ " + kLongName + "\n  alias = 0x51A00010\n~\n");
    board.write("board.cfg", "#\n$ " + kLongName + "\n  com_drvr = " + kLongName + "\n$\n");
    setenv("COMMON_VEXIF", board.path().c_str(), 1);
    auto boarded = Make();
    ASSERT_EQ(boarded->GetFamilies().size(), 1u);
    EXPECT_EQ(boarded->GetFamilies()[0].family, kLongName.substr(0, 31));
    std::unique_ptr<BoardConfig> record(boarded->ParseBoardConfigFile(board.file("board.cfg").c_str()));
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->emulatorName, kLongName.substr(0, 31));

    const std::string log = Log();
    EXPECT_THAT(log, HasSubstr("Devid: error loading settings from " + home.path() + "/nnnn"));
    EXPECT_THAT(log, HasSubstr("Devid: device file name too long"));
    EXPECT_THAT(log, HasSubstr("DevId: Cannot open file "));
    EXPECT_THAT(log, HasSubstr("DevId: No XML file found."));
    // Log lines are cut at the line buffer, never run into the next one.
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);)
        ASSERT_LT(line.size(), 4096u);
}

TEST_F(Hostile, TenThousandCharacterSectionNames)
{
    // A name no reader can take is refused before anything is written, so the
    // sections saved after it stay reachable.
    const std::string file = home.file("trace.tdf");
    TDFHandler tdf;
    tdf.CreateTDFFile(file.c_str());
    uint32_t offset = 0;
    EXPECT_THROW(tdf.SaveSectionHeader(file.c_str(), kLongName.c_str(), 1, offset), Mora::Lux::Hexkit::HexkitError);
    EXPECT_EQ(devid_test::readFile(file), "TDF2");

    auto devId = Make();
    ASSERT_TRUE(devId->LoadConfiguration(home.write("s.dim", devid_test::SessionText()), eTraceDataFileDCM));
    devId->SaveConfiguration(file, eTraceDataFileTDF);
    EXPECT_TRUE(Make()->LoadConfiguration(file, eTraceDataFileTDF));
    uint32_t length = 0;
    EXPECT_THROW(tdf.GetSectionDataLengthInBytes(file.c_str(), kLongName.c_str(), 1, length), Mora::Lux::Hexkit::HexkitError);
}

TEST_F(Hostile, TenThousandCandidatesThatDoNotMatch)
{
    for (int i = 0; i < 10000; ++i)
        db.write("device_" + std::to_string(i) + ".xml", devid_test::DeviceFile("0x" + std::to_string(1000 + i), ""));
    auto devId = Make();
    EXPECT_FALSE(devId->LoadDeviceDatabase(0x1A2B302Fu));
    EXPECT_THAT(Log(), HasSubstr("DevId: Next XML file not found."));

    // One more that matches is found among them.
    db.write("device_match.xml", devid_test::SmallDevice());
    EXPECT_TRUE(devId->LoadDeviceDatabase(0x1A2B302Fu));
    EXPECT_EQ(devId->GetRoutes().size(), 2u);
}

} // namespace

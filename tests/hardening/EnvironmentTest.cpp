// Files and folders the process may not read, a HOME it may not write, and no
// HOME at all. Root reads everything, so these checks run as user nobody in a
// child process.
#include "devid/CDeviceIdentifier.h"
#include "devid/CDeviceIdentifierImpl.h"
#include "simboard/SimBoardReader.h"
#include "tdf/TDFHandler.h"
#include "tests/hardening/HardeningSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace Mora::Lux::Trace;
using ::testing::HasSubstr;
using devid_test::RunInChild;

namespace {

class Environment : public ::testing::Test {
protected:
    void SetUp() override
    {
        devid_test::OpenToNobody(root.path());
        devid_test::OpenToNobody(homeFolder);
        setenv("HOME", homeFolder.c_str(), 1);
        setenv("MORA_TRACE_LOGGING", "1", 1);
        unsetenv("TRACE_XMLDB_DEVICES");
        unsetenv("COMMON_VEXIF");
    }

    // Without root the scratch folder can only be removed once its owner may read it again.
    void TearDown() override
    {
        for (const std::string& path : locked)
            chmod(path.c_str(), 0755);
        chmod(homeFolder.c_str(), 0755);
    }

    /// Takes every permission away from a file or folder below the scratch folder.
    std::string Lock(const std::string& path)
    {
        chmod(path.c_str(), 0);
        locked.push_back(path);
        return path;
    }
    std::string Locked(const std::string& name, const std::string& content) { return Lock(root.write(name, content)); }
    std::string Log() const { return devid_test::ProcessLogIn(homeFolder + "/.MORA-trace"); }

    /// A trace data file holding a saved session.
    std::string SessionTdf(const std::string& name)
    {
        const std::string path = root.file(name);
        TDFHandler tdf;
        tdf.CreateTDFFile(path.c_str());
        uint32_t offset = 0;
        uint32_t length = 0;
        const std::string text = devid_test::SessionText();
        tdf.SaveSectionHeader(path.c_str(), "DEVID", 1, offset);
        tdf.SaveSectionData(path.c_str(), "DEVID", offset, text.data(), 1, text.size(), length);
        return path;
    }

    devid_test::TempDir root;
    std::string homeFolder = root.file("home");
    bool created = std::filesystem::create_directories(homeFolder);
    std::vector<std::string> locked;
};

TEST_F(Environment, UnreadableFilesAndFoldersAreRefusedWithAReason)
{
    // Folders: the database folder and a device file in a readable one.
    const std::string lockedDb = root.file("lockeddb");
    root.write("lockeddb/device_grebe.xml", devid_test::SmallDevice());
    Lock(lockedDb);
    const std::string db = root.file("db");
    root.write("db/device_b.xml", devid_test::SmallDevice());
    const std::string lockedDevice = Locked("db/device_a.xml", devid_test::SmallDevice());
    const std::string dim = Locked("session.dim", devid_test::SessionText());
    const std::string tdf = Locked("session.tdf", "TDF2");
    const std::string board = root.file("board");
    root.write("board/board.cfg", "#\n$ e\n com_drvr=kmr770u\n$\n");
    root.write("board/simboard.xml", "<simboard config=\"board.cfg\"/>");
    Locked("board/kmralias.cfg", "#\n~ Talon\n alias = 0x51A00010\n~\n");
    Lock(root.file("board/board.cfg"));
    Lock(root.file("board/simboard.xml"));

    RunInChild(true, [&] {
        setenv("TRACE_XMLDB_DEVICES", lockedDb.c_str(), 1);
        auto devId = std::make_unique<CDeviceIdentifierImpl>();
        EXPECT_FALSE(devId->LoadConfiguration(0x1A2B302Fu));

        setenv("TRACE_XMLDB_DEVICES", db.c_str(), 1);
        auto other = std::make_unique<CDeviceIdentifierImpl>();
        EXPECT_TRUE(other->LoadConfiguration(0x1A2B302Fu)) << "the readable file is found beside the locked one";
        EXPECT_EQ(other->GetRoutes().size(), 2u);

        EXPECT_FALSE(other->LoadConfiguration(dim, eTraceDataFileDCM));
        EXPECT_FALSE(other->LoadConfiguration(tdf, eTraceDataFileTDF));

        setenv("COMMON_VEXIF", board.c_str(), 1);
        auto boarded = std::make_unique<CDeviceIdentifierImpl>();
        EXPECT_TRUE(boarded->GetFamilies().empty());
        EXPECT_EQ(boarded->ParseBoardConfigFile((board + "/board.cfg").c_str()), nullptr);
        const auto simboard = Mora::Lux::Sim::SimBoardReader::ReadFolder(board);
        EXPECT_FALSE(simboard.ok);
        EXPECT_THAT(simboard.description, HasSubstr("simboard.xml"));

        const std::string log = Log();
        EXPECT_THAT(log, HasSubstr("DevId: No XML file found."));
        EXPECT_THAT(log, HasSubstr("DevId: Cannot read " + lockedDevice + " as XML; skipped."));
        EXPECT_THAT(log, HasSubstr("Devid: error loading settings from " + dim));
        EXPECT_THAT(log, HasSubstr(tdf + " is not a TDF file"));
        EXPECT_THAT(log, HasSubstr("DevId: Cannot open kmralias.cfg file"));
    });
}

TEST_F(Environment, ReadOnlyHomeStillAnswersAndReportsWhatItCannotSave)
{
    root.write("db/device_grebe.xml", devid_test::SmallDevice());
    const std::string session = SessionTdf("session.tdf");
    chmod(homeFolder.c_str(), 0555);
    // Without a writable log file the lines reach standard output (level 2).
    const std::string output = root.file("stdout.txt");
    RunInChild(
        true,
        [&] {
            setenv("MORA_TRACE_LOGGING", "2", 1);
            setenv("TRACE_XMLDB_DEVICES", root.file("db").c_str(), 1);
            CDeviceIdentifier* devId = CreateDeviceIdentifier();
            ASSERT_NE(devId, nullptr);
            EXPECT_TRUE(devId->LoadConfiguration(0x1A2B302Fu));
            EXPECT_EQ(devId->GetTraceRoutes().size(), 2u);
            EXPECT_FALSE(devId->SaveConfiguration("run1", eTraceDataFileDCM));
            EXPECT_FALSE(devId->LoadConfiguration(session, eTraceDataFileTDF));
            DestroyDeviceIdentifier(devId, false);
        },
        output);
    const std::string printed = devid_test::readFile(output);
    EXPECT_THAT(printed, HasSubstr("DevId: Cannot open file " + homeFolder + "/.MORA-trace/run1.dim"));
    EXPECT_THAT(printed, HasSubstr("Devid: Cannot open temporary file"));
}

TEST_F(Environment, NoHomeStillAnswersAndReportsWhatItCannotSave)
{
    root.write("db/device_grebe.xml", devid_test::SmallDevice());
    const std::string session = SessionTdf("session.tdf");
    const std::string work = root.file("work");
    std::filesystem::create_directories(work);
    RunInChild(false, [&] {
        unsetenv("HOME");
        setenv("TRACE_XMLDB_DEVICES", root.file("db").c_str(), 1);
        // With no trace folder the log is written in the working folder.
        ASSERT_EQ(chdir(work.c_str()), 0);
        CDeviceIdentifier* devId = CreateDeviceIdentifier();
        ASSERT_NE(devId, nullptr);
        EXPECT_TRUE(devId->LoadConfiguration(0x1A2B302Fu));
        EXPECT_EQ(devId->GetTraceRoutes().size(), 2u);
        EXPECT_FALSE(devId->SaveConfiguration("run1", eTraceDataFileDCM));
        EXPECT_FALSE(devId->LoadConfiguration(session, eTraceDataFileTDF));
        DestroyDeviceIdentifier(devId, false);
        const std::string log = devid_test::ProcessLogIn(work);
        EXPECT_THAT(log, HasSubstr("DevId: Cannot open file /run1.dim"));
        EXPECT_THAT(log, HasSubstr("Devid: failed to read environment variable \"HOME\""));
    });
}

} // namespace

// Files and folders the process may not read, a HOME it may not write, and no
// HOME at all. Root reads everything, so these checks run as user nobody in a
// child process.
#include "devid/CDeviceIdentifier.h"
#include "common/source/source_utilities/uDll.h"
#include "simboard/SimBoardReader.h"
#include "tests/hardening/HardeningSupport.h"

using namespace Mora::Lux::Trace;
using namespace devid_test;

namespace {

class Environment : public HardeningTest {
protected:
    void SetUp() override
    {
        HardeningTest::SetUp();
        chmod(home.path().c_str(), 0777);
        chmod(scratch.path().c_str(), 0777);
    }
    // Without root the scratch folder can only be removed once its owner may read it again.
    void TearDown() override
    {
        for (const std::string& path : locked)
            chmod(path.c_str(), 0755);
        chmod(home.path().c_str(), 0755);
    }
    std::string Lock(const std::string& path)
    {
        chmod(path.c_str(), 0);
        locked.push_back(path);
        return path;
    }

    std::vector<std::string> locked;
};

TEST_F(Environment, UnreadableFilesAndFoldersAreRefused)
{
    scratch.write("lockeddb/device_grebe.xml", SmallDevice());
    const std::string lockedDb = Lock(scratch.file("lockeddb"));
    const std::string db = scratch.file("db");
    scratch.write("db/device_b.xml", SmallDevice());
    Lock(scratch.write("db/device_a.xml", SmallDevice()));
    const std::string dim = Lock(scratch.write("session.dim", SessionText()));
    const std::string tdf = Lock(scratch.write("session.tdf", "TDF2"));
    const std::string board = scratch.file("board");
    Lock(scratch.write("board/board.cfg", "#\n$ e\n com_drvr=kmr770u\n$\n"));
    Lock(scratch.write("board/simboard.xml", "<simboard config=\"board.cfg\"/>"));
    Lock(scratch.write("board/kmralias.cfg", "#\n~ Talon\n alias = 0x51A00010\n~\n"));

    RunInChild(true, [&] {
        setenv("TRACE_XMLDB_DEVICES", lockedDb.c_str(), 1);
        EXPECT_FALSE(Make()->LoadConfiguration(0x1A2B302Fu));

        setenv("TRACE_XMLDB_DEVICES", db.c_str(), 1);
        auto other = Make();
        EXPECT_TRUE(other->LoadConfiguration(0x1A2B302Fu)) << "the readable file is found beside the locked one";
        EXPECT_EQ(other->GetRoutes().size(), 2u);
        EXPECT_FALSE(other->LoadConfiguration(dim, eTraceDataFileDCM));
        EXPECT_FALSE(other->LoadConfiguration(tdf, eTraceDataFileTDF));

        setenv("COMMON_VEXIF", board.c_str(), 1);
        auto boarded = Make();
        EXPECT_TRUE(boarded->GetFamilies().empty());
        EXPECT_EQ(boarded->ParseBoardConfigFile((board + "/board.cfg").c_str()), nullptr);
        const auto simboard = Mora::Lux::Sim::SimBoardReader::ReadFolder(board);
        EXPECT_FALSE(simboard.ok);
        EXPECT_THAT(simboard.description, HasSubstr("simboard.xml"));

        for (const std::string& line : {std::string("DevId: No XML file found."), "Devid: error loading settings from " + dim, std::string("DevId: Cannot open kmralias.cfg file")})
            EXPECT_THAT(Log(), HasSubstr(line));
        // The search and the loads have no lines of their own for a file they skip or refuse.
        EXPECT_THAT(Log(), AllOf(Not(HasSubstr("skipped.")), Not(HasSubstr("is not a TDF file"))));
    });
}

// With HOME read-only (as user nobody) or unset, the database still loads and
// the queries answer; saves and trace data file loads fail and say why.
TEST_F(Environment, ReadOnlyOrMissingHomeStillAnswersAndReportsWhatItCannotSave)
{
    const std::string session = WriteTdf(scratch.file("session.tdf"), {{"DEVID", 1, SessionText()}});
    scratch.write("db/device_grebe.xml", SmallDevice());
    setenv("TRACE_XMLDB_DEVICES", scratch.file("db").c_str(), 1);
    const auto answersButCannotSave = [&] {
        CDeviceIdentifier* devId = CreateDeviceIdentifier();
        ASSERT_NE(devId, nullptr);
        EXPECT_TRUE(devId->LoadConfiguration(0x1A2B302Fu));
        EXPECT_EQ(devId->GetTraceRoutes().size(), 2u);
        EXPECT_FALSE(devId->SaveConfiguration("run1", eTraceDataFileDCM));
        EXPECT_FALSE(devId->LoadConfiguration(session, eTraceDataFileTDF));
        DestroyDeviceIdentifier(devId, false);
    };

    // Without a writable log file the lines reach standard output (level 2).
    chmod(home.path().c_str(), 0555);
    const std::string output = scratch.file("stdout.txt");
    RunInChild(true, [&] {
        setenv("MORA_TRACE_LOGGING", "2", 1);
        answersButCannotSave();
    }, output);
    EXPECT_THAT(readFile(output), AllOf(HasSubstr("DevId: Cannot open file " + home.path() + "/.MORA-trace/run1.dim"),
                                        Not(HasSubstr("temporary file"))));

    // With no HOME the log is written in the working folder.
    const std::string work = scratch.file("work");
    std::filesystem::create_directories(work);
    RunInChild(false, [&] {
        unsetenv("HOME");
        ASSERT_EQ(chdir(work.c_str()), 0);
        answersButCannotSave();
        EXPECT_THAT(ProcessLogIn(work),
                    AllOf(HasSubstr("DevId: Cannot open file /run1.dim"), HasSubstr("Devid: failed to read environment variable \"HOME\"")));
    });
}

// A working folder removed under the process cannot be named in the loader's
// log lines: each library load then fails, and no client call throws.
TEST_F(Environment, RemovedWorkingFolderFailsLoadsWithoutAnException)
{
    const std::string gone = scratch.file("gone");
    RunInChild(false, [&] {
        ASSERT_EQ(mkdir(gone.c_str(), 0700), 0);
        ASSERT_EQ(chdir(gone.c_str()), 0);
        ASSERT_EQ(rmdir(gone.c_str()), 0);
        MORA_LUX::uDll library;
        EXPECT_FALSE(library.FindAndLoad("devid"));
        EXPECT_STREQ(library.GetError(), "failed to get current working directory");
        auto devId = Make();
        EXPECT_EQ(devId->GetSessionSetting("", eSessionSettingEmuName), "");
        devId->SaveConfiguration("run1", eTraceDataFileDCM);
    });
}

} // namespace

#include "devid/CDeviceIdentifierImpl.h"
#include "tests/devid/ProcessLog.h"
#include "tests/devid/SanitizerBuild.h"

#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <sys/wait.h>
#include <unistd.h>

using namespace Mora::Lux::Trace;

namespace {

std::string Env(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string ExpectedLogName(const std::string& pid)
{
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return "mora_trace_log_" + std::to_string(local.tm_mon) + std::to_string(local.tm_mday) +
           std::to_string(local.tm_year + 1900) + "_" + pid + ".txt";
}

} // namespace

TEST(Construction, LogFileDirectoriesAndAStaleClientPidAreSetOncePerProcess)
{
    devid_test::ProcessLog log;
    pid_t child = fork();
    if (child == 0)
        _exit(0);
    waitpid(child, nullptr, 0);
    setenv("MORA_TRACE_DEBUGCLIENT_PID", std::to_string(child).c_str(), 1);
    { CDeviceIdentifierImpl first; }
    const std::string own = std::to_string(getpid());
    EXPECT_EQ(Env("MORA_TRACE_DEBUGCLIENT_PID"), own);
    EXPECT_EQ(log.path(), log.traceDirectory() + "/" + ExpectedLogName(own));
    EXPECT_EQ(Env("MORA_TRACE_LOGGING_DIR") + " " + Env("MORA_TRACE_DATA_DIR") + " " + Env("MORA_TRACE_SETTINGS_DIR"),
              log.traceDirectory() + " " + log.traceDirectory() + "/data " + log.traceDirectory() + "/settings");

    unsetenv("MORA_TRACE_DATA_DIR");
    { CDeviceIdentifierImpl second; }
    EXPECT_EQ(Env("MORA_TRACE_DATA_DIR"), "");
    EXPECT_EQ(log.count("DevId: Creating instance"), 2u);
}

TEST(Construction, LiveClientPidNamesTheLog)
{
    devid_test::ProcessLog log;
    const std::string parent = std::to_string(getppid());
    setenv("MORA_TRACE_DEBUGCLIENT_PID", parent.c_str(), 1);
    CDeviceIdentifierImpl devId;
    EXPECT_EQ(log.path(), log.traceDirectory() + "/" + ExpectedLogName(parent));
}

TEST(Construction, StartsWithoutHomeAndReadsTheDatabaseDirectory)
{
    unsetenv("HOME");
    unsetenv("MORA_TRACE_DATA_DIR");
    setenv("TRACE_XMLDB_DEVICES", "", 1);
    EXPECT_EQ(CDeviceIdentifierImpl().GetDatabaseDirectory(), "");
    EXPECT_EQ(Env("MORA_TRACE_DATA_DIR"), "");
    setenv("TRACE_XMLDB_DEVICES", "/opt/db", 1);
    EXPECT_EQ(CDeviceIdentifierImpl().GetDatabaseDirectory(), "/opt/db/");
}

TEST(Construction, ParserLibraryFoundByShortName)
{
    if (devid_test::kAddressSanitizer)
        GTEST_SKIP() << "only LD_LIBRARY_PATH finds siblings under the sanitizer";
    devid_test::ProcessLog log;
    unsetenv("LD_LIBRARY_PATH");
    CDeviceIdentifierImpl devId;
    EXPECT_EQ(log.count("DevId: Loaded libmora_targetdb_parser.so"), 1u) << log.text();
}

TEST(Construction, ServerCreationDependsOnARunningTraceServer)
{
    devid_test::ProcessLog log;
    EXPECT_TRUE(CDeviceIdentifierImpl().CanCreateServer());
    EXPECT_EQ(log.count("DevId: Can Create Server."), 1u);

    devid_test::TempDir bin;
    const std::string server = bin.file("TraceServer");
    std::filesystem::copy_file("/bin/sleep", server);
    pid_t child = fork();
    if (child == 0) {
        execl(server.c_str(), "TraceServer", "30", static_cast<char*>(nullptr));
        _exit(127);
    }
    // The child only counts once it runs the copied program.
    std::error_code pending;
    for (int i = 0; i < 200 && std::filesystem::read_symlink("/proc/" + std::to_string(child) + "/exe", pending) != server; ++i)
        usleep(10000);
    bool canCreate = CDeviceIdentifierImpl().CanCreateServer();
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_FALSE(canCreate);
    EXPECT_EQ(log.count("DevId: Can Create Server."), 1u);
}

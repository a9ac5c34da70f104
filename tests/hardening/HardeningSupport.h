// What the hardening tests share: a scratch HOME with the process log, device
// description files of our own, and running a check in a child process,
// optionally as user nobody so that file permissions bite even for root.
#ifndef DEVID_TESTS_HARDENINGSUPPORT_H
#define DEVID_TESTS_HARDENINGSUPPORT_H

#include "devid/CDeviceIdentifierImpl.h"
#include "tdf/TDFHandler.h"
#include "tests/common/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

namespace devid_test {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

inline std::string DeviceFile(const std::string& value, const std::string& body)
{
    return "<?xml version=\"1.0\"?>\n<database>\n<device id=\"grebe\" value=\"" + value + "\">\n" + body + "</device>\n</database>\n";
}

/// Two processors, their modules, sources and routes.
inline std::string SmallDevice()
{
    return DeviceFile("0x1A2B302F", R"( <procs><proc id="core0" kind="Talon" traceid="3"/><proc id="core1" kind="Talon"/></procs>
 <modules><module id="ETM0" kind="etm" proc="core0"><registers><reg id="CTRL" type="mem" address="0x1000" page="0" addrunit="1" width="32"/></registers></module>
  <module id="ETF" kind="etf" proc="core0"/><module id="DRM" kind="drm" proc="core0"/></modules>
 <sources><source id="core0" proc="core0" stmmaster="false"><components><component module="ETM0"/></components></source>
  <source id="core1" proc="core1" stmmaster="false"/></sources>
 <trace_routes><route><source source="core0"/><link module="ETM0"/><sink module="ETF"/><pin module="DRM"/></route>
  <route><source source="core1"/><sink module="ETF"/></route></trace_routes>
)");
}

/// The saved session of a board with two devices, as the writer makes it.
inline std::string SessionText()
{
    return "EMU=kmr770u\nPORT=0x240\nDEVICEID=0x1a2b302f\nDEVINFO=0x51a00010$core0$JTAG_K~0x51a00020$core1$JTAG_K~\n"
           "OUTFILES=core0$trace_core0.tdf~core1$trace_core1.tdf~\nTRACEID=0x3$core0~\n";
}

struct TdfSection {
    std::string name;
    uint32_t version;
    std::string data;
};

/// A new trace data file at `path` holding `sections` in order.
inline std::string WriteTdf(const std::string& path, const std::vector<TdfSection>& sections)
{
    Mora::Lux::Trace::TDFHandler tdf;
    tdf.CreateTDFFile(path.c_str());
    for (const TdfSection& section : sections) {
        uint32_t offset = 0, length = 0;
        tdf.SaveSectionHeader(path.c_str(), section.name.c_str(), section.version, offset);
        tdf.SaveSectionData(path.c_str(), section.name.c_str(), offset, section.data.data(), 1, section.data.size(), length);
    }
    return path;
}

/// Text of every log file of this process below `traceFolder`.
inline std::string ProcessLogIn(const std::string& traceFolder)
{
    const std::string name = "_" + std::to_string(getpid()) + ".txt";
    std::string text;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(traceFolder, none))
        if (entry.path().filename().string().find(name) != std::string::npos)
            text += readFile(entry.path().string());
    return text;
}

/// A scratch HOME with the process log at level 1 and no database or board folder.
class HardeningTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        setenv("HOME", home.path().c_str(), 1);
        setenv("MORA_TRACE_LOGGING", "1", 1);
        unsetenv("TRACE_XMLDB_DEVICES");
        unsetenv("COMMON_VEXIF");
    }
    static auto Make() { return std::make_unique<Mora::Lux::Trace::CDeviceIdentifierImpl>(); }
    std::string TraceFolder() const { return home.file(".MORA-trace"); }
    std::string Log() const { return ProcessLogIn(TraceFolder()); }

    TempDir home;
    TempDir scratch;
};

/// Runs `check` in a child process (as user nobody when `dropPrivileges` and
/// this process is root), its standard output appended to `output` when given.
/// The child's gtest failures fail the calling test.
inline void RunInChild(bool dropPrivileges, const std::function<void()>& check, const std::string& output = "")
{
    std::fflush(stdout);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const int fd = output.empty() ? STDOUT_FILENO : open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
        const uid_t nobody = 65534;
        if (dup2(fd, STDOUT_FILENO) < 0 ||
            (dropPrivileges && geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0)))
            _exit(2);
        check();
        std::fflush(stdout);
        _exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << "the child died of signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0) << "the child's checks failed (2: it could not be set up)";
}

} // namespace devid_test

#endif

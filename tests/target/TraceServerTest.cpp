// Construction with a trace server already running: it runs alone, since every
// device identifier constructed meanwhile would see the server too.
#include "tests/target/TargetBoard.h"

#include "common/source/source_utilities/uProcess.h"

#include <gtest/gtest.h>

#include <unistd.h>

// A running trace server means a live target: construction reads it at once.
TEST(ConnectionDiscoveryTest, RunningTraceServerDiscoversAtConstruction)
{
    devid_test::TargetBoard board;
    devid_test::TempDir bin;
    const std::string server = bin.file("TraceServer");
    std::filesystem::copy_file("/bin/sleep", server);
    const unsigned pid = MORA_LUX::uProcess::InvokeProcess(server.c_str(), "30");
    ASSERT_NE(pid, 0u);
    // It only counts once the child runs the copied program.
    std::error_code pending;
    for (int i = 0; i < 200 && std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", pending) != server; ++i)
        usleep(10000);
    setenv("COMMON_VEXIF", DEVID_SOURCE_DIR "/examples/board", 1);
    const std::size_t found = board.identifier()->GetConnections().size();
    EXPECT_TRUE(MORA_LUX::uProcess::TerminateProcess(pid));
    EXPECT_GT(found, 2u);
}

#include "common/source/source_utilities/uProcess.h"

#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

using MORA_LUX::uProcess;

TEST(uProcess, StartFindAndEndAChildByName)
{
    devid_test::TempDir dir;
    const std::string name = "devid-sleeper-" + std::to_string(getpid());
    const std::string program = dir.file(name);
    std::filesystem::copy_file("/bin/sleep", program);
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);

    const int parent = uProcess::GetPid();
    const unsigned child = uProcess::InvokeProcess(program.c_str(), "30", false);
    if (uProcess::GetPid() != parent)
        _exit(127); // exec failed in the child, which must not run the tests
    ASSERT_NE(child, 0u);

    // Until exec completes the child still shows this test program.
    int found = 0;
    for (int attempt = 0; attempt < 100 && found == 0; ++attempt) {
        found = uProcess::LookupProcess(name.c_str());
        if (found == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_EQ(found, static_cast<int>(child));
    EXPECT_TRUE(uProcess::TerminateProcess(child));
    EXPECT_EQ(uProcess::LookupProcess(static_cast<int>(child)), 0) << "ended and reaped";
    EXPECT_EQ(uProcess::LookupProcess(name.c_str()), 0);
}

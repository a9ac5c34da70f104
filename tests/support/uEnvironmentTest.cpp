#include "common/source/source_utilities/uEnvironment.h"

#include "tests/common/TempDir.h"
#include "tests/support/SupportTestUtil.h"

#include <gtest/gtest.h>

#include <filesystem>

using MORA_LUX::ScopedDirectoryChanger;
using MORA_LUX::source_utilities_error;
using MORA_LUX::uEnvironment;
using devid_test::ErrorOf;

TEST(uEnvironment, TraceDirectoriesLieBelowHome)
{
    devid_test::TempDir home;
    uEnvironment::SetVar("HOME", (home.path() + "/").c_str());
    std::string out;
    EXPECT_EQ(MORA_LUX::GetTraceUserDirectory(out), home.path() + "/.MORA-trace");
    EXPECT_EQ(uEnvironment::GetTraceTemporaryDataDirectory(out), home.path() + "/.MORA-trace/data");
    EXPECT_TRUE(std::filesystem::is_directory(out));
    EXPECT_EQ(uEnvironment::GetTraceUserSettingsDirectory(out), home.path() + "/.MORA-trace/settings");

    unsetenv("HOME");
    EXPECT_EQ(ErrorOf<source_utilities_error>([&] { uEnvironment::GetTraceLoggingDirectory(out); }),
              "failed to read environment variable \"HOME\"");
}

TEST(uEnvironment, PathsAndDirectories)
{
    std::string path = "a\\\\b//c///d";
    uEnvironment::NormalizeDirSep(path);
    EXPECT_EQ(path, "a/b/c/d");
    uEnvironment::GetParentDir(path, "/a/b");
    EXPECT_EQ(path, "/a");
    uEnvironment::GetParentDir(path, "a");
    EXPECT_EQ(path, "");

    devid_test::TempDir dir;
    EXPECT_EQ(uEnvironment::MakeDirectory(dir.file("a/b/c").c_str()), 0);
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("a/b/c")));
    EXPECT_EQ(uEnvironment::MakeDirectory(dir.file("a/b/c").c_str()), -1) << "an existing directory gives -1";
    EXPECT_EQ(uEnvironment::MakeDirectory(dir.file("a/b/d").c_str()), 0) << "only the last folder was missing";

    std::string start, now;
    uEnvironment::GetWorkingDirectory(start);
    {
        ScopedDirectoryChanger changer(dir.file("a").c_str());
        EXPECT_EQ(uEnvironment::GetWorkingDirectory(now), dir.file("a"));
        EXPECT_EQ(ErrorOf<source_utilities_error>([&] { changer.Change(dir.path().c_str()); }),
                  "can't temporarily change the working directory again until its restored");
    }
    EXPECT_EQ(uEnvironment::GetWorkingDirectory(now), start);
}

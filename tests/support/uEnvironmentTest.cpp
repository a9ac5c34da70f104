#include "common/source/source_utilities/uEnvironment.h"

#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

using MORA_LUX::ScopedDirectoryChanger;
using MORA_LUX::source_utilities_error;
using MORA_LUX::uEnvironment;

namespace {

std::string ErrorOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const source_utilities_error& e) {
        return e.what();
    }
    return "";
}

bool IsDirectory(const std::string& path)
{
    return std::filesystem::is_directory(path);
}

} // namespace

TEST(uEnvironment, TraceDirectoriesLieBelowHome)
{
    devid_test::TempDir home;
    uEnvironment::SetVar("HOME", (home.path() + "/").c_str());
    std::string out = "old";
    EXPECT_EQ(MORA_LUX::GetTraceUserDirectory(out), home.path() + "/.MORA-trace");
    EXPECT_FALSE(IsDirectory(out)) << "the root alone is not created";

    EXPECT_EQ(uEnvironment::GetTraceTemporaryDataDirectory(out), home.path() + "/.MORA-trace/data");
    EXPECT_TRUE(IsDirectory(out));
    EXPECT_EQ(uEnvironment::GetTraceUserSettingsDirectory(out), home.path() + "/.MORA-trace/settings");
    EXPECT_TRUE(IsDirectory(out));
    EXPECT_EQ(uEnvironment::GetTraceLoggingDirectory(out), home.path() + "/.MORA-trace");
}

TEST(uEnvironment, MissingHomeThrowsForEveryTraceDirectory)
{
    const std::string message = "failed to read environment variable \"HOME\"";
    std::string out;
    for (bool unset : {true, false}) {
        if (unset)
            unsetenv("HOME");
        else
            uEnvironment::SetVar("HOME", "");
        EXPECT_EQ(ErrorOf([&] { MORA_LUX::GetTraceUserDirectory(out); }), message);
        EXPECT_EQ(ErrorOf([&] { uEnvironment::GetTraceLoggingDirectory(out); }), message);
        EXPECT_EQ(ErrorOf([&] { uEnvironment::GetTraceTemporaryDataDirectory(out); }), message);
        EXPECT_EQ(ErrorOf([&] { uEnvironment::GetTraceUserSettingsDirectory(out); }), message);
    }
}

TEST(uEnvironment, Variables)
{
    unsetenv("DEVID_TEST_VARIABLE");
    EXPECT_STREQ(uEnvironment::GetVar("DEVID_TEST_VARIABLE"), "");
    EXPECT_EQ(ErrorOf([] { uEnvironment::GetVar(nullptr); }), "failed set an environment variable name to null");
    EXPECT_EQ(ErrorOf([] { uEnvironment::SetVar(nullptr, "x"); }), "failed set an environment variable name to null");
    EXPECT_EQ(ErrorOf([] { uEnvironment::SetVar("X", nullptr); }), "failed set an environment variable value to null");
}

TEST(uEnvironment, PathText)
{
    std::string path = "a\\\\b//c///d";
    uEnvironment::NormalizeDirSep(path);
    EXPECT_EQ(path, "a/b/c/d");

    std::string parent = "old";
    uEnvironment::GetParentDir(parent, "/a/b");
    EXPECT_EQ(parent, "/a");
    uEnvironment::GetParentDir(parent, "/a");
    EXPECT_EQ(parent, "");
    uEnvironment::GetParentDir(parent, "a");
    EXPECT_EQ(parent, "");

    path = "/base/";
    uEnvironment::JoinPaths(path, "/sub//leaf");
    EXPECT_EQ(path, "/base/sub/leaf");
}

TEST(uEnvironment, MakeDirectoryReportsTheLastAttempt)
{
    devid_test::TempDir dir;
    EXPECT_EQ(uEnvironment::MakeDirectory(dir.file("a/b/c").c_str()), 0);
    EXPECT_TRUE(IsDirectory(dir.file("a/b/c")));
    EXPECT_EQ(uEnvironment::MakeDirectory(dir.file("a/b/c").c_str()), -1) << "an existing directory gives -1";
    EXPECT_EQ(uEnvironment::MakeDirectory(dir.file("a/b/d/").c_str()), 0);
    EXPECT_EQ(uEnvironment::MakeDirectory(nullptr), -1);
}

TEST(uEnvironment, ScopedDirectoryChangerRestoresTheFirstDirectory)
{
    devid_test::TempDir dir;
    std::filesystem::create_directory(dir.file("one"));
    std::string start;
    uEnvironment::GetWorkingDirectory(start);
    {
        ScopedDirectoryChanger changer(dir.file("one").c_str());
        std::string now;
        EXPECT_EQ(uEnvironment::GetWorkingDirectory(now), dir.file("one"));
        EXPECT_EQ(ErrorOf([&] { changer.Change(dir.path().c_str()); }),
                  "can't temporarily change the working directory again until its restored");
        EXPECT_EQ(uEnvironment::GetWorkingDirectory(now), dir.file("one"));
    }
    std::string after;
    EXPECT_EQ(uEnvironment::GetWorkingDirectory(after), start);

    ScopedDirectoryChanger changer(nullptr);
    const std::string missing = dir.file("missing");
    EXPECT_EQ(ErrorOf([&] { changer.Change(missing.c_str()); }),
              "failed to temporarily change the working directory to \"" + missing + "\"");
    changer.Restore();
    EXPECT_EQ(uEnvironment::GetWorkingDirectory(after), start);
}

TEST(uEnvironment, CurrentExecutablePath)
{
    std::string path;
    uEnvironment::GetCurrentExecutablePath(path);
    EXPECT_EQ(std::filesystem::path(path).filename(), "support_environment_test");
}

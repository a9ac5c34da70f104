#include "common/source/source_utilities/uLogger.h"

#include "common/source/source_utilities/uEnvironment.h"
#include "tests/common/TempDir.h"
#include "tests/support/DigitPattern.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <sstream>

using MORA_LUX::uEnvironment;
using MORA_LUX::uLogger;
using MORA_LUX::uLogSystem;

namespace {

// A fresh HOME and log folder; the level variable is set per test.
class uLoggerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        uEnvironment::SetVar("HOME", m_home.path().c_str());
        uEnvironment::SetVar("DEVID_TEST_LOG_DIR", m_logs.path().c_str());
    }

    uLogger* Init(const char* name, const char* level)
    {
        uEnvironment::SetVar("DEVID_TEST_LOG_LEVEL", level);
        EXPECT_TRUE(uLogSystem::GetLogSystem()->InitLog(name, "DEVID_TEST_LOG_LEVEL", "DEVID_TEST_LOG_DIR", true));
        return uLogSystem::GetLogSystem()->GetLogger();
    }

    std::string Read(const char* name) const { return devid_test::readFile(m_logs.file(name)); }
    bool Exists(const char* name) const { return std::filesystem::exists(m_logs.file(name)); }

    std::vector<std::string> Lines(const char* name) const
    {
        std::vector<std::string> lines;
        std::istringstream in(Read(name));
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }

    devid_test::TempDir m_home;
    devid_test::TempDir m_logs;
};

} // namespace

TEST_F(uLoggerTest, LevelTable)
{
    const struct { const char* value; int stored; bool file; bool stdio; } table[] = {
        {"1", 1, true, false}, {"2", 1, true, true},  {"3", 2, true, false}, {"4", 2, true, true},
        {"5", 2, true, true},  {"6", 3, true, true},  {"0", 0, false, false}, {"7", 7, false, false},
        {"-1", -1, false, false}, {"abc", 0, false, false}, {"", 0, false, false}, {"12x", 12, false, false},
    };
    int index = 0;
    for (const auto& row : table) {
        const std::string name = "level" + std::to_string(index++) + ".txt";
        ::testing::internal::CaptureStdout();
        uLogger* logger = Init(name.c_str(), row.value);
        ASSERT_NE(logger, nullptr);
        logger->Log(2, uLogger::TD_NONE, "probe");
        const std::string printed = ::testing::internal::GetCapturedStdout();
        EXPECT_EQ(uLogSystem::GetLogSystem()->GetLoggingLevel(), row.stored) << row.value;
        EXPECT_EQ(Exists(name.c_str()), row.file) << row.value;
        EXPECT_EQ(printed.find(" W     probe\n") != std::string::npos, row.stdio) << row.value;
        if (row.file) {
            EXPECT_NE(Read(name.c_str()).find(" W     probe\n"), std::string::npos) << row.value;
        }
    }
}

TEST_F(uLoggerTest, StartUpLinesAndReuse)
{
    uLogger* logger = Init("run.txt", "1");
    EXPECT_STREQ(logger->GetName(), m_logs.file("run.txt").c_str());
    const std::vector<std::string> lines = Lines("run.txt");
    ASSERT_EQ(lines.size(), 2u);
    const std::string stamp = "M     ##:##:##:### | ";
    EXPECT_TRUE(devid_test::MatchesDigits(
        lines[0], stamp + "Logger : trace user settings directory is " + m_home.path() + "/.MORA-trace/settings"))
        << lines[0];
    EXPECT_TRUE(devid_test::MatchesDigits(
        lines[1], stamp + "Logger : trace temporary data directory is " + m_home.path() + "/.MORA-trace/data"))
        << lines[1];

    // A second start finds the registered logger and reads nothing again.
    EXPECT_EQ(Init("run.txt", "6"), logger);
    EXPECT_EQ(uLogSystem::GetLogSystem()->GetLoggingLevel(), 1);
    EXPECT_EQ(Lines("run.txt").size(), 2u);
    EXPECT_FALSE(uLogSystem::GetLogSystem()->InitLog(nullptr, "X", nullptr, true));
    EXPECT_FALSE(uLogSystem::GetLogSystem()->InitLog("x", nullptr, nullptr, true));
}

TEST_F(uLoggerTest, PrefixAndTimeStamps)
{
    uLogger* logger = Init("stamps.txt", "6");
    logger->Log(1 | 16, uLogger::TD_NONE, "none %d", 1);
    logger->Log(31, uLogger::TD_DATE, "date");
    logger->Log(4, uLogger::TD_DATE_TIME, "both");
    logger->Log(8, uLogger::TD_NONE, "odd");
    logger->Log(32, uLogger::TD_NONE, "unknown bit");
    logger->Log(0, uLogger::TD_NONE, "never");
    logger->Log("plain %s", "text");

    const time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    char date[16];
    // The month prints one low ("00" in January).
    std::snprintf(date, sizeof date, "%02d/%02d/%02d", local.tm_mon, local.tm_mday, local.tm_year % 100);

    const std::vector<std::string> lines = Lines("stamps.txt");
    ASSERT_EQ(lines.size(), 8u);
    EXPECT_EQ(lines[2], "M   E  none 1");
    EXPECT_EQ(lines[3], std::string("MWFAE ") + date + " | date");
    EXPECT_TRUE(devid_test::MatchesDigits(lines[4], std::string("  F   ") + date + " ##:##:##:### | both")) << lines[4];
    EXPECT_EQ(lines[5], "   A   odd");
    EXPECT_EQ(lines[6], "       unknown bit");
    EXPECT_EQ(lines[7], "M      plain text");
}

TEST_F(uLoggerTest, LineEndsAndLongLines)
{
    uLogger* logger = Init("ends.txt", "1");
    logger->Clear();
    EXPECT_EQ(Read("ends.txt"), "") << "the start-up lines are gone";

    for (const char* text : {"a", "b\n", "c\r\n", "d\n\r", "e\r", "f\n\n", "\n"})
        logger->Log(1, uLogger::TD_NONE, "%s", text);
    EXPECT_EQ(Read("ends.txt"), "M      a\nM      b\nM      c\nM      d\nM      e\nM      f\n\nM      \n");

    logger->Clear();
    logger->Log(1, uLogger::TD_NONE, "%s", std::string(5000, 'x').c_str());
    const std::string text = Read("ends.txt");
    ASSERT_EQ(text.size(), 4095u) << "cut at the 4096-byte buffer, line feed kept";
    EXPECT_EQ(text.back(), '\n');
    EXPECT_EQ(text.find('\n'), 4094u);
}

TEST_F(uLoggerTest, FileNamesAndModuleInfo)
{
    uLogger* logger = Init("first.txt", "1");
    EXPECT_TRUE(logger->EnableOutput(false));
    EXPECT_FALSE(logger->EnableOutput(true));
    EXPECT_FALSE(logger->SetFileName(m_logs.file("second.txt").c_str(), false)) << "not open yet: only recorded";
    EXPECT_FALSE(Exists("second.txt"));
    logger->LogModuleInfo();
    EXPECT_EQ(Read("second.txt"), "M      MODULE INFO - support_logger_test\n");

    EXPECT_TRUE(logger->SetFileName(m_logs.file("third.txt").c_str(), true)) << "open: reopened at once";
    EXPECT_TRUE(Exists("third.txt"));

    uLogger defaults;
    EXPECT_STREQ(defaults.GetName(), "FTS_log.txt");
}

TEST_F(uLoggerTest, InitLogExSkipsRegistryAndStartUpLines)
{
    uLogSystem* system = uLogSystem::GetLogSystem();
    system->SetLoggingLevel(3);
    EXPECT_EQ(system->GetLoggingLevel(), 0) << "no logger to apply the level to";
    EXPECT_FALSE(system->InitLogEx(nullptr, 1, nullptr));
    ASSERT_TRUE(system->InitLogEx("ex.txt", 4, m_logs.path().c_str()));
    EXPECT_EQ(system->GetLoggingLevel(), 2);
    EXPECT_EQ(system->LookupLogger("ex.txt"), nullptr);
    ::testing::internal::CaptureStdout();
    system->GetLogger()->Log(1, uLogger::TD_NONE, "only");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "M      only\n");
    EXPECT_EQ(Read("ex.txt"), "M      only\n");
    EXPECT_TRUE(system->InitLogEx("other.txt", 1, nullptr)) << "a current logger exists";
}

TEST_F(uLoggerTest, ARegistryLookupKeepsTheDisplacedLoggerAlive)
{
    uEnvironment::SetVar("DEVID_TEST_LOG_LEVEL", "1");
    uLogSystem* system = uLogSystem::GetLogSystem();
    ASSERT_TRUE(system->InitLog("plain.txt", "DEVID_TEST_LOG_LEVEL", "DEVID_TEST_LOG_DIR", false));
    uLogger* plain = system->GetLogger();
    EXPECT_NE(Init("registered.txt", "1"), plain);
    plain->Log(1, uLogger::TD_NONE, "still here");
    EXPECT_NE(Read("plain.txt").find("M      still here\n"), std::string::npos);
}

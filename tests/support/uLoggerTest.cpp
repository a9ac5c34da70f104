#include "common/source/source_utilities/uLogger.h"

#include "common/source/source_utilities/uEnvironment.h"
#include "tests/common/TempDir.h"
#include "tests/support/SupportTestUtil.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <sstream>

using MORA_LUX::uEnvironment;
using MORA_LUX::uLogger;
using MORA_LUX::uLogSystem;

namespace {

class uLoggerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        uEnvironment::SetVar("HOME", m_home.path().c_str());
        uEnvironment::SetVar("DEVID_TEST_LOG_DIR", m_logs.path().c_str());
    }

    uLogger* Init(const std::string& name, const char* level)
    {
        uEnvironment::SetVar("DEVID_TEST_LOG_LEVEL", level);
        EXPECT_TRUE(uLogSystem::GetLogSystem()->InitLog(name.c_str(), "DEVID_TEST_LOG_LEVEL", "DEVID_TEST_LOG_DIR", true));
        return uLogSystem::GetLogSystem()->GetLogger();
    }

    std::string Read(const std::string& name) const { return devid_test::readFile(m_logs.file(name)); }

    std::vector<std::string> Lines(const std::string& name) const
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
        {"1", 1, true, false}, {"2", 1, true, true}, {"3", 2, true, false}, {"5", 2, true, true},
        {"6", 3, true, true}, {"0", 0, false, false}, {"7", 7, false, false}, {"abc", 0, false, false},
    };
    for (const auto& row : table) {
        const std::string name = std::string("level") + row.value + ".txt";
        ::testing::internal::CaptureStdout();
        Init(name, row.value)->Log(2, uLogger::TD_NONE, "probe");
        const std::string printed = ::testing::internal::GetCapturedStdout();
        EXPECT_EQ(uLogSystem::GetLogSystem()->GetLoggingLevel(), row.stored) << row.value;
        EXPECT_EQ(Read(name).find(" W     probe\n") != std::string::npos, row.file) << row.value;
        EXPECT_EQ(printed.find(" W     probe\n") != std::string::npos, row.stdio) << row.value;
    }
}

TEST_F(uLoggerTest, InitLogReusesTheRegisteredLogger)
{
    uLogger* logger = Init("run.txt", "1");
    const std::vector<std::string> lines = Lines("run.txt");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(devid_test::MatchesDigits(lines[0], "M     ##:##:##:### | Logger : trace user settings directory is " +
                                                        m_home.path() + "/.MORA-trace/settings"))
        << lines[0];
    EXPECT_EQ(Init("run.txt", "6"), logger);
    EXPECT_EQ(uLogSystem::GetLogSystem()->GetLoggingLevel(), 1) << "the level is read only once";
    EXPECT_EQ(Lines("run.txt").size(), 2u);
}

TEST_F(uLoggerTest, PrefixAndTimeStamps)
{
    uLogger* logger = Init("stamps.txt", "6");
    logger->Log(1 | 16, uLogger::TD_NONE, "none %d", 1);
    logger->Log(31, uLogger::TD_DATE, "date");
    logger->Log(4, uLogger::TD_DATE_TIME, "both");
    logger->Log(8 | 32, uLogger::TD_NONE, "odd");
    logger->Log(0, uLogger::TD_NONE, "never");

    const time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    char date[16];
    // The month prints one low ("00" in January).
    std::snprintf(date, sizeof date, "%02d/%02d/%02d", local.tm_mon, local.tm_mday, local.tm_year % 100);

    const std::vector<std::string> lines = Lines("stamps.txt");
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[2], "M   E  none 1");
    EXPECT_EQ(lines[3], std::string("MWFAE ") + date + " | date");
    EXPECT_TRUE(devid_test::MatchesDigits(lines[4], std::string("  F   ") + date + " ##:##:##:### | both")) << lines[4];
    EXPECT_EQ(lines[5], "   A   odd");
}

TEST_F(uLoggerTest, LineEndsAndLongLines)
{
    uLogger* logger = Init("ends.txt", "1");
    logger->Clear();
    for (const char* text : {"a", "c\r\n", "d\n\r", "e\r", "f\n\n"})
        logger->Log(1, uLogger::TD_NONE, "%s", text);
    EXPECT_EQ(Read("ends.txt"), "M      a\nM      c\nM      d\nM      e\nM      f\n\n");

    logger->Clear();
    logger->Log(1, uLogger::TD_NONE, "%s", std::string(5000, 'x').c_str());
    const std::string text = Read("ends.txt");
    EXPECT_EQ(text.size(), 4095u) << "cut at the 4096-byte buffer, line feed kept";
    EXPECT_EQ(text.find('\n'), 4094u);
}

TEST_F(uLoggerTest, MessagesReadAsPrintfWouldWriteThem)
{
    uLogger* logger = Init("format.txt", "1");
    logger->Clear();
    std::vector<std::string> expected;
    const auto both = [&](const char* format, auto... args) {
        logger->Log(1, uLogger::TD_NONE, format, args...);
        char text[512];
        std::snprintf(text, sizeof text, format, args...);
        expected.push_back(std::string("M      ") + text);
    };
    both("%s|%c|%%|%d|%i|%u|%x|%X", "str", 'c', -42, 7, 4000000000u, 0xbeefu, 0xbeefu);
    const char* volatile none = nullptr; // hidden from the compiler's format checks
    logger->Log(1, uLogger::TD_NONE, "[%s]", none);
    expected.push_back("M      [(null)]");
    both("%05d|%5d|%03d|%08lx|%zu|%lld|%llu|%0d", -42, -42, 7, 0xabcdefUL, size_t{12345}, LLONG_MIN, ULLONG_MAX, 0);
    both("%hd|%hhd|%hu|%hhx|%ld|%lu|%lX", 70000, 300, 70000, 0x1ff, LONG_MIN, ULONG_MAX, 0UL);
    // Left to vsnprintf, each after a conversion already written.
    both("%d %-5d|%+d|% d|%#x|%.3s|%5s|%*d|%f|%070d|%jd", 1, 2, 3, 4, 255, "abcdef", "ab", 4, 5, 0.5, 6, intmax_t{-7});
    // Cut at the buffer's end, a byte either side of the limit: first in a
    // conversion, then where only vsnprintf takes the format.
    for (size_t n : {4086u, 4087u, 4088u}) {
        logger->Log(1, uLogger::TD_NONE, "%s%d", std::string(n, 'y').c_str(), 12);
        expected.push_back(("M      " + std::string(n, 'y') + "12").substr(0, 4094));
    }
    logger->Log(1, uLogger::TD_NONE, "%-*s|", 5000, "z");
    expected.push_back(("M      z" + std::string(5000, ' ')).substr(0, 4094));
    const std::vector<std::string> lines = Lines("format.txt");
    ASSERT_EQ(lines.size(), expected.size());
    for (size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(lines[i], expected[i]) << "line " << i;
}

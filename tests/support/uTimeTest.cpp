#include "common/source/source_utilities/uTime.h"

#include "tests/support/SupportTestUtil.h"

#include <gtest/gtest.h>

#include <ctime>

using MORA_LUX::uTime;

// Every test runs in its own process, so the shared fields start invalid here.
TEST(uTime, FormatBeforeAndAfterGetLocal)
{
    uTime before;
    char buffer[64];
    EXPECT_STREQ(before.FormatTime(buffer, sizeof buffer, "%H"), "Invalid time");

    uTime::GetLocal();
    const time_t now = time(nullptr);
    const int milli = static_cast<int>((now % 10000000) / 10000);
    EXPECT_EQ(before.GetMilliSecond(), milli) << "GetLocal on any object sets the time of all";
    ASSERT_NE(before.FormatTime(buffer, sizeof buffer, "%H:%M:%S:%s"), nullptr);
    EXPECT_TRUE(devid_test::MatchesDigits(buffer, "##:##:##:###")) << buffer;
    EXPECT_EQ(std::stoi(buffer + 9), milli);

    tm local{};
    localtime_r(&now, &local);
    before.FormatTime(buffer, sizeof buffer, "%m");
    EXPECT_EQ(std::stoi(buffer), local.tm_mon) << "the month prints one low";
}

TEST(uTime, ReplaceStringRespectsTheSize)
{
    char text[32] = "a%sb%s";
    EXPECT_EQ(uTime::ReplaceString(text, 7, "%s", "123"), 0) << "6 + 2 would exceed 7";
    EXPECT_STREQ(text, "a%sb%s");
    EXPECT_EQ(uTime::ReplaceString(text, 8, "%s", "123"), 2);
    EXPECT_STREQ(text, "a123b123");
}

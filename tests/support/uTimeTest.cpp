#include "common/source/source_utilities/uTime.h"

#include "tests/support/DigitPattern.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>

using MORA_LUX::uTime;

// Every test runs in its own process, so the shared fields start invalid here.
TEST(uTime, FormatBeforeAndAfterGetLocal)
{
    uTime before;
    char buffer[64];
    EXPECT_STREQ(before.FormatTime(buffer, sizeof buffer, "%H"), "Invalid time");
    char small[5];
    EXPECT_STREQ(before.FormatTime(small, sizeof small, "%H"), "Inva");
    EXPECT_EQ(before.FormatTime(nullptr, 10, "%H"), nullptr);
    EXPECT_EQ(before.FormatTime(buffer, 0, "%H"), nullptr);

    uTime::GetLocal();
    const time_t now = time(nullptr);
    // The sub-second field comes from the seconds and changes every 10000 s.
    const int milli = static_cast<int>((now % 10000000) / 10000);
    EXPECT_EQ(before.GetMilliSecond(), milli) << "GetLocal on any object sets the time of all";

    ASSERT_NE(before.FormatTime(buffer, sizeof buffer, "%H:%M:%S:%s"), nullptr);
    EXPECT_TRUE(devid_test::MatchesDigits(buffer, "##:##:##:###")) << buffer;
    char expected[8];
    std::snprintf(expected, sizeof expected, "%03d", milli);
    EXPECT_STREQ(buffer + 9, expected);

    before.FormatTime(buffer, sizeof buffer, "[%#s]");
    EXPECT_EQ(std::string(buffer), "[" + std::to_string(milli) + "]");

    tm local{};
    localtime_r(&now, &local);
    before.FormatTime(buffer, sizeof buffer, "%m %Y");
    std::snprintf(expected, sizeof expected, "%02d", local.tm_mon);
    EXPECT_EQ(std::string(buffer, 2), expected) << "the month prints one low";
    EXPECT_EQ(before.GetYear(), local.tm_year + 1900);
    EXPECT_EQ(before.GetMonth(), local.tm_mon);
}

TEST(uTime, ComparisonsUseTheSharedHourAndDay)
{
    const uTime a = uTime::GetLocal();
    const uTime b;
    EXPECT_FALSE(a != b);
    EXPECT_EQ(a == b, a.GetHour() == a.GetDay());
    EXPECT_EQ(a < b, a.GetHour() < a.GetDay());
    EXPECT_EQ(a >= b, a.GetHour() >= a.GetDay());
}

TEST(uTime, ReplaceStringRespectsTheSize)
{
    char text[32] = "a%sb%s";
    EXPECT_EQ(uTime::ReplaceString(text, 7, "%s", "123"), 0) << "6 + 2 would exceed 7";
    EXPECT_STREQ(text, "a%sb%s");
    EXPECT_EQ(uTime::ReplaceString(text, 8, "%s", "123"), 2);
    EXPECT_STREQ(text, "a123b123");
    EXPECT_EQ(uTime::ReplaceString(text, 31, "123", ""), 2);
    EXPECT_STREQ(text, "ab");
    EXPECT_EQ(uTime::ReplaceString(text, 31, "x", "y"), 0);

    EXPECT_EQ(uTime::FindSubString("abcabc", "bc", 2), 4);
    EXPECT_EQ(uTime::FindSubString("abc", "c", 4), -1);
    EXPECT_EQ(uTime::FindSubString("abc", "", 3), 3);
}

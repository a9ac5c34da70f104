#include "common/source/source_utilities/uString.h"

#include "tests/support/SupportTestUtil.h"

#include <gtest/gtest.h>

#include <climits>

using MORA_LUX::uString;
using devid_test::ErrorOf;

TEST(uString, ToNumericDetectsTheBaseFromThePrefix)
{
    const struct { const char* text; unsigned expected; } cases[] = {
        {"0", 0}, {"0x", 0}, {"00", 0}, {"0X10", 16}, {"017", 15}, {"09", 0},
        {"12abc", 12}, {"abc", 0}, {"99999999999", UINT_MAX},
    };
    for (const auto& c : cases)
        EXPECT_EQ(uString::ToNumeric<unsigned int>(c.text), c.expected) << c.text;
    EXPECT_EQ(uString::ToInt64("0x100000000"), 4294967296LL);
}

TEST(uString, BoolTextsAndMissingTextThrow)
{
    EXPECT_TRUE(uString::ToBool("True"));
    EXPECT_FALSE(uString::ToBool("FALSE"));
    using E = uString::error;
    EXPECT_EQ(ErrorOf<E>([] { uString::ToNumeric<unsigned int>(nullptr); }), "unable to convert null string to numeric");
    EXPECT_EQ(ErrorOf<E>([] { uString::ToLong(""); }), "unable to convert empty string to numeric");
    EXPECT_EQ(ErrorOf<E>([] { uString::ToBool(nullptr); }), "unable to convert null string to boolean");
    EXPECT_EQ(ErrorOf<E>([] { uString::ToBool(""); }), "unable to convert empty string to boolean");
    EXPECT_EQ(ErrorOf<E>([] { uString::ToBool("tRue"); }), "unable to convert \"tRue\" to boolean");
}

TEST(uString, SplitAndReplace)
{
    std::string first, rest;
    EXPECT_EQ(uString::Split("key=value=more", first, rest, "="), 2);
    EXPECT_EQ(first + "|" + rest, "key|value=more");
    EXPECT_EQ(uString::Split("abc", first, rest, ","), 1);
    EXPECT_EQ(first + "|" + rest, "abc|");
    std::vector<std::string> parts{"kept"};
    EXPECT_EQ(uString::Split(parts, ",a,,b,", ","), 5) << "a trailing delimiter adds no empty part";
    EXPECT_EQ(parts, (std::vector<std::string>{"kept", "", "a", "", "b"}));
    // An empty delimiter matches nowhere; were it found, the repeated split would never end.
    ASSERT_EQ(uString::Split("ab", first, rest, ""), 1);
    parts.clear();
    EXPECT_EQ(uString::Split(parts, "ab", ""), 1);
    EXPECT_EQ(parts, std::vector<std::string>{"ab"});
    using E = uString::error;
    EXPECT_EQ(ErrorOf<E>([&] { uString::Split(nullptr, first, rest, ","); }), "unable to split null string");
    EXPECT_EQ(ErrorOf<E>([&] { uString::Split(parts, "a", nullptr); }), "unable to split with null delimeter");

    // The search resumes the original's length past each match: inside the inserted text.
    std::string text = "aaa";
    EXPECT_EQ(uString::Replace(text, "aa", "aXa"), "aXaXa");
    text = "a-a";
    EXPECT_EQ(uString::Replace(text, "a", "xa"), "xa-xa");
    EXPECT_EQ(ErrorOf<E>([&] { uString::Replace(text, nullptr, "x"); }),
              "unable to perform string replacement from null original text");
    EXPECT_EQ(ErrorOf<E>([&] { uString::Replace(text, "a", nullptr); }),
              "unable to perform string replacement with null replacement text");
}

#include "common/source/source_utilities/uString.h"

#include <gtest/gtest.h>

#include <climits>

using MORA_LUX::uString;

namespace {

// The message of the uString::error that `action` throws, or "" when it throws none.
template <typename Action>
std::string ErrorOf(Action action)
{
    try {
        action();
    } catch (const uString::error& e) {
        return e.what();
    }
    return "";
}

} // namespace

TEST(uString, ToNumericDetectsTheBaseFromThePrefix)
{
    const struct { const char* text; unsigned expected; } cases[] = {
        {"0", 0}, {"0x", 0}, {"00", 0}, {"0X10", 16}, {"0x1F", 31}, {"017", 15}, {"09", 0},
        {"12abc", 12}, {" 42", 42}, {"abc", 0}, {"-1", UINT_MAX}, {"99999999999", UINT_MAX},
        {"4294967295", UINT_MAX},
    };
    for (const auto& c : cases)
        EXPECT_EQ(uString::ToNumeric<unsigned int>(c.text), c.expected) << c.text;
    EXPECT_EQ(uString::ToLong("-0x10"), 0) << "the sign comes after the prefix only";
    EXPECT_EQ(uString::ToInt64("0x100000000"), 4294967296LL);
    EXPECT_DOUBLE_EQ(uString::ToDouble("2.5"), 2.5);
}

TEST(uString, ConversionsThrowForMissingText)
{
    EXPECT_EQ(ErrorOf([] { uString::ToNumeric<unsigned int>(nullptr); }), "unable to convert null string to numeric");
    EXPECT_EQ(ErrorOf([] { uString::ToNumeric<unsigned int>(""); }), "unable to convert empty string to numeric");
    EXPECT_EQ(ErrorOf([] { uString::ToLong(""); }), "unable to convert empty string to numeric");
    EXPECT_EQ(ErrorOf([] { uString::ToBool(nullptr); }), "unable to convert null string to boolean");
    EXPECT_EQ(ErrorOf([] { uString::ToBool(""); }), "unable to convert empty string to boolean");
    EXPECT_EQ(ErrorOf([] { uString::ToBool("yes"); }), "unable to convert \"yes\" to boolean");
    EXPECT_EQ(ErrorOf([] { uString::ToBool("tRue"); }), "unable to convert \"tRue\" to boolean");
}

TEST(uString, ValuesToText)
{
    EXPECT_TRUE(uString::ToBool("True"));
    EXPECT_FALSE(uString::ToBool("FALSE"));
    std::string out = "previous";
    EXPECT_EQ(uString::FromBool(true, out, false), "true");
    EXPECT_EQ(uString::FromBool(out, false), "truefalse");

    out = "n=";
    EXPECT_EQ(uString::FromNumeric<int>(out, -17), "n=-17");
    EXPECT_EQ(uString::FromLong(-5, out, false, nullptr), "-5");
    EXPECT_EQ(uString::FromLong(out, 255, "%lx"), "-5ff");
    EXPECT_EQ(uString::FromDouble(1.5, out, false, nullptr), "1.500000");
    EXPECT_EQ(uString::FromLong(7, out, false, std::string(2000, 'a').append("%ld").c_str()).size(), 1023u);
}

TEST(uString, EngineeringUnitsPickTheLargestFittingPrefix)
{
    std::string out;
    EXPECT_EQ(uString::FromDoubleInEngrUnits(1500.0, out, false, "%g", false), "1.5kilo");
    EXPECT_EQ(uString::FromDoubleInEngrUnits(1500.0, out, false, "%g", true), "1.5k");
    EXPECT_EQ(uString::FromDoubleInEngrUnits(1000.0, out, false, "%g", true), "1k");
    EXPECT_EQ(uString::FromDoubleInEngrUnits(999.0, out, false, "%g", true), "999");
    EXPECT_EQ(uString::FromDoubleInEngrUnits(0.002, out, false, "%g", false), "2milli");
    EXPECT_EQ(uString::FromDoubleInEngrUnits(2e-6, out, false, "%g", true), "2u");
    // Nothing fits below the smallest prefix: the plain value.
    EXPECT_EQ(uString::FromDoubleInEngrUnits(0.0, out, false, "%g", true), "0");
    EXPECT_EQ(uString::FromDoubleInEngrUnits(-3000.0, out, false, "%g", true), "-3000");
}

TEST(uString, SplitRules)
{
    std::string first = "x";
    std::string rest = "y";
    EXPECT_EQ(uString::Split("key=value=more", first, rest, "="), 2);
    EXPECT_EQ(first, "key");
    EXPECT_EQ(rest, "value=more");
    EXPECT_EQ(uString::Split("a::b", first, rest, "::"), 2);
    EXPECT_EQ(rest, "b");
    EXPECT_EQ(uString::Split("abc", first, rest, ","), 1);
    EXPECT_EQ(first, "abc");
    EXPECT_EQ(rest, "");
    EXPECT_EQ(uString::Split("", first, rest, ","), 0);

    std::vector<std::string> parts{"kept"};
    EXPECT_EQ(uString::Split(parts, ",a,,b,", ","), 5);
    EXPECT_EQ(parts, (std::vector<std::string>{"kept", "", "a", "", "b"}));

    EXPECT_EQ(ErrorOf([&] { uString::Split(nullptr, first, rest, ","); }), "unable to split null string");
    EXPECT_EQ(ErrorOf([&] { uString::Split(parts, "a", nullptr); }), "unable to split with null delimeter");
}

TEST(uString, ReplaceResumesAfterTheLengthOfTheOriginal)
{
    std::string text = "aaa";
    EXPECT_EQ(uString::Replace(text, "a", "b"), "bbb");
    text = "aaa";
    EXPECT_EQ(uString::Replace(text, "aa", "aXa"), "aXaXa")
        << "the search resumes inside the inserted text and meets the original again";
    // A match wholly inside the inserted text would repeat forever: skip it.
    text = "a-a";
    EXPECT_EQ(uString::Replace(text, "a", "xa"), "xa-xa");
    text = "aa";
    EXPECT_EQ(uString::Replace(text, "a", "aa"), "aaaa");
    text = "abc";
    EXPECT_EQ(uString::Replace(text, "", "x"), "abc");

    EXPECT_EQ(ErrorOf([&] { uString::Replace(text, nullptr, "x"); }),
              "unable to perform string replacement from null original text");
    EXPECT_EQ(ErrorOf([&] { uString::Replace(text, "a", nullptr); }),
              "unable to perform string replacement with null replacement text");
}

#include "common/source/source_utilities/uFile.h"

#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

using MORA_LUX::uFile;

TEST(uFile, SizeCountsFromTheCurrentPositionAndClosedStates)
{
    devid_test::TempDir dir;
    uFile file(dir.write("hundred.bin", std::string(100, 'z')).c_str(), "rb");
    EXPECT_FALSE(file.IsEof());
    EXPECT_TRUE(file.IsError()) << "a closed file reports an error";
    ASSERT_TRUE(file.Open());
    char buffer[10];
    ASSERT_EQ(file.Read(buffer, sizeof buffer), 10u);
    EXPECT_EQ(file.GetSize(), 90);
    ASSERT_TRUE(file.SeekToEnd());
    EXPECT_EQ(file.Read(buffer, 1), 0u);
    EXPECT_TRUE(file.IsEof());
    ASSERT_TRUE(file.SeekToBegin());
    EXPECT_EQ(file.GetSize(), 100);
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.Close());
}

TEST(uFile, WriteThroughKeepsTheOrderOfBufferedWrites)
{
    devid_test::TempDir dir;
    uFile file;
    EXPECT_EQ(file.WriteThrough("x", 1), 0u) << "not open";
    ASSERT_TRUE(file.Open(dir.file("order.txt").c_str(), "w+"));
    ASSERT_EQ(file.Write("buffered ", 9), 9u);
    ASSERT_EQ(file.WriteThrough("direct", 6), 6u);
    EXPECT_EQ(devid_test::readFile(dir.file("order.txt")), "buffered direct") << "on disk before any flush";
    file.Close();
}

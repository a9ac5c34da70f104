#include "common/source/source_utilities/uFile.h"

#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

using MORA_LUX::uFile;

TEST(uFile, OpenModes)
{
    devid_test::TempDir dir;
    const std::string path = dir.write("data.txt", "content");

    uFile reader(path.c_str(), "");
    EXPECT_FALSE(reader.IsEof());
    EXPECT_TRUE(reader.IsError()) << "a closed file reports an error";
    ASSERT_TRUE(reader.Open()) << "an empty mode opens for reading";
    char text[16] = {};
    EXPECT_EQ(reader.Read(text, sizeof text - 1), 7u);
    EXPECT_STREQ(text, "content");
    EXPECT_TRUE(reader.Close());
    EXPECT_FALSE(reader.Close());
    EXPECT_FALSE(reader.IsOpen());

    uFile noMode(path.c_str(), nullptr);
    EXPECT_FALSE(noMode.Open());
    uFile noPath(nullptr, "r");
    EXPECT_FALSE(noPath.Open());
    EXPECT_EQ(noPath.Read(text, 1), 0u);
}

TEST(uFile, SizeCountsFromTheCurrentPosition)
{
    devid_test::TempDir dir;
    const std::string path = dir.write("hundred.bin", std::string(100, 'z'));
    uFile file(path.c_str(), "rb");
    ASSERT_TRUE(file.Open());
    EXPECT_EQ(file.GetSize(), 100);
    char buffer[10];
    ASSERT_EQ(file.Read(buffer, sizeof buffer), 10u);
    EXPECT_EQ(file.GetSize(), 90);
    fpos_t here;
    fpos_t start;
    uFile::ZeroFILEPOS(start);
    ASSERT_TRUE(file.GetPosition(here));
    EXPECT_EQ(uFile::DifferenceFILEPOS(here, start), 10);

    ASSERT_TRUE(file.SeekToEnd());
    EXPECT_EQ(file.GetSize(), 0);
    EXPECT_EQ(file.Read(buffer, 1), 0u);
    EXPECT_TRUE(file.IsEof());
    file.ClearError();
    EXPECT_FALSE(file.IsEof());
    ASSERT_TRUE(file.SeekToBegin());
    EXPECT_EQ(file.GetSize(), 100);
    file.Close();
}

TEST(uFile, LinesAndErase)
{
    devid_test::TempDir dir;
    const std::string path = dir.file("lines.txt");
    uFile file(path.c_str(), "a+");
    ASSERT_TRUE(file.Open());
    EXPECT_TRUE(file.WriteString("first\n"));
    EXPECT_EQ(file.Printf("%s %d\n", "second", 2), 9);
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ(devid_test::readFile(path), "first\nsecond 2\n");

    ASSERT_TRUE(file.SeekToBegin());
    char line[5];
    ASSERT_TRUE(file.ReadString(line, sizeof line));
    EXPECT_STREQ(line, "firs") << "at most size - 1 characters";

    EXPECT_TRUE(file.Erase());
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(devid_test::readFile(path), "");
    EXPECT_TRUE(file.WriteString("again"));
    file.Close();
    EXPECT_EQ(devid_test::readFile(path), "again");
    EXPECT_FALSE(file.Erase()) << "nothing to erase without a stream";
}

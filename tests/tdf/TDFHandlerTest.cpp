#include "tdf/TDFHandler.h"

#include "devid/target/HexkitError.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

using Mora::Lux::Hexkit::HexkitError;
using Mora::Lux::Hexkit::HexkitErrorIF;
using Mora::Lux::Trace::TDFHandler;

namespace {

std::string Word(uint32_t v)
{
    return {static_cast<char>(v), static_cast<char>(v >> 8), static_cast<char>(v >> 16), static_cast<char>(v >> 24)};
}

// A raw section as it lies in the file, so damaged ones can be written too.
std::string Section(const std::string& name, uint32_t version, const std::string& data)
{
    return Word(static_cast<uint32_t>(12 + name.size() + data.size())) + Word(version) +
           Word(static_cast<uint32_t>(name.size())) + name + data;
}

std::string ErrorOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const HexkitError& e) {
        EXPECT_EQ(HexkitErrorIF::SEVERITY_ERROR, e.GetSeverity()) << e.what();
        return e.what();
    }
    return "<no error>";
}

#define EXPECT_FAILS(message, call) EXPECT_EQ(message, ErrorOf([&] { call; }))

class TDFHandlerTest : public ::testing::Test {
protected:
    // A walk that loops over a damaged file ends the test process instead of hanging ctest.
    void SetUp() override { alarm(20); }
    void TearDown() override { alarm(0); }

    void Save(const std::string& file, const char* name, uint32_t version, const std::string& data)
    {
        uint32_t offset = 0, length = 0;
        tdf.SaveSectionHeader(file.c_str(), name, version, offset);
        tdf.SaveSectionData(file.c_str(), name, offset, data.data(), 1, data.size(), length);
    }

    std::string Load(const std::string& file, const char* name, uint32_t version, uint32_t bufferSize = 256)
    {
        std::vector<char> buffer(bufferSize);
        uint32_t read = 0;
        tdf.LoadSectionData(file.c_str(), name, version, buffer.data(), bufferSize, read);
        return std::string(buffer.data(), read);
    }

    devid_test::TempDir dir;
    TDFHandler tdf;
    uint32_t offset = 7, length = 7, position = 7, read = 7;
    char buffer[8] = {};
};

TEST_F(TDFHandlerTest, WritesTheExactLayout)
{
    const std::string file = dir.file("a.tdf");
    tdf.CreateTDFFile(file.c_str());
    EXPECT_EQ("TDF2", devid_test::readFile(file));

    tdf.SaveSectionHeader(file.c_str(), "DEVID", 1, offset);
    EXPECT_EQ(4u, offset);
    EXPECT_EQ("TDF2" + Word(17) + Word(1) + Word(5) + "DEVID", devid_test::readFile(file));
    // A header without data reads as an empty section.
    tdf.GetSectionDataLengthInBytes(file.c_str(), "DEVID", 1, length);
    EXPECT_EQ(0u, length);

    const std::string data = "0123456789";
    tdf.SaveSectionData(file.c_str(), "ignored", offset, data.data(), 1, data.size(), length);
    EXPECT_EQ(27u, length);
    EXPECT_EQ("TDF2" + Section("DEVID", 1, data), devid_test::readFile(file));
    EXPECT_EQ(31u, Mora::Lux::Trace::FileSize(file.c_str()));

    tdf.GetSectionDataLengthInBytes(file.c_str(), "DEVID", 1, length);
    EXPECT_EQ(10u, length);
    tdf.GetSectionDataPosition(file.c_str(), "DEVID", 1, position, length);
    EXPECT_EQ(21u, position);
    EXPECT_EQ(10u, length);
    EXPECT_EQ(data, Load(file, "DEVID", 1));
    EXPECT_EQ("0123", Load(file, "DEVID", 1, 4));
}

TEST_F(TDFHandlerTest, FindsSectionsByExactNameAndVersion)
{
    const std::string file = dir.file("multi.TDF");
    tdf.CreateTDFFile(file.c_str());
    Save(file, "DEVID", 1, "first");
    Save(file, "DEVID", 2, "version two");
    Save(file, "OTHER", 7, std::string("\0\1\2", 3));
    Save(file, "DEVID", 1, "duplicate");
    Save(file, nullptr, 3, "unnamed");

    EXPECT_TRUE(tdf.ISTDF(file.c_str()));
    EXPECT_EQ("first", Load(file, "DEVID", 1));
    EXPECT_EQ("version two", Load(file, "DEVID", 2));
    EXPECT_EQ(std::string("\0\1\2", 3), Load(file, "OTHER", 7));
    EXPECT_EQ("unnamed", Load(file, "", 3));
    EXPECT_FAILS("OTHER section cannot be located in the file.", Load(file, "OTHER", 1));
    EXPECT_FAILS("devid section cannot be located in the file.", Load(file, "devid", 1));
    EXPECT_FAILS("DEVI section cannot be located in the file.", Load(file, "DEVI", 1));
}

TEST_F(TDFHandlerTest, FindsSectionsAnywhereInALargeFile)
{
    // Sizes vary so that headers, names and data straddle any read-ahead boundary, and one
    // section is large enough to be skipped rather than read.
    std::string content = "TDF2";
    std::vector<std::string> names, data;
    for (uint32_t i = 0; i < 400; ++i) {
        names.push_back("S" + std::string(i % 13, 'n') + std::to_string(i));
        data.emplace_back(i == 200 ? 300000 : i * 37 % 1500, static_cast<char>('a' + i % 26));
        content += Section(names[i], i, data[i]);
    }
    const std::string file = dir.write("large.tdf", content);
    for (uint32_t i : {0, 1, 57, 199, 200, 201, 399}) {
        tdf.GetSectionDataLengthInBytes(file.c_str(), names[i].c_str(), i, length);
        EXPECT_EQ(data[i].size(), length) << i;
        EXPECT_EQ(data[i], Load(file, names[i].c_str(), i, length + 1)) << i;
    }
}

TEST_F(TDFHandlerTest, OffsetsBeyondTwoGiBWorkOnEveryHost)
{
    // A sparse filler section carries the file past 2 GiB, where a 32-bit long stops;
    // the format's offsets reach 4 GiB on 32-bit and 64-bit hosts alike.
    const uint32_t fillerLength = 0x90000000u;
    const std::string file = dir.write("big.tdf", "TDF2" + Word(fillerLength) + Word(1) + Word(3) + "pad");
    std::error_code error;
    std::filesystem::resize_file(file, 4 + static_cast<uintmax_t>(fillerLength), error);
    if (error)
        GTEST_SKIP() << "no sparse file here: " << error.message();

    EXPECT_EQ(4u + fillerLength, Mora::Lux::Trace::FileSize(file.c_str()));
    tdf.SaveSectionHeader(file.c_str(), "DEVID", 1, offset);
    EXPECT_EQ(4u + fillerLength, offset);
    tdf.SaveSectionData(file.c_str(), "DEVID", offset, "abc", 1, 3, length);
    EXPECT_EQ(20u, length);
    tdf.GetSectionDataPosition(file.c_str(), "DEVID", 1, position, length);
    EXPECT_EQ(offset + 17u, position);
    EXPECT_EQ("abc", Load(file, "DEVID", 1));
}

TEST_F(TDFHandlerTest, RecognisesTdfFilesWithoutThrowing)
{
    const std::string good = "TDF2" + Section("X", 1, "");
    EXPECT_TRUE(tdf.ISTDF(dir.write(".tdf", good).c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("tdf", good).c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("atdf", good).c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("a.tdf.bak", good).c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("short.tdf", "TDF").c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("other.tdf", "TDF1").c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.file("missing.tdf").c_str()));
    EXPECT_FALSE(tdf.ISTDF(nullptr));
}

TEST_F(TDFHandlerTest, ReportsEveryWriteFailure)
{
    const std::string file = dir.file("w.tdf");
    const char* missing = "/no/such/file.tdf";
    // A folder opens for reading but not for writing.
    const std::string folder = dir.file("folder.tdf");
    std::filesystem::create_directory(folder);
    tdf.CreateTDFFile(file.c_str());
    const char* f = file.c_str();

    EXPECT_FAILS("Null file name to create TDF.", tdf.CreateTDFFile(nullptr));
    EXPECT_FAILS("TDF file extension must be .tdf.", tdf.CreateTDFFile(dir.file("a.txt").c_str()));
    EXPECT_FAILS("Could not create TDF file as specified.", tdf.CreateTDFFile(missing));

    EXPECT_FAILS("File name passed to save file is not valid.", tdf.SaveSectionHeader(missing, "S", 1, offset));
    EXPECT_EQ(0u, offset);
    EXPECT_FAILS("Could not open TDF file as specified.", tdf.SaveSectionHeader(folder.c_str(), "S", 1, offset));

    EXPECT_FAILS("File name passed to save file is not valid.", tdf.SaveSectionData(missing, "S", 4, "a", 1, 1, length));
    EXPECT_EQ(0u, length);
    for (uint32_t bad = 0; bad < 4; ++bad)
        EXPECT_FAILS("Section header offset to save data is not valid.", tdf.SaveSectionData(f, "S", bad, "a", 1, 1, length));
    EXPECT_FAILS("No data to write TDF.", tdf.SaveSectionData(f, "S", 4, nullptr, 1, 1, length));
    EXPECT_FAILS("Could not open TDF file as specified.", tdf.SaveSectionData(folder.c_str(), "S", 4, "a", 1, 1, length));
    EXPECT_FAILS("Write I/O error - unable to determine section length.", tdf.SaveSectionData(f, "S", 4, "a", 1, 1, length));
    tdf.SaveSectionHeader(f, "S", 1, offset);
    EXPECT_FAILS("Write I/O error - unable to write section data.", tdf.SaveSectionData(f, "S", offset, "a", 0, 1, length));

    // A full device shows write errors that only surface when the stream is flushed.
    if (std::filesystem::exists("/dev/full")) {
        const std::string full = dir.file("full.tdf");
        std::filesystem::create_symlink("/dev/full", full);
        EXPECT_FAILS("Write error -  TDF file identifier.", tdf.CreateTDFFile(full.c_str()));
        EXPECT_FAILS("Write error - size of TDF header.", tdf.SaveSectionHeader(full.c_str(), "S", 1, offset));
    }
}

TEST_F(TDFHandlerTest, ReportsEveryLoadFailure)
{
    const char* missing = "/no/such/file.tdf";
    const std::string bad = dir.write("bad.tdf", "TDF1" + Section("DEVID", 1, "x"));
    const std::string good = dir.write("good.tdf", "TDF2" + Section("DEVID", 1, "data"));
    const std::string binary = dir.write("good.bin", devid_test::readFile(good));
    const char* g = good.c_str();

    EXPECT_FAILS("File name passed to load file is not valid.", tdf.GetSectionDataLengthInBytes(missing, "DEVID", 1, length));
    EXPECT_EQ(0u, length);
    EXPECT_FAILS("Invalid TDF format.", tdf.GetSectionDataLengthInBytes(bad.c_str(), "DEVID", 1, length));
    EXPECT_FAILS("Section size cannot be located in the file.", tdf.GetSectionDataLengthInBytes(g, "DEVID", 2, length));
    // This one lookup takes any extension.
    tdf.GetSectionDataLengthInBytes(binary.c_str(), "DEVID", 1, length);
    EXPECT_EQ(4u, length);

    EXPECT_FAILS("File name passed to load is not valid.", tdf.GetSectionDataPosition(missing, "DEVID", 1, position, length));
    EXPECT_FAILS("TDF file extension must be .tdf.", tdf.GetSectionDataPosition(binary.c_str(), "DEVID", 1, position, length));
    EXPECT_FAILS("Invalid TDF format.", tdf.GetSectionDataPosition(bad.c_str(), "DEVID", 1, position, length));
    EXPECT_FAILS("DEVID section cannot be located in the file.", tdf.GetSectionDataPosition(g, "DEVID", 3, position, length));
    EXPECT_EQ(7u, position);

    EXPECT_FAILS("File name passed to load is not valid.", tdf.LoadSectionData(missing, "DEVID", 1, buffer, 8, read));
    EXPECT_EQ(0u, read);
    EXPECT_FAILS("TDF file extension must be .tdf.", tdf.LoadSectionData(binary.c_str(), "DEVID", 1, buffer, 8, read));
    EXPECT_FAILS("No buffer allocated to load section data.", tdf.LoadSectionData(g, "DEVID", 1, nullptr, 8, read));
    EXPECT_FAILS("No buffer allocated to load section data.", tdf.LoadSectionData(g, "DEVID", 1, buffer, 0, read));
    EXPECT_FAILS("Invalid TDF format.", tdf.LoadSectionData(bad.c_str(), "DEVID", 1, buffer, 8, read));
}

TEST_F(TDFHandlerTest, DamagedSectionsEndTheWalkAsNotFound)
{
    const std::string target = Section("WANTED", 1, "payload");
    auto header = [](uint32_t length, uint32_t nameLength) { return Word(length) + Word(1) + Word(nameLength); };
    const std::vector<std::pair<const char*, std::string>> damaged = {
        {"zero length word", header(0, 3) + "ABC" + target},
        {"length shorter than its header", header(14, 3) + "ABC" + target},
        {"length past the end", header(1000, 3) + "ABC" + target},
        {"name cut off by the end", header(20, 8) + "ABC"},
        {"header cut off by the end", Word(12) + Word(1)},
        {"name longer than 4095 bytes", header(12 + 4096, 4096) + std::string(4096, 'N') + target},
    };
    for (const auto& [what, sections] : damaged) {
        const std::string file = dir.write("damaged.tdf", "TDF2" + sections);
        EXPECT_FAILS("WANTED section cannot be located in the file.", Load(file, "WANTED", 1)) << what;
        EXPECT_FAILS("ABC section cannot be located in the file.", Load(file, "ABC", 1)) << what;
    }

    // 4095 bytes is the longest name a reader accepts.
    const std::string longName(4095, 'L');
    const std::string file = dir.write("long.tdf", "TDF2" + Section(longName, 1, "x") + target);
    EXPECT_EQ("x", Load(file, longName.c_str(), 1));
    EXPECT_EQ("payload", Load(file, "WANTED", 1));
}

} // namespace

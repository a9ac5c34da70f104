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
using Mora::Lux::Trace::FileSize;
using Mora::Lux::Trace::TDFHandler;

namespace {

std::string Word(uint32_t v)
{
    return std::string{static_cast<char>(v), static_cast<char>(v >> 8), static_cast<char>(v >> 16),
                       static_cast<char>(v >> 24)};
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

class TDFHandlerTest : public ::testing::Test {
protected:
    // A walk that loops over a damaged file ends the test process instead of hanging ctest.
    void SetUp() override { alarm(20); }
    void TearDown() override { alarm(0); }

    // Writes a section through the handler and returns its offset.
    uint32_t Save(const std::string& file, const char* name, uint32_t version, const std::string& data)
    {
        uint32_t offset = 0, length = 0;
        tdf.SaveSectionHeader(file.c_str(), name, version, offset);
        tdf.SaveSectionData(file.c_str(), name, offset, data.data(), 1, data.size(), length);
        return offset;
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
};

TEST_F(TDFHandlerTest, WritesTheExactLayout)
{
    const std::string file = dir.file("a.tdf");
    tdf.CreateTDFFile(file.c_str());
    EXPECT_EQ("TDF2", devid_test::readFile(file));
    EXPECT_TRUE(tdf.ISTDF(file.c_str()));

    uint32_t offset = 99;
    tdf.SaveSectionHeader(file.c_str(), "DEVID", 1, offset);
    EXPECT_EQ(4u, offset);
    EXPECT_EQ("TDF2" + Word(17) + Word(1) + Word(5) + "DEVID", devid_test::readFile(file));

    // A header without data reads as an empty section.
    uint32_t length = 99;
    tdf.GetSectionDataLengthInBytes(file.c_str(), "DEVID", 1, length);
    EXPECT_EQ(0u, length);

    const std::string data = "0123456789";
    uint32_t sectionLength = 0;
    tdf.SaveSectionData(file.c_str(), "ignored", offset, data.data(), 1, data.size(), sectionLength);
    EXPECT_EQ(27u, sectionLength);
    EXPECT_EQ("TDF2" + Section("DEVID", 1, data), devid_test::readFile(file));
    EXPECT_EQ(31u, FileSize(file.c_str()));

    tdf.GetSectionDataLengthInBytes(file.c_str(), "DEVID", 1, length);
    EXPECT_EQ(10u, length);
    uint32_t position = 0;
    length = 0;
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
    EXPECT_EQ(4u, Save(file, "DEVID", 1, "first"));
    Save(file, "DEVID", 2, "version two");
    Save(file, "OTHER", 7, std::string("\0\1\2", 3));
    Save(file, "DEVID", 1, "duplicate");
    Save(file, nullptr, 3, "unnamed");

    EXPECT_TRUE(tdf.ISTDF(file.c_str()));
    EXPECT_EQ("first", Load(file, "DEVID", 1));
    EXPECT_EQ("version two", Load(file, "DEVID", 2));
    EXPECT_EQ(std::string("\0\1\2", 3), Load(file, "OTHER", 7));
    EXPECT_EQ("unnamed", Load(file, nullptr, 3));
    EXPECT_EQ("unnamed", Load(file, "", 3));

    EXPECT_EQ("OTHER section cannot be located in the file.", ErrorOf([&] { Load(file, "OTHER", 1); }));
    EXPECT_EQ("devid section cannot be located in the file.", ErrorOf([&] { Load(file, "devid", 1); }));
    EXPECT_EQ("DEVI section cannot be located in the file.", ErrorOf([&] { Load(file, "DEVI", 1); }));
    uint32_t position = 0, length = 0;
    EXPECT_EQ("DEVID section cannot be located in the file.",
              ErrorOf([&] { tdf.GetSectionDataPosition(file.c_str(), "DEVID", 3, position, length); }));
}

TEST_F(TDFHandlerTest, FindsSectionsAnywhereInALargeFile)
{
    // Sizes vary so that headers, names and data straddle any read-ahead boundary, and one
    // section is large enough to be skipped rather than read.
    std::string content = "TDF2";
    std::vector<std::pair<std::string, std::string>> sections;
    for (int i = 0; i < 400; ++i) {
        const std::string name = "S" + std::string(static_cast<size_t>(i % 13), 'n') + std::to_string(i);
        const size_t size = i == 200 ? 300000 : static_cast<size_t>(i * 37 % 1500);
        sections.emplace_back(name, std::string(size, static_cast<char>('a' + i % 26)));
        content += Section(name, static_cast<uint32_t>(i), sections.back().second);
    }
    const std::string file = dir.write("large.tdf", content);
    for (int i : {0, 1, 57, 199, 200, 201, 398, 399}) {
        const auto& [name, data] = sections[static_cast<size_t>(i)];
        uint32_t length = 0;
        tdf.GetSectionDataLengthInBytes(file.c_str(), name.c_str(), static_cast<uint32_t>(i), length);
        EXPECT_EQ(data.size(), length) << name;
        EXPECT_EQ(data, Load(file, name.c_str(), static_cast<uint32_t>(i), static_cast<uint32_t>(data.size() + 1)))
            << name;
    }
    EXPECT_EQ("S399 section cannot be located in the file.", ErrorOf([&] { Load(file, "S399", 398); }));
}

TEST_F(TDFHandlerTest, RecognisesTdfFilesWithoutThrowing)
{
    const std::string good = "TDF2" + Section("X", 1, "");
    EXPECT_TRUE(tdf.ISTDF(dir.write(".tdf", good).c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("tdf", good).c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("a.tdf.bak", good).c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("atdf", good).c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("short.tdf", "TDF").c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("empty.tdf", "").c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.write("other.tdf", "TDF1").c_str()));
    EXPECT_FALSE(tdf.ISTDF(dir.file("missing.tdf").c_str()));
    EXPECT_FALSE(tdf.ISTDF(nullptr));

    EXPECT_TRUE(tdf.HasExtension("x.Tdf", "tdf"));
    EXPECT_FALSE(tdf.IsFileAvailable(""));
    EXPECT_FALSE(tdf.IsFileAvailable(nullptr));
    EXPECT_EQ(0u, FileSize(dir.file("missing.tdf").c_str()));
}

TEST_F(TDFHandlerTest, ReportsEveryWriteFailure)
{
    const std::string file = dir.file("w.tdf");
    const std::string missing = dir.file("missing.tdf");
    // A folder opens for reading but not for writing.
    const std::string folder = dir.file("folder.tdf");
    std::filesystem::create_directory(folder);
    tdf.CreateTDFFile(file.c_str());
    const char data[] = "abc";
    uint32_t offset = 0, length = 7;

    EXPECT_EQ("Null file name to create TDF.", ErrorOf([&] { tdf.CreateTDFFile(nullptr); }));
    EXPECT_EQ("TDF file extension must be .tdf.", ErrorOf([&] { tdf.CreateTDFFile(dir.file("a.txt").c_str()); }));
    EXPECT_EQ("Could not create TDF file as specified.",
              ErrorOf([&] { tdf.CreateTDFFile(dir.file("no/such/dir.tdf").c_str()); }));

    offset = 5;
    EXPECT_EQ("File name passed to save file is not valid.",
              ErrorOf([&] { tdf.SaveSectionHeader(missing.c_str(), "S", 1, offset); }));
    EXPECT_EQ(0u, offset);
    EXPECT_EQ("Could not open TDF file as specified.",
              ErrorOf([&] { tdf.SaveSectionHeader(folder.c_str(), "S", 1, offset); }));

    EXPECT_EQ("File name passed to save file is not valid.",
              ErrorOf([&] { tdf.SaveSectionData(missing.c_str(), "S", 4, data, 1, 3, length); }));
    EXPECT_EQ(0u, length);
    for (uint32_t bad = 0; bad < 4; ++bad)
        EXPECT_EQ("Section header offset to save data is not valid.",
                  ErrorOf([&] { tdf.SaveSectionData(file.c_str(), "S", bad, data, 1, 3, length); }));
    EXPECT_EQ("No data to write TDF.", ErrorOf([&] { tdf.SaveSectionData(file.c_str(), "S", 4, nullptr, 1, 3, length); }));
    EXPECT_EQ("Could not open TDF file as specified.",
              ErrorOf([&] { tdf.SaveSectionData(folder.c_str(), "S", 4, data, 1, 3, length); }));
    EXPECT_EQ("Write I/O error - unable to determine section length.",
              ErrorOf([&] { tdf.SaveSectionData(file.c_str(), "S", 4, data, 1, 3, length); }));
    tdf.SaveSectionHeader(file.c_str(), "S", 1, offset);
    EXPECT_EQ("Write I/O error - unable to write section data.",
              ErrorOf([&] { tdf.SaveSectionData(file.c_str(), "S", offset, data, 0, 3, length); }));

    if (std::filesystem::exists("/dev/full")) {
        const std::string full = dir.file("full.tdf");
        std::filesystem::create_symlink("/dev/full", full);
        EXPECT_EQ("Write error -  TDF file identifier.", ErrorOf([&] { tdf.CreateTDFFile(full.c_str()); }));
        EXPECT_EQ("Write error - size of TDF header.",
                  ErrorOf([&] { tdf.SaveSectionHeader(full.c_str(), "S", 1, offset); }));
    }
}

TEST_F(TDFHandlerTest, ReportsEveryLoadFailure)
{
    const std::string missing = dir.file("missing.tdf");
    const std::string notTdf = dir.write("bad.tdf", "TDF1" + Section("DEVID", 1, "x"));
    const std::string folder = dir.file("folder.tdf");
    std::filesystem::create_directory(folder);
    const std::string good = dir.write("good.tdf", "TDF2" + Section("DEVID", 1, "data"));
    uint32_t length = 5, position = 6, read = 7;
    char buffer[8];

    EXPECT_EQ("File name passed to load file is not valid.",
              ErrorOf([&] { tdf.GetSectionDataLengthInBytes(missing.c_str(), "DEVID", 1, length); }));
    EXPECT_EQ(0u, length);
    EXPECT_EQ("Invalid TDF format.", ErrorOf([&] { tdf.GetSectionDataLengthInBytes(notTdf.c_str(), "DEVID", 1, length); }));
    EXPECT_EQ("Invalid TDF format.", ErrorOf([&] { tdf.GetSectionDataLengthInBytes(folder.c_str(), "DEVID", 1, length); }));
    EXPECT_EQ("Section size cannot be located in the file.",
              ErrorOf([&] { tdf.GetSectionDataLengthInBytes(good.c_str(), "DEVID", 2, length); }));
    // This one lookup takes any extension.
    const std::string binary = dir.write("good.bin", devid_test::readFile(good));
    tdf.GetSectionDataLengthInBytes(binary.c_str(), "DEVID", 1, length);
    EXPECT_EQ(4u, length);

    EXPECT_EQ("File name passed to load is not valid.",
              ErrorOf([&] { tdf.GetSectionDataPosition(missing.c_str(), "DEVID", 1, position, length); }));
    EXPECT_EQ("TDF file extension must be .tdf.",
              ErrorOf([&] { tdf.GetSectionDataPosition(binary.c_str(), "DEVID", 1, position, length); }));
    EXPECT_EQ("Invalid TDF format.", ErrorOf([&] { tdf.GetSectionDataPosition(notTdf.c_str(), "DEVID", 1, position, length); }));
    EXPECT_EQ(6u, position);

    EXPECT_EQ("File name passed to load is not valid.",
              ErrorOf([&] { tdf.LoadSectionData(missing.c_str(), "DEVID", 1, buffer, 8, read); }));
    EXPECT_EQ(0u, read);
    EXPECT_EQ("TDF file extension must be .tdf.",
              ErrorOf([&] { tdf.LoadSectionData(binary.c_str(), "DEVID", 1, buffer, 8, read); }));
    EXPECT_EQ("No buffer allocated to load section data.",
              ErrorOf([&] { tdf.LoadSectionData(good.c_str(), "DEVID", 1, nullptr, 8, read); }));
    EXPECT_EQ("No buffer allocated to load section data.",
              ErrorOf([&] { tdf.LoadSectionData(good.c_str(), "DEVID", 1, buffer, 0, read); }));
    EXPECT_EQ("Invalid TDF format.", ErrorOf([&] { tdf.LoadSectionData(notTdf.c_str(), "DEVID", 1, buffer, 8, read); }));
}

TEST_F(TDFHandlerTest, DamagedSectionsEndTheWalkAsNotFound)
{
    const std::string target = Section("WANTED", 1, "payload");
    auto header = [](uint32_t length, uint32_t nameLength) {
        return Word(length) + Word(1) + Word(nameLength);
    };
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
        EXPECT_EQ("WANTED section cannot be located in the file.", ErrorOf([&] { Load(file, "WANTED", 1); }))
            << what;
        EXPECT_EQ("ABC section cannot be located in the file.", ErrorOf([&] { Load(file, "ABC", 1); })) << what;
    }

    // 4095 bytes is the longest name a reader accepts.
    const std::string longName(4095, 'L');
    const std::string file = dir.write("long.tdf", "TDF2" + Section(longName, 1, "x") + target);
    EXPECT_EQ("x", Load(file, longName.c_str(), 1));
    EXPECT_EQ("payload", Load(file, "WANTED", 1));
}

} // namespace

#include "tdf/TDFHandler.h"

#include "devid/target/HexkitError.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <tuple>
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

class TDFHandlerTest : public ::testing::Test {
protected:
    // A walk that loops over a damaged file ends the test process instead of hanging ctest.
    void SetUp() override { alarm(20); }
    void TearDown() override { alarm(0); }

    std::string Load(const std::string& file, const char* name, uint32_t version, uint32_t bufferSize = 256)
    {
        std::vector<char> data(bufferSize);
        uint32_t got = 0;
        tdf.LoadSectionData(file.c_str(), name, version, data.data(), bufferSize, got);
        return std::string(data.data(), got);
    }

    std::string NotFound(const std::string& file, const char* name, uint32_t version)
    {
        return ErrorOf([&] { Load(file, name, version); });
    }

    devid_test::TempDir dir;
    TDFHandler tdf;
    uint32_t offset = 7, length = 7, position = 7, read = 7;
    char buffer[8] = {};
};

TEST_F(TDFHandlerTest, WritesTheExactLayoutAndFindsSectionsByNameAndVersion)
{
    const std::string file = dir.file("a.tdf");
    tdf.CreateTDFFile(file.c_str());
    EXPECT_EQ("TDF2", devid_test::readFile(file));
    tdf.SaveSectionHeader(file.c_str(), "DEVID", 1, offset);
    EXPECT_EQ(4u, offset);
    EXPECT_EQ("TDF2" + Word(17) + Word(1) + Word(5) + "DEVID", devid_test::readFile(file));

    const std::string data = "0123456789";
    tdf.SaveSectionData(file.c_str(), "ignored", offset, data.data(), 1, data.size(), length);
    EXPECT_EQ(27u, length);
    EXPECT_EQ("TDF2" + Section("DEVID", 1, data), devid_test::readFile(file));
    tdf.GetSectionDataPosition(file.c_str(), "DEVID", 1, position, length);
    EXPECT_EQ(21u, position);
    EXPECT_EQ(10u, length);
    EXPECT_EQ("0123", Load(file, "DEVID", 1, 4)) << "a small buffer takes what fits";

    for (const auto& [name, version, text] : {std::tuple{"DEVID", 2u, "two"}, {"OTHER", 7u, "other"}, {"DEVID", 1u, "dup"}}) {
        tdf.SaveSectionHeader(file.c_str(), name, version, offset);
        tdf.SaveSectionData(file.c_str(), name, offset, text, 1, std::strlen(text), length);
    }
    EXPECT_EQ(data, Load(file, "DEVID", 1)) << "the first match wins";
    EXPECT_EQ("two", Load(file, "DEVID", 2));
    EXPECT_EQ("other", Load(file, "OTHER", 7));
    EXPECT_EQ("OTHER section cannot be located in the file.", NotFound(file, "OTHER", 1));
    EXPECT_EQ("devid section cannot be located in the file.", NotFound(file, "devid", 1));
    EXPECT_EQ("DEVI section cannot be located in the file.", NotFound(file, "DEVI", 1));
}

TEST_F(TDFHandlerTest, FindsSectionsPastLargeOnes)
{
    // Sizes vary so that headers and names straddle any read-ahead boundary.
    std::string content = "TDF2";
    for (uint32_t i = 0; i < 60; ++i)
        content += Section("S" + std::to_string(i), i, std::string(i == 30 ? 300000 : i * 37 % 1500, 'd'));
    const std::string file = dir.write("large.tdf", content + Section("LAST", 1, "end"));
    EXPECT_EQ("end", Load(file, "LAST", 1));
    tdf.GetSectionDataLengthInBytes(file.c_str(), "S30", 30, length);
    EXPECT_EQ(300000u, length);
}

TEST_F(TDFHandlerTest, OffsetsBeyondTwoGiBWorkOnEveryHost)
{
    // A sparse filler section carries the file past 2 GiB, where a 32-bit long stops.
    const uint32_t fillerLength = 0x90000000u;
    const std::string file = dir.write("big.tdf", "TDF2" + Word(fillerLength) + Word(1) + Word(3) + "pad");
    std::error_code error;
    std::filesystem::resize_file(file, 4 + static_cast<uintmax_t>(fillerLength), error);
    if (error)
        GTEST_SKIP() << "no sparse file here: " << error.message();
    tdf.SaveSectionHeader(file.c_str(), "DEVID", 1, offset);
    EXPECT_EQ(4u + fillerLength, offset);
    tdf.SaveSectionData(file.c_str(), "DEVID", offset, "abc", 1, 3, length);
    tdf.GetSectionDataPosition(file.c_str(), "DEVID", 1, position, length);
    EXPECT_EQ(offset + 17u, position);
    EXPECT_EQ("abc", Load(file, "DEVID", 1));
}

TEST_F(TDFHandlerTest, ReportsEveryFailure)
{
    const char* missing = "/no/such/file.tdf";
    const std::string folder = dir.file("folder.tdf"); // no regular file: never opened
    std::filesystem::create_directory(folder);
    const std::string w = dir.file("w.tdf");
    tdf.CreateTDFFile(w.c_str());
    const std::string bad = dir.write("bad.tdf", "TDF1" + Section("DEVID", 1, "x"));
    const std::string good = dir.write("good.tdf", "TDF2" + Section("DEVID", 1, "data"));
    const std::string binary = dir.write("good.bin", devid_test::readFile(good));
    const char *f = w.c_str(), *g = good.c_str(), *b = bad.c_str();
    const std::vector<std::pair<std::string, std::function<void()>>> table = {
        {"Null file name to create TDF.", [&] { tdf.CreateTDFFile(nullptr); }},
        {"TDF file extension must be .tdf.", [&] { tdf.CreateTDFFile(dir.file("a.txt").c_str()); }},
        {"Could not create TDF file as specified.", [&] { tdf.CreateTDFFile(missing); }},
        {"File name passed to save file is not valid.", [&] { tdf.SaveSectionHeader(missing, "S", 1, offset); }},
        {"File name passed to save file is not valid.", [&] { tdf.SaveSectionHeader(folder.c_str(), "S", 1, offset); }},
        {"TDF section name longer than 4095 bytes.", [&] { tdf.SaveSectionHeader(f, std::string(4096, 'N').c_str(), 1, offset); }},
        {"File name passed to save file is not valid.", [&] { tdf.SaveSectionData(missing, "S", 4, "a", 1, 1, length); }},
        {"Section header offset to save data is not valid.", [&] { tdf.SaveSectionData(f, "S", 3, "a", 1, 1, length); }},
        {"No data to write TDF.", [&] { tdf.SaveSectionData(f, "S", 4, nullptr, 1, 1, length); }},
        {"File name passed to load is not valid.", [&] { tdf.LoadSectionData(folder.c_str(), "DEVID", 1, buffer, 8, read); }},
        {"Write I/O error - unable to determine section length.", [&] { tdf.SaveSectionData(f, "S", 4, "a", 1, 1, length); }},
        {"File name passed to load file is not valid.", [&] { tdf.GetSectionDataLengthInBytes(missing, "DEVID", 1, length); }},
        {"Invalid TDF format.", [&] { tdf.GetSectionDataLengthInBytes(b, "DEVID", 1, length); }},
        {"Section size cannot be located in the file.", [&] { tdf.GetSectionDataLengthInBytes(g, "DEVID", 2, length); }},
        {"File name passed to load is not valid.", [&] { tdf.GetSectionDataPosition(missing, "DEVID", 1, position, length); }},
        {"TDF file extension must be .tdf.", [&] { tdf.GetSectionDataPosition(binary.c_str(), "DEVID", 1, position, length); }},
        {"Invalid TDF format.", [&] { tdf.GetSectionDataPosition(b, "DEVID", 1, position, length); }},
        {"DEVID section cannot be located in the file.", [&] { tdf.GetSectionDataPosition(g, "DEVID", 3, position, length); }},
        {"File name passed to load is not valid.", [&] { tdf.LoadSectionData(missing, "DEVID", 1, buffer, 8, read); }},
        {"TDF file extension must be .tdf.", [&] { tdf.LoadSectionData(binary.c_str(), "DEVID", 1, buffer, 8, read); }},
        {"No buffer allocated to load section data.", [&] { tdf.LoadSectionData(g, "DEVID", 1, nullptr, 8, read); }},
        {"No buffer allocated to load section data.", [&] { tdf.LoadSectionData(g, "DEVID", 1, buffer, 0, read); }},
        {"Invalid TDF format.", [&] { tdf.LoadSectionData(b, "DEVID", 1, buffer, 8, read); }},
    };
    for (const auto& [message, call] : table)
        EXPECT_EQ(message, ErrorOf(call));
    EXPECT_EQ(0u, read);
    tdf.SaveSectionHeader(f, "S", 1, offset);
    EXPECT_EQ("Write I/O error - unable to write section data.",
              ErrorOf([&] { tdf.SaveSectionData(f, "S", offset, "a", 0, 1, length); }));
    // This one lookup takes any extension.
    tdf.GetSectionDataLengthInBytes(binary.c_str(), "DEVID", 1, length);
    EXPECT_EQ(4u, length);
    EXPECT_TRUE(tdf.ISTDF(g) && !tdf.ISTDF(b) && !tdf.ISTDF(binary.c_str()));
    // A file size limit fails writes the way a full disk does: only once the stream is flushed.
    const std::string full = dir.file("full.tdf");
    tdf.CreateTDFFile(full.c_str());
    const auto writeBeyondTheLimit = [&] {
        signal(SIGXFSZ, SIG_IGN);
        rlimit limit{4, 4};
        const bool header = setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
                            ErrorOf([&] { tdf.SaveSectionHeader(full.c_str(), "S", 1, offset); }) == "Write error - size of TDF header.";
        limit = {2, 2};
        const bool identifier = setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
                                ErrorOf([&] { tdf.CreateTDFFile(dir.file("new.tdf").c_str()); }) == "Write error -  TDF file identifier.";
        std::exit(header && identifier ? 0 : 1);
    };
    EXPECT_EXIT(writeBeyondTheLimit(), ::testing::ExitedWithCode(0), "");
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
        {"name longer than 4095 bytes", header(12 + 4096, 4096) + std::string(4096, 'N') + target},
    };
    for (const auto& [what, sections] : damaged) {
        const std::string file = dir.write("damaged.tdf", "TDF2" + sections);
        EXPECT_EQ("WANTED section cannot be located in the file.", NotFound(file, "WANTED", 1)) << what;
        EXPECT_EQ("ABC section cannot be located in the file.", NotFound(file, "ABC", 1)) << what;
    }
    const std::string longName(4095, 'L');
    const std::string file = dir.write("long.tdf", "TDF2" + Section(longName, 1, "x") + target);
    EXPECT_EQ("x", Load(file, longName.c_str(), 1)) << "4095 bytes is the longest name a reader accepts";
}

} // namespace

// The example board and the example database must keep fitting each other:
// every ID the board yields picks exactly one description file, and every
// processor kind of those files has a family whose type codes are on the board.
#include "simboard/SimBoardReader.h"

#include <gtest/gtest.h>

#include <pugixml.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <strings.h>

using namespace Mora::Lux::Sim;

namespace {

const std::string Examples = std::string(DEVID_SOURCE_DIR) + "/examples";

struct Description {
    std::string file;
    uint32_t value = 0;
    uint32_t mask = 0xFFFFFFFF;
    std::set<std::string> kinds;
};

std::vector<Description> CandidateFiles()
{
    std::vector<Description> result;
    for (const auto& entry : std::filesystem::directory_iterator(Examples + "/db")) {
        std::string name = entry.path().filename().string();
        if (name.find("device") == std::string::npos || name.find("xml") == std::string::npos)
            continue;
        pugi::xml_document doc;
        EXPECT_TRUE(doc.load_file(entry.path().c_str())) << name;
        pugi::xml_node device = doc.document_element().first_child();
        Description d;
        d.file = name;
        d.value = static_cast<uint32_t>(std::strtoul(device.attribute("value").value(), nullptr, 0));
        if (pugi::xml_attribute mask = device.attribute("mask"))
            d.mask = *mask.value() == '\0' ? 0x0FFFFFFF
                                           : static_cast<uint32_t>(std::strtoul(mask.value(), nullptr, 0));
        for (pugi::xml_node proc : device.child("procs").children())
            d.kinds.insert(proc.attribute("kind").value());
        result.push_back(d);
    }
    return result;
}

// Family name (lower case) to type codes, read the simple way: "~ Name" and
// "alias = code" entries.
std::map<std::string, std::set<uint32_t>> Families()
{
    std::map<std::string, std::set<uint32_t>> result;
    std::ifstream in(Examples + "/board/kmralias.cfg");
    std::string line;
    std::string family;
    std::getline(in, line);
    while (std::getline(in, line)) {
        if (line.rfind("~ ", 0) == 0) {
            family = line.substr(2);
            for (char& c : family)
                c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
        }
        for (size_t at = line.find("alias = "); at != std::string::npos; at = line.find("alias = ", at + 1))
            result[family].insert(static_cast<uint32_t>(std::strtoul(line.c_str() + at + 8, nullptr, 0)));
    }
    return result;
}

} // namespace

TEST(ExampleBoardTest, BoardAndDatabaseFitEachOther)
{
    SimBoardReadResult read = SimBoardReader::ReadFolder(Examples + "/board");
    ASSERT_TRUE(read.ok) << read.description;
    EXPECT_TRUE(std::filesystem::exists(read.board.configFile));

    std::vector<Description> files = CandidateFiles();
    std::set<std::string> matched;
    for (const SimDevice& device : read.board.devices) {
        for (const char* idRegister : {"IP_TAPID", "DEVICE_ID"}) {
            const SimRegister* reg = device.FindRegister(idRegister);
            if (reg == nullptr)
                continue;
            int matches = 0;
            for (const Description& d : files) {
                if ((d.mask & (d.value ^ reg->value)) == 0) {
                    ++matches;
                    matched.insert(d.file);
                }
            }
            EXPECT_EQ(matches, 1) << device.name << " " << idRegister;
        }
    }
    EXPECT_EQ(matched, (std::set<std::string>{"device_kestrel.xml", "device_plover.xml", "device_wren.xml"}));
    EXPECT_EQ(files.size(), 4u) << "one candidate file matches nothing";

    std::map<std::string, std::set<uint32_t>> families = Families();
    for (const Description& d : files) {
        if (matched.count(d.file) == 0)
            continue;
        for (std::string kind : d.kinds) {
            for (char& c : kind)
                c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
            ASSERT_EQ(families.count(kind), 1u) << kind;
            bool onBoard = false;
            for (const SimDevice& device : read.board.devices)
                onBoard = onBoard || families[kind].count(device.type) != 0;
            EXPECT_TRUE(onBoard) << kind;
        }
    }
}

// Reading a simulated board folder: what a good file gives, and that every
// broken file comes back as a described failure instead of a partial board.
#include "simboard/SimBoardReader.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace Mora::Lux::Sim;

namespace {

SimBoardReadResult ReadText(const devid_test::TempDir& dir, const std::string& xml)
{
    dir.write("simboard.xml", xml);
    return SimBoardReader::ReadFolder(dir.path());
}

} // namespace

TEST(SimBoardReaderTest, ReadsEveryPartOfAGoodBoard)
{
    devid_test::TempDir dir;
    SimBoardReadResult read = ReadText(dir, R"(<?xml version="1.0"?>
<!-- comments are fine -->
<simboard config="bench.cfg" ready="FALSE">
  <device name="CORE" type="0x51A00010" parent="ROUTER" traceid="017" dap="DAP0"
          outfile="core.tdf" ready="1">
    <memory address="0xE00FF000" value="4294967295"/>
    <register name="CORE_ID" value="0X1f"/>
    <register name="BAD" value="0" fail="true"/>
  </device>
  <device name="ROUTER" type="0x38000101" adapter="false"/>
  <tracefactory connect="throw" message="busy"/>
</simboard>)");
    ASSERT_TRUE(read.ok) << read.description;
    EXPECT_EQ(read.description, "");
    const SimBoard& board = read.board;
    EXPECT_EQ(board.configFile, dir.file("bench.cfg"));
    EXPECT_EQ(board.connectMode, SimConnectMode::Throw);
    EXPECT_EQ(board.connectMessage, "busy");
    ASSERT_EQ(board.devices.size(), 2u);

    // A parent may come after its child; order is the file's.
    const SimDevice& core = board.devices[0];
    EXPECT_EQ(core.name, "CORE");
    EXPECT_EQ(core.parent, "ROUTER");
    EXPECT_EQ(core.type, 0x51A00010u);
    EXPECT_EQ(core.traceId, 15u);
    EXPECT_EQ(core.dapName, "DAP0");
    EXPECT_EQ(core.outputFile, "core.tdf");
    EXPECT_TRUE(core.ready);
    EXPECT_TRUE(core.adapterAvailable);
    ASSERT_NE(core.FindRegister("CORE_ID"), nullptr);
    EXPECT_EQ(core.FindRegister("CORE_ID")->value, 31u);
    EXPECT_FALSE(core.FindRegister("CORE_ID")->failsOnRead);
    ASSERT_NE(core.FindRegister("BAD"), nullptr);
    EXPECT_TRUE(core.FindRegister("BAD")->failsOnRead);
    EXPECT_EQ(core.FindRegister("core_id"), nullptr);
    ASSERT_NE(core.FindMemory(0xE00FF000), nullptr);
    EXPECT_EQ(core.FindMemory(0xE00FF000)->value, 0xFFFFFFFFu);
    EXPECT_EQ(core.FindMemory(0xE00FF004), nullptr);

    const SimDevice* router = board.FindDevice("ROUTER");
    ASSERT_NE(router, nullptr);
    EXPECT_FALSE(router->ready) << "inherits the board's readiness";
    EXPECT_FALSE(router->adapterAvailable);
    EXPECT_EQ(router->parent, "");
    EXPECT_EQ(router->traceId, 0u);
    EXPECT_EQ(board.FindDevice("NONE"), nullptr);
}

TEST(SimBoardReaderTest, OptionalPartsTakeTheirDefaults)
{
    devid_test::TempDir dir;
    SimBoardReadResult read = ReadText(dir, R"(<simboard config="/etc/bench.cfg">
  <device name="ONLY" type="1"/>
</simboard>)");
    ASSERT_TRUE(read.ok) << read.description;
    EXPECT_EQ(read.board.configFile, "/etc/bench.cfg");
    EXPECT_EQ(read.board.connectMode, SimConnectMode::Ok);
    ASSERT_EQ(read.board.devices.size(), 1u);
    EXPECT_TRUE(read.board.devices[0].ready);
    EXPECT_TRUE(read.board.devices[0].adapterAvailable);
    EXPECT_EQ(read.board.devices[0].dapName, "");
    EXPECT_EQ(read.board.devices[0].outputFile, "");

    read = ReadText(dir, "<simboard config=\"b.cfg\"/>");
    ASSERT_TRUE(read.ok) << read.description;
    EXPECT_TRUE(read.board.devices.empty());
}

TEST(SimBoardReaderTest, MalformedBoardsAreDescribedFailures)
{
    struct Case {
        const char* xml;
        const char* reason;
    };
    const Case cases[] = {
        {"", "No document element"},
        {"<simboard config=\"b.cfg\">", "offset"},
        {"<board config=\"b.cfg\"/>", "root element"},
        {"<simboard/>", "\"config\""},
        {"<simboard config=\"b.cfg\" speed=\"1\"/>", "unknown attribute \"speed\""},
        {"<simboard config=\"b.cfg\"><cpu/></simboard>", "unknown element"},
        {"<simboard config=\"b.cfg\">text</simboard>", "unexpected text"},
        {"<simboard config=\"b.cfg\"><device type=\"1\"/></simboard>", "\"name\""},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"1\" tracid=\"3\"/></simboard>", "tracid"},
        {"<simboard config=\"b.cfg\"><device name=\"A\"/></simboard>", "\"type\""},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"0x\"/></simboard>", "\"0x\""},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"-1\"/></simboard>", "\"-1\""},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\" 1\"/></simboard>", "\" 1\""},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"12abc\"/></simboard>", "\"12abc\""},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"08\"/></simboard>", "\"08\""},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"0x100000000\"/></simboard>", "0x100000000"},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"1\" ready=\"yes\"/></simboard>", "\"yes\""},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"1\"/><device name=\"A\" type=\"2\"/></simboard>",
         "duplicate device"},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"1\" parent=\"B\"/></simboard>", "parent \"B\""},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"1\" parent=\"A\"/></simboard>", "own parent"},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"1\"><register name=\"R\" value=\"1\"/>"
         "<register name=\"R\" value=\"2\"/></device></simboard>",
         "duplicate register"},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"1\"><register name=\"R\"/></device></simboard>",
         "\"value\""},
        {"<simboard config=\"b.cfg\"><device name=\"A\" type=\"1\"><memory address=\"8\" value=\"1\"/>"
         "<memory address=\"010\" value=\"2\"/></device></simboard>",
         "duplicate address"},
        {"<simboard config=\"b.cfg\"><tracefactory connect=\"maybe\"/></simboard>", "\"maybe\""},
        {"<simboard config=\"b.cfg\"><tracefactory/><tracefactory/></simboard>", "only one"},
    };
    devid_test::TempDir dir;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.xml);
        SimBoardReadResult read = ReadText(dir, c.xml);
        EXPECT_FALSE(read.ok);
        EXPECT_NE(read.description.find(dir.file("simboard.xml")), std::string::npos) << read.description;
        EXPECT_NE(read.description.find(c.reason), std::string::npos) << read.description;
        EXPECT_TRUE(read.board.devices.empty());
        EXPECT_EQ(read.board.configFile, "");
    }
}

TEST(SimBoardReaderTest, MissingFolderFileOrVariableFails)
{
    devid_test::TempDir dir;
    SimBoardReadResult read = SimBoardReader::ReadFolder(dir.path());
    EXPECT_FALSE(read.ok);
    EXPECT_NE(read.description.find("simboard.xml"), std::string::npos) << read.description;

    read = SimBoardReader::ReadFolder("");
    EXPECT_FALSE(read.ok);
    EXPECT_FALSE(read.description.empty());

    unsetenv("COMMON_VEXIF");
    read = SimBoardReader::ReadFromEnvironment();
    EXPECT_FALSE(read.ok);
    EXPECT_NE(read.description.find("COMMON_VEXIF"), std::string::npos);
    setenv("COMMON_VEXIF", "", 1);
    EXPECT_FALSE(SimBoardReader::ReadFromEnvironment().ok);

    dir.write("simboard.xml", "<simboard config=\"b.cfg\"/>");
    setenv("COMMON_VEXIF", dir.path().c_str(), 1);
    EXPECT_TRUE(SimBoardReader::ReadFromEnvironment().ok);
}

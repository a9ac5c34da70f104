// Reading a simulated board folder: what a good file gives, and that every
// broken file comes back as a described failure instead of a partial board.
#include "simboard/SimBoardReader.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

using namespace Mora::Lux::Sim;

TEST(SimBoardReaderTest, ReadsAGoodBoard)
{
    devid_test::TempDir dir;
    dir.write("simboard.xml", R"(<?xml version="1.0"?>
<!-- a parent may follow its child -->
<simboard config="bench.cfg" ready="FALSE">
  <device name="CORE" type="0x51A00010" parent="ROUTER" traceid="017" dap="D" outfile="c.tdf" ready="1">
    <memory address="0xE00FF000" value="4294967295"/>
    <register name="CORE_ID" value="0X1f"/>
    <register name="BAD" value="0" fail="true"/>
  </device>
  <device name="ROUTER" type="0x38000101" adapter="false"/>
  <tracefactory connect="throw" message="busy"/>
</simboard>)");
    SimBoardReadResult read = SimBoardReader::ReadFolder(dir.path());
    ASSERT_TRUE(read.ok) << read.description;
    const SimBoard& board = read.board;
    EXPECT_EQ(board.configFile, dir.file("bench.cfg"));
    EXPECT_EQ(board.connectMode, SimConnectMode::Throw);
    EXPECT_EQ(board.connectMessage, "busy");
    ASSERT_EQ(board.devices.size(), 2u);

    const SimDevice& core = board.devices[0];
    EXPECT_EQ(core.name, "CORE");
    EXPECT_EQ(core.parent, "ROUTER");
    EXPECT_EQ(core.traceId, 15u);
    EXPECT_TRUE(core.ready);
    ASSERT_NE(core.FindRegister("CORE_ID"), nullptr);
    EXPECT_EQ(core.FindRegister("CORE_ID")->value, 31u);
    EXPECT_TRUE(core.FindRegister("BAD")->failsOnRead);
    ASSERT_NE(core.FindMemory(0xE00FF000), nullptr);
    EXPECT_EQ(core.FindMemory(0xE00FF000)->value, 0xFFFFFFFFu);

    const SimDevice& router = board.devices[1];
    EXPECT_FALSE(router.ready) << "inherits the board's readiness";
    EXPECT_FALSE(router.adapterAvailable);
    EXPECT_EQ(router.traceId, 0u);
}

TEST(SimBoardReaderTest, MalformedBoardsAreDescribedFailures)
{
    struct Case {
        const char* body;   // inside <simboard config="b.cfg">, unless it starts the file
        const char* reason; // part of the description
    };
    const Case cases[] = {
        {"<device name=\"A\" type=\"0x\"/>", "\"0x\""},
        {"<device name=\"A\" type=\"12abc\"/>", "\"12abc\""},
        {"<device name=\"A\" type=\"08\"/>", "\"08\""},
        {"<device name=\"A\" type=\"0x100000000\"/>", "0x100000000"},
        {"<device name=\"A\" type=\"1\" tracid=\"3\"/>", "tracid"},
        {"<device name=\"A\" type=\"1\"/><device name=\"A\" type=\"2\"/>", "duplicate device"},
        {"<device name=\"A\" type=\"1\" parent=\"B\"/>", "parent \"B\""},
        {"<device name=\"A\" type=\"1\"><register name=\"R\"/></device>", "\"value\""},
        {"<device name=\"A\" type=\"1\"><memory address=\"8\" value=\"1\"/><memory address=\"010\" value=\"2\"/>"
         "</device>",
         "duplicate address"},
        {"text", "unexpected text"},
    };
    devid_test::TempDir dir;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.body);
        dir.write("simboard.xml", std::string("<simboard config=\"b.cfg\">") + c.body + "</simboard>");
        SimBoardReadResult read = SimBoardReader::ReadFolder(dir.path());
        EXPECT_FALSE(read.ok);
        EXPECT_NE(read.description.find(dir.file("simboard.xml")), std::string::npos) << read.description;
        EXPECT_NE(read.description.find(c.reason), std::string::npos) << read.description;
        EXPECT_TRUE(read.board.devices.empty());
    }
    for (const char* file : {"", "<simboard config=\"b.cfg\">", "<board config=\"b.cfg\"/>", "<simboard/>"}) {
        dir.write("simboard.xml", file);
        SimBoardReadResult read = SimBoardReader::ReadFolder(dir.path());
        EXPECT_FALSE(read.ok) << file;
        EXPECT_FALSE(read.description.empty()) << file;
    }
}

TEST(SimBoardReaderTest, MissingFileOrVariableFails)
{
    devid_test::TempDir dir;
    EXPECT_FALSE(SimBoardReader::ReadFolder(dir.path()).ok);
    unsetenv("COMMON_VEXIF");
    SimBoardReadResult read = SimBoardReader::ReadFromEnvironment();
    EXPECT_FALSE(read.ok);
    EXPECT_NE(read.description.find("COMMON_VEXIF"), std::string::npos);
}

// Reading a simulated board folder: a good file, and every broken or missing
// one as a described failure instead of a partial board.
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
  <device name="CORE" type="0x51A00010" parent="ROUTER" traceid="017" ready="1">
    <memory address="0xE00FF000" value="4294967295"/><register name="CORE_ID" value="0X1f"/>
  </device>
  <device name="ROUTER" type="0x38000101" adapter="false" irlen="32" tap="chip.tap"/>
  <tracefactory connect="throw" message="busy"/>
  <openocd script="probe.cfg" timeout="900"/>
</simboard>)");
    SimBoardReadResult read = SimBoardReader::ReadFolder(dir.path());
    ASSERT_TRUE(read.ok) << read.description;
    const SimBoard& board = read.board;
    EXPECT_EQ(board.configFile, dir.file("bench.cfg"));
    EXPECT_EQ(board.connectMode, SimConnectMode::Throw);
    ASSERT_EQ(board.devices.size(), 2u);
    const SimDevice& core = board.devices[0];
    EXPECT_EQ(core.parent, "ROUTER");
    EXPECT_EQ(core.traceId, 15u);
    EXPECT_TRUE(core.ready);
    ASSERT_NE(core.FindRegister("CORE_ID"), nullptr);
    EXPECT_EQ(core.FindRegister("CORE_ID")->value, 31u);
    ASSERT_NE(core.FindMemory(0xE00FF000), nullptr);
    EXPECT_EQ(core.FindMemory(0xE00FF000)->value, 0xFFFFFFFFu);
    EXPECT_FALSE(board.devices[1].ready) << "inherits the board's readiness";
    EXPECT_FALSE(board.devices[1].adapterAvailable);
    EXPECT_EQ(board.devices[1].irLength, 32u);
    EXPECT_EQ(board.devices[1].tap, "chip.tap");
    EXPECT_TRUE(board.throughOpenOcd);
    EXPECT_EQ(board.openOcd.script, dir.file("probe.cfg"));
    EXPECT_EQ(board.openOcd.timeoutMs, 900u);
}

TEST(SimBoardReaderTest, MalformedOrMissingBoardsAreDescribedFailures)
{
    const std::pair<const char*, const char*> cases[] = { // body inside <simboard>, part of the description
        {"<device name=\"A\" type=\"12abc\"/>", "\"12abc\""},
        {"<device name=\"A\" type=\"0x100000000\"/>", "0x100000000"},
        {"<device name=\"A\" type=\"1\" tracid=\"3\"/>", "tracid"},
        {"<device name=\"A\" type=\"1\"/><device name=\"A\" type=\"2\"/>", "duplicate device"},
        {"<device name=\"A\" type=\"1\" parent=\"B\"/>", "parent \"B\""},
        {"<device name=\"A\" type=\"1\"><register name=\"R\"/></device>", "\"value\""},
        {"<device name=\"A\" type=\"1\" irlen=\"1\"/>", "irlen"},
        {"<openocd address=\"h:1\" script=\"s.cfg\"/>", "exactly one"},
        {"<openocd address=\"h:1\"/><openocd address=\"h:2\"/>", "only one <openocd>"},
    };
    devid_test::TempDir dir;
    for (const auto& [body, reason] : cases) {
        dir.write("simboard.xml", std::string("<simboard config=\"b.cfg\">") + body + "</simboard>");
        SimBoardReadResult read = SimBoardReader::ReadFolder(dir.path());
        EXPECT_FALSE(read.ok) << body;
        EXPECT_NE(read.description.find(dir.file("simboard.xml")), std::string::npos) << read.description;
        EXPECT_NE(read.description.find(reason), std::string::npos) << read.description;
        EXPECT_TRUE(read.board.devices.empty()) << body;
    }
    for (const char* file : {"", "<simboard config=\"b.cfg\">", "<simboard/>"}) {
        dir.write("simboard.xml", file);
        EXPECT_FALSE(SimBoardReader::ReadFolder(dir.path()).ok) << file;
    }
    devid_test::TempDir empty;
    EXPECT_FALSE(SimBoardReader::ReadFolder(empty.path()).ok);
    unsetenv("COMMON_VEXIF");
    SimBoardReadResult read = SimBoardReader::ReadFromEnvironment();
    EXPECT_FALSE(read.ok);
    EXPECT_NE(read.description.find("COMMON_VEXIF"), std::string::npos);
}

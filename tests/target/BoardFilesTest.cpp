// The board configuration file (emulator and port) and the alias file (device families).
#include "tests/target/TargetBoard.h"

#include <gtest/gtest.h>

namespace {

using Mora::Lux::Trace::BoardConfig;

TEST(BoardFileTest, KeysAreReadInsideSectionsOnly)
{
    devid_test::TargetBoard board;
    auto identifier = board.identifier();
    auto parse = [&](const std::string& text) {
        board.raw("board.cfg", text);
        return std::unique_ptr<BoardConfig>(identifier->ParseBoardConfigFile(board.path("board.cfg").c_str()));
    };

    auto config = parse("$ s com_drvr = first.out\ncom_drvr = outside.out\n$ emulator\n"
                        "   com_drvr = kmr770u.out\ncom_other = 7 com_port=0x240\ncom_port 0x9\n$ more\n");
    ASSERT_TRUE(config);
    EXPECT_EQ(config->emulatorName, "kmr770u");
    EXPECT_EQ(config->emulatorPort, "0x240");
    EXPECT_EQ(board.logged("DevId: EMU name kmr770u"), 1);

    // A "$" line closes without opening; only one blank after "=" is skipped.
    config = parse("\n$ one\ncom_drvr =  spaced\ncom_port = 1\ncom_port = 2\n$ two\ncom_port = 3\n");
    EXPECT_EQ(config->emulatorName, "kmr770");
    EXPECT_EQ(config->emulatorPort, "2");

    const std::string longValue(40, 'a');
    config = parse("x\n$ s\ncom_drvr = " + longValue + ".out\n" + std::string(16383, '#') + "com_port = 77\n");
    EXPECT_EQ(config->emulatorName, std::string(31, 'a'));
    EXPECT_EQ(config->emulatorPort, "77");

    EXPECT_EQ(identifier->ParseBoardConfigFile(nullptr), nullptr);
    EXPECT_EQ(identifier->ParseBoardConfigFile(board.path("missing.cfg").c_str()), nullptr);
}

TEST(AliasFileTest, SectionsAndEntries)
{
    devid_test::TargetBoard board;
    board.raw("kmralias.cfg", "~ Ignored\nalias = 0x1 outside\n~ Talon  words\n  alias = 0x51A00010 alias = 017\n"
                              "alias = 0 alias = junk\nalias = 12\n~\nalias = 99\n~ Corvid\nalias = 0xFFFFFFFF");
    auto identifier = board.identifier();
    const auto& families = identifier->GetFamilies();
    ASSERT_EQ(families.size(), 4u);
    EXPECT_EQ(families[0].id, 0x51A00010u);
    EXPECT_EQ(families[1].id, 15u);
    EXPECT_EQ(families[2].id, 12u);
    EXPECT_EQ(families[2].family, "Talon");
    EXPECT_EQ(families[3].id, 0xFFFFFFFFu);
    EXPECT_EQ(families[3].family, "Corvid");
}

TEST(AliasFileTest, MissingFileIsReported)
{
    devid_test::TargetBoard board;
    auto identifier = board.identifier();
    EXPECT_TRUE(identifier->GetFamilies().empty());
    EXPECT_EQ(board.logged("DevId: Cannot open kmralias.cfg file"), 1);
}

} // namespace

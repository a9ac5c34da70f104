// The board configuration file (emulator and port) and the alias file (device families).
#include "tests/target/TargetBoard.h"

#include <gtest/gtest.h>

namespace {

TEST(BoardFileTest, KeysAreReadInsideSectionsOnly)
{
    devid_test::TargetBoard board;
    auto identifier = board.identifier();
    auto parse = [&](const std::string& text) {
        board.raw("board.cfg", text);
        using Mora::Lux::Trace::BoardConfig;
        return std::unique_ptr<BoardConfig>(identifier->ParseBoardConfigFile(board.path("board.cfg").c_str()));
    };
    // The first line is a title even when it looks like a section.
    auto config = parse("$ s com_drvr = first.out\ncom_drvr = outside.out\n$ emulator\n"
                        "   com_drvr = kmr770u.out\ncom_other = 7 com_port=0x240\ncom_port 0x9\n$ more\n");
    ASSERT_TRUE(config);
    EXPECT_EQ(config->emulatorName, "kmr770u");
    EXPECT_EQ(config->emulatorPort, "0x240");

    // A "$" line closes without opening.
    config = parse("\n$ one\ncom_port = 1\ncom_port = 2\n$\ncom_port = 3\n");
    EXPECT_EQ(config->emulatorName, "kmr770");
    EXPECT_EQ(config->emulatorPort, "2");

    config = parse("x\n$ s\ncom_drvr = " + std::string(40, 'a') + ".out\n");
    EXPECT_EQ(config->emulatorName, std::string(31, 'a'));
    EXPECT_EQ(identifier->ParseBoardConfigFile(board.path("missing.cfg").c_str()), nullptr);
}

TEST(AliasFileTest, SectionsAndEntries)
{
    devid_test::TargetBoard board;
    EXPECT_TRUE(board.identifier()->GetFamilies().empty());
    EXPECT_EQ(board.logged("DevId: Cannot open kmralias.cfg file"), 1);

    board.raw("kmralias.cfg", "~ Ignored\nalias = 0x1 outside\n~ Talon  words\n  alias = 0x51A00010 alias = 017\n"
                              "alias = 0\n~\nalias = 99\n~ Corvid\nalias = 0xFFFFFFFF");
    auto identifier = board.identifier();
    const auto& families = identifier->GetFamilies();
    ASSERT_EQ(families.size(), 3u);
    EXPECT_EQ((std::vector<uint32_t>{families[0].id, families[1].id, families[2].id}),
              (std::vector<uint32_t>{0x51A00010u, 15u, 0xFFFFFFFFu}));
    EXPECT_EQ(families[1].family + " " + families[2].family, "Talon Corvid");
}

} // namespace

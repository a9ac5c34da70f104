#include "tests/config/ConfigTestSupport.h"

#include "tdf/TDFHandler.h"

using namespace devid_test;
using namespace Mora::Lux::Trace;

namespace {

// Runs in a forked child, so the restoring parent has never seen the board.
bool SaveOnExampleBoard(const std::string& tdfFile)
{
    setenv("COMMON_VEXIF", DEVID_SOURCE_DIR "/examples/board", 1);
    CDeviceIdentifierImpl live;
    const bool saved = live.SaveConfiguration("bench", eTraceDataFileDCM);
    live.SaveConfiguration(tdfFile, eTraceDataFileTDF);
    return saved;
}

void ExpectBenchSession(CDeviceIdentifierImpl& d)
{
    EXPECT_EQ(d.GetSessionSetting("", eSessionSettingEmuName), "kmr770u");
    EXPECT_EQ(d.GetSessionSetting("", eSessionSettingEmuPort), "0x240");
    EXPECT_EQ(d.GetOutFileName("TALON_1"), "trace_talon1.tdf");
    EXPECT_EQ(d.GetSessionSetting("WREN_CORE", eSessionSettingOutFile), "trace_wren.tdf");
    EXPECT_EQ(d.GetOutFileName("JTAG_K"), "");
}

TEST_F(ConfigTest, ExampleBoardSessionRestoresWithoutBoard)
{
    const std::string tdfFile = home.file("bench.tdf");
    TDFHandler().CreateTDFFile(tdfFile.c_str());
    EXPECT_EXIT(std::exit(SaveOnExampleBoard(tdfFile) ? 0 : 1), ::testing::ExitedWithCode(0), "");

    const std::string text = readFile(TraceDir() + "/bench.dim");
    EXPECT_THAT(text, HasSubstr("EMU=kmr770u\nPORT=0x240\n")) << Log();
    EXPECT_THAT(text, HasSubstr("\nOUTFILES=PLOVER_CPU$trace_plover.tdf~QUILL_DSP$trace_quill.tdf~"
                                "TALON_0$trace_talon0.tdf~TALON_1$trace_talon1.tdf~WISP_CTRL$trace_wisp.tdf~"
                                "WREN_CORE$trace_wren.tdf~\n"));
    EXPECT_THAT(text, HasSubstr("\nTRACEID=0x3$TALON_0~0x4$TALON_1~0x5$QUILL_DSP~0x7$PLOVER_CPU~0x9$WREN_CORE~\n"));

    unsetenv("COMMON_VEXIF");
    auto fromDim = Make();
    ASSERT_TRUE(fromDim->LoadConfiguration(TraceDir() + "/bench.dim", eTraceDataFileDCM));
    ExpectBenchSession(*fromDim);
    auto fromTdf = Make();
    ASSERT_TRUE(fromTdf->LoadConfiguration(tdfFile, eTraceDataFileTDF));
    ExpectBenchSession(*fromTdf);
}

} // namespace

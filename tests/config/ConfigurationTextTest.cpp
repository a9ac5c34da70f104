#include "tests/config/ConfigTestSupport.h"

using namespace devid_test;
using ::testing::ElementsAre;

namespace {

const char kSession[] =
    "EMU=kmr990\nPORT=usb:7\nDEVICEID=0xb9af02f\n"
    "DEVINFO=0x75803800$CoreA$RouterR~0x75803800$CoreB$RouterR~0x38000405$RouterR$RouterR~\n"
    "OUTFILES=CoreA$CoreA.tdf~CoreB$b.tdf~\nTRACEID=0x2$CoreA~0x11$CoreB~\n";

TEST_F(ConfigTest, SessionTextRoundTrips)
{
    auto d = Make();
    std::string text;
    ASSERT_TRUE(d->ComposeConfiguration(text));
    EXPECT_EQ(text, "EMU=kmr770\nPORT=0\nDEVICEID=\nDEVINFO=\nOUTFILES=\nTRACEID=\n");

    ASSERT_TRUE(LoadText(*d, kSession));
    ASSERT_TRUE(d->ComposeConfiguration(text));
    EXPECT_EQ(text, kSession);
    const auto& records = d->GetConnections();
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[1].parentName, "RouterR");
    EXPECT_EQ(records[1].traceId, 0x11u);
    EXPECT_EQ(records[2].traceId, 0u);
}

TEST_F(ConfigTest, WriterRefusesNamesThatCannotBeReadBack)
{
    for (const std::string bad : {"a$b", "a~b", "a\rb", "a\nb", ""}) {
        auto d = Make();
        ASSERT_TRUE(LoadText(*d, "EMU=e\n"));
        Access(*d).Connections().push_back({1, 0, "Core" + bad + "X", bad.empty() ? "" : "R"});
        std::string text = "untouched";
        EXPECT_FALSE(d->ComposeConfiguration(text)) << bad;
        EXPECT_EQ(text, "untouched");
        EXPECT_FALSE(d->SaveConfiguration("run", Mora::Lux::Trace::eTraceDataFileDCM));
    }
    EXPECT_FALSE(std::filesystem::exists(TraceDir() + "/run.dim"));
}

TEST_F(ConfigTest, ReaderLineRules)
{
    auto d = Make();
    ASSERT_TRUE(LoadText(*d, " EMU=a\n#EMU=b\n\nEMU =c\nemu=d\nEMU\n=e\nEMU=real\r\nPORT=3\r\n"
                             "DEVICEID=0x10,0x20\nDEVICEID=\nDEVICEID=0x100000000\nDEVICEID=zz\n"
                             "TRACEID=0x5$P~\nDEVINFO=0x1$$P~\nDEVINFO=0x2$Q\nTRACEID=0x7$Q~0x9$none~\n"
                             "OUTFILES=A$a.tdf~~B$b.tdf~A$a2.tdf~C\n"));
    EXPECT_EQ(d->GetBoardConfig()->emulatorName, "real");
    EXPECT_EQ(d->GetBoardConfig()->emulatorPort, "3");
    // Every comma piece adds the first ID; numbers saturate alike on 32 and 64 bits.
    EXPECT_THAT(d->GetDeviceIds(), ElementsAre(0x10u, 0x10u, 0xffffffffu, 0u));
    const auto& records = d->GetConnections();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].name, "P");
    EXPECT_EQ(records[0].parentName, "");
    EXPECT_EQ(records[0].traceId, 0u);
    EXPECT_EQ(records[1].traceId, 7u);
    EXPECT_EQ(d->GetOutFiles(), (std::map<std::string, std::string>{{"A", "a2.tdf"}, {"B", "b.tdf"}}));
}

TEST_F(ConfigTest, WriterAndReaderAgreeOnTheLongestLine)
{
    // "DEVINFO=0x1$" + name + "$P~" with a name of 16368 is the longest line either side takes.
    for (const size_t nameLength : {16368u, 16369u}) {
        auto d = Make();
        ASSERT_TRUE(LoadText(*d, "EMU=e\n"));
        Access(*d).Connections().push_back({1, 0, std::string(nameLength, 'n'), "P"});
        std::string text;
        ASSERT_EQ(d->ComposeConfiguration(text), nameLength == 16368u) << nameLength;
        EXPECT_TRUE(text.empty() || LoadText(*Make(), text));
    }
}

TEST_F(ConfigTest, ReaderStopsAtAnOverlongLine)
{
    auto over = Make();
    EXPECT_FALSE(LoadText(*over, "EMU=kept\nDEVINFO=0x1$" + std::string(16372, 'n') + "\nPORT=lost\n"));
    EXPECT_EQ(over->GetBoardConfig()->emulatorName, "kept");
    EXPECT_EQ(over->GetBoardConfig()->emulatorPort, "");
    EXPECT_TRUE(over->GetConnections().empty());
}

} // namespace

#include "tests/config/ConfigTestSupport.h"

#include <gmock/gmock.h>

using namespace devid_test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

const char kSession[] =
    "EMU=kmr990\n"
    "PORT=usb:7\n"
    "DEVICEID=0xb9af02f\n"
    "DEVINFO=0x75803800$CoreA$RouterR~0x75803800$CoreB$RouterR~0x38000405$RouterR$RouterR~\n"
    "OUTFILES=CoreA$CoreA.tdf~CoreB$b.tdf~\n"
    "TRACEID=0x2$CoreA~0x11$CoreB~\n";

TEST_F(ConfigTest, SessionTextRoundTrips)
{
    auto first = Make();
    ASSERT_TRUE(LoadText(*first, kSession));
    EXPECT_EQ(Compose(*first), kSession);

    auto second = Make();
    ASSERT_TRUE(LoadText(*second, Compose(*first)));
    const auto& records = second->GetConnections();
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[1].name, "CoreB");
    EXPECT_EQ(records[1].parentName, "RouterR");
    EXPECT_EQ(records[1].traceId, 0x11u);
    EXPECT_EQ(records[2].traceId, 0u);
    EXPECT_THAT(second->GetDeviceIds(), ElementsAre(0xb9af02fu));
}

TEST_F(ConfigTest, BoardRecordDefaults)
{
    auto d = Make();
    EXPECT_EQ(Compose(*d), "EMU=kmr770\nPORT=0\nDEVICEID=\nDEVINFO=\nOUTFILES=\nTRACEID=\n");
    EXPECT_FALSE(d->LoadConfigurationDCMFile(nullptr));
    EXPECT_EQ(d->GetBoardConfig(), nullptr);
    ASSERT_TRUE(LoadText(*d, ""));
    ASSERT_NE(d->GetBoardConfig(), nullptr);
    EXPECT_EQ(d->GetBoardConfig()->emulatorName, "");
}

TEST_F(ConfigTest, WriterRefusesNamesThatCannotBeReadBack)
{
    for (const std::string bad : {"a$b", "a~b", "a\rb", "a\nb", ""}) {
        auto d = Make();
        ASSERT_TRUE(LoadText(*d, "EMU=e\n"));
        Access::Connections(*d).push_back({1, 0, "Core" + bad + "X", "R"});
        if (bad.empty())
            Access::Connections(*d).back().parentName.clear();
        std::string text = "untouched";
        EXPECT_FALSE(d->ComposeConfiguration(text)) << bad;
        EXPECT_EQ(text, "untouched");
        EXPECT_FALSE(d->SaveConfiguration("run", Mora::Lux::Trace::eTraceDataFileDCM));
    }
    EXPECT_FALSE(std::filesystem::exists(TraceDir() + "/run.dim"));
    EXPECT_THAT(Log(), HasSubstr("Corea$bX"));

    auto d = Make();
    ASSERT_TRUE(LoadText(*d, "OUTFILES=A$a.tdf~\n"));
    Access::OutFiles(*d)["B"] = "b~.tdf";
    std::string text;
    EXPECT_FALSE(d->ComposeConfiguration(text));
}

TEST_F(ConfigTest, DeviceIdLineAddsFirstIdPerPiece)
{
    auto d = Make();
    ASSERT_TRUE(LoadText(*d, "DEVICEID=0x10,0x20\nDEVICEID=\nDEVICEID=0x1ffffffff\nDEVICEID=zz\n"));
    EXPECT_THAT(d->GetDeviceIds(), ElementsAre(0x10u, 0x10u, 0xffffffffu, 0u));
}

TEST_F(ConfigTest, ReaderSkipsCommentsAndInexactKeys)
{
    auto d = Make();
    ASSERT_TRUE(LoadText(*d, " EMU=a\n#EMU=b\n\nEMU =c\nemu=d\nEMU\n=e\nEMU=real\r\nPORT=3\r\n"));
    EXPECT_EQ(d->GetBoardConfig()->emulatorName, "real");
    EXPECT_EQ(d->GetBoardConfig()->emulatorPort, "3");
}

TEST_F(ConfigTest, ReaderTokenisesListLines)
{
    auto d = Make();
    ASSERT_TRUE(LoadText(*d, "TRACEID=0x5$P~\nDEVINFO=0x1$$P~\nDEVINFO=0x2$Q\nTRACEID=0x7$Q~0x9$none~\n"
                             "OUTFILES=A$a.tdf~~B$b.tdf~A$a2.tdf~C\n"));
    const auto& records = d->GetConnections();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].name, "P");
    EXPECT_EQ(records[0].parentName, "");
    EXPECT_EQ(records[0].traceId, 0u);
    EXPECT_EQ(records[1].deviceType, 2u);
    EXPECT_EQ(records[1].traceId, 7u);
    EXPECT_EQ(d->GetOutFiles(), (std::map<std::string, std::string>{{"A", "a2.tdf"}, {"B", "b.tdf"}}));
}

TEST_F(ConfigTest, ReaderLineLengthLimits)
{
    // The longest line the 16384-byte buffer holds, and one character more.
    const std::string fits = "EMU=" + std::string(16379, 'e') + "\n";
    const std::string longComment = "#" + std::string(20000, 'c') + "=x\n";
    auto d = Make();
    ASSERT_TRUE(LoadText(*d, fits + longComment + "PORT=1\n"));
    EXPECT_EQ(d->GetBoardConfig()->emulatorName.size(), 16379u);
    EXPECT_EQ(d->GetBoardConfig()->emulatorPort, "1");

    auto over = Make();
    EXPECT_FALSE(LoadText(*over, "EMU=kept\nDEVINFO=0x1$" + std::string(16372, 'n') + "\nPORT=lost\n"));
    EXPECT_EQ(over->GetBoardConfig()->emulatorName, "kept");
    EXPECT_EQ(over->GetBoardConfig()->emulatorPort, "");
    EXPECT_TRUE(over->GetConnections().empty());
    EXPECT_THAT(Log(), HasSubstr("DevId: exceeded maximum line size."));
}

} // namespace

#include "tests/config/ConfigTestSupport.h"

#include "tdf/TDFHandler.h"

#include <unistd.h>

using namespace devid_test;
using namespace Mora::Lux::Trace;

namespace {

const char kSession[] =
    "EMU=kmr990\nPORT=usb:7\nDEVICEID=0xb9af02f\nDEVINFO=0x75803800$CoreA$RouterR~0x75803800$CoreB$RouterR~\n"
    "OUTFILES=CoreA$CoreA.tdf~CoreB$b.tdf~\nTRACEID=0x2$CoreA~\n";

class StoreTest : public ConfigTest {
protected:
    // A session as loaded from a saved file; it never touches a target.
    std::unique_ptr<CDeviceIdentifierImpl> Loaded()
    {
        auto d = Make();
        EXPECT_TRUE(LoadText(*d, kSession));
        return d;
    }

    static void ExpectRestored(CDeviceIdentifierImpl& d)
    {
        EXPECT_EQ(d.GetSessionSetting("", eSessionSettingEmuPort), "usb:7");
        EXPECT_EQ(d.GetOutFileName("CoreB"), "b.tdf");
        ASSERT_EQ(d.GetConnections().size(), 2u);
        EXPECT_EQ(d.GetConnections()[0].traceId, 2u);
    }
};

TEST_F(StoreTest, DimFile)
{
    auto d = Loaded();
    EXPECT_TRUE(d->SaveConfiguration("run1", eTraceDataFileDCM));
    EXPECT_EQ(readFile(TraceDir() + "/run1.dim"), kSession);
    auto fresh = Make();
    EXPECT_TRUE(fresh->LoadConfiguration(TraceDir() + "/run1.dim", eTraceDataFileDCM));
    ExpectRestored(*fresh);

    EXPECT_FALSE(fresh->LoadConfiguration(home.file("missing.dim"), eTraceDataFileDCM));
}

TEST_F(StoreTest, TdfSectionBesideOtherSections)
{
    const std::string file = home.file("trace.tdf");
    const std::string other = "other section data";
    TDFHandler tdf;
    tdf.CreateTDFFile(file.c_str());
    uint32_t offset = 0, length = 0;
    tdf.SaveSectionHeader(file.c_str(), "OTHER", 3, offset);
    tdf.SaveSectionData(file.c_str(), "OTHER", offset, other.data(), 1, other.size(), length);

    EXPECT_FALSE(Loaded()->SaveConfiguration(file, eTraceDataFileTDF));
    std::string back(64, '\0');
    tdf.LoadSectionData(file.c_str(), "OTHER", 3, &back[0], 64, length);
    EXPECT_EQ(back.substr(0, length), other);
    auto fresh = Make();
    EXPECT_TRUE(fresh->LoadConfiguration(file, eTraceDataFileTDF));
    ExpectRestored(*fresh);
}

TEST_F(StoreTest, LoadsAtTheirLimits)
{
    // An empty DEVID section allocates fine; it fails where its data is loaded.
    const std::string file = home.file("empty.tdf");
    TDFHandler tdf;
    tdf.CreateTDFFile(file.c_str());
    uint32_t offset = 0;
    tdf.SaveSectionHeader(file.c_str(), "DEVID", 1, offset);
    EXPECT_FALSE(Make()->LoadConfiguration(file, eTraceDataFileTDF));
    EXPECT_THAT(Log(), AllOf(HasSubstr("Devid: No buffer allocated to load section data."),
                             Not(HasSubstr("memory allocation failure"))));

    // A device file name is cut to the 4131 characters its buffer holds; the load goes on.
    for (const size_t length : {4131u, 4132u, 5000u}) {
        const std::string name = "/" + std::string(length - 1, 'd');
        auto d = Make();
        EXPECT_FALSE(d->LoadConfiguration(name, eTraceDataFileDeviceXML));
        EXPECT_TRUE(d->IsConfigurationLoaded()) << length;
        EXPECT_EQ(CDeviceIdentifierImpl::GetMatchedDeviceFile(), name.substr(0, 4131));
    }
}

TEST_F(StoreTest, DeviceIdLoadsAndOfflineSettings)
{
    auto d = Make();
    d->LoadConfiguration(0x1234u);
    EXPECT_TRUE(d->IsConfigurationLoaded());
    EXPECT_TRUE(d->LoadConfiguration(0x1234u));
    EXPECT_EQ(d->GetDeviceIds().size(), 1u);

    // A loaded session answers from the file, never from a channel server.
    d = Loaded();
    FakeChannelServer server;
    Access(*d).SetChannelServer(&server);
    EXPECT_EQ(d->GetSessionSetting("", eSessionSettingDebuggerName), "Quarry Workbench");
    EXPECT_EQ(d->GetSessionSetting("", eSessionSettingEmuName), "kmr990");
    EXPECT_EQ(d->GetSessionSetting("CoreB", eSessionSettingOutFile), "b.tdf");
    EXPECT_EQ(d->GetOutFileName("CoreX"), "");
    EXPECT_EQ(d->GetSessionSetting("CoreA", static_cast<eSessionSetting>(4)), "");
    Access(*d).SetChannelServer(nullptr);
}

} // namespace

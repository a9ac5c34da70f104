#include "tests/config/ConfigTestSupport.h"

using namespace devid_test;
using namespace Mora::Lux::Trace;

namespace {

TEST_F(ConfigTest, SettingsOfALoadedSessionNeverAskTheServer)
{
    auto d = Make();
    ASSERT_TRUE(LoadText(*d, "EMU=kmr990\nOUTFILES=CoreA$a.tdf~\n"));
    FakeChannelServer server;
    Access(*d).SetChannelServer(&server);
    EXPECT_EQ(d->GetSessionSetting("", eSessionSettingDebuggerName), "Quarry Workbench");
    EXPECT_EQ(d->GetSessionSetting("", eSessionSettingEmuName), "kmr990");
    EXPECT_EQ(d->GetSessionSetting("CoreA", eSessionSettingOutFile), "a.tdf");
    EXPECT_EQ(d->GetOutFileName("CoreB"), "");
    EXPECT_EQ(d->GetSessionSetting("CoreA", static_cast<eSessionSetting>(4)), "");
    Access(*d).SetChannelServer(nullptr);
}

TEST_F(ConfigTest, LiveOutputFileNamesFillTheSavedMap)
{
    auto d = Make();
    EXPECT_EQ(d->GetOutFileName("CoreA"), "");
    FakeChannelServer server;
    Access(*d).SetChannelServer(&server);
    Access(*d).OutFiles()["xCore"] = "kept.tdf";
    EXPECT_EQ(d->GetOutFileName("CoreA"), "CoreA.tdf");
    EXPECT_EQ(d->GetOutFileName("xCore"), "");
    EXPECT_EQ(d->GetOutFileName("boom"), "");

    // The writer asks for every device so that the map covers them all.
    Access(*d).SetBoard();
    Access(*d).Connections().push_back({1, 0, "CoreB", "R"});
    std::string text;
    ASSERT_TRUE(d->ComposeConfiguration(text));
    EXPECT_THAT(text, HasSubstr("\nOUTFILES=CoreA$CoreA.tdf~CoreB$CoreB.tdf~xCore$kept.tdf~\n"));
    Access(*d).SetChannelServer(nullptr);
}

} // namespace

#include "tests/common/DeviceIdentifierTestAccess.h"
#include "tests/devid/ProcessLog.h"
#include "tests/devid/SanitizerBuild.h"

#include <gtest/gtest.h>

using namespace Mora::Lux::Trace;

namespace {

class Queries : public ::testing::Test {
protected:
    void SetUp() override
    {
        etm = model.AddModule("ETM0");
        model.AddModule("ETB");
        core = model.AddSource("id_core0", "Core0", {"ETM0"});
        dsp = model.AddSource("id_dsp", "Dsp");
        toEtb = model.AddRoute("id_core0", {"ETM0"}, "ETB", "");
        model.AddRoute("id_dsp", {}, "ETB", "");
        toEtm = model.AddRoute("id_core0", {}, "ETM0", "");
        model.MarkLoaded();
    }

    CDeviceIdentifierImpl devId;
    DeviceIdentifierTestAccess model{devId};
    CModuleInfoImpl* etm = nullptr;
    CSourceInfoImpl* core = nullptr;
    CSourceInfoImpl* dsp = nullptr;
    CTraceRouteInfoImpl* toEtb = nullptr;
    CTraceRouteInfoImpl* toEtm = nullptr;
};

} // namespace

TEST_F(Queries, ProcInfoByNameOrIdIsLinked)
{
    EXPECT_EQ(devId.GetProcInfo("id_core0"), core);
    EXPECT_EQ(devId.GetProcInfo("Core0"), core);
    EXPECT_EQ(core->GetComponents(), (std::vector<CModuleInfo*>{etm}));
    EXPECT_EQ(devId.GetProcInfo("core0"), nullptr);
    EXPECT_EQ(devId.GetProcInfo(""), nullptr);
    EXPECT_EQ(devId.GetProcInfo("x/Dsp"), nullptr);
}

TEST_F(Queries, LooseMatchAfterConfigurationLoad)
{
    CSourceInfoImpl* a8 = model.AddSource("a8", "CortexA8_0");
    CSourceInfoImpl* r4 = model.AddSource("r4", "fam/CortexR4_0");
    model.GoOffline();
    model.MarkLoaded();
    EXPECT_EQ(devId.GetProcInfo("board/CortxA8"), a8);
    EXPECT_EQ(devId.GetProcInfo("CortexR4"), r4);
    EXPECT_EQ(devId.GetProcInfo("x/Dsp"), dsp);
    EXPECT_EQ(devId.GetProcInfo("a/b/Dsp"), nullptr) << "three parts are taken whole";
    model.AddSource("u", "fam/");
    EXPECT_EQ(devId.GetProcInfo(""), nullptr) << "a trailing slash gives no second part";
    CSourceInfoImpl* unnamed = model.AddSource("e", "");
    EXPECT_EQ(devId.GetProcInfo(""), unnamed);
}

TEST_F(Queries, RoutesAreLinkedAndSelectedBySourceName)
{
    std::vector<CTraceRouteInfo*> all = devId.GetTraceRoutes();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all, devId.GetTraceRoutes());
    EXPECT_EQ(all[0], toEtb);
    EXPECT_EQ(toEtb->GetSourceInfo(), core);
    EXPECT_EQ(devId.GetTraceRoutesForProc("Core0"), (std::vector<CTraceRouteInfo*>{toEtb, toEtm}));
    EXPECT_TRUE(devId.GetTraceRoutesForProc("id_core0").empty());
}

TEST_F(Queries, ReloadDropsTheModelAndAFailedLoadGivesEmptyResults)
{
    model.GoOffline();
    devId.ReLoadDeviceDatabase();
    EXPECT_TRUE(devId.GetTraceRoutes().empty());
    EXPECT_EQ(devId.GetProcInfo("Core0"), nullptr);
    EXPECT_TRUE(devId.GetTraceRoutesForProc("Core0").empty());
    EXPECT_TRUE(devId.GetModules().empty());
}

TEST(ExampleBoardQueries, LoadOnceLinkAndReloadOnRequest)
{
    if (!devid_test::SiblingsLoadable())
        GTEST_SKIP() << "only LD_LIBRARY_PATH finds siblings under the sanitizer";
    devid_test::ProcessLog log;
    setenv("COMMON_VEXIF", DEVID_SOURCE_DIR "/examples/board", 1);
    setenv("TRACE_XMLDB_DEVICES", DEVID_SOURCE_DIR "/examples/db", 1);
    CDeviceIdentifierImpl devId;

    std::vector<CTraceRouteInfo*> routes = devId.GetTraceRoutes();
    ASSERT_FALSE(routes.empty()) << log.text();
    for (CTraceRouteInfo* route : routes)
        EXPECT_NE(route->GetSinkInfo(), nullptr);
    CSourceInfo* talon = devId.GetProcInfo("talon0");
    ASSERT_NE(talon, nullptr);
    EXPECT_FALSE(talon->GetComponents().empty());
    EXPECT_EQ(devId.GetTraceRoutesForProc(talon->GetName()).size(), 2u);

    const std::size_t added = log.count("DevId: Adding route");
    devId.ReLoadDeviceDatabase();
    EXPECT_EQ(devId.GetTraceRoutes().size(), routes.size());
    EXPECT_EQ(log.count("DevId: Adding route"), 2 * added);
}

#include "tests/common/DeviceIdentifierTestAccess.h"
#include "tests/devid/ProcessLog.h"
#include "tests/devid/SanitizerBuild.h"

#include <gtest/gtest.h>

using namespace Mora::Lux::Trace;

TEST(Queries, ProcInfoAndRoutesByNameOrIdAndLooserAfterConfigurationLoad)
{
    CDeviceIdentifierImpl devId;
    DeviceIdentifierTestAccess model{devId};
    CModuleInfoImpl* etm = model.AddModule("ETM0");
    model.AddModule("ETB");
    CSourceInfoImpl* core = model.AddSource("id_core0", "Core0", {"ETM0"});
    CSourceInfoImpl* dsp = model.AddSource("id_dsp", "Dsp");
    CTraceRouteInfoImpl* toEtb = model.AddRoute("id_core0", {"ETM0"}, "ETB", "");
    model.AddRoute("id_dsp", {}, "ETB", "");
    CTraceRouteInfoImpl* toEtm = model.AddRoute("id_core0", {}, "ETM0", "");
    model.MarkLoaded();

    EXPECT_EQ(devId.GetProcInfo("id_core0"), core);
    EXPECT_EQ(devId.GetProcInfo("Core0"), core);
    EXPECT_EQ(core->GetComponents(), (std::vector<CModuleInfo*>{etm}));
    EXPECT_EQ(devId.GetProcInfo("core0"), nullptr);
    EXPECT_EQ(devId.GetProcInfo("x/Dsp"), nullptr);
    EXPECT_EQ(devId.GetTraceRoutes().size(), 3u);
    EXPECT_EQ(devId.GetTraceRoutesForProc("Core0"), (std::vector<CTraceRouteInfo*>{toEtb, toEtm}));
    EXPECT_TRUE(devId.GetTraceRoutesForProc("id_core0").empty());

    CSourceInfoImpl* a8 = model.AddSource("a8", "CortexA8_0");
    model.GoOffline();
    model.MarkLoaded();
    EXPECT_EQ(devId.GetProcInfo("board/CortxA8"), a8);
    EXPECT_EQ(devId.GetProcInfo("x/Dsp"), dsp);
    EXPECT_EQ(devId.GetProcInfo("a/b/Dsp"), nullptr) << "three parts are taken whole";
}

TEST(ExampleBoardQueries, ScanChainNameFindsTheSourceWithModulesAndRoutes)
{
    if (devid_test::kAddressSanitizer && std::getenv("LD_LIBRARY_PATH") == nullptr)
        GTEST_SKIP() << "only LD_LIBRARY_PATH finds siblings under the sanitizer";
    devid_test::ProcessLog log;
    setenv("COMMON_VEXIF", DEVID_SOURCE_DIR "/examples/board", 1);
    setenv("TRACE_XMLDB_DEVICES", DEVID_SOURCE_DIR "/examples/db", 1);
    CDeviceIdentifierImpl devId;
    CSourceInfo* talon = devId.GetProcInfo("talon0");
    ASSERT_NE(talon, nullptr) << log.text();
    EXPECT_FALSE(talon->GetComponents().empty());
    std::vector<CTraceRouteInfo*> routes = devId.GetTraceRoutesForProc(talon->GetName());
    ASSERT_EQ(routes.size(), 2u);
    EXPECT_TRUE(routes[0]->GetSourceInfo() == talon && routes[0]->GetSinkInfo() != nullptr);
}

#include "tests/devid/DeviceIdentifierTestAccess.h"

#include <gtest/gtest.h>

using namespace Mora::Lux::Trace;

namespace {

class Queries : public ::testing::Test {
protected:
    void SetUp() override
    {
        etm = model.AddModule("ETM0");
        model.AddModule("Funnel");
        model.AddModule("ETB");
        core = model.AddSource("id_core0", "Core0", {"ETM0"});
        dsp = model.AddSource("id_dsp", "Dsp");
        toEtb = model.AddRoute("id_core0", {"Funnel"}, "ETB", "");
        model.AddRoute("id_dsp", {}, "ETB", "");
        viaId = model.AddRoute("id_core0", {}, "ETM0", "");
        model.MarkLoaded();
    }

    CDeviceIdentifierImpl devId;
    DeviceIdentifierTestAccess model{devId};
    CModuleInfoImpl* etm = nullptr;
    CSourceInfoImpl* core = nullptr;
    CSourceInfoImpl* dsp = nullptr;
    CTraceRouteInfoImpl* toEtb = nullptr;
    CTraceRouteInfoImpl* viaId = nullptr;
};

} // namespace

TEST_F(Queries, ProcInfoByNameOrIdIsLinked)
{
    CSourceInfo* byName = devId.GetProcInfo("Core0");
    EXPECT_EQ(byName, core);
    EXPECT_EQ(devId.GetProcInfo("id_core0"), core);
    EXPECT_EQ(byName->GetComponents(), (std::vector<CModuleInfo*>{etm}));
    EXPECT_EQ(devId.GetProcInfo("core0"), nullptr);
    EXPECT_EQ(devId.GetProcInfo(""), nullptr);
}

TEST_F(Queries, LooseMatchOnlyAfterConfigurationLoad)
{
    CSourceInfoImpl* a8 = model.AddSource("a8", "CortexA8_0");
    CSourceInfoImpl* r4 = model.AddSource("r4", "fam/CortexR4_0");
    EXPECT_EQ(devId.GetProcInfo("board/CortxA8"), nullptr);

    model.GoOffline();
    model.MarkLoaded();
    EXPECT_EQ(devId.GetProcInfo("board/CortxA8"), a8);
    EXPECT_EQ(devId.GetProcInfo("CortexR4"), r4);
    EXPECT_EQ(devId.GetProcInfo("x/Dsp"), dsp);
    EXPECT_EQ(devId.GetProcInfo("a/b/Dsp"), nullptr) << "three parts are taken whole";
    EXPECT_EQ(devId.GetProcInfo(""), nullptr);
    model.AddSource("u", "fam/");
    EXPECT_EQ(devId.GetProcInfo(""), nullptr) << "a trailing slash gives no second part";
    CSourceInfoImpl* empty = model.AddSource("e", "");
    EXPECT_EQ(devId.GetProcInfo(""), empty);
}

TEST_F(Queries, RoutesAreLinkedOnceAndReturnedInOrder)
{
    std::vector<CTraceRouteInfo*> first = devId.GetTraceRoutes();
    std::vector<CTraceRouteInfo*> second = devId.GetTraceRoutes();
    ASSERT_EQ(first.size(), 3u);
    EXPECT_EQ(first, second);
    EXPECT_EQ(first[0], toEtb);
    EXPECT_EQ(toEtb->GetSourceInfo(), core);
    EXPECT_EQ(toEtb->GetLinkInfo().size(), 1u);
}

TEST_F(Queries, RoutesForProcMatchTheSourceNameOnly)
{
    EXPECT_EQ(devId.GetTraceRoutesForProc("Core0"), (std::vector<CTraceRouteInfo*>{toEtb, viaId}));
    EXPECT_TRUE(devId.GetTraceRoutesForProc("id_core0").empty());
    EXPECT_TRUE(devId.GetTraceRoutesForProc("nobody").empty());
}

TEST_F(Queries, StaleModelIsDroppedAndFailedLoadGivesEmptyResults)
{
    model.GoOffline();
    devId.ReLoadDeviceDatabase();
    EXPECT_TRUE(devId.GetTraceRoutes().empty());
    EXPECT_EQ(devId.GetProcInfo("Core0"), nullptr);
    EXPECT_TRUE(devId.GetTraceRoutesForProc("Core0").empty());
    EXPECT_EQ(devId.LookupModuleInfo("ETM0"), nullptr);
    EXPECT_TRUE(devId.GetModules().empty());
}

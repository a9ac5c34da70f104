#include "tests/common/DeviceIdentifierTestAccess.h"

#include <gtest/gtest.h>

using namespace Mora::Lux::Trace;

namespace {

class Normalize : public ::testing::Test {
protected:
    CDeviceIdentifierImpl devId;
    DeviceIdentifierTestAccess model{devId};
};

} // namespace

TEST_F(Normalize, SourceLinksKnownComponentsOnceFirstMatchWinning)
{
    CModuleInfoImpl* first = model.AddModule("ETM");
    model.AddModule("ETM");
    CModuleInfoImpl* funnel = model.AddModule("Funnel");
    CSourceInfoImpl* source = model.AddSource("c0", "Core0", {"ETM", "nope", "Funnel"});

    EXPECT_EQ(source->GetModuleInfo("ETM"), nullptr);
    source->Normalize(&devId);
    source->Normalize(&devId);
    EXPECT_EQ(source->GetComponents(), (std::vector<CModuleInfo*>{first, funnel}));
    EXPECT_EQ(source->GetModuleInfo("Funnel"), funnel);
}

TEST_F(Normalize, RouteResolvesByIdAndSkipsUnknownNames)
{
    CModuleInfoImpl* link = model.AddModule("Funnel");
    CModuleInfoImpl* sink = model.AddModule("ETB");
    CModuleInfoImpl* drm = model.AddModule("Pins");
    CSourceInfoImpl* source = model.AddSource("c0", "Core0");
    model.AddSource("c0", "Shadow");

    CTraceRouteInfoImpl* full = model.AddRoute("c0", {"x", "Funnel", "y"}, "ETB", "Pins");
    full->Normalize(&devId);
    full->Normalize(&devId);
    EXPECT_EQ(full->GetSourceInfo(), source);
    EXPECT_EQ(full->GetLinkInfo(), (std::vector<CModuleInfo*>{link}));
    EXPECT_EQ(full->GetSinkInfo(), sink);
    EXPECT_EQ(full->GetDRMInfo(), drm);

    CTraceRouteInfoImpl* bare = model.AddRoute("Core0", {"x"}, "nosink", "");
    bare->Normalize(&devId);
    EXPECT_TRUE(bare->IsNormalized());
    EXPECT_EQ(bare->GetSourceInfo(), nullptr) << "sources are found by ID, not by name";
    EXPECT_TRUE(bare->GetLinkInfo().empty());
    EXPECT_EQ(bare->GetSinkInfo(), nullptr);
    EXPECT_EQ(bare->GetDRMInfo(), nullptr);
}

TEST_F(Normalize, LookupsFollowTheListsAsTheyGrowAndReset)
{
    EXPECT_EQ(devId.LookupModuleInfo("late"), nullptr);
    CModuleInfoImpl* late = model.AddModule("late");
    CSourceInfoImpl* source = model.AddSource("id7", "Core7");
    EXPECT_EQ(devId.LookupModuleInfo("late"), late);
    EXPECT_EQ(devId.LookupProcInfoById("id7"), source);
    EXPECT_EQ(devId.LookupProcInfoByProcName("Core7"), source);

    devId.Reset();
    EXPECT_EQ(devId.LookupProcInfoById("id7"), nullptr);
    CModuleInfoImpl* again = model.AddModule("late");
    EXPECT_EQ(devId.LookupModuleInfo("late"), again);
}

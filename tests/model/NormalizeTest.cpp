#include "tests/common/DeviceIdentifierTestAccess.h"

#include <gtest/gtest.h>

using namespace Mora::Lux::Trace;

TEST(Normalize, SourceLinksKnownComponentsOnceFirstMatchWinning)
{
    CDeviceIdentifierImpl devId;
    DeviceIdentifierTestAccess model{devId};
    CModuleInfoImpl* first = model.AddModule("ETM");
    model.AddModule("ETM");
    CModuleInfoImpl* funnel = model.AddModule("Funnel");
    CSourceInfoImpl* source = model.AddSource("c0", "Core0", {"ETM", "nope", "Funnel"});
    source->Normalize(&devId);
    source->Normalize(&devId);
    EXPECT_EQ(source->GetComponents(), (std::vector<CModuleInfo*>{first, funnel}));
    EXPECT_EQ(source->GetModuleInfo("Funnel"), funnel);
}

TEST(Normalize, RouteResolvesByIdInOrderAndSkipsUnknownNames)
{
    CDeviceIdentifierImpl devId;
    DeviceIdentifierTestAccess model{devId};
    CModuleInfoImpl* link = model.AddModule("Funnel");
    CModuleInfoImpl* link2 = model.AddModule("Rep");
    CModuleInfoImpl* sink = model.AddModule("ETB");
    CModuleInfoImpl* drm = model.AddModule("Pins");
    CSourceInfoImpl* source = model.AddSource("c0", "Core0");
    model.AddSource("c0", "Shadow");

    CTraceRouteInfoImpl* full = model.AddRoute("c0", {"Rep", "x", "Funnel"}, "ETB", "Pins");
    full->Normalize(&devId);
    full->Normalize(&devId);
    EXPECT_EQ(full->GetSourceInfo(), source);
    EXPECT_EQ(full->GetLinkInfo(), (std::vector<CModuleInfo*>{link2, link}));
    EXPECT_EQ(full->GetSinkInfo(), sink);
    EXPECT_EQ(full->GetDRMInfo(), drm);

    CTraceRouteInfoImpl* bare = model.AddRoute("Core0", {}, "nosink", "");
    bare->Normalize(&devId);
    EXPECT_EQ(bare->GetSourceInfo(), nullptr) << "sources are found by ID, not by name";
    EXPECT_EQ(bare->GetSinkInfo(), nullptr);
    EXPECT_EQ(bare->GetDRMInfo(), nullptr);
}

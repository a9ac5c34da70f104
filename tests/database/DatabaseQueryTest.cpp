// Queries over a loaded description: sources by name or ID, routes linked to
// their modules in order, and linking done only once.
#include "tests/database/DatabaseTestSupport.h"

#include "devid/DeviceXmlCache.h"

#include <string>

namespace devid_test {
namespace {

using Mora::Lux::Trace::CModuleInfo;
using Mora::Lux::Trace::CSourceInfo;
using Mora::Lux::Trace::CTraceRouteInfo;
using Mora::Lux::Trace::DeviceIdentifierTestAccess;

const char kDevice[] = R"(
<procs><proc id="cpu0"/><proc id="cpu1"/></procs>
<modules>
  <module id="etm0" kind="ETM" proc="cpu0" version="1"/>
  <module id="etm1" kind="ETM" proc="cpu1"/>
  <module id="funnel" kind="Funnel" proc="cpu0"/>
  <module id="tpiu" kind="TPIU" proc="cpu0"/>
  <module id="drm" kind="DRM" proc="cpu0"/>
  <module id="etm0" kind="Shadow" proc="cpu1"/>
</modules>
<sources>
  <source id="s0" proc="cpu0" stmmaster="false">
    <components><c module="etm0"/><c module="ghost"/><c module="funnel"/></components>
  </source>
  <source id="s1" proc="cpu1" stmmaster="false"><components><c module="etm1"/></components></source>
</sources>
<trace_routes>
  <route><source source="s0"/><link module="tpiu"/><link module="nosuch"/><link module="funnel"/>
         <sink module="tpiu"/><pin module="drm"/></route>
  <route><source source="s1"/><link module="funnel"/><sink module="tpiu"/></route>
  <route><source source="s9"/><sink module="nosink"/><pin module="nodrm"/></route>
</trace_routes>
)";

class DatabaseQueryTest : public DatabaseTest {
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        Mora::Lux::Trace::InvalidateDeviceXmlName();
        db.write("device.xml", DeviceXml("id=\"dev\" value=\"0x42\"", kDevice));
        devId = MakeDevId();
        ASSERT_TRUE(devId->LoadDeviceDatabase(0x42));
        DeviceIdentifierTestAccess(*devId).MarkLoaded();
    }

    std::vector<std::string> Names(const std::vector<CModuleInfo*>& modules)
    {
        std::vector<std::string> names;
        for (CModuleInfo* module : modules)
            names.push_back(module->GetName());
        return names;
    }

    std::unique_ptr<CDeviceIdentifierImpl> devId;
};

TEST_F(DatabaseQueryTest, SourcesAreFoundByNameOrIdAndLinkedOnce)
{
    CSourceInfo* byName = devId->GetProcInfo("cpu0");
    ASSERT_NE(nullptr, byName);
    EXPECT_EQ(byName, devId->GetProcInfo("s0"));
    EXPECT_EQ(nullptr, devId->GetProcInfo("cpu7"));
    EXPECT_EQ(nullptr, devId->GetProcInfo("CPU0"));

    // Unknown components are skipped; a repeated module name finds the first.
    EXPECT_EQ((std::vector<std::string>{"etm0", "funnel"}), Names(byName->GetComponents()));
    EXPECT_EQ("ETM", byName->GetModuleInfo("etm0")->GetModuleKindStr());
    EXPECT_EQ(nullptr, byName->GetModuleInfo("etm1"));
    EXPECT_EQ(2u, devId->GetProcInfo("cpu0")->GetComponents().size());

    CSourceInfo* second = devId->GetProcInfo("s1");
    ASSERT_NE(nullptr, second);
    EXPECT_EQ("cpu1", second->GetName());
    EXPECT_EQ((std::vector<std::string>{"etm1"}), Names(second->GetComponents()));
}

TEST_F(DatabaseQueryTest, RoutesResolveInOrderAndSkipUnknownNames)
{
    std::vector<CTraceRouteInfo*> routes = devId->GetTraceRoutes();
    ASSERT_EQ(3u, routes.size());

    EXPECT_EQ(devId->GetProcInfo("s0"), routes[0]->GetSourceInfo());
    EXPECT_EQ((std::vector<std::string>{"tpiu", "funnel"}), Names(routes[0]->GetLinkInfo()));
    ASSERT_NE(nullptr, routes[0]->GetSinkInfo());
    EXPECT_EQ("tpiu", routes[0]->GetSinkInfo()->GetName());
    ASSERT_NE(nullptr, routes[0]->GetDRMInfo());
    EXPECT_EQ("drm", routes[0]->GetDRMInfo()->GetName());

    EXPECT_EQ(nullptr, routes[1]->GetDRMInfo());

    EXPECT_EQ(nullptr, routes[2]->GetSourceInfo());
    EXPECT_EQ(nullptr, routes[2]->GetSinkInfo());
    EXPECT_EQ(nullptr, routes[2]->GetDRMInfo());

    // A second query returns the same objects without linking them again.
    EXPECT_EQ(routes, devId->GetTraceRoutes());
    EXPECT_EQ(2u, routes[0]->GetLinkInfo().size());

    EXPECT_EQ((std::vector<CTraceRouteInfo*>{routes[0]}), devId->GetTraceRoutesForProc("cpu0"));
    EXPECT_EQ((std::vector<CTraceRouteInfo*>{routes[1]}), devId->GetTraceRoutesForProc("cpu1"));
    EXPECT_TRUE(devId->GetTraceRoutesForProc("s0").empty());
    EXPECT_TRUE(devId->GetTraceRoutesForProc("nobody").empty());
}

} // namespace
} // namespace devid_test

// The example target database: every description loads for its own device
// ID, and one device reads back completely through the client interfaces.
#include "tests/database/DatabaseTestSupport.h"

#include <pugixml.hpp>

namespace devid_test {
namespace {

const std::string kExamples = std::string(DEVID_SOURCE_DIR) + "/examples/db";

using ExampleDatabaseTest = DatabaseTest;

TEST_F(ExampleDatabaseTest, EveryDescriptionLoadsForItsOwnDeviceId)
{
    int described = 0;
    for (const auto& entry : std::filesystem::directory_iterator(kExamples)) {
        const std::string name = entry.path().filename().string();
        if (name.find("device") == std::string::npos || name.find("xml") == std::string::npos)
            continue;
        SCOPED_TRACE(name);
        pugi::xml_document doc;
        ASSERT_TRUE(doc.load_file(entry.path().c_str()));
        const char* value = doc.document_element().first_child().attribute("value").value();
        // Alone in the folder, so masks of other files cannot take the ID.
        TempDir alone;
        std::filesystem::copy_file(entry.path(), alone.file(name));
        setenv("TRACE_XMLDB_DEVICES", alone.path().c_str(), 1);
        InvalidateDeviceXmlName();
        std::size_t mark = Log().size();
        auto devId = MakeDevId();
        EXPECT_TRUE(devId->LoadDeviceDatabase(static_cast<uint32_t>(std::strtoul(value, nullptr, 0))));
        EXPECT_FALSE(devId->GetSources().empty());
        // No failure line of any kind (they carry the "E" level letter).
        EXPECT_EQ(std::string::npos, LogSince(mark).find("    E ")) << LogSince(mark);
        ++described;
    }
    EXPECT_GE(described, 3);
}

TEST_F(ExampleDatabaseTest, KestrelReadsBackEndToEnd)
{
    setenv("TRACE_XMLDB_DEVICES", kExamples.c_str(), 1);
    auto devId = MakeDevId();
    // The top nibble is the silicon revision, which the description ignores.
    ASSERT_TRUE(devId->LoadDeviceDatabase(0x5B8E402F));
    EXPECT_EQ(kExamples + "/device_kestrel.xml", devId->GetLoadedDeviceFile());
    DeviceIdentifierTestAccess(*devId).MarkLoaded();

    const auto& procs = devId->GetProcessors();
    ASSERT_EQ(4u, procs.size());
    EXPECT_EQ(0xE00FF000u, procs[2]->idRegister->GetMemoryAddress());

    CSourceInfo* talon = devId->GetProcInfo("talon0");
    ASSERT_NE(nullptr, talon);
    CModuleInfo* etm = talon->GetModuleInfo("TALON0_ETM");
    ASSERT_NE(nullptr, etm);
    std::vector<CRegisterInfo*> regs = etm->GetRegisterInfo();
    ASSERT_EQ(3u, regs.size());
    EXPECT_EQ(0xE0041000u, regs[0]->GetMemoryAddress());
    EXPECT_EQ("ETMIDR", regs[2]->GetDriverRegisterName());
    std::vector<CMappingInfo*> map = etm->GetMappingInfo("name.value");
    ASSERT_EQ(2u, map.size());
    EXPECT_EQ("timestamp_bits=48", map[1]->GetKey() + "=" + map[1]->GetValue());
    EXPECT_TRUE(devId->GetProcInfo("wisp0")->IsSTMMaster());

    std::vector<CTraceRouteInfo*> talonRoutes = devId->GetTraceRoutesForProc("talon0");
    ASSERT_EQ(2u, talonRoutes.size());
    for (CTraceRouteInfo* route : talonRoutes) {
        EXPECT_EQ(talon, route->GetSourceInfo());
        ASSERT_EQ(2u, route->GetLinkInfo().size());
        EXPECT_EQ("K_REPLICATOR", route->GetLinkInfo()[1]->GetName());
        EXPECT_EQ("K_DRM", route->GetDRMInfo() ? route->GetDRMInfo()->GetName() : "");
    }
    EXPECT_EQ("K_ETB", talonRoutes[0]->GetSinkInfo()->GetName());
    EXPECT_EQ("K_TPIU", talonRoutes[1]->GetSinkInfo()->GetName());
}

} // namespace
} // namespace devid_test

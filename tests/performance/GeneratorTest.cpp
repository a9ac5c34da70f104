#include "bench/DatabaseGenerator.h"

#include "devid/CDeviceIdentifierImpl.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CSourceInfoImpl.h"
#include "devid/model/CTraceRouteInfoImpl.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

using devid_bench::DatabaseGenerator;
using devid_bench::DeviceShape;
using devid_bench::GeneratedDatabase;
using Mora::Lux::Trace::CDeviceIdentifierImpl;

// The benchmarks rely on the matching file being read last and on the loaded
// device having the shape asked for; a mistake would not fail them.
TEST(DatabaseGenerator, MatchingFileIsListedLastAndLoadsWithItsShape)
{
    const DeviceShape shape{2, 6, 3, 3, 2, 4, 2};
    const uint32_t id = 0x2C0DE02Fu;
    devid_test::TempDir dir;
    const std::string folder = dir.file("db");
    GeneratedDatabase database;
    std::string error;
    ASSERT_TRUE(DatabaseGenerator::WriteDatabase(folder, 5, id, shape, database, error)) << error;
    std::vector<std::string> listed;
    ASSERT_TRUE(DatabaseGenerator::ListCandidates(folder, listed, error)) << error;
    ASSERT_EQ(5u, listed.size());
    EXPECT_EQ(database.filesInDirectoryOrder, listed);
    EXPECT_EQ(database.matchingFile, listed.back());
    EXPECT_EQ(4u, database.matchingPosition);

    setenv("TRACE_XMLDB_DEVICES", folder.c_str(), 1);
    CDeviceIdentifierImpl devId;
    ASSERT_TRUE(devId.LoadDeviceDatabase(id));
    EXPECT_EQ(database.matchingFile, devId.GetLoadedDeviceFile());
    EXPECT_EQ(shape.processors, devId.GetProcessors().size());
    ASSERT_EQ(shape.modules, devId.GetModules().size());
    ASSERT_EQ(shape.sources, devId.GetSources().size());
    ASSERT_EQ(shape.routes, devId.GetRoutes().size());
    for (const auto& module : devId.GetModules())
        EXPECT_EQ(shape.registersPerModule, module->GetRegisterInfo().size()) << module->GetName();
    for (const auto& source : devId.GetSources()) {
        source->Normalize(&devId);
        EXPECT_EQ(shape.componentsPerSource, source->GetComponents().size()) << source->GetID();
    }
    for (const auto& route : devId.GetRoutes()) {
        route->Normalize(&devId);
        EXPECT_EQ(shape.linksPerRoute, route->GetLinkInfo().size());
        EXPECT_NE(nullptr, route->GetSinkInfo());
        EXPECT_NE(nullptr, route->GetDRMInfo());
    }
    EXPECT_FALSE(devId.LoadDeviceDatabase(id ^ 1u)) << "the other files describe IDs far from it";

    // A second run with the same parameters keeps the folder as it is.
    GeneratedDatabase again;
    ASSERT_TRUE(DatabaseGenerator::WriteDatabase(folder, 5, id, shape, again, error)) << error;
    EXPECT_TRUE(again.reused);
    EXPECT_EQ(database.matchingFile, again.matchingFile);
}

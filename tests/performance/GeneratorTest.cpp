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

namespace {

const DeviceShape kSmall{2, 6, 3, 3, 2, 4, 2};
const uint32_t kId = 0x2C0DE02Fu;

} // namespace

// The benchmarks rely on all of this: a wrong shape or order would make them
// measure something else without failing.
TEST(DatabaseGenerator, MatchingFileIsListedLastAndLoadsWithItsShape)
{
    devid_test::TempDir dir;
    const std::string folder = dir.file("db");
    GeneratedDatabase database;
    std::string error;
    ASSERT_TRUE(DatabaseGenerator::WriteDatabase(folder, 5, kId, kSmall, database, error)) << error;
    ASSERT_EQ(5u, database.filesInDirectoryOrder.size());
    EXPECT_EQ(database.matchingFile, database.filesInDirectoryOrder.back());
    EXPECT_EQ(4u, database.matchingPosition);
    std::vector<std::string> listed;
    ASSERT_TRUE(DatabaseGenerator::ListCandidates(folder, listed, error)) << error;
    EXPECT_EQ(database.filesInDirectoryOrder, listed);

    setenv("TRACE_XMLDB_DEVICES", folder.c_str(), 1);
    CDeviceIdentifierImpl devId;
    ASSERT_TRUE(devId.LoadDeviceDatabase(kId));
    EXPECT_EQ(database.matchingFile, devId.GetLoadedDeviceFile());
    EXPECT_EQ(kSmall.processors, devId.GetProcessors().size());
    ASSERT_EQ(kSmall.modules, devId.GetModules().size());
    ASSERT_EQ(kSmall.sources, devId.GetSources().size());
    ASSERT_EQ(kSmall.routes, devId.GetRoutes().size());
    for (const auto& module : devId.GetModules())
        EXPECT_EQ(kSmall.registersPerModule, module->GetRegisterInfo().size()) << module->GetName();
    // Every name in the description resolves.
    for (const auto& source : devId.GetSources()) {
        source->Normalize(&devId);
        EXPECT_EQ(kSmall.componentsPerSource, source->GetComponents().size()) << source->GetID();
    }
    for (const auto& route : devId.GetRoutes()) {
        route->Normalize(&devId);
        EXPECT_NE(nullptr, route->GetSourceInfo());
        EXPECT_EQ(kSmall.linksPerRoute, route->GetLinkInfo().size());
        EXPECT_NE(nullptr, route->GetSinkInfo());
        EXPECT_NE(nullptr, route->GetDRMInfo());
    }
    EXPECT_FALSE(devId.LoadDeviceDatabase(kId ^ 1u)) << "the other files describe IDs far from it";
}

TEST(DatabaseGenerator, KeepsAnUnchangedFolderAndRewritesAChangedOne)
{
    devid_test::TempDir dir;
    const std::string folder = dir.file("db");
    GeneratedDatabase first;
    GeneratedDatabase second;
    GeneratedDatabase third;
    std::string error;
    ASSERT_TRUE(DatabaseGenerator::WriteDatabase(folder, 3, kId, kSmall, first, error)) << error;
    EXPECT_FALSE(first.reused);
    ASSERT_TRUE(DatabaseGenerator::WriteDatabase(folder, 3, kId, kSmall, second, error)) << error;
    EXPECT_TRUE(second.reused);
    EXPECT_EQ(first.matchingFile, second.matchingFile);
    ASSERT_TRUE(DatabaseGenerator::WriteDatabase(folder, 4, kId, kSmall, third, error)) << error;
    EXPECT_FALSE(third.reused);
    EXPECT_EQ(4u, third.filesInDirectoryOrder.size());
    EXPECT_EQ(third.matchingFile, third.filesInDirectoryOrder.back());

    GeneratedDatabase none;
    EXPECT_FALSE(DatabaseGenerator::WriteDatabase(folder, 0, kId, kSmall, none, error));
    EXPECT_FALSE(error.empty());
}

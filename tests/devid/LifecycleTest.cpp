#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DevIdLog.h"
#include "tests/devid/ProcessLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace Mora::Lux::Trace;

namespace {

std::string Created(const void* instance) { return "DevId: Creating instance: this=" + HexAddress(instance); }
std::string Deleted(const void* instance) { return "DevId: Deleting instance: this=" + HexAddress(instance); }

} // namespace

TEST(Lifecycle, ReferencesShareOneInstanceUntilTheLastDestroy)
{
    devid_test::ProcessLog log;
    CDeviceIdentifier* first = CreateDeviceIdentifier();
    CDeviceIdentifier* second = CreateDeviceIdentifier();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_EQ(log.count("DevId: Creating instance"), 1u);

    DestroyDeviceIdentifier(first, false);
    EXPECT_EQ(log.count(Deleted(first)), 0u);
    TmpDestroyDeviceIdentifier(second, false);
    EXPECT_EQ(log.count(Deleted(first)), 1u);

    // Nothing left: a null destroy must not drive the count below zero.
    DestroyDeviceIdentifier(nullptr, false);
    CDeviceIdentifier* third = CreateDeviceIdentifier();
    EXPECT_EQ(log.count("DevId: Creating instance"), 2u);
    DestroyDeviceIdentifier(third, false);
    EXPECT_EQ(log.count("DevId: Deleting instance"), 2u);
}

TEST(Lifecycle, ForcedDestroyEndsTheInstanceWhateverTheCount)
{
    devid_test::ProcessLog log;
    CDeviceIdentifier* shared = CreateDeviceIdentifier();
    CreateDeviceIdentifier();
    CreateDeviceIdentifier();
    DestroyDeviceIdentifier(shared, true);
    EXPECT_EQ(log.count(Deleted(shared)), 1u);

    CDeviceIdentifier* fresh = CreateDeviceIdentifier();
    EXPECT_EQ(log.count("DevId: Creating instance"), 2u);
    DestroyDeviceIdentifier(fresh, false);
    EXPECT_EQ(log.count("DevId: Deleting instance"), 2u);
}

TEST(Lifecycle, ForeignPointerUsesUpTheCountButDestroysNothing)
{
    devid_test::ProcessLog log;
    CDeviceIdentifier* shared = CreateDeviceIdentifier();
    auto* foreign = new CDeviceIdentifierImpl();
    DestroyDeviceIdentifier(foreign, false);
    EXPECT_EQ(log.count("DevId: Deleting instance"), 0u);

    // The count is 0 now, so the next create builds a second instance and the
    // first is orphaned; the client has to free it itself.
    CDeviceIdentifier* next = CreateDeviceIdentifier();
    EXPECT_NE(next, shared);
    EXPECT_EQ(log.count(Created(next)), 1u);
    DestroyDeviceIdentifier(next, false);
    EXPECT_EQ(log.count(Deleted(next)), 1u);
    EXPECT_EQ(log.count(Deleted(shared)), 0u);
    delete shared;
    delete foreign;
}

TEST(Lifecycle, ConcurrentCreatesBuildOneInstance)
{
    devid_test::ProcessLog log;
    const int threads = 8;
    std::vector<CDeviceIdentifier*> got(threads, nullptr);
    std::atomic<int> ready{0};
    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i) {
        workers.emplace_back([&, i] {
            ++ready;
            while (ready.load() < threads) {
            }
            got[i] = CreateDeviceIdentifier();
        });
    }
    for (auto& worker : workers)
        worker.join();
    for (CDeviceIdentifier* instance : got)
        EXPECT_EQ(instance, got[0]);
    EXPECT_EQ(log.count("DevId: Creating instance"), 1u);
    for (CDeviceIdentifier* instance : got)
        DestroyDeviceIdentifier(instance, false);
    EXPECT_EQ(log.count("DevId: Deleting instance"), 1u);
}

TEST(Lifecycle, EntryLinesPrecedeTheConstructorAtLevelSix)
{
    devid_test::ProcessLog log("6");
    // The first create of a process runs before logging is set up; from then
    // on each create writes its entry line before the new instance logs anything.
    DestroyDeviceIdentifier(CreateDeviceIdentifier(), false);
    std::size_t before = log.text().size();
    CDeviceIdentifier* instance = CreateDeviceIdentifier();
    TmpDestroyDeviceIdentifier(instance, false);

    std::string tail = log.text().substr(before);
    std::size_t entry = tail.find("DeviceIdentifierExport #45  CreateDeviceIdentifier(...)\n");
    std::size_t created = tail.find("DevId: Creating instance");
    ASSERT_NE(entry, std::string::npos) << tail;
    EXPECT_LT(entry, created);
    EXPECT_LT(tail.find("DeviceIdentifierExport #74  TmpDestroyDeviceIdentifier(...)"),
              tail.find("DeviceIdentifierExport #58  DestroyDeviceIdentifier(...)"));
    EXPECT_NE(tail.find("DeviceIdentifierExport #58"), std::string::npos);
}

TEST(Lifecycle, SetInternalTestModeOnlyReportsItself)
{
    devid_test::ProcessLog log;
    DestroyDeviceIdentifier(CreateDeviceIdentifier(), false);
    SetInternalTestMode();
    EXPECT_EQ(log.count("DevId: SetInternalTestMode is not supported"), 1u);
}

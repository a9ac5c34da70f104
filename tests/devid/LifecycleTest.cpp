#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DevIdLog.h"
#include "tests/devid/ProcessLog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace Mora::Lux::Trace;

namespace {
const char kCreated[] = "DevId: Creating instance";
const char kDeleted[] = "DevId: Deleting instance";
} // namespace

TEST(Lifecycle, CountedSharingAndForcedDestroy)
{
    devid_test::ProcessLog log;
    CDeviceIdentifier* first = CreateDeviceIdentifier();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(CreateDeviceIdentifier(), first);
    DestroyDeviceIdentifier(first, false);
    EXPECT_EQ(log.count(kDeleted), 0u);
    TmpDestroyDeviceIdentifier(first, false);
    EXPECT_EQ(log.count(kDeleted), 1u);

    // With nothing left, a null destroy must not drive the count below zero.
    DestroyDeviceIdentifier(nullptr, false);
    CDeviceIdentifier* second = CreateDeviceIdentifier();
    CreateDeviceIdentifier();
    DestroyDeviceIdentifier(second, true);
    EXPECT_EQ(log.count(kCreated), 2u);
    EXPECT_EQ(log.count(kDeleted), 2u);
}

TEST(Lifecycle, ForeignPointerUsesUpTheCountButDestroysNothing)
{
    devid_test::ProcessLog log;
    CDeviceIdentifier* shared = CreateDeviceIdentifier();
    auto* foreign = new CDeviceIdentifierImpl();
    DestroyDeviceIdentifier(foreign, false);
    EXPECT_EQ(log.count(kDeleted), 0u);

    // The count is 0 now: the next create builds a second instance and the
    // first is orphaned, left for the client to free.
    CDeviceIdentifier* next = CreateDeviceIdentifier();
    EXPECT_NE(next, shared);
    DestroyDeviceIdentifier(next, false);
    EXPECT_EQ(log.count("DevId: Deleting instance: this=" + HexAddress(next)), 1u);
    EXPECT_EQ(log.count("DevId: Deleting instance: this=" + HexAddress(shared)), 0u);
    delete shared;
    delete foreign;
}

TEST(Lifecycle, ConcurrentCreatesBuildOneInstance)
{
    devid_test::ProcessLog log;
    // Creating the log system itself is not guarded against racing threads;
    // only the instance is under test here.
    SetInternalTestMode();
    const int threads = 8;
    std::vector<CDeviceIdentifier*> got(threads, nullptr);
    std::atomic<int> ready{0};
    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i) {
        workers.emplace_back([&, i] {
            for (++ready; ready.load() < threads;) {
            }
            got[i] = CreateDeviceIdentifier();
        });
    }
    for (auto& worker : workers)
        worker.join();
    for (CDeviceIdentifier* instance : got) {
        EXPECT_EQ(instance, got[0]);
        DestroyDeviceIdentifier(instance, false);
    }
    EXPECT_EQ(log.count(kCreated), 1u);
    EXPECT_EQ(log.count(kDeleted), 1u);
}

TEST(Lifecycle, EntryLinesAtLevelSix)
{
    devid_test::ProcessLog log("6");
    // The first create of a process runs before logging is set up; from then
    // on each create writes its entry line before the new instance logs anything.
    DestroyDeviceIdentifier(CreateDeviceIdentifier(), false);
    std::size_t before = log.text().size();
    TmpDestroyDeviceIdentifier(CreateDeviceIdentifier(), false);
    SetInternalTestMode();

    std::string tail = log.text().substr(before);
    std::size_t entry = tail.find("DeviceIdentifierExport #45  CreateDeviceIdentifier(...)\n");
    ASSERT_NE(entry, std::string::npos) << tail;
    EXPECT_LT(entry, tail.find(kCreated));
    std::size_t tmp = tail.find("DeviceIdentifierExport #74  TmpDestroyDeviceIdentifier(...)");
    EXPECT_LT(tmp, tail.find("DeviceIdentifierExport #58  DestroyDeviceIdentifier(...)"));
    EXPECT_NE(tail.find("DevId: SetInternalTestMode is not supported"), std::string::npos);
}

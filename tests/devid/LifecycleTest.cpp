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

TEST(Lifecycle, CountedSharingForcedDestroyAndAForeignPointer)
{
    devid_test::ProcessLog log;
    CDeviceIdentifier* first = CreateDeviceIdentifier();
    ASSERT_TRUE(first != nullptr && CreateDeviceIdentifier() == first);
    DestroyDeviceIdentifier(first, false);
    EXPECT_EQ(log.count(kDeleted), 0u);
    TmpDestroyDeviceIdentifier(first, false);
    EXPECT_EQ(log.count(kDeleted), 1u);
    // A null destroy with nothing left must not drive the count below zero.
    DestroyDeviceIdentifier(nullptr, false);
    CDeviceIdentifier* second = CreateDeviceIdentifier();
    CreateDeviceIdentifier();
    DestroyDeviceIdentifier(second, true);
    EXPECT_EQ(log.count(kCreated), 2u);
    EXPECT_EQ(log.count(kDeleted), 2u);

    // A foreign pointer uses up the count but destroys nothing; the next create
    // builds a new instance and the old one is the client's to free.
    CDeviceIdentifier* shared = CreateDeviceIdentifier();
    auto* foreign = new CDeviceIdentifierImpl();
    DestroyDeviceIdentifier(foreign, false);
    CDeviceIdentifier* next = CreateDeviceIdentifier();
    EXPECT_NE(next, shared);
    const std::size_t deleted = log.count(kDeleted);
    DestroyDeviceIdentifier(next, false);
    EXPECT_EQ(log.count(kDeleted), deleted + 1);
    EXPECT_EQ(log.text().rfind(kDeleted), log.text().rfind("DevId: Deleting instance: this=" + HexAddress(next)));
    delete shared;
    delete foreign;
}

TEST(Lifecycle, ConcurrentCreatesBuildOneInstance)
{
    devid_test::ProcessLog log;
    SetInternalTestMode(); // sets up logging first: only the instance is under test
    const int threads = 8;
    std::vector<CDeviceIdentifier*> got(threads, nullptr);
    std::atomic<int> ready{0};
    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i)
        workers.emplace_back([&, i] {
            for (++ready; ready.load() < threads;) {
            }
            got[i] = CreateDeviceIdentifier();
        });
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
    // The first create runs before logging is set up; later ones log their entry line first.
    DestroyDeviceIdentifier(CreateDeviceIdentifier(), false);
    std::size_t before = log.text().size();
    TmpDestroyDeviceIdentifier(CreateDeviceIdentifier(), false);
    std::string tail = log.text().substr(before);
    std::size_t entry = tail.find("DeviceIdentifierExport #45  CreateDeviceIdentifier(...)\n");
    ASSERT_NE(entry, std::string::npos) << tail;
    EXPECT_LT(entry, tail.find(kCreated));
    EXPECT_LT(tail.find("DeviceIdentifierExport #74  TmpDestroyDeviceIdentifier(...)"),
              tail.find("DeviceIdentifierExport #58  DestroyDeviceIdentifier(...)"));
}

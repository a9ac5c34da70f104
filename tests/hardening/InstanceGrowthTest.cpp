// A debugger stays open for days: building, using and dropping the device
// identifier over and over must not make the process grow.
#include "devid/CDeviceIdentifier.h"
#include "tests/devid/ProcessLog.h"
#include "tests/hardening/HardeningSupport.h"

#include <malloc.h>

using namespace Mora::Lux::Trace;

namespace {

#ifndef __has_feature
#define __has_feature(x) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

// The heap the process holds, large blocks included. The resident size would
// also count a user-mode emulator's translation cache, which grows on its own.
long HeapBytes()
{
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<long>(heap.uordblks + heap.hblkhd);
}

long OpenDescriptors()
{
    std::error_code error;
    long count = 0;
    for (std::filesystem::directory_iterator entry("/proc/self/fd", error), end; !error && entry != end;
         entry.increment(error))
        ++count;
    return count;
}

// One client session: load, query, reload, query, release.
void OneSession()
{
    CDeviceIdentifier* devId = CreateDeviceIdentifier();
    ASSERT_NE(devId, nullptr);
    ASSERT_TRUE(devId->LoadConfiguration(0x1A2B302Fu));
    ASSERT_EQ(devId->GetTraceRoutes().size(), 2u);
    ASSERT_NE(devId->GetProcInfo("core0"), nullptr);
    devId->ReLoadDeviceDatabase();
    ASSERT_EQ(devId->GetTraceRoutesForProc("core1").size(), 1u);
    devId->GetOutFileName("core0");
    DestroyDeviceIdentifier(devId, false);
}

TEST(InstanceGrowth, ThousandSessionsDoNotGrowTheProcess)
{
    devid_test::ProcessLog log;
    devid_test::TempDir db;
    db.write("device_grebe.xml", devid_test::SmallDevice());
    setenv("TRACE_XMLDB_DEVICES", db.path().c_str(), 1);
    unsetenv("COMMON_VEXIF");

    // The sanitizers keep freed memory in quarantine, so only the plain build
    // measures; the sanitizer build runs fewer sessions and relies on the leak check.
    const int sessions = kSanitized ? 200 : 1000;
    for (int i = 0; i < 50; ++i)
        OneSession();
    const long heapBefore = HeapBytes();
    const long descriptorsBefore = OpenDescriptors();
    for (int i = 0; i < sessions && !HasFatalFailure(); ++i)
        OneSession();
    if (kSanitized || HasFatalFailure())
        return;
    EXPECT_LT(HeapBytes() - heapBefore, 64 * 1024);
    EXPECT_EQ(OpenDescriptors(), descriptorsBefore);
}

} // namespace

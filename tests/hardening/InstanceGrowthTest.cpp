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

long ResidentKilobytes()
{
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
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
    const size_t heapBefore = mallinfo2().uordblks;
    const long residentBefore = ResidentKilobytes();
    for (int i = 0; i < sessions && !HasFatalFailure(); ++i)
        OneSession();
    if (kSanitized || HasFatalFailure())
        return;
    EXPECT_LT(static_cast<long>(mallinfo2().uordblks) - static_cast<long>(heapBefore), 64 * 1024);
    EXPECT_LT(ResidentKilobytes() - residentBefore, 1024);
}

} // namespace

// A debugger stays open for days: building, using and dropping the device
// identifier over and over must not make the process grow.
#include "devid/CDeviceIdentifier.h"
#include "tests/common/TempDir.h"
#include "tests/devid/ProcessLog.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

using namespace Mora::Lux::Trace;

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

const char kDevice[] = R"(<?xml version="1.0"?>
<database><device id="grebe" value="0x1A2B302F">
 <procs><proc id="core0" kind="Talon" traceid="3"/><proc id="core1" kind="Talon" traceid="4"/></procs>
 <modules>
  <module id="ETM0" kind="etm" proc="core0"><registers><reg id="CTRL" type="mem" address="0x1000" page="0" addrunit="1" width="32"/></registers>
   <characteristics><characteristic id="depth" value="8"/></characteristics><mapping id="name.value"><map name="a" value="1"/></mapping></module>
  <module id="ETM1" kind="etm" proc="core1"/><module id="ETF" kind="etf" proc="core0"/><module id="DRM" kind="drm" proc="core0"/>
 </modules>
 <sources>
  <source id="core0" proc="core0" stmmaster="false"><components><component module="ETM0"/></components></source>
  <source id="core1" proc="core1" stmmaster="false"><components><component module="ETM1"/></components></source>
 </sources>
 <trace_routes>
  <route><source source="core0"/><link module="ETM0"/><sink module="ETF"/><pin module="DRM"/></route>
  <route><source source="core1"/><sink module="ETF"/></route>
 </trace_routes>
</device></database>
)";

long ResidentKilobytes()
{
    std::ifstream statm("/proc/self/statm");
    long pages = 0;
    long resident = 0;
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
    db.write("device_grebe.xml", kDevice);
    setenv("TRACE_XMLDB_DEVICES", db.path().c_str(), 1);
    unsetenv("COMMON_VEXIF");

    // The sanitizers keep freed memory in quarantine, so only the plain build
    // measures; the sanitizer build runs fewer sessions and relies on the leak check.
    const int sessions = kSanitized ? 200 : 1000;
    for (int i = 0; i < 50; ++i)
        OneSession();
    const size_t heapBefore = mallinfo2().uordblks;
    const long residentBefore = ResidentKilobytes();
    for (int i = 0; i < sessions; ++i) {
        OneSession();
        if (HasFatalFailure())
            return;
    }
    if (kSanitized)
        return;
    const long heapGrowth = static_cast<long>(mallinfo2().uordblks) - static_cast<long>(heapBefore);
    const long residentGrowth = ResidentKilobytes() - residentBefore;
    std::printf("%d sessions: heap in use %+ld bytes, resident set %+ld kB\n", sessions, heapGrowth, residentGrowth);
    EXPECT_LT(heapGrowth, 64 * 1024);
    EXPECT_LT(residentGrowth, 1024);
}

} // namespace

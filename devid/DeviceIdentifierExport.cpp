// The library's client surface: one shared, reference-counted device
// identifier per process.
#include "devid/CDeviceIdentifier.h"

#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DevIdLog.h"
#include "common/source/source_utilities/uMutex.h"

#include <cstdint>

using Mora::Lux::Trace::CDeviceIdentifier;
using Mora::Lux::Trace::CDeviceIdentifierImpl;
using Mora::Lux::Trace::DevIdLog;
using Mora::Lux::Trace::DevIdTraceEntry;

namespace {

// Serialises creating and destroying the shared instance. Re-entrant, so a
// client thread that calls back in while holding it does not deadlock.
MORA_LUX::uMutex stLock;
int32_t refCount = 0;
CDeviceIdentifierImpl* stDevId = nullptr;

const char kSourceName[] = "DeviceIdentifierExport";
// Line numbers that log readers know these entry points by.
const int kCreateLine = 45;
const int kDestroyLine = 58;
const int kTmpDestroyLine = 74;

} // namespace

extern "C" {

CDeviceIdentifier* CreateDeviceIdentifier()
{
    DevIdTraceEntry(kSourceName, kCreateLine, "CreateDeviceIdentifier");
    // The guard also releases the lock when construction throws, so one failed
    // start-up does not block every other thread for good.
    MORA_LUX::uMutexGuard hold(stLock);
    if (refCount == 0)
        stDevId = new CDeviceIdentifierImpl();
    ++refCount;
    return stDevId;
}

void DestroyDeviceIdentifier(CDeviceIdentifier* deviceIdentifier, bool force)
{
    DevIdTraceEntry(kSourceName, kDestroyLine, "DestroyDeviceIdentifier");
    MORA_LUX::uMutexGuard hold(stLock);
    if (refCount > 0)
        --refCount;
    if (!force && refCount != 0)
        return;
    // A pointer that is not ours destroys nothing, although it has used up a
    // reference: clients depend on that.
    if (deviceIdentifier == stDevId) {
        delete deviceIdentifier;
        stDevId = nullptr;
        refCount = 0;
    }
}

void TmpDestroyDeviceIdentifier(CDeviceIdentifier* deviceIdentifier, bool force)
{
    DevIdTraceEntry(kSourceName, kTmpDestroyLine, "TmpDestroyDeviceIdentifier");
    DestroyDeviceIdentifier(deviceIdentifier, force);
}

void SetInternalTestMode()
{
    DevIdLog(16, "DevId: SetInternalTestMode is not supported");
}

} // extern "C"

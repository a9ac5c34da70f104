// Setup adapter of the scan-interface library ("libSetupAdapter4.so"): tells which
// board configuration is in use and which devices sit on the scan chain.
// Virtual slot indices (from 0) are binary interface.
#ifndef MORA_LUX_TRACE_SETUPADAPTER_H
#define MORA_LUX_TRACE_SETUPADAPTER_H

#include <cstdint>
#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

class SetupAdapter {
public:
    /// Holds the library name on entry; on failure the text to report. True when ready.
    virtual bool Open(std::string& nameOrError) = 0;                             // slot 0
    virtual void GetBoardConfigFile(std::string& path) = 0;                      // slot 1
    /// False when the device has no parent router.
    virtual bool GetParent(std::string& parentName, uint32_t& parentType,
                           const char* deviceName) = 0;                          // slot 2
    /// False on failure.
    virtual bool GetDeviceCount(int32_t& count) = 0;                             // slot 3
    virtual void GetDevice(int32_t index, std::string& name, uint32_t& type) = 0; // slot 4
    virtual void GetTraceId(int32_t index, uint32_t& traceId) = 0;               // slot 5
    virtual void reserved6() {}
    virtual void GetDAPName(std::string deviceName, std::string& dapName) = 0;   // slot 7
    virtual ~SetupAdapter() {}
};

typedef SetupAdapter* (*CreateSetupAdapterFn)();
typedef void (*DestroySetupAdapterFn)(SetupAdapter*);

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

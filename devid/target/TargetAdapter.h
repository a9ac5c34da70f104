// Target access object of the tools library (libhexkit.so), one per scan-chain
// device, made by "NewTargetAdapter" of libProbeTargetAdapter.so. Virtual slot
// indices (from 0) are binary interface; reserved functions hold their places.
#ifndef MORA_LUX_HEXKIT_TARGETADAPTER_H
#define MORA_LUX_HEXKIT_TARGETADAPTER_H

#include <cstdint>

namespace Mora {
namespace Lux {
namespace Hexkit {

class TargetAdapter {
public:
    virtual ~TargetAdapter();                                            // slots 0, 1
    virtual void reserved2();
    virtual void reserved3();
    virtual void reserved4();
    /// 0 on success; the value is left unchanged on failure.
    virtual uint32_t ReadMemory(uint32_t& value, uint32_t address, uint32_t addressableUnit,
                                bool paged) = 0;                         // slot 5
    virtual void reserved6();
    /// 0 on success; the value is left unchanged on failure.
    virtual uint32_t ReadRegister(uint32_t handle, uint32_t& value) = 0; // slot 7
    /// 0 and the handle when the register exists, 0xFFFFFFFF when it does not.
    virtual uint32_t FindRegister(const char* name, uint32_t& handle) = 0; // slot 8
    virtual void reserved9();
    virtual void reserved10();
    virtual void reserved11();
    virtual void reserved12();
    virtual void reserved13();
    virtual void reserved14();
    virtual void reserved15();
    /// False while the target cannot be read.
    virtual bool IsReady() = 0;                                          // slot 16
};

} // namespace Hexkit
} // namespace Lux
} // namespace Mora

/// Entry points of libProbeTargetAdapter.so.
typedef int (*NewTargetAdapterFn)(const char* deviceName, Mora::Lux::Hexkit::TargetAdapter** adapter);
typedef void (*FreeTargetAdapterFn)(Mora::Lux::Hexkit::TargetAdapter* adapter);

#endif

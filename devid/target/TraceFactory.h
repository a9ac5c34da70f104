// Trace factory ("libTraceFactory.so") and the live channel server it connects.
// Virtual slot indices (from 0) are binary interface.
#ifndef MORA_LUX_TRACE_TRACEFACTORY_H
#define MORA_LUX_TRACE_TRACEFACTORY_H

#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

class ChannelServer {
public:
    virtual void reserved0() {}
    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}
    virtual void reserved4() {}
    virtual void reserved5() {}
    virtual void reserved6() {}
    virtual void reserved7() {}
    virtual void reserved8() {}
    virtual void reserved9() {}
    virtual void reserved10() {}
    virtual void reserved11() {}
    /// The trace output file of a processor; "" when the server knows none.
    virtual void GetOutputFileName(const std::string& procName, std::string& fileName) = 0; // slot 12
    virtual ~ChannelServer() {}
};

class TraceFactory {
public:
    /// Leaves the server null when it cannot connect; may throw.
    virtual void ConnectChannelServer(ChannelServer** server, int mode) = 0;   // slot 0
    virtual void DisconnectChannelServer(ChannelServer* server, int mode) = 0; // slot 1
    virtual ~TraceFactory() {}
};

typedef TraceFactory* (*CreateTraceFactoryFn)();
typedef void (*DestroyTraceFactoryFn)(TraceFactory*);

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

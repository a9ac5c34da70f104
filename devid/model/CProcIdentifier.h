// One processor of the device: how to recognise it on the target and the name
// it goes by once the live target has been asked.
#ifndef MORA_LUX_TRACE_CPROCIDENTIFIER_H
#define MORA_LUX_TRACE_CPROCIDENTIFIER_H

#include "devid/model/CRegisterInfoImpl.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

class CProcIdentifier {
public:
    CProcIdentifier() = default;
    virtual ~CProcIdentifier();
    CProcIdentifier(const CProcIdentifier&) = delete;
    CProcIdentifier& operator=(const CProcIdentifier&) = delete;

    /// Null when the processor has no identifier register.
    std::unique_ptr<CRegisterInfoImpl> idRegister;
    /// What idRegister holds on this processor; 0 when not given.
    uint32_t idValue = 0;
    std::string kind;
    /// As read from the database.
    std::string id;
    /// Starts equal to id; the live target may rename it.
    std::string procName;
    int32_t traceId = 0;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

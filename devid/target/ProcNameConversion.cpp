// Renaming a database processor to the scan-chain device that carries it, by
// trace ID, by its identification value read from the target, or by a guess.
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DevIdLog.h"
#include "devid/model/CProcIdentifier.h"
#include "devid/target/TargetAdapter.h"

#include <strings.h>

namespace Mora {
namespace Lux {
namespace Trace {

void CDeviceIdentifierImpl::ConvertProcName(CProcIdentifier* proc)
{
    if (proc == nullptr || m_connections.empty())
        return;

    // Only devices behind the router of the processor the client asked for are candidates.
    std::string router;
    for (const DeviceConnectionInfo& record : m_connections) {
        if (record.name == m_selectedProcName) {
            router = record.parentName;
            break;
        }
    }

    // Kept across candidates on purpose: a register the adapter does not know
    // leaves the previous reading in place.
    uint32_t value = 0;
    for (const DeviceConnectionInfo& record : m_connections) {
        if (record.parentName != router)
            continue;
        for (const Id2Family& family : m_families) {
            if (family.id != record.deviceType || strcasecmp(family.family.c_str(), proc->kind.c_str()) != 0)
                continue;

            if (proc->traceId != 0 && static_cast<uint32_t>(proc->traceId) == record.traceId) {
                DevIdLog(1, "DevId: Perfect match with the same traceid = %d ", proc->traceId);
                proc->procName = record.name;
                return;
            }

            Hexkit::TargetAdapter* adapter = GetTargetAdapter(record.name.c_str());
            CRegisterInfo* reg = proc->idRegister.get();
            const bool readable = reg != nullptr
                && (reg->IsMemoryMapped() ? reg->GetMemoryAddress() != 0 : !reg->GetDriverRegisterName().empty());
            if (!readable || adapter == nullptr || !adapter->IsReady()) {
                DevIdLog(1, "DevId: No defined infomration is found. Guess: Convert %s to %s ",
                         proc->procName.c_str(), record.name.c_str());
                proc->procName = record.name;
                break;
            }

            const std::string driverName = reg->GetDriverRegisterName();
            if (!reg->IsMemoryMapped()) {
                uint32_t handle = 0;
                if (adapter->FindRegister(driverName.c_str(), handle) == 0
                    && adapter->ReadRegister(handle, value) != 0) {
                    DevIdLog(16, "DevId: ConvertProcName(), read register failed. Register Name %s",
                             driverName.c_str());
                    return;
                }
            } else {
                const uint32_t address = reg->GetMemoryAddress();
                const bool paged = (reg->GetMemoryPage() & 0xFFFFu) != 0;
                if (adapter->ReadMemory(value, address, reg->GetAddresableUnit(), paged) != 0) {
                    DevIdLog(16, "DevId: ConvertProcName(), read memory failed failed. memory address is: 0x%x",
                             address);
                    return;
                }
            }

            DevIdLog(1, "DevId: convertprocname identifier value = 0x%x", value);
            if (value == proc->idValue) {
                DevIdLog(1, "DevId: Perfect match - %s identification register %s = %d", record.name.c_str(),
                         driverName.c_str(), static_cast<int>(value));
                proc->procName = record.name;
                return;
            }
        }
    }
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

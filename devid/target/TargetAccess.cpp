// Access to the live target through the sibling libraries: one target adapter
// per scan-chain device, the trace factory's channel server, and the DAP name
// that the setup adapter knows.
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DevIdLog.h"
#include "devid/target/SetupAdapter.h"
#include "devid/target/TargetAdapter.h"
#include "devid/target/TraceFactory.h"

namespace Mora {
namespace Lux {
namespace Trace {

namespace {
const char kTargetAdapterLibrary[] = "libProbeTargetAdapter.so";
const char kTraceFactoryLibrary[] = "TraceFactory";
} // namespace

Hexkit::TargetAdapter* CDeviceIdentifierImpl::GetTargetAdapter(const char* name)
{
    // A session restored from a file has no target behind it.
    if (name == nullptr || m_configLoaded)
        return nullptr;

    auto cached = m_targetAdapters.find(name);
    if (cached != m_targetAdapters.end())
        return cached->second;

    if (!m_targetAdapterLibrary.IsLoaded() && !m_targetAdapterLibrary.Load(kTargetAdapterLibrary, -1)) {
        DevIdLog(16, "DevId: Could not load Probe target Adpater %s", kTargetAdapterLibrary);
        return nullptr;
    }
    auto create = reinterpret_cast<NewTargetAdapterFn>(m_targetAdapterLibrary.GetSymbolAddress("NewTargetAdapter"));
    if (create == nullptr) {
        DevIdLog(16, "DevId: Could not find NewTargetAdapter symbol.");
        return nullptr;
    }

    try {
        Hexkit::TargetAdapter* adapter = nullptr;
        create(name, &adapter);
        DevIdLog(1, "DevId: Target adapter instance for %s is %s", name, HexAddress(adapter).c_str());
        if (adapter == nullptr)
            return nullptr;
        m_targetAdapters[name] = adapter;
        return adapter;
    } catch (...) {
        DevIdLog(16, "DevId: Could not create instance of the Target Adapter.");
        return nullptr;
    }
}

void CDeviceIdentifierImpl::CreateChannelDriver()
{
    DevIdLog(1, "DevId: Create Channel Driver: this=%s", HexAddress(this).c_str());
    if (!m_canCreateServer)
        return;

    if (!m_traceFactoryLibrary.IsLoaded() && !m_traceFactoryLibrary.FindAndLoad(kTraceFactoryLibrary, -1))
        return;
    auto create = reinterpret_cast<CreateTraceFactoryFn>(m_traceFactoryLibrary.GetSymbolAddress("CreateTraceFactory"));
    if (create == nullptr)
        return;

    try {
        if (m_traceFactory == nullptr) {
            DevIdLog(1, "DevId: Connecting to Trace factory");
            m_traceFactory = create();
        }
        if (m_channelServer != nullptr || m_traceFactory == nullptr)
            return;
        DevIdLog(1, "DevId: Connecting Live Channel Server ");
        m_traceFactory->ConnectChannelServer(&m_channelServer, 1);
        DevIdLog(1, "DevId: Done - Connecting Channel Server ");
    } catch (...) {
        // A later call tries again; the session only loses its output file names.
        m_channelServer = nullptr;
        DevIdLog(2, "DevId: Exception in connecting Channel Server ");
    }
}

std::string CDeviceIdentifierImpl::GetDAPName(std::string procName)
{
    std::string dapName;
    if (m_setupAdapter != nullptr)
        m_setupAdapter->GetDAPName(procName, dapName);
    return dapName;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

// Discovery of the scan chain: which devices sit behind the emulator, their
// routers, trace IDs and the identification registers read from the target.
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DevIdLog.h"
#include "devid/target/SetupAdapter.h"
#include "devid/target/TargetAdapter.h"

#include <algorithm>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

const char kSetupAdapterLibrary[] = "SetupAdapter4";
const uint32_t kNoRegister = 0xFFFFFFFFu;
// A DAP behind a debug router carries its ID in the DAP's own register.
const uint32_t kDebugRouterType = 0x38000405u;
const uint32_t kDapType = 0x75803800u;
const uint32_t kDapIdMask = 0x0FFFFFFFu;
const uint32_t kKnownDapId = 0x0B9AF02Fu;
const uint32_t kUnknownDapId = 0xF0F0F0F0u;

enum class IdRead { None, Found, Failed };

// Reads the device ID through the parent router's adapter. `buffer` lives as
// long as the whole discovery, so a "no ID" line reports what it last held.
IdRead ReadDeviceId(Hexkit::TargetAdapter& adapter, uint32_t parentType, uint32_t deviceType,
                    uint32_t& buffer)
{
    uint32_t handle = 0;
    if (adapter.FindRegister("IP_TAPID", handle) != kNoRegister) {
        if (adapter.ReadRegister(handle, buffer) != 0) {
            DevIdLog(16, "DevId: read device ID failed");
            return IdRead::Failed;
        }
        return IdRead::Found;
    }

    DevIdLog(1, "DevId: Unable to read SCANHUB ID register - invalid register");
    if (parentType != kDebugRouterType || deviceType != kDapType)
        return IdRead::None;
    if (adapter.FindRegister("DEVICE_ID", handle) == kNoRegister) {
        DevIdLog(1, "DevId: Unable to read DAP ID register - invalid register");
        DevIdLog(1, "DevId: Read device ID 0x%x", buffer);
        return IdRead::None;
    }
    if (adapter.ReadRegister(handle, buffer) != 0) {
        DevIdLog(16, "DevId: read device ID failed");
        return IdRead::Failed;
    }
    // The top nibble is the DAP's version; any other part number is foreign.
    if ((buffer & kDapIdMask) != kKnownDapId)
        buffer = kUnknownDapId;
    return IdRead::Found;
}

} // namespace

void CDeviceIdentifierImpl::LoadDeviceConnectionInfo()
{
    if (!m_connections.empty())
        return;

    if (m_canCreateServer && m_channelServer == nullptr) {
        CreateChannelDriver();
        if (m_channelServer == nullptr) {
            DevIdLog(16, "DevId: channel driver is not valid in LoadDeviceConnectionInfo()");
            return;
        }
        if (LoggingLevel() > 2)
            DevIdLog(1, "DevId: Successfully create channel driver in LoadDeviceConnectionInfo()");
    }

    DevIdLog(1, "DevId: Loading device info...");
    DevIdLog(1, "DevId: QWB V4 environment.");

    if (!m_setupAdapterLibrary.IsLoaded() && !m_setupAdapterLibrary.FindAndLoad(kSetupAdapterLibrary, -1)) {
        DevIdLog(16, "DevId: Unable to create setup adapter from %s, error: %s", kSetupAdapterLibrary,
                 m_setupAdapterLibrary.GetError());
        return;
    }
    auto create = reinterpret_cast<CreateSetupAdapterFn>(m_setupAdapterLibrary.GetSymbolAddress("CreateSetupAdapter"));
    if (create != nullptr) {
        // A retry after a failed read makes a fresh adapter; the old one must not leak.
        auto destroy = reinterpret_cast<DestroySetupAdapterFn>(m_setupAdapterLibrary.GetSymbolAddress("DestroySetupAdapter"));
        if (m_setupAdapter != nullptr && destroy != nullptr)
            destroy(m_setupAdapter);
        m_setupAdapter = create();
    } else {
        DevIdLog(16, "DevId: Unable to get proc address from %s", kSetupAdapterLibrary);
    }
    if (m_setupAdapter == nullptr) {
        // Nothing to ask the chain through; a later call tries again.
        DevIdLog(16, "DevId: Unable to create setup adapter -  %s", kSetupAdapterLibrary);
        return;
    }

    std::string text = kSetupAdapterLibrary;
    if (!m_setupAdapter->Open(text)) {
        DevIdLog(16, "DevId: Unable to create setup adapter -  %s", text.c_str());
        return;
    }

    std::string boardFile;
    m_setupAdapter->GetBoardConfigFile(boardFile);
    m_board.reset(ParseBoardConfigFile(boardFile.c_str()));
    if (!m_board)
        m_board = std::make_unique<BoardConfig>();
    if (m_board->emulatorName.empty())
        m_board->emulatorName = "kmr770";
    if (m_board->emulatorPort.empty())
        m_board->emulatorPort = "0x0";

    int32_t count = 0;
    if (!m_setupAdapter->GetDeviceCount(count) || count < 1)
        return;

    uint32_t idBuffer = 0;
    for (int32_t index = 0; index < count; ++index) {
        DeviceConnectionInfo record;
        std::string deviceName;
        uint32_t deviceType = record.deviceType;
        m_setupAdapter->GetDevice(index, deviceName, deviceType);
        m_deviceTypes[deviceName] = deviceType;
        record.deviceType = deviceType;

        uint32_t parentType = 0;
        if (!m_setupAdapter->GetParent(record.parentName, parentType, deviceName.c_str())) {
            DevIdLog(1, "DevId: No parent SCANHUB found");
            record.parentName = deviceName;
        } else if (Hexkit::TargetAdapter* adapter = GetTargetAdapter(record.parentName.c_str())) {
            switch (ReadDeviceId(*adapter, parentType, deviceType, idBuffer)) {
            case IdRead::Failed:
                // A half-read chain would mislead matching; the next call starts over.
                m_connections.clear();
                return;
            case IdRead::Found:
                if (std::find(m_deviceIds.begin(), m_deviceIds.end(), idBuffer) == m_deviceIds.end())
                    m_deviceIds.push_back(idBuffer);
                DevIdLog(1, "DevId: Read device ID 0x%x", idBuffer);
                break;
            case IdRead::None:
                break;
            }
        } else {
            DevIdLog(1, "DevId: No target adapter found for %s", record.parentName.c_str());
        }

        record.name = deviceName;
        m_setupAdapter->GetTraceId(index, record.traceId);
        m_connections.push_back(record);
    }
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

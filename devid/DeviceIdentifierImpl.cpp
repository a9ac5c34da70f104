#include "devid/CDeviceIdentifierImpl.h"

#include "devid/DevIdLog.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CProcIdentifier.h"
#include "devid/model/CSourceInfoImpl.h"
#include "devid/model/CTraceRouteInfoImpl.h"
#include "devid/model/TargetDbParser.h"
#include "devid/target/SetupAdapter.h"
#include "devid/target/TargetAdapter.h"
#include "devid/target/TraceFactory.h"
#include "common/source/source_utilities/uEnvironment.h"
#include "common/source/source_utilities/uLogger.h"
#include "common/source/source_utilities/uProcess.h"
#include "common/source/source_utilities/uString.h"
#include "common/source/source_utilities/uTime.h"

#include <exception>
#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

using MORA_LUX::source_utilities_error;
using MORA_LUX::uEnvironment;
using MORA_LUX::uProcess;
using MORA_LUX::uString;

namespace {

const char kParserLibrary[] = "libmora_targetdb_parser.so";
const char kClientPidVariable[] = "MORA_TRACE_DEBUGCLIENT_PID";

// A client PID handed down by the debugger is kept only while that process
// lives; otherwise this process is the client, and children must see it too.
std::string ChooseClientPid()
{
    std::string pid = uEnvironment::GetVar(kClientPidVariable);
    if (!pid.empty()) {
        unsigned int number = uString::ToNumeric<unsigned int>(pid.c_str());
        if (uProcess::LookupProcess(static_cast<int>(number)) == 0)
            pid.clear();
    }
    if (pid.empty()) {
        uString::FromNumeric<int>(pid, uProcess::GetPid());
        uEnvironment::SetVar(kClientPidVariable, pid.c_str());
    }
    return pid;
}

// Without HOME there are no trace directories; the library then runs without
// them rather than failing to start, and logging is not set up yet to say so.
void PublishTraceDirectories()
{
    try {
        std::string logging;
        std::string data;
        std::string settings;
        uEnvironment::GetTraceLoggingDirectory(logging);
        uEnvironment::GetTraceTemporaryDataDirectory(data);
        uEnvironment::GetTraceUserSettingsDirectory(settings);
        uEnvironment::SetVar("MORA_TRACE_LOGGING_DIR", logging.c_str());
        uEnvironment::SetVar("MORA_TRACE_DATA_DIR", data.c_str());
        uEnvironment::SetVar("MORA_TRACE_SETTINGS_DIR", settings.c_str());
    } catch (const source_utilities_error&) {
    }
}

// The month is kept as uTime counts it (0 for January): existing log readers
// look for exactly these names.
std::string ComposeLogFileName(const std::string& clientPid)
{
    MORA_LUX::uTime now = MORA_LUX::uTime::GetLocal();
    return "mora_trace_log_" + std::to_string(now.GetMonth()) + std::to_string(now.GetDay()) +
           std::to_string(now.GetYear()) + "_" + clientPid + ".txt";
}

// Client PID, directories and log file name are fixed by the first instance
// of the process and shared by every later one.
const std::string& ProcessLogFileName()
{
    static const std::string name = [] {
        std::string clientPid = ChooseClientPid();
        PublishTraceDirectories();
        return ComposeLogFileName(clientPid);
    }();
    return name;
}

void StartLogging()
{
    try {
        MORA_LUX::uLogSystem::GetLogSystem()->InitLog(ProcessLogFileName().c_str(), "MORA_TRACE_LOGGING",
                                                     "MORA_TRACE_LOGGING_DIR", true);
    } catch (const source_utilities_error&) {
        // Only the start-up lines need HOME; the logger itself is in place by then.
    }
}

} // namespace

CDeviceIdentifierImpl::CDeviceIdentifierImpl()
{
    StartLogging();
    DevIdLog(1, "DevId: Creating instance: this=%s", HexAddress(this).c_str());

    m_databaseDirectory = uEnvironment::GetVar("TRACE_XMLDB_DEVICES");
    if (!m_databaseDirectory.empty())
        m_databaseDirectory += "/";

    if (m_parserLibrary.FindAndLoad(kParserLibrary, -1)) {
        auto create = reinterpret_cast<CreateParserCPPFn>(m_parserLibrary.GetSymbolAddress("CreateParserCPP"));
        if (create != nullptr)
            m_parser = create();
        if (m_parser != nullptr) {
            DevIdLog(1, "DevId: Loaded %s", kParserLibrary);
            m_endNode = m_parser->GetEndNode();
        }
    } else {
        DevIdLog(16, "DevId: Could not load %s", kParserLibrary);
    }

    if (uProcess::LookupProcess("TraceServer", 0) == 0) {
        DevIdLog(1, "DevId: Can Create Server.");
        m_canCreateServer = true;
    }

    PopulateId2Family();

    // A running trace server means the target is live now, so read it at once.
    if (!m_canCreateServer) {
        try {
            LoadDeviceConnectionInfo();
        } catch (const std::exception& error) {
            DevIdLog(2, "DevId: Exception in loading device info: %s", error.what());
        }
    }
}

CDeviceIdentifierImpl::~CDeviceIdentifierImpl()
{
    DevIdLog(1, "DevId: Deleting instance: this=%s", HexAddress(this).c_str());
    ReleaseTarget();
    Reset();
}

void CDeviceIdentifierImpl::ReleaseTarget()
{
    auto destroyParser = reinterpret_cast<DestroyParserCPPPFn>(m_parserLibrary.GetSymbolAddress("DestroyParserCPPP"));
    if (destroyParser != nullptr)
        destroyParser(m_parser);
    m_parser = nullptr;
    m_endNode = nullptr;

    if (m_channelServer != nullptr && m_traceFactory != nullptr) {
        DevIdLog(1, "DevId: Destroying Channel Server ");
        try {
            m_traceFactory->DisconnectChannelServer(m_channelServer, 0);
        } catch (const std::exception& error) {
            DevIdLog(2, "DevId: Exception in disconnecting Channel Server: %s", error.what());
        }
        m_channelServer = nullptr;
    }
    m_board.reset();

    auto destroyFactory =
        reinterpret_cast<DestroyTraceFactoryFn>(m_traceFactoryLibrary.GetSymbolAddress("DestroyTraceFactory"));
    if (destroyFactory != nullptr && m_traceFactory != nullptr) {
        DevIdLog(1, "DevId: Destroying trace factory");
        destroyFactory(m_traceFactory);
    }
    m_traceFactory = nullptr;

    auto freeAdapter =
        reinterpret_cast<FreeTargetAdapterFn>(m_targetAdapterLibrary.GetSymbolAddress("FreeTargetAdapter"));
    if (freeAdapter != nullptr) {
        for (auto& entry : m_targetAdapters)
            freeAdapter(entry.second);
    }
    m_targetAdapters.clear();

    if (m_setupAdapterLibrary.IsLoaded()) {
        auto destroySetup =
            reinterpret_cast<DestroySetupAdapterFn>(m_setupAdapterLibrary.GetSymbolAddress("DestroySetupAdapter"));
        if (destroySetup != nullptr && m_setupAdapter != nullptr)
            destroySetup(m_setupAdapter);
    }
    m_setupAdapter = nullptr;
}

bool CDeviceIdentifierImpl::LoadAllDeviceDatabases(bool force)
{
    if (m_databasesLoaded && !force)
        return true;
    Reset();
    m_databasesLoaded = false;

    try {
        if (!m_configFromFile) {
            if (m_canCreateServer && m_channelServer == nullptr) {
                CreateChannelDriver();
                if (m_channelServer == nullptr)
                    return false;
            }
            LoadDeviceConnectionInfo();
        }
    } catch (const std::exception& error) {
        DevIdLog(2, "DevId: Exception in loading device info: %s", error.what());
        return false;
    }

    // Every ID is tried: a board may carry several described devices.
    for (uint32_t deviceId : m_deviceIds) {
        try {
            if (LoadDeviceDatabase(deviceId))
                m_databasesLoaded = true;
        } catch (const std::exception& error) {
            DevIdLog(16, "DevId: Could not load the device database for 0x%x: %s", deviceId, error.what());
        }
    }
    return m_databasesLoaded;
}

void CDeviceIdentifierImpl::ReLoadDeviceDatabase()
{
    m_databasesLoaded = false;
}

void CDeviceIdentifierImpl::ReleaseModel()
{
    // Routes and sources only point into the other lists and never follow
    // those pointers while being destroyed, so this order is safe.
    m_procs.clear();
    m_modules.clear();
    m_routes.clear();
    m_sources.clear();
    m_texts.Clear();
}

void CDeviceIdentifierImpl::Reset()
{
    ReleaseModel();
    m_moduleByName.clear();
    m_sourceById.clear();
    m_sourceByName.clear();
    m_indexedModules = 0;
    m_indexedSources = 0;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

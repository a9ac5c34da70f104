// The one device identifier object of a process: start-up, lazy database
// loading, queries over the description model, the live target and the saved
// session. Its member functions are spread over the subsystem folders:
//   devid/DeviceIdentifierImpl.cpp      construction, destruction, lazy loading
//   devid/DatabaseDiscovery.cpp         candidate files, matching, cache
//   devid/QueryOperations.cpp           client queries and lookups
//   devid/model/DatabaseLoader.cpp      ParseModules and the section loaders
//   devid/target/*.cpp                  board file, family table, discovery,
//                                       adapters, processor names
//   devid/config/*.cpp                  DCM text, save/load, session settings
#ifndef MORA_LUX_TRACE_CDEVICEIDENTIFIERIMPL_H
#define MORA_LUX_TRACE_CDEVICEIDENTIFIERIMPL_H

#include "devid/CDeviceIdentifier.h"
#include "devid/model/TextArena.h"
#include "devid/target/DeviceConnectionInfo.h"
#include "common/source/source_utilities/uDll.h"

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Mora {
namespace Lux {
namespace Hexkit {
class TargetAdapter;
}
namespace Trace {

class DBNode;
class TargetDbParser;
class SetupAdapter;
class TraceFactory;
class ChannelServer;
class CProcIdentifier;
class CModuleInfoImpl;
class CSourceInfoImpl;
class CTraceRouteInfoImpl;
class DeviceIdentifierTestAccess;

/// Emulator driver and port of the debug session, from the board configuration
/// file or a loaded configuration.
struct BoardConfig {
    std::string emulatorName;
    std::string emulatorPort;
};

/// One entry of the alias file: a device ID and its family name.
struct Id2Family {
    uint32_t id;
    std::string family;
};

class CDeviceIdentifierImpl : public CDeviceIdentifier {
public:
    CDeviceIdentifierImpl();
    ~CDeviceIdentifierImpl() override;
    CDeviceIdentifierImpl(const CDeviceIdentifierImpl&) = delete;
    CDeviceIdentifierImpl& operator=(const CDeviceIdentifierImpl&) = delete;

    // Client interface.
    CSourceInfo* GetProcInfo(const std::string& procName) override;
    std::string GetOutFileName(const std::string& name) override;
    std::vector<CTraceRouteInfo*> GetTraceRoutes() override;
    std::vector<CTraceRouteInfo*> GetTraceRoutesForProc(const std::string& procName) override;
    std::string GetSessionSetting(const std::string& name, _eSessionSetting setting) override;
    bool SaveConfiguration(const std::string& fileName, eTraceDataFileType type) override;
    bool LoadConfiguration(const std::string& fileName, eTraceDataFileType type) override;
    void ReLoadDeviceDatabase() override;
    bool LoadConfiguration(unsigned int deviceId) override;
    bool DeviceMatch(unsigned int id, unsigned int mask) override;
    std::string GetDAPName(std::string procName) override;

    // Lazy loading.
    /// False when no channel can be made or no device ID finds a description.
    bool LoadAllDeviceDatabases(bool force);
    /// Empties (and frees) the four model lists only.
    void Reset();

    // Database discovery.
    bool GetFirstXMLFileName(std::string& fileName);
    bool GetNextXMLFileName(std::string& fileName);
    /// False when no candidate file matches or the matching file is malformed.
    bool LoadDeviceDatabase(unsigned int deviceId);

    // Device IDs and families.
    /// 0 when the name is unknown.
    unsigned int GetProcId(const char* procName);
    void PopulateId2Family();

    // Lookups used by the queries and by normalization: first hit in list order, or null.
    CSourceInfo* LookupProcInfoByProcName(std::string name);
    CSourceInfo* LookupProcInfoById(std::string id);
    CModuleInfo* LookupModuleInfo(std::string name);

    // Loaders over the parser's nodes. False when the description is malformed.
    bool ParseModules(DBNode* device);
    bool LoadModuleInfo(DBNode* modules);
    /// Null for the end node or a module missing a required attribute.
    CModuleInfoImpl* CreateModuleInfo(DBNode* module);
    bool LoadProcInfo(DBNode* procs);
    bool LoadSourceInfo(DBNode* sources);
    bool LoadTraceRouteInfo(DBNode* traceRoutes);

    // Live target.
    /// Null for a null or empty path or a file that cannot be opened.
    BoardConfig* ParseBoardConfigFile(const char* path);
    void LoadDeviceConnectionInfo();
    /// Null after a configuration load or when no adapter can be made.
    Hexkit::TargetAdapter* GetTargetAdapter(const char* name);
    void CreateChannelDriver();
    void ConvertProcName(CProcIdentifier* proc);

    // Saved session.
    /// False for a null file or an over-long value.
    bool LoadConfigurationDCMFile(FILE* file);
    /// False, without a log line, when a name cannot be written without changing its
    /// meaning (empty, or holding "$", "~" or a line end) or a line would be longer than
    /// the 16383 characters the reader takes.
    bool ComposeConfiguration(std::string& text);

    // Read-only views for tools that show the whole device.
    const std::vector<DeviceConnectionInfo>& GetConnections() const { return m_connections; }
    const std::vector<uint32_t>& GetDeviceIds() const { return m_deviceIds; }
    const std::vector<std::unique_ptr<CSourceInfoImpl>>& GetSources() const { return m_sources; }
    const std::vector<std::unique_ptr<CProcIdentifier>>& GetProcessors() const { return m_procs; }
    const std::vector<std::unique_ptr<CModuleInfoImpl>>& GetModules() const { return m_modules; }
    const std::vector<std::unique_ptr<CTraceRouteInfoImpl>>& GetRoutes() const { return m_routes; }
    const std::vector<Id2Family>& GetFamilies() const { return m_families; }
    const std::map<std::string, std::string>& GetOutFiles() const { return m_outFiles; }
    const BoardConfig* GetBoardConfig() const { return m_board.get(); }
    const std::string& GetDatabaseDirectory() const { return m_databaseDirectory; }
    bool CanCreateServer() const { return m_canCreateServer; }
    bool IsConfigurationLoaded() const { return m_configLoaded; }
    /// The description file that matched last in this process, or "".
    static std::string GetMatchedDeviceFile();
    /// The description file this instance loaded last, or "" before any load.
    const std::string& GetLoadedDeviceFile() const { return m_currentDeviceFile; }

private:
    void ReleaseModel();
    void ReleaseTarget();
    /// Extends the lookup indexes by the list entries added since the last
    /// call; Reset drops them.
    void RefreshLookupIndex();
    /// The first processor with this ID, or null. The loaders ask once per
    /// module and source, so this is indexed rather than a walk of the list.
    CProcIdentifier* FindProcessor(const std::string& id);
    // Lets the tests build a model by hand without a database.
    friend class DeviceIdentifierTestAccess;

    std::string m_databaseDirectory;
    MORA_LUX::uDll m_parserLibrary;
    TargetDbParser* m_parser = nullptr;
    DBNode* m_endNode = nullptr;
    std::vector<std::string> m_fileQueue;
    std::size_t m_fileQueueHead = 0;

    MORA_LUX::uDll m_setupAdapterLibrary;
    MORA_LUX::uDll m_targetAdapterLibrary;
    MORA_LUX::uDll m_traceFactoryLibrary;
    SetupAdapter* m_setupAdapter = nullptr;
    std::map<std::string, Hexkit::TargetAdapter*> m_targetAdapters;
    TraceFactory* m_traceFactory = nullptr;
    ChannelServer* m_channelServer = nullptr;

    std::vector<uint32_t> m_deviceIds;
    std::map<std::string, uint32_t> m_deviceTypes;
    std::vector<DeviceConnectionInfo> m_connections;
    std::unique_ptr<BoardConfig> m_board;
    std::vector<Id2Family> m_families;

    std::vector<std::unique_ptr<CProcIdentifier>> m_procs;
    std::vector<std::unique_ptr<CModuleInfoImpl>> m_modules;
    std::vector<std::unique_ptr<CTraceRouteInfoImpl>> m_routes;
    std::vector<std::unique_ptr<CSourceInfoImpl>> m_sources;
    // The texts of registers, characteristics and mappings in the lists above;
    // freed after them.
    TextArena m_texts;

    std::map<std::string, std::string> m_outFiles;
    std::string m_lastOutFile;
    std::string m_selectedProcName;
    std::string m_currentDeviceFile;

    // First hit in list order for each name or ID; see RefreshLookupIndex.
    std::unordered_map<std::string, CModuleInfo*> m_moduleByName;
    std::unordered_map<std::string, CSourceInfo*> m_sourceById;
    std::unordered_map<std::string, CSourceInfo*> m_sourceByName;
    std::size_t m_indexedModules = 0;
    std::size_t m_indexedSources = 0;
    // Position in m_procs of the first processor of each ID; see FindProcessor.
    std::unordered_map<std::string, std::size_t> m_procById;
    std::size_t m_indexedProcs = 0;

    bool m_databasesLoaded = false;
    bool m_configFromFile = false;
    bool m_canCreateServer = false;
    bool m_configLoaded = false;
    bool m_deviceXmlGiven = false;
};

} // namespace Trace
} // namespace Lux
} // namespace Mora

#endif

// Finding the description file of one device in the database directory and
// handing it to the loaders; plus the process-wide cache of the last match.
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DevIdLog.h"
#include "devid/DeviceXmlCache.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CProcIdentifier.h"
#include "devid/model/CSourceInfoImpl.h"
#include "devid/model/CTraceRouteInfoImpl.h"
#include "devid/NumberText.h"
#include "devid/model/DatabaseText.h"
#include "devid/model/TargetDbParser.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

char gsDeviceXMLName[4132];
bool gbValidDeviceXMLName = false;

// An empty mask attribute still ignores the top four bits of the identifier;
// description files rely on that.
const uint32_t kEmptyMask = 0x0FFFFFFF;

bool IsCandidate(const std::string& name)
{
    return name.find("device") != std::string::npos && name.find("xml") != std::string::npos;
}

template <typename T>
void DropAfter(std::vector<T>& list, std::size_t size)
{
    list.erase(list.begin() + static_cast<std::ptrdiff_t>(size), list.end());
}

} // namespace

bool CacheDeviceXmlName(const std::string& path)
{
    if (path.size() >= sizeof gsDeviceXMLName || path.find('\0') != std::string::npos)
        return false;
    SetDeviceXmlName(path);
    return true;
}

void SetDeviceXmlName(const std::string& path)
{
    const std::size_t length = std::min(std::strlen(path.c_str()), sizeof gsDeviceXMLName - 1);
    std::memcpy(gsDeviceXMLName, path.c_str(), length);
    gsDeviceXMLName[length] = '\0';
    gbValidDeviceXMLName = true;
}

void InvalidateDeviceXmlName()
{
    gbValidDeviceXMLName = false;
}

std::string CDeviceIdentifierImpl::GetMatchedDeviceFile()
{
    return gbValidDeviceXMLName ? std::string(gsDeviceXMLName) : std::string();
}

bool CDeviceIdentifierImpl::GetFirstXMLFileName(std::string& fileName)
{
    DevIdLog(1, "DevId: XML file lookup path %s.", (m_databaseDirectory + "device*.xml").c_str());

    m_fileQueue.clear();
    m_fileQueueHead = 0;
    if (!m_databaseDirectory.empty()) {
        // The directory order is kept on purpose: it decides which of several
        // matching files wins. A directory that cannot be read has no candidates.
        std::error_code error;
        std::filesystem::directory_iterator entry(m_databaseDirectory, error);
        for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
            std::string name = entry->path().filename().string();
            if (IsCandidate(name))
                m_fileQueue.push_back(m_databaseDirectory + name);
        }
        if (error)
            m_fileQueue.clear();
    }

    if (m_fileQueue.empty()) {
        DevIdLog(16, "DevId: No XML file found.");
        return false;
    }
    fileName = m_fileQueue[m_fileQueueHead++];
    DevIdLog(1, "DevId: %s XML file found", fileName.c_str());
    return true;
}

bool CDeviceIdentifierImpl::GetNextXMLFileName(std::string& fileName)
{
    if (m_fileQueueHead >= m_fileQueue.size()) {
        DevIdLog(16, "DevId: Next XML file not found.");
        return false;
    }
    fileName = m_fileQueue[m_fileQueueHead++];
    DevIdLog(1, "DevId: Next %s XML file found", fileName.c_str());
    return true;
}

bool CDeviceIdentifierImpl::LoadDeviceDatabase(unsigned int deviceId)
{
    std::string path;
    bool fromCache = gbValidDeviceXMLName;
    if (fromCache) {
        path = gsDeviceXMLName;
        DevIdLog(1, "DevId: Cached File Name is: %s", path.c_str());
    } else if (!GetFirstXMLFileName(path)) {
        return false;
    }
    if (m_parser == nullptr)
        return false;

    // Identifier and mask carry over from one file to the next: a file without
    // a mask attribute is tested with the mask of the file before it.
    uint32_t fileId = 0;
    uint32_t mask = 0xFFFFFFFF;
    DBNode* device = nullptr;
    for (;;) {
        device = nullptr;
        if (m_parser->ParseFile(path.c_str(), 1) != -1) {
            DBNode* root = m_parser->GetRootNode();
            DBNode* first = (root != nullptr && root != m_endNode) ? root->GetFirstChild() : nullptr;
            if (first != nullptr && first != m_endNode && first->GetName() != nullptr &&
                first->GetAttribute("id") != nullptr && first->GetAttribute("value") != nullptr) {
                device = first;
                fileId = ParseUnsigned32(first->GetAttribute("value"), 0);
                if (const char* maskText = first->GetAttribute("mask"))
                    mask = *maskText == '\0' ? kEmptyMask : ParseUnsigned32(maskText, 0);
            }
        }
        DevIdLog(1, "DevId: Mask value is 0x%x xmlId: 0x%x  devId: 0x%x", mask, fileId, deviceId);

        bool accepted = device != nullptr && (m_configLoaded || (mask & (fileId ^ deviceId)) == 0);
        if (accepted)
            break;

        m_parser->ReleaseDocument();
        bool more;
        if (fromCache) {
            // The cached file belongs to another device: search the whole
            // directory again, which may offer the same file once more.
            more = GetFirstXMLFileName(path);
            InvalidateDeviceXmlName();
        } else {
            more = GetNextXMLFileName(path);
        }
        if (!more)
            return false;
        fromCache = false;
    }

    // A malformed description must not leave half a device in the model.
    const std::size_t procs = m_procs.size();
    const std::size_t modules = m_modules.size();
    const std::size_t sources = m_sources.size();
    const std::size_t routes = m_routes.size();
    std::string previousFile = m_currentDeviceFile;
    m_currentDeviceFile = path;
    bool loaded = ParseModules(device);
    m_parser->ReleaseDocument();
    if (!loaded) {
        DropAfter(m_routes, routes);
        DropAfter(m_sources, sources);
        DropAfter(m_modules, modules);
        DropAfter(m_procs, procs);
        m_currentDeviceFile = previousFile;
        // Remembering a file that cannot be loaded would stop every later
        // search at it.
        if (fromCache)
            InvalidateDeviceXmlName();
        return false;
    }

    if (m_configLoaded) {
        DevIdLog(1, "DevId: Load selected device xml: %s", path.c_str());
    } else if (fromCache) {
        DevIdLog(1, "DevId: Found device xml based on cached file name: %s", path.c_str());
    } else {
        // A path too long for the cache is simply not remembered.
        CacheDeviceXmlName(path);
        DevIdLog(1, "DevId: Found a new device xml: %s that not in cache", path.c_str());
    }
    return true;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

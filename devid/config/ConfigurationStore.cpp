// Keeping a session's identification and giving it back: the configuration
// text goes to a ".dim" file or into the "DEVID" section of a trace data file;
// a load makes the object work from that text without the target.
#include "devid/CDeviceIdentifierImpl.h"

#include "devid/DevIdLog.h"
#include "devid/DeviceXmlCache.h"
#include "devid/target/HexkitError.h"
#include "common/source/source_utilities/uEnvironment.h"
#include "common/source/source_utilities/uFile.h"
#include "tdf/TDFHandler.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <string>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

using MORA_LUX::uFile;

constexpr char kSection[] = "DEVID";
constexpr uint32_t kSectionVersion = 1;
// Longest path of the temporary copy of a TDF section, terminator included.
constexpr std::size_t kTempPathSize = 2048;

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

// Writes all of `size` bytes and closes the file; false when any step fails,
// which is how a full disk shows up (often only at fflush or fclose).
bool WriteAndClose(FilePtr file, const void* data, std::size_t size)
{
    const bool written = std::fwrite(data, 1, size, file.get()) == size;
    const bool flushed = std::fflush(file.get()) == 0;
    return std::fclose(file.release()) == 0 && written && flushed;
}

} // namespace

bool CDeviceIdentifierImpl::SaveConfiguration(const std::string& fileName, eTraceDataFileType type)
{
    DevIdTraceEntry("DeviceIdentifierImpl", 1338, "SaveConfiguration");
    if (fileName.empty()) {
        DevIdLog(1, "DevId: NULL file to save configuration.");
        return false;
    }
    if (!m_board && !m_configLoaded)
        LoadDeviceConnectionInfo();

    std::string text;
    if (!ComposeConfiguration(text))
        return false;

    if (type == eTraceDataFileTDF) {
        DevIdLog(1, "DevId: saving settings to TDF %s file", fileName.c_str());
        TDFHandler tdf;
        try {
            if (!tdf.ISTDF(fileName.c_str()))
                return false;
            uint32_t offset = 0;
            tdf.SaveSectionHeader(fileName.c_str(), kSection, kSectionVersion, offset);
            uint32_t sectionLength = 0;
            tdf.SaveSectionData(fileName.c_str(), kSection, offset, text.data(), 1, text.size(), sectionLength);
        } catch (const Hexkit::HexkitError& error) {
            DevIdLog(16, "DevId: %s", error.what());
        }
        // Clients have always been told false here, written or not.
        return false;
    }

    if (type == eTraceDataFileDCM) {
        const std::string directory = MORA_LUX::uEnvironment::GetVar("MORA_TRACE_LOGGING_DIR");
        const std::string path = directory + "/" + fileName + ".dim";
        if (directory.empty()) {
            DevIdLog(16, "DevId: Cannot open file %s", path.c_str());
            return false;
        }
        FilePtr file(uFile::OpenRegularFile(path.c_str(), "w"));
        if (!file) {
            DevIdLog(16, "DevId: Cannot open file %s", path.c_str());
            return false;
        }
        // A full disk makes this false; the tool tells its user why.
        return WriteAndClose(std::move(file), text.data(), text.size());
    }
    return false;
}

bool CDeviceIdentifierImpl::LoadConfiguration(const std::string& fileName, eTraceDataFileType type)
{
    if (fileName.empty()) {
        DevIdLog(1, "DevId: NULL file for loading configuration.");
        return false;
    }

    if (type == eTraceDataFileDCM) {
        DevIdLog(1, "Devid: loading settings from %s", fileName.c_str());
        FilePtr file(uFile::OpenRegularFile(fileName.c_str(), "r"));
        if (!file) {
            DevIdLog(16, "Devid: error loading settings from %s", fileName.c_str());
            return false;
        }
        m_configFromFile = true;
        return LoadConfigurationDCMFile(file.get());
    }

    if (type == eTraceDataFileDeviceXML) {
        // A name longer than the buffer is cut; the search then finds no such file.
        SetDeviceXmlName(fileName);
        m_deviceXmlGiven = true;
        m_configLoaded = true;
        m_configFromFile = true;
        LoadAllDeviceDatabases(true);
        // The load's own result has never been passed on to clients.
        return false;
    }

    if (type != eTraceDataFileTDF)
        return false;

    std::string tempPath;
    try {
        TDFHandler tdf;
        if (!tdf.ISTDF(fileName.c_str()))
            return false;
        uint32_t length = 0;
        tdf.GetSectionDataLengthInBytes(fileName.c_str(), kSection, kSectionVersion, length);
        // An empty section gets a buffer too: loading into it then fails with its own message.
        std::unique_ptr<char[]> buffer(new (std::nothrow) char[length]());
        if (!buffer) {
            DevIdLog(16, "Devid: memory allocation failure.");
            return false;
        }
        uint32_t bytesRead = 0;
        tdf.LoadSectionData(fileName.c_str(), kSection, kSectionVersion, buffer.get(), length, bytesRead);

        // The text reader works on a stream, so the section goes through a file.
        MORA_LUX::uEnvironment::GetTraceTemporaryDataDirectory(tempPath);
        MORA_LUX::uEnvironment::JoinPaths(tempPath, "temp.txt");
        if (tempPath.size() >= kTempPathSize)
            return false;
        FilePtr temp(uFile::OpenRegularFile(tempPath.c_str(), "wb+"));
        if (!temp)
            return false;
        if (!WriteAndClose(std::move(temp), buffer.get(), bytesRead)) {
            std::remove(tempPath.c_str());
            return false;
        }
    } catch (const Hexkit::HexkitError& error) {
        DevIdLog(16, "Devid: %s", error.what());
        return false;
    } catch (const MORA_LUX::source_utilities_error& error) {
        DevIdLog(16, "Devid: %s", error.what());
        return false;
    }

    bool loaded = false;
    {
        FilePtr temp(uFile::OpenRegularFile(tempPath.c_str(), "a+"));
        if (temp)
            m_configFromFile = true;
        loaded = LoadConfigurationDCMFile(temp.get());
    }
    if (loaded)
        DevIdLog(1, "Devid: Completed loading settings from %s", fileName.c_str());
    else
        DevIdLog(16, "Devid: error loading settings from %s", fileName.c_str());
    std::remove(tempPath.c_str());
    return loaded;
}

bool CDeviceIdentifierImpl::LoadConfiguration(unsigned int deviceId)
{
    if (std::find(m_deviceIds.begin(), m_deviceIds.end(), deviceId) != m_deviceIds.end())
        return true;
    m_deviceIds.push_back(deviceId);
    m_configLoaded = true;
    m_configFromFile = true;
    return LoadDeviceDatabase(deviceId);
}

} // namespace Trace
} // namespace Lux
} // namespace Mora

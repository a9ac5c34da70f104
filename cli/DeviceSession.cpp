#include "cli/DeviceSession.h"

#include "cli/TdfSectionReader.h"
#include "cli/ToolEnvironment.h"
#include "cli/ToolError.h"
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/target/HexkitError.h"
#include "tdf/TDFHandler.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

namespace devid_cli {

namespace fs = std::filesystem;
using Mora::Lux::Trace::CDeviceIdentifierImpl;
using Mora::Lux::Trace::eTraceDataFileType;
using Mora::Lux::Trace::TDFHandler;

namespace {

bool EndsWithNoCase(const std::string& text, const std::string& suffix)
{
    if (text.size() < suffix.size())
        return false;
    return std::equal(suffix.rbegin(), suffix.rend(), text.rbegin(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    });
}

bool IsRegularFile(const fs::path& path)
{
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

// A DCM name may be given as saved: "run1" or "run1.dim" in the trace logging folder.
std::string FindFile(const std::string& file, bool dcm)
{
    if (IsRegularFile(file))
        return fs::absolute(file).lexically_normal().string();
    const std::string folder = ToolEnvironment::TraceLoggingDir();
    if (dcm && !folder.empty() && file.find('/') == std::string::npos) {
        for (const fs::path& candidate : {fs::path(folder) / file, fs::path(folder) / (file + ".dim")})
            if (IsRegularFile(candidate))
                return candidate.string();
    }
    std::string message = "cannot find " + file;
    if (dcm && !folder.empty())
        message += " (looked also in " + folder + ")";
    throw ToolError(ErrorKind::File, message);
}

void CheckTdfConfiguration(const std::string& path)
{
    TdfSectionReader::RequireTdf(path);
    TDFHandler tdf;
    try {
        uint32_t length = 0;
        tdf.GetSectionDataLengthInBytes(path.c_str(), "DEVID", 1, length);
    } catch (const Mora::Lux::Hexkit::HexkitError&) {
        throw ToolError(ErrorKind::File, path + " holds no DEVID section (version 1) to load");
    }
}

} // namespace

DeviceSession::DeviceSession() { Open(); }

DeviceSession::~DeviceSession() { Close(); }

void DeviceSession::Open()
{
    m_device = CreateDeviceIdentifier();
    if (m_device == nullptr)
        throw ToolError(ErrorKind::Internal, "the device identifier library created no device identifier");
    m_impl = dynamic_cast<CDeviceIdentifierImpl*>(m_device);
    if (m_impl == nullptr) {
        Close();
        throw ToolError(ErrorKind::Internal, "the device identifier is not the one this tool was built with");
    }
}

void DeviceSession::Close()
{
    if (m_device != nullptr)
        DestroyDeviceIdentifier(m_device, true);
    m_device = nullptr;
    m_impl = nullptr;
}

LoadView DeviceSession::LoadConfiguration(const std::string& file)
{
    LoadView view;
    view.kind = EndsWithNoCase(file, ".tdf") ? "tdf" : "dcm";
    view.path = FindFile(file, view.kind == "dcm");
    if (!std::ifstream(view.path))
        throw ToolError(ErrorKind::File, "cannot read " + view.path);
    const eTraceDataFileType type =
        view.kind == "tdf" ? Mora::Lux::Trace::eTraceDataFileTDF : Mora::Lux::Trace::eTraceDataFileDCM;
    if (type == Mora::Lux::Trace::eTraceDataFileTDF)
        CheckTdfConfiguration(view.path);
    m_offline = true;
    if (!m_device->LoadConfiguration(view.path, type))
        throw ToolError(ErrorKind::File, view.path + " is not a valid configuration");
    const std::vector<uint32_t> savedIds = m_impl->GetDeviceIds();
    if (savedIds.empty())
        throw ToolError(ErrorKind::File, view.path + " holds no device ID: not a saved configuration");

    // A loaded configuration takes the remembered description file, or else
    // the first file of the database whatever its device ID. A debugger has
    // remembered the file of its live session; this fresh process has not, so
    // let a new instance match the saved IDs the live way first, then load again.
    Close();
    Open();
    for (uint32_t id : savedIds) {
        try {
            if (m_impl->LoadDeviceDatabase(id)) {
                m_loadedDescription = {id, m_impl->GetLoadedDeviceFile()};
                break;
            }
        } catch (const std::exception&) {
            // A malformed description is no match; the next ID may still find one.
        }
    }
    m_device->LoadConfiguration(view.path, type);
    view.deviceIds = m_impl->GetDeviceIds();
    view.chainDevices = m_impl->GetConnections().size();
    return view;
}

} // namespace devid_cli

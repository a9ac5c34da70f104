#include "common/source/source_utilities/uDll.h"

#include "common/source/source_utilities/uEnvironment.h"
#include "common/source/source_utilities/uLogger.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstring>

namespace MORA_LUX {

namespace {

// Any object of this module answers the loader's "which file holds this address".
const char _anyAddressInThisModuleWillDo = 0;

const char* const kExtension = ".so";

uLogger* LoggerAbove(int level)
{
    uLogSystem* system = uLogSystem::GetLogSystem();
    return system->GetLoggingLevel() > level ? system->GetLogger() : nullptr;
}

void LogLine(const char* format, ...) __attribute__((format(printf, 1, 2)));

void LogLine(const char* format, ...)
{
    uLogger* logger = LoggerAbove(0);
    if (logger == nullptr)
        return;
    va_list args;
    va_start(args, format);
    logger->Log(1, uLogger::TD_TIME, format, args);
    va_end(args);
}

std::string LoaderError()
{
    const char* text = dlerror();
    return text != nullptr ? text : "";
}

} // namespace

uDll::uDll(const char* path, int mode) : m_path(path != nullptr ? path : ""), m_mode(mode == -1 ? 1 : mode), m_handle(nullptr)
{
}

uDll::~uDll()
{
    if (m_handle != nullptr)
        Unload();
}

bool uDll::Load(const char* path, int mode)
{
    if (m_handle != nullptr)
        return true;
    if (path != nullptr)
        m_path = path;
    if (mode != -1)
        m_mode = mode;
    if (m_path.empty())
        return false;
    return InternalLoad(m_path.c_str(), m_mode);
}

bool uDll::InternalLoad(const char* path, int mode)
{
    if (mode == -1)
        mode = m_mode = 1;
    m_error.clear();
    dlerror();
    m_handle = dlopen(path, mode);
    if (m_handle != nullptr)
        return true;
    m_error = LoaderError();
    LogLine("uDll: %s", m_error.c_str());
    return false;
}

bool uDll::FindAndLoad(const char* name, int mode)
{
    if (uLogger* tracer = LoggerAbove(2))
        tracer->Log(4, uLogger::TD_NONE, "%s #%d  %s(...)\n", __FILE__, __LINE__, "FindAndLoad");
    if (name == nullptr)
        return false;
    if (m_handle != nullptr)
        return true;
    std::string workingDirectory;
    try {
        uEnvironment::GetWorkingDirectory(workingDirectory);
    } catch (const source_utilities_error& error) {
        // The directory is only there to be logged, but callers rely on a loader
        // that never throws: without it the load fails like any other.
        m_error = error.what();
        return false;
    }
    LogLine("uDll:  request to load \"%s\" in mode %d", name, mode);
    std::string platformName;
    GetPlatformName(platformName, name);
    LogLine("uDll:  GetPlatformName returned \"%s\"", platformName.c_str());
    LogLine("uDll:  Working Directory is: \"%s\"", workingDirectory.c_str());
    LogLine("uDll:  LD_LIBRARY_PATH=%s", uEnvironment::GetVar("LD_LIBRARY_PATH"));
    return Load(platformName.c_str(), mode);
}

void* uDll::GetSymbolAddress(const char* name)
{
    if (m_handle == nullptr)
        return nullptr;
    m_error.clear();
    return InternalGetAddress(name, true);
}

void* uDll::InternalGetAddress(const char* name, bool setError)
{
    if (m_handle == nullptr || name == nullptr)
        return nullptr;
    dlerror();
    void* address = dlsym(m_handle, name);
    if (address == nullptr && setError)
        m_error = LoaderError();
    return address;
}

bool uDll::Unload()
{
    if (m_handle == nullptr)
        return false;
    m_error.clear();
    dlerror();
    if (dlclose(m_handle) != 0)
        m_error = LoaderError();
    m_handle = nullptr;
    return m_error.empty();
}

bool uDll::IsLoaded() const
{
    return m_handle != nullptr;
}

void* uDll::GetLibHandle()
{
    return m_handle;
}

const char* uDll::GetPath() const
{
    return m_path.c_str();
}

int uDll::GetMode() const
{
    return m_mode;
}

const char* uDll::GetError() const
{
    return m_error.c_str();
}

std::string& uDll::GetModulePath(std::string& out)
{
    if (m_handle == nullptr)
        return out;
    Dl_info info{};
    if (dladdr(&_anyAddressInThisModuleWillDo, &info) != 0 && info.dli_fname != nullptr)
        out += info.dli_fname;
    return out;
}

bool uDll::hasExtension(const char* name)
{
    if (name == nullptr || std::strcmp(name, kExtension) == 0)
        return false;
    return std::strstr(name, kExtension) != nullptr;
}

std::string& uDll::GetPlatformName(std::string& out, const char* name)
{
    if (name == nullptr)
        return out;
    if (hasExtension(name)) {
        out += name;
    } else {
        out += "lib";
        out += name;
        out += kExtension;
    }
    return out;
}

std::string& uDll::GetUniversalName(std::string& out, const char* name)
{
    if (name == nullptr)
        return out;
    if (!hasExtension(name)) {
        out += name;
        return out;
    }
    // Positional on purpose: drops three characters at each end without
    // checking them; std::string reports names too short for the cut.
    const std::string whole(name);
    out += whole.substr(3, whole.size() - 6);
    return out;
}

} // namespace MORA_LUX

#include "common/source/source_utilities/uEnvironment.h"

#include "common/source/source_utilities/uString.h"

#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace MORA_LUX {

source_utilities_error::source_utilities_error(const std::string& message) : std::runtime_error(message) {}

source_utilities_error::~source_utilities_error() = default;

std::string& uEnvironment::GetWorkingDirectory(std::string& out)
{
    char buffer[4096];
    if (getcwd(buffer, sizeof buffer) == nullptr)
        throw source_utilities_error("failed to get current working directory");
    out = buffer;
    return out;
}

int uEnvironment::SetWorkingDirectory(const char* path)
{
    if (path == nullptr)
        return -1;
    return chdir(path);
}

int uEnvironment::MakeDirectory(const char* path)
{
    if (path == nullptr)
        return -1;
    // The parents usually exist: one call then gives what the walk below
    // would end with, instead of one call per folder of the path.
    if (mkdir(path, 0777) == 0)
        return 0;
    if (errno == EEXIST)
        return -1;
    int result = -1;
    std::string prefix;
    std::string first;
    std::string rest;
    std::string remaining(path);
    while (!remaining.empty()) {
        uString::Split(remaining.c_str(), first, rest, "/");
        prefix += first;
        prefix += '/';
        result = mkdir(prefix.c_str(), 0777);
        remaining.swap(rest);
    }
    return result;
}

int uEnvironment::SetVar(const char* name, const char* value)
{
    if (name == nullptr)
        throw source_utilities_error("failed set an environment variable name to null");
    if (value == nullptr)
        throw source_utilities_error("failed set an environment variable value to null");
    return setenv(name, value, 1);
}

const char* uEnvironment::GetVar(const char* name)
{
    if (name == nullptr)
        throw source_utilities_error("failed set an environment variable name to null");
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

void uEnvironment::NormalizeDirSep(std::string& path)
{
    uString::Replace(path, "\\", "/");
    std::string before;
    do {
        before = path;
        uString::Replace(path, "//", "/");
    } while (path != before);
}

void uEnvironment::GetParentDir(std::string& out, const char* path)
{
    out.clear();
    if (path == nullptr)
        return;
    const std::string whole(path);
    const std::string::size_type slash = whole.rfind('/');
    if (slash != std::string::npos && slash != 0)
        out = whole.substr(0, slash);
}

void uEnvironment::JoinPaths(std::string& path, const char* more)
{
    if (!path.empty() && path.back() != '/')
        path += '/';
    if (more != nullptr)
        path += more;
    NormalizeDirSep(path);
}

namespace {

std::string& TraceDirectory(std::string& out, const char* subDirectory)
{
    GetTraceUserDirectory(out);
    if (subDirectory != nullptr)
        uEnvironment::JoinPaths(out, subDirectory);
    uEnvironment::MakeDirectory(out.c_str());
    return out;
}

} // namespace

std::string& uEnvironment::GetTraceLoggingDirectory(std::string& out)
{
    return TraceDirectory(out, nullptr);
}

std::string& uEnvironment::GetTraceTemporaryDataDirectory(std::string& out)
{
    return TraceDirectory(out, "data");
}

std::string& uEnvironment::GetTraceUserSettingsDirectory(std::string& out)
{
    return TraceDirectory(out, "settings");
}

void uEnvironment::GetCurrentExecutablePath(std::string& out)
{
    char buffer[1024];
    const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (length < 0) {
        out.clear();
        return;
    }
    out.assign(buffer, static_cast<size_t>(length));
}

std::string& GetTraceUserDirectory(std::string& out)
{
    const char* home = uEnvironment::GetVar("HOME");
    if (home[0] == '\0')
        throw source_utilities_error("failed to read environment variable \"HOME\"");
    out = home;
    uEnvironment::JoinPaths(out, ".MORA-trace");
    return out;
}

ScopedDirectoryChanger::ScopedDirectoryChanger(const char* path)
{
    Change(path);
}

ScopedDirectoryChanger::~ScopedDirectoryChanger()
{
    Restore();
}

void ScopedDirectoryChanger::Change(const char* path)
{
    if (path == nullptr)
        return;
    if (!m_savedDirectory.empty())
        throw source_utilities_error("can't temporarily change the working directory again until its restored");
    uEnvironment::GetWorkingDirectory(m_savedDirectory);
    if (chdir(path) != 0)
        throw source_utilities_error(std::string("failed to temporarily change the working directory to \"") +
                                     path + "\"");
}

void ScopedDirectoryChanger::Restore()
{
    if (m_savedDirectory.empty())
        return;
    // If the saved directory vanished meanwhile there is nothing better to do.
    static_cast<void>(uEnvironment::SetWorkingDirectory(m_savedDirectory.c_str()));
    m_savedDirectory.clear();
}

} // namespace MORA_LUX

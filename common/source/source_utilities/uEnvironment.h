// Process environment and paths: working directory, environment variables,
// directory creation, path joining, the running executable and the per-user
// trace directories below HOME.
#ifndef MORA_LUX_UENVIRONMENT_H
#define MORA_LUX_UENVIRONMENT_H

#include <stdexcept>
#include <string>

namespace MORA_LUX {

/// What the environment functions throw; carries only its message.
class source_utilities_error : public std::runtime_error
{
public:
    explicit source_utilities_error(const std::string& message);
    virtual ~source_utilities_error();
};

class uEnvironment
{
public:
    /// Throws source_utilities_error when the directory can't be read.
    static std::string& GetWorkingDirectory(std::string& out);
    /// 0 on success, -1 on failure.
    static int SetWorkingDirectory(const char* path);
    /// Creates the directory and its missing parents. Returns the result of the
    /// last mkdir: -1 also when it already existed, and for a null path.
    static int MakeDirectory(const char* path);
    /// Sets (overwrites) a variable; returns setenv's result. Throws
    /// source_utilities_error for a null name or value.
    static int SetVar(const char* name, const char* value);
    /// The value, or "" when unset; never null. Throws for a null name.
    static const char* GetVar(const char* name);
    /// Backslashes become slashes and runs of slashes one slash.
    static void NormalizeDirSep(std::string& path);
    /// The part before the last "/"; empty when there is none or it is the first character.
    static void GetParentDir(std::string& out, const char* path);
    /// Appends "/" (when needed) and `more`, then normalises the separators.
    static void JoinPaths(std::string& path, const char* more);
    /// The trace user directory, created if missing. Throws when HOME is unset or empty.
    static std::string& GetTraceLoggingDirectory(std::string& out);
    /// Its "data" sub-directory, created if missing. Throws when HOME is unset or empty.
    static std::string& GetTraceTemporaryDataDirectory(std::string& out);
    /// Its "settings" sub-directory, created if missing. Throws when HOME is unset or empty.
    static std::string& GetTraceUserSettingsDirectory(std::string& out);
    /// The running program's path; empty when "/proc/self/exe" can't be read.
    static void GetCurrentExecutablePath(std::string& out);
};

/// HOME + "/.MORA-trace", not created. Throws source_utilities_error when HOME
/// is unset or empty.
std::string& GetTraceUserDirectory(std::string& out);

/// Changes the working directory for the lifetime of the object.
class ScopedDirectoryChanger
{
public:
    /// Throws like Change.
    explicit ScopedDirectoryChanger(const char* path);
    virtual ~ScopedDirectoryChanger();
    ScopedDirectoryChanger(const ScopedDirectoryChanger&) = delete;
    ScopedDirectoryChanger& operator=(const ScopedDirectoryChanger&) = delete;

    /// Does nothing for null. Throws source_utilities_error when a change is
    /// already in force or the directory can't be entered (the saved
    /// directory then stays, so Restore still returns to it).
    void Change(const char* path);
    /// Returns to the saved directory, if any.
    void Restore();

private:
    std::string m_savedDirectory;
};

} // namespace MORA_LUX

#endif

#include "common/source/source_utilities/uProcess.h"

#include <dirent.h>
#include <signal.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace MORA_LUX {

namespace {

struct DirCloser
{
    void operator()(DIR* directory) const { closedir(directory); }
};
using DirPtr = std::unique_ptr<DIR, DirCloser>;

bool AllDigits(const char* name)
{
    if (name[0] == '\0')
        return false;
    for (const char* c = name; *c != '\0'; ++c)
        if (*c < '0' || *c > '9')
            return false;
    return true;
}

// True when the "exe" link of process folder `entry` of /proc points at a file
// whose path contains `name`. The link is read directly, relative to the open
// /proc folder: listing the process folder first would make the kernel build
// an entry for each of its files, and a full path is walked from "/" again.
bool ExecutableMatches(int proc, const char* entry, const char* name)
{
    char link[NAME_MAX + sizeof "/exe"];
    std::snprintf(link, sizeof link, "%s/exe", entry);
    char target[PATH_MAX];
    const ssize_t length = readlinkat(proc, link, target, sizeof target - 1);
    if (length < 0)
        return false;
    target[length] = '\0';
    return std::strstr(target, name) != nullptr;
}

} // namespace

unsigned uProcess::InvokeProcess(const char* program, const char* argument, bool)
{
    if (program == nullptr)
        return 0;
    const pid_t child = fork();
    if (child < 0)
        return 0;
    if (child == 0) {
        execlp(program, program, argument, static_cast<char*>(nullptr));
        return 0;
    }
    return static_cast<unsigned>(child);
}

bool uProcess::TerminateProcess(unsigned pid)
{
    // Ids beyond INT_MAX would turn into negative values, which kill() takes as
    // process groups (or, for -1, every process we may signal).
    if (pid == 0 || pid > static_cast<unsigned>(INT_MAX))
        return false;
    const pid_t target = static_cast<pid_t>(pid);
    if (kill(target, SIGTERM) != 0)
        return false;
    int status = 0;
    return waitpid(target, &status, 0) == target;
}

int uProcess::LookupProcess(const char* name, int)
{
    if (name == nullptr)
        return 0;
    DirPtr proc(opendir("/proc/"));
    if (!proc)
        return 0;
    while (const dirent* entry = readdir(proc.get())) {
        if (AllDigits(entry->d_name) && ExecutableMatches(dirfd(proc.get()), entry->d_name, name))
            return std::atoi(entry->d_name);
    }
    return 0;
}

int uProcess::LookupProcess(int pid)
{
    if (pid <= 0)
        return 0;
    DirPtr proc(opendir("/proc/"));
    if (!proc)
        return 0;
    const std::string wanted = std::to_string(pid);
    while (const dirent* entry = readdir(proc.get())) {
        if (AllDigits(entry->d_name) && wanted == entry->d_name)
            return pid;
    }
    return 0;
}

int uProcess::GetPid()
{
    return static_cast<int>(getpid());
}

} // namespace MORA_LUX

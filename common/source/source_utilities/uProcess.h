// Starting, ending and finding processes through fork/exec, signals and /proc.
#ifndef MORA_LUX_UPROCESS_H
#define MORA_LUX_UPROCESS_H

namespace MORA_LUX {

class uProcess
{
public:
    /// Starts `program` (found on PATH) with one argument; returns the child's
    /// id, or 0 for a null program or a failed fork. If exec fails, the child
    /// gets 0 back and keeps running the caller's code.
    static unsigned InvokeProcess(const char* program, const char* argument, bool wait = false);
    /// Sends SIGTERM and waits; false for 0, a failed signal or a failed wait.
    static bool TerminateProcess(unsigned pid);
    /// The first process whose executable path contains `name`; 0 when none.
    static int LookupProcess(const char* name, int unused = 0);
    /// `pid` when such a process exists, else 0.
    static int LookupProcess(int pid);
    static int GetPid();
};

} // namespace MORA_LUX

#endif

#include "cli/StdoutShield.h"

#include <cstdio>
#include <unistd.h>

namespace devid_cli {

StdoutShield::StdoutShield()
{
    std::fflush(stdout);
    m_savedStdout = dup(STDOUT_FILENO);
    if (m_savedStdout >= 0 && dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        close(m_savedStdout);
        m_savedStdout = -1;
    }
}

StdoutShield::~StdoutShield()
{
    if (m_savedStdout < 0)
        return;
    std::fflush(stdout);
    dup2(m_savedStdout, STDOUT_FILENO);
    close(m_savedStdout);
}

} // namespace devid_cli

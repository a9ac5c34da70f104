#include "simboard/OpenOcdProcess.h"

#include "devid/target/HexkitError.h"
#include "simboard/OpenOcdBoard.h"
#include "simboard/OpenOcdClient.h"
#include "simboard/LoopbackPort.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <cstdlib>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace Mora {
namespace Lux {
namespace Sim {

namespace {

const auto RetryPause = std::chrono::milliseconds(100);

bool Exited(pid_t pid)
{
    int status = 0;
    return waitpid(pid, &status, WNOHANG) == pid;
}

} // namespace

OpenOcdProcess::OpenOcdProcess(const std::string& script, uint32_t timeoutMs)
{
    const uint16_t port = FreeLoopbackPort();
    if (port == 0)
        throw Hexkit::HexkitError("cannot start OpenOCD: no free loopback port", Hexkit::HexkitErrorIF::SEVERITY_ERROR);
    const std::string ports = "tcl_port " + std::to_string(port) + "; gdb_port disabled; telnet_port disabled";
    m_pid = fork();
    if (m_pid == 0) {
        // OpenOCD echoes every RPC answer; that chatter stays out of the client's console.
        const int quiet = open("/dev/null", O_WRONLY);
        if (quiet >= 0) {
            dup2(quiet, 1);
            dup2(quiet, 2);
        }
        // The ports come first so that the configuration may end with "init".
        execlp("openocd", "openocd", "-c", ports.c_str(), "-f", script.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    if (m_pid < 0)
        throw Hexkit::HexkitError("cannot start OpenOCD: fork failed", Hexkit::HexkitErrorIF::SEVERITY_ERROR);

    m_address = "127.0.0.1:" + std::to_string(port);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        try {
            OpenOcdClient probe("127.0.0.1", port, timeoutMs);
            probe.Run("version");
            break;
        } catch (const Hexkit::HexkitError& error) {
            if (Exited(m_pid)) {
                m_pid = -1;
                throw Hexkit::HexkitError("OpenOCD stopped while starting with " + script +
                                              " (run \"openocd -f " + script + "\" to see why)",
                                          Hexkit::HexkitErrorIF::SEVERITY_ERROR);
            }
            if (std::chrono::steady_clock::now() >= deadline) {
                Stop();
                throw Hexkit::HexkitError("OpenOCD started with " + script + " does not answer: " + error.what(),
                                          Hexkit::HexkitErrorIF::SEVERITY_ERROR);
            }
        }
        std::this_thread::sleep_for(RetryPause);
    }
    setenv(OpenOcdBoard::AddressVariable, m_address.c_str(), 1);
}

OpenOcdProcess::~OpenOcdProcess()
{
    const char* address = std::getenv(OpenOcdBoard::AddressVariable);
    if (address != nullptr && m_address == address)
        unsetenv(OpenOcdBoard::AddressVariable);
    Stop();
}

void OpenOcdProcess::Stop()
{
    if (m_pid <= 0)
        return;
    kill(m_pid, SIGTERM);
    for (int i = 0; i < 30; ++i) {
        if (Exited(m_pid)) {
            m_pid = -1;
            return;
        }
        std::this_thread::sleep_for(RetryPause);
    }
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
    m_pid = -1;
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

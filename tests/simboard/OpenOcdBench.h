// devid-jtagsim serving a board and Debian's OpenOCD autoprobing it, both on
// free loopback ports; every wait has a time limit and each process is
// stopped by its id when the bench goes, whatever happened.
#ifndef DEVID_TESTS_OPENOCDBENCH_H
#define DEVID_TESTS_OPENOCDBENCH_H

#include "simboard/LoopbackPort.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace devid_test {

// Generous: the simulator may run under 32-bit emulation.
const int kStartMilliseconds = 60000;

class ChildProcess {
public:
    /// Starts argv[0] from PATH; with a log path, its output goes there,
    /// otherwise stdout comes through a pipe for ReadLine.
    explicit ChildProcess(const std::vector<std::string>& argv, const std::string& log = "")
    {
        int pipeEnds[2] = {-1, -1};
        if (log.empty() && pipe2(pipeEnds, O_CLOEXEC) != 0)
            return;
        m_pid = fork();
        if (m_pid == 0) {
            int out = log.empty() ? pipeEnds[1] : open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(out, 1);
            if (!log.empty())
                dup2(out, 2);
            std::vector<char*> args;
            for (const std::string& arg : argv)
                args.push_back(const_cast<char*>(arg.c_str()));
            args.push_back(nullptr);
            execvp(args[0], args.data());
            _exit(127);
        }
        if (log.empty()) {
            close(pipeEnds[1]);
            m_stdout = pipeEnds[0];
        }
    }
    ~ChildProcess()
    {
        Stop(SIGTERM);
        if (m_stdout >= 0)
            close(m_stdout);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool Running()
    {
        if (m_pid > 0 && waitpid(m_pid, nullptr, WNOHANG) == m_pid)
            m_pid = -1;
        return m_pid > 0;
    }

    /// One line of stdout, "" when none comes within the time limit.
    std::string ReadLine(int timeoutMs)
    {
        std::string line;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (m_stdout >= 0 && std::chrono::steady_clock::now() < deadline) {
            pollfd entry{m_stdout, POLLIN, 0};
            if (poll(&entry, 1, 100) <= 0)
                continue;
            char c = 0;
            if (read(m_stdout, &c, 1) != 1 || c == '\n')
                return line;
            line += c;
        }
        return "";
    }

    /// Sends the signal, waits up to five seconds, then kills and reaps.
    void Stop(int signal)
    {
        if (!Running())
            return;
        kill(m_pid, signal);
        for (int i = 0; i < 50 && Running(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
            m_pid = -1;
        }
    }

private:
    pid_t m_pid = -1;
    int m_stdout = -1;
};

inline bool Accepts(uint16_t port)
{
    int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    const bool ok = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(fd);
    return ok;
}

/// The simulator on a board folder, and its port.
class JtagSim {
public:
    explicit JtagSim(const std::string& boardFolder)
        : m_process({DEVID_BUILD_DIR "/bin/devid-jtagsim", boardFolder})
    {
        const std::string line = m_process.ReadLine(kStartMilliseconds);
        const size_t colon = line.rfind(':');
        if (colon != std::string::npos)
            m_port = static_cast<uint16_t>(std::stoul(line.substr(colon + 1)));
    }
    uint16_t port() const { return m_port; }
    ChildProcess& process() { return m_process; }
    /// OpenOCD commands that reach this simulator.
    std::string adapterCommands() const
    {
        return "adapter driver remote_bitbang; remote_bitbang host 127.0.0.1; remote_bitbang port " +
               std::to_string(m_port) + "; transport select jtag";
    }

private:
    ChildProcess m_process;
    uint16_t m_port = 0;
};

/// The simulator and an OpenOCD on it; `declare` holds commands run before init.
class OpenOcdBench {
public:
    OpenOcdBench(const std::string& boardFolder, const std::string& log, const std::string& declare = "")
        : m_sim(boardFolder), m_tclPort(Mora::Lux::Sim::FreeLoopbackPort()),
          m_openocd({"openocd", "-c",
                     m_sim.adapterCommands() + "; tcl_port " + std::to_string(m_tclPort) +
                         "; gdb_port disabled; telnet_port disabled; " + declare + "; init"},
                    log)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kStartMilliseconds);
        while (m_sim.port() != 0 && m_openocd.Running() && std::chrono::steady_clock::now() < deadline) {
            if (Accepts(m_tclPort)) {
                m_ready = true;
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }
    bool ready() const { return m_ready; }
    std::string address() const { return "127.0.0.1:" + std::to_string(m_tclPort); }
    ChildProcess& openocd() { return m_openocd; }
    JtagSim& sim() { return m_sim; }

private:
    JtagSim m_sim;
    uint16_t m_tclPort;
    ChildProcess m_openocd;
    bool m_ready = false;
};

} // namespace devid_test

#endif

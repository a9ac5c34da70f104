#include "simboard/RemoteBitbangServer.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Mora {
namespace Lux {
namespace Sim {

namespace {

// How often a blocked wait looks at the stop flag.
const int PollMilliseconds = 200;

class Socket {
public:
    explicit Socket(int fd) : m_fd(fd) {}
    ~Socket()
    {
        if (m_fd >= 0)
            close(m_fd);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    int fd() const { return m_fd; }

private:
    int m_fd;
};

// Waits until fd is readable; false when stop was set meanwhile.
bool WaitReadable(int fd, const volatile std::sig_atomic_t& stop)
{
    while (!stop) {
        pollfd entry{fd, POLLIN, 0};
        int ready = poll(&entry, 1, PollMilliseconds);
        if (ready > 0)
            return true;
        if (ready < 0 && errno != EINTR)
            return true; // the read that follows reports the failure
    }
    return false;
}

bool SendAll(int fd, const std::string& data)
{
    for (size_t sent = 0; sent < data.size();) {
        ssize_t n = send(fd, data.data() + sent, data.size() - sent, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        sent += static_cast<size_t>(n);
    }
    return true;
}

} // namespace

RemoteBitbangServer::~RemoteBitbangServer()
{
    if (m_listener >= 0)
        close(m_listener);
}

bool RemoteBitbangServer::Listen(uint16_t port, std::string& error)
{
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_listener < 0) {
        error = std::string("socket: ") + std::strerror(errno);
        return false;
    }
    int on = 1;
    setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    socklen_t length = sizeof address;
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(m_listener, 1) != 0 ||
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        error = "cannot listen on 127.0.0.1:" + std::to_string(port) + ": " + std::strerror(errno);
        return false;
    }
    m_port = ntohs(address.sin_port);
    return true;
}

bool RemoteBitbangServer::ServeOne(const volatile std::sig_atomic_t& stop, std::string& error)
{
    if (!WaitReadable(m_listener, stop))
        return true;
    Socket client(accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC));
    if (client.fd() < 0) {
        error = std::string("accept: ") + std::strerror(errno);
        return false;
    }
    int on = 1;
    setsockopt(client.fd(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    char buffer[4096];
    std::string answers;
    while (WaitReadable(client.fd(), stop)) {
        ssize_t n = recv(client.fd(), buffer, sizeof buffer, 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return true; // the client went away
        answers.clear();
        bool more = Handle(buffer, static_cast<size_t>(n), answers);
        if (!SendAll(client.fd(), answers) || !more)
            return true;
    }
    return true;
}

bool RemoteBitbangServer::Handle(const char* data, size_t size, std::string& answers)
{
    for (size_t i = 0; i < size; ++i) {
        const char c = data[i];
        if (c >= '0' && c <= '7') {
            // Bits: TCK, TMS, TDI. The TAPs act on the rising edge only.
            const int bits = c - '0';
            const bool tck = (bits & 4) != 0;
            if (tck && !m_tckHigh)
                m_chain.Clock((bits & 2) != 0, (bits & 1) != 0);
            m_tckHigh = tck;
        } else if (c == 'R') {
            answers += m_chain.Tdo() ? '1' : '0';
        } else if (c == 't' || c == 'u') {
            m_chain.Reset(); // TRST asserted
        } else if (c == 'Q') {
            return false;
        }
        // Blink (B, b), system reset and the rest need no answer.
    }
    return true;
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

#include "simboard/OpenOcdClient.h"

#include "devid/target/HexkitError.h"

#include <arpa/inet.h>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Mora {
namespace Lux {
namespace Sim {

namespace {

const char Terminator = '\x1a';
// An answer larger than this is not one OpenOCD gives to our commands.
const size_t MaxAnswer = 1 << 20;

int64_t NowMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// The result and whether the command failed travel in one answer, since
// the RPC itself reports no status.
std::string Wrapped(const std::string& command)
{
    return "if {[catch {" + command + "} devid_r]} {set devid_r \"E$devid_r\"} else {set devid_r \"O$devid_r\"}";
}

} // namespace

bool OpenOcdClient::ParseAddress(const std::string& text, std::string& host, uint16_t& port)
{
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 >= text.size())
        return false;
    const std::string digits = text.substr(colon + 1);
    if (digits.size() > 5 || digits.find_first_not_of("0123456789") != std::string::npos)
        return false;
    const unsigned long value = std::strtoul(digits.c_str(), nullptr, 10);
    if (value < 1 || value > 65535)
        return false;
    host = text.substr(0, colon);
    port = static_cast<uint16_t>(value);
    return true;
}

OpenOcdClient::OpenOcdClient(const std::string& host, uint16_t port, uint32_t timeoutMs)
    : m_timeoutMs(timeoutMs), m_address(host + ":" + std::to_string(port))
{
    const int64_t deadline = NowMs() + timeoutMs;
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    int status = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (status != 0)
        throw Hexkit::HexkitError("cannot reach OpenOCD at " + m_address + ": " + gai_strerror(status),
                                  Hexkit::HexkitErrorIF::SEVERITY_ERROR);
    std::string reason = "no address";
    for (addrinfo* entry = found; entry != nullptr && m_socket < 0; entry = entry->ai_next) {
        m_socket = socket(entry->ai_family, entry->ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, entry->ai_protocol);
        if (m_socket < 0)
            continue;
        int result = connect(m_socket, entry->ai_addr, entry->ai_addrlen);
        if (result != 0 && errno == EINPROGRESS) {
            int error = ETIMEDOUT;
            socklen_t length = sizeof error;
            if (WaitFor(POLLOUT, deadline))
                getsockopt(m_socket, SOL_SOCKET, SO_ERROR, &error, &length);
            result = error == 0 ? 0 : -1;
            errno = error;
        }
        if (result != 0) {
            reason = std::strerror(errno);
            close(m_socket);
            m_socket = -1;
        }
    }
    freeaddrinfo(found);
    if (m_socket < 0) {
        for (char& c : reason)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        throw Hexkit::HexkitError("cannot reach OpenOCD at " + m_address + ": " + reason,
                                  Hexkit::HexkitErrorIF::SEVERITY_ERROR);
    }
    int on = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

OpenOcdClient::~OpenOcdClient()
{
    if (m_socket >= 0)
        close(m_socket);
}

void OpenOcdClient::Fail(const std::string& what)
{
    // A broken exchange leaves the stream out of step, so the connection is dropped.
    if (m_socket >= 0)
        close(m_socket);
    m_socket = -1;
    throw Hexkit::HexkitError("OpenOCD at " + m_address + ": " + what, Hexkit::HexkitErrorIF::SEVERITY_ERROR);
}

bool OpenOcdClient::WaitFor(short events, int64_t deadlineMs)
{
    for (;;) {
        const int64_t left = deadlineMs - NowMs();
        if (left <= 0)
            return false;
        pollfd entry{m_socket, events, 0};
        int ready = poll(&entry, 1, static_cast<int>(left));
        if (ready > 0)
            return true;
        if (ready < 0 && errno != EINTR)
            return true; // the call that follows reports the failure
    }
}

std::string OpenOcdClient::Run(const std::string& command)
{
    if (m_socket < 0)
        Fail("the connection was lost earlier");
    const int64_t deadline = NowMs() + m_timeoutMs;
    const std::string request = Wrapped(command) + Terminator;
    for (size_t sent = 0; sent < request.size();) {
        if (!WaitFor(POLLOUT, deadline))
            Fail("no answer within " + std::to_string(m_timeoutMs) + " ms to \"" + command + "\"");
        ssize_t n = send(m_socket, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
        if (n < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (n <= 0)
            Fail(std::string("connection lost: ") + std::strerror(errno));
        sent += static_cast<size_t>(n);
    }
    size_t end;
    while ((end = m_pending.find(Terminator)) == std::string::npos) {
        if (!WaitFor(POLLIN, deadline))
            Fail("no answer within " + std::to_string(m_timeoutMs) + " ms to \"" + command + "\"");
        char buffer[4096];
        ssize_t n = recv(m_socket, buffer, sizeof buffer, 0);
        if (n < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (n == 0)
            Fail("connection closed");
        if (n < 0)
            Fail(std::string("connection lost: ") + std::strerror(errno));
        m_pending.append(buffer, static_cast<size_t>(n));
        if (m_pending.size() > MaxAnswer)
            Fail("answer too long");
    }
    std::string answer = m_pending.substr(0, end);
    m_pending.erase(0, end + 1);
    if (answer.empty() || (answer[0] != 'O' && answer[0] != 'E'))
        Fail("unexpected answer \"" + answer + "\"");
    // Printed results end with a line break that belongs to no value.
    const size_t last = answer.find_last_not_of(" \t\r\n");
    answer.erase(last == std::string::npos || last == 0 ? 1 : last + 1);
    if (answer[0] == 'E')
        throw Hexkit::HexkitError(answer.substr(1), Hexkit::HexkitErrorIF::SEVERITY_ERROR);
    return answer.substr(1);
}

} // namespace Sim
} // namespace Lux
} // namespace Mora

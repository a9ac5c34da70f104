// devid-jtagsim: the scan chain of a simulated board behind OpenOCD's
// remote_bitbang adapter, on 127.0.0.1.
#include "simboard/JtagChain.h"
#include "simboard/RemoteBitbangServer.h"
#include "simboard/SimBoardReader.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

volatile std::sig_atomic_t g_stop = 0;

void OnSignal(int)
{
    g_stop = 1;
}

int Usage()
{
    std::fprintf(stderr, "usage: devid-jtagsim [--port N] BOARD_FOLDER\n"
                         "Serves the scan chain of BOARD_FOLDER/simboard.xml to OpenOCD's remote_bitbang\n"
                         "adapter on 127.0.0.1 (port 0 or none: a free port), prints the port, and exits\n"
                         "when its client goes away or on SIGINT/SIGTERM.\n");
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace Mora::Lux::Sim;
    unsigned long port = 0;
    const char* folder = nullptr;
    for (int i = 1; i < argc; ++i) {
        char* end = nullptr;
        if (std::strcmp(argv[i], "--port") == 0 && i + 1 < argc) {
            port = std::strtoul(argv[++i], &end, 10);
            if (*end != '\0' || port > 65535)
                return Usage();
        } else if (folder == nullptr && argv[i][0] != '-') {
            folder = argv[i];
        } else {
            return Usage();
        }
    }
    if (folder == nullptr)
        return Usage();

    SimBoardReadResult read = SimBoardReader::ReadFolder(folder);
    if (!read.ok) {
        std::fprintf(stderr, "devid-jtagsim: %s\n", read.description.c_str());
        return 1;
    }
    JtagChain chain = JtagChain::FromBoard(read.board);

    struct sigaction action {};
    action.sa_handler = OnSignal;
    sigemptyset(&action.sa_mask);
    for (int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);

    RemoteBitbangServer server(chain);
    std::string error;
    if (!server.Listen(static_cast<uint16_t>(port), error)) {
        std::fprintf(stderr, "devid-jtagsim: %s\n", error.c_str());
        return 1;
    }
    std::printf("devid-jtagsim: %zu TAPs on 127.0.0.1:%u\n", chain.TapCount(), static_cast<unsigned>(server.Port()));
    std::fflush(stdout);
    if (!server.ServeOne(g_stop, error)) {
        std::fprintf(stderr, "devid-jtagsim: %s\n", error.c_str());
        return 1;
    }
    return 0;
}

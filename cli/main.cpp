// devid: shows the target device behind the emulator, from the command line.
#include "cli/CommandLine.h"
#include "cli/StdoutShield.h"

#include <iostream>
#include <sstream>

int main(int argc, char** argv)
{
    std::ostringstream out;
    int status = 0;
    {
        devid_cli::StdoutShield shield;
        status = devid_cli::CommandLine::Run(argc, argv, out, std::cerr);
    }
    std::cout << out.str() << std::flush;
    return std::cout ? status : 5;
}

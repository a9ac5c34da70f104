// The board as seen through OpenOCD: the scan chain that OpenOCD reports,
// named and completed by what the board folder says about it.
#ifndef MORA_LUX_SIM_OPENOCDBOARD_H
#define MORA_LUX_SIM_OPENOCDBOARD_H

#include "simboard/OpenOcdClient.h"
#include "simboard/SimBoardReader.h"

#include <memory>

namespace Mora {
namespace Lux {
namespace Sim {

class OpenOcdBoard {
public:
    /// Environment variable naming a running OpenOCD ("HOST:PORT"); it wins over the board folder.
    static const char* const AddressVariable;

    /// The board folder's description. With AddressVariable set and no board
    /// folder, an empty board that goes through OpenOCD.
    static SimBoardReadResult ReadDescription();

    /// Connects to the OpenOCD that AddressVariable or the board names. Throws
    /// Hexkit::HexkitError when there is none or it cannot be reached.
    static std::unique_ptr<OpenOcdClient> Connect(const SimBoard& described);

    /// The described board with each router tied to a TAP that OpenOCD knows, in
    /// order or by its "tap", its ID register reading the TAP's IDCODE; TAPs the
    /// board does not name become routers of their own name. Register and memory
    /// values of the description are dropped. Throws Hexkit::HexkitError when
    /// OpenOCD fails, or when an IDCODE differs from the one the board or
    /// OpenOCD's -expected-id expects.
    static SimBoard Discover(OpenOcdClient& client, SimBoard described);

    /// Reads an OpenOCD number (decimal or 0x hexadecimal); false when it is none.
    static bool ParseNumber(const std::string& text, uint32_t& value);
    /// "0x" and eight hexadecimal digits, as commands and messages show a word.
    static std::string Hex(uint32_t value);
};

} // namespace Sim
} // namespace Lux
} // namespace Mora

#endif

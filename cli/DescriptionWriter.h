// Writes a trace topology as a device description file of the target
// database: processors, modules with their identification registers,
// sources and routes.
#ifndef DEVID_CLI_DESCRIPTIONWRITER_H
#define DEVID_CLI_DESCRIPTIONWRITER_H

#include "cli/TraceTopology.h"

#include <cstdint>
#include <string>

namespace devid_cli {

struct DescriptionHeader {
    std::string name;   // the device element's id
    uint32_t value = 0; // the device ID it matches under mask
    uint32_t mask = 0xFFFFFFFF;
    std::string origin; // where the topology came from, for the reader of the file
};

class DescriptionWriter {
public:
    /// The whole file as text.
    static std::string Write(const TraceTopology& topology, const DescriptionHeader& header);
};

} // namespace devid_cli

#endif

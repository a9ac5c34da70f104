// The trace topology a device tree describes: its CoreSight components, the
// processors their ETMs trace, and every path trace data can take from a
// source through links to a sink along the tree's port graph.
#ifndef DEVID_CLI_TRACETOPOLOGY_H
#define DEVID_CLI_TRACETOPOLOGY_H

#include "cli/DeviceTree.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace devid_cli {

enum class TraceRole { Source, Link, Sink, Helper, Other };

struct TraceProcessor {
    std::string name; // "CPU_100"
    std::string kind; // the CPU node's first compatible
    std::string path;
};

struct TraceComponent {
    std::string name; // "ETM4_22040000", unique within the topology
    std::string kind; // "ETM4", "FUNNEL", "TMC-ETF", ...
    std::string path;
    TraceRole role = TraceRole::Other;
    bool stm = false;
    std::optional<uint64_t> base; // the unit address; none for static funnels and replicators
    std::size_t processor = 0;    // index into processors(): the traced CPU, else the first one
    std::vector<std::size_t> outputs; // components fed by this one, in port order
};

struct TracePath {
    std::size_t source = 0;
    std::vector<std::size_t> links;
    std::size_t sink = 0;
};

class TraceTopology {
public:
    /// Reads the tree. Disabled nodes are left out unless `keepDisabled`.
    /// Never throws for bad content: endpoints whose partner does not point
    /// back, ports in the wrong direction and the like are left out and
    /// described in problems(), each with the node's path.
    static TraceTopology Read(const DeviceTree& tree, bool keepDisabled);

    const std::vector<TraceProcessor>& processors() const { return m_processors; }
    const std::vector<TraceComponent>& components() const { return m_components; }
    /// The sources: traced cores' in document order, then STMs. An STM goes by
    /// the first processor's name, and a query by that name must find the
    /// processor's own trace unit first.
    std::vector<std::size_t> sources() const;
    /// Per source in that order, its paths in port order.
    const std::vector<TracePath>& paths() const { return m_paths; }
    const std::vector<std::string>& problems() const { return m_problems; }

private:
    void FindPaths();
    void Walk(std::size_t source, std::size_t at, std::vector<std::size_t>& links, std::vector<bool>& onPath);

    std::vector<TraceProcessor> m_processors;
    std::vector<TraceComponent> m_components;
    std::vector<TracePath> m_paths;
    std::vector<std::string> m_problems;
    std::vector<bool> m_reachesSink;
};

} // namespace devid_cli

#endif

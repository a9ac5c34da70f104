#include "cli/TraceTopology.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>
#include <set>

namespace devid_cli {

namespace {

struct KindInfo {
    const char* compatible;
    const char* kind;
    const char* prefix; // of the module name
    TraceRole role;
};

// A TMC's role depends on its ports; it starts out as a sink.
const KindInfo kKinds[] = {
    {"arm,coresight-etm4x", "ETM4", "ETM4", TraceRole::Source},
    {"arm,coresight-etm4x-sysreg", "ETM4", "ETM4", TraceRole::Source},
    {"arm,embedded-trace-extension", "ETE", "ETE", TraceRole::Source},
    {"arm,coresight-etm3x", "ETM3/PTM", "ETM3", TraceRole::Source},
    {"arm,coresight-stm", "STM", "STM", TraceRole::Source},
    {"arm,coresight-dynamic-funnel", "FUNNEL", "FUNNEL", TraceRole::Link},
    {"arm,coresight-static-funnel", "FUNNEL", "FUNNEL", TraceRole::Link},
    {"arm,coresight-funnel", "FUNNEL", "FUNNEL", TraceRole::Link},
    {"arm,coresight-dynamic-replicator", "REPLICATOR", "REPLICATOR", TraceRole::Link},
    {"arm,coresight-static-replicator", "REPLICATOR", "REPLICATOR", TraceRole::Link},
    {"arm,coresight-replicator", "REPLICATOR", "REPLICATOR", TraceRole::Link},
    {"arm,coresight-tmc", "TMC-ETR/ETB", "TMC_ETR", TraceRole::Sink},
    {"arm,coresight-etb10", "ETB", "ETB", TraceRole::Sink},
    {"arm,coresight-tpiu", "TPIU", "TPIU", TraceRole::Sink},
    {"arm,coresight-catu", "CATU", "CATU", TraceRole::Helper},
    {"arm,coresight-cti", "CTI", "CTI", TraceRole::Other},
    {"arm,coresight-cti-v8-arch", "CTI", "CTI", TraceRole::Other},
    {"arm,coresight-cpu-debug", "CPU-DEBUG", "DEBUG", TraceRole::Other},
};

// Past this many paths a tree is rather a fault than a chip.
constexpr std::size_t kMaxPaths = 100000;

std::string Upper(const std::string& text)
{
    std::string upper;
    for (unsigned char c : text)
        upper += std::isalnum(c) ? static_cast<char>(std::toupper(c)) : '_';
    return upper;
}

// What a compatible list says a node is; a kind of its own for a CoreSight
// component this table does not know yet.
std::optional<KindInfo> KindOf(const std::vector<std::string>& compatibles, std::string& unknownKind)
{
    for (const std::string& compatible : compatibles)
        for (const KindInfo& info : kKinds)
            if (compatible == info.compatible)
                return info;
    for (const std::string& compatible : compatibles)
        if (compatible.rfind("arm,coresight-", 0) == 0) {
            unknownKind = Upper(compatible.substr(14));
            return KindInfo{"", unknownKind.c_str(), unknownKind.c_str(), TraceRole::Other};
        }
    return std::nullopt;
}

bool Available(const DeviceTree& tree, int node)
{
    const std::vector<std::string> status = tree.Strings(node, "status");
    return status.empty() || status.front() == "okay" || status.front() == "ok";
}

std::optional<uint64_t> UnitAddress(const std::string& name)
{
    const std::size_t at = name.find('@');
    if (at == std::string::npos)
        return std::nullopt;
    const std::string unit = name.substr(at + 1, name.find(',', at) - at - 1);
    if (unit.empty() || unit.size() > 16 ||
        !std::all_of(unit.begin(), unit.end(), [](unsigned char c) { return std::isxdigit(c) != 0; }))
        return std::nullopt;
    return std::strtoull(unit.c_str(), nullptr, 16);
}

// "etm@22040000" and prefix ETM4 give ETM4_22040000; "replicator-1" gives REPLICATOR_1.
std::string NameFor(const std::string& prefix, const std::string& nodeName, std::set<std::string>& taken)
{
    const std::size_t at = nodeName.find('@');
    std::string name;
    if (at != std::string::npos && at + 1 < nodeName.size()) {
        name = prefix + "_" + Upper(nodeName.substr(at + 1));
    } else {
        name = Upper(nodeName.substr(0, at));
        if (name.rfind(prefix, 0) != 0)
            name = prefix + "_" + name;
    }
    std::string unique = name;
    for (int n = 2; !taken.insert(unique).second; ++n)
        unique = name + "_" + std::to_string(n);
    return unique;
}

// The endpoints below a component's "in-ports" or "out-ports" node.
std::vector<int> Endpoints(const DeviceTree& tree, int component, const char* container)
{
    std::vector<int> endpoints;
    const int ports = tree.Child(component, container);
    if (ports < 0)
        return endpoints;
    for (int port : tree.Children(ports))
        if (tree.Name(port).rfind("port", 0) == 0)
            for (int endpoint : tree.Children(port))
                if (tree.Name(endpoint).rfind("endpoint", 0) == 0)
                    endpoints.push_back(endpoint);
    return endpoints;
}

// endpoint -> port -> in-ports/out-ports -> component
int Owner(const DeviceTree& tree, int endpoint) { return tree.Parent(tree.Parent(tree.Parent(endpoint))); }

std::string ContainerName(const DeviceTree& tree, int endpoint) { return tree.Name(tree.Parent(tree.Parent(endpoint))); }

bool IsCatu(const DeviceTree& tree, int node)
{
    const std::vector<std::string> compatibles = tree.Strings(node, "compatible");
    return std::find(compatibles.begin(), compatibles.end(), "arm,coresight-catu") != compatibles.end();
}

} // namespace

TraceTopology TraceTopology::Read(const DeviceTree& tree, bool keepDisabled)
{
    TraceTopology topology;
    std::map<int, std::size_t> componentAt; // node offset -> component index
    std::set<int> leftOut;                  // components dropped on purpose: links to them are no fault
    std::vector<int> nodes;                 // node of each component
    std::vector<std::string> prefixes;

    for (int node : tree.Nodes()) {
        std::string unknownKind;
        const std::optional<KindInfo> info = KindOf(tree.Strings(node, "compatible"), unknownKind);
        if (!info)
            continue;
        if (!keepDisabled && !Available(tree, node)) {
            leftOut.insert(node);
            continue;
        }
        TraceComponent component;
        component.kind = info->kind;
        component.path = tree.Path(node);
        component.role = info->role;
        component.stm = component.kind == "STM";
        component.base = UnitAddress(tree.Name(node));
        std::string prefix = info->prefix;

        const std::vector<int> outputs = Endpoints(tree, node, "out-ports");
        if (component.role == TraceRole::Sink && std::string(info->compatible) == "arm,coresight-tmc") {
            // A TMC that passes trace on is an ETF; one that only feeds an address translator is still a sink.
            const bool passesOn = std::any_of(outputs.begin(), outputs.end(), [&](int endpoint) {
                const std::optional<uint32_t> remote = tree.Cell(endpoint, "remote-endpoint");
                return !remote || !IsCatu(tree, Owner(tree, tree.ByPhandle(*remote)));
            });
            if (passesOn) {
                component.role = TraceRole::Link;
                component.kind = "TMC-ETF";
                prefix = "TMC_ETF";
            }
        }
        const bool strayInputs = component.role == TraceRole::Source && !Endpoints(tree, node, "in-ports").empty();
        const bool strayOutputs = component.role == TraceRole::Sink && !outputs.empty() &&
                                  std::string(info->compatible) != "arm,coresight-tmc";
        if (strayInputs || strayOutputs) {
            topology.m_problems.push_back(component.path + ": a trace " +
                                          (strayInputs ? "source with in-ports" : "sink with out-ports") +
                                          ", ports in the wrong direction: left out");
            leftOut.insert(node);
            continue;
        }
        componentAt[node] = topology.m_components.size();
        topology.m_components.push_back(std::move(component));
        nodes.push_back(node);
        prefixes.push_back(prefix);
    }

    // Processors: the CPUs the sources trace, each once, in the order first named.
    std::map<int, std::size_t> processorAt;
    std::vector<std::optional<int>> cpuOf(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const std::optional<uint32_t> phandle = tree.Cell(nodes[i], "cpu");
        const int cpu = phandle ? tree.ByPhandle(*phandle) : -1;
        const bool traces = topology.m_components[i].role == TraceRole::Source && !topology.m_components[i].stm;
        if (cpu >= 0)
            cpuOf[i] = cpu;
        else if (traces)
            topology.m_problems.push_back(topology.m_components[i].path +
                                          ": no \"cpu\" that names a CPU node: the first processor stands in");
        if (cpu >= 0 && traces && processorAt.count(cpu) == 0) {
            processorAt[cpu] = topology.m_processors.size();
            topology.m_processors.push_back({"", "", tree.Path(cpu)});
        }
    }
    if (topology.m_processors.empty() && !nodes.empty()) {
        // Nothing traces a CPU: the system components still need a processor to be reached through.
        const int cpus = tree.Child(0, "cpus");
        int first = -1;
        for (int cpu : cpus >= 0 ? tree.Children(cpus) : std::vector<int>{})
            if (first < 0 && tree.Name(cpu).rfind("cpu@", 0) == 0)
                first = cpu;
        if (first >= 0)
            processorAt[first] = 0;
        topology.m_processors.push_back({"", "cpu", first >= 0 ? tree.Path(first) : ""});
    }
    std::set<std::string> taken;
    for (auto& [node, index] : processorAt) {
        TraceProcessor& processor = topology.m_processors[index];
        const std::vector<std::string> compatibles = tree.Strings(node, "compatible");
        processor.kind = compatibles.empty() ? "cpu" : compatibles.front();
    }
    // Names follow document order of the processors' nodes, not the map's.
    std::vector<std::pair<int, std::size_t>> byIndex(processorAt.begin(), processorAt.end());
    std::sort(byIndex.begin(), byIndex.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
    for (const auto& [node, index] : byIndex)
        topology.m_processors[index].name = NameFor("CPU", tree.Name(node), taken);
    for (TraceProcessor& processor : topology.m_processors)
        if (processor.name.empty())
            processor.name = NameFor("CPU", "cpu", taken);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        topology.m_components[i].name = NameFor(prefixes[i], tree.Name(nodes[i]), taken);
        const auto processor = cpuOf[i] ? processorAt.find(*cpuOf[i]) : processorAt.end();
        topology.m_components[i].processor = processor != processorAt.end() ? processor->second : 0;
    }

    // The port graph: every endpoint must name a partner that names it back,
    // and an output must meet an input.
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        for (const char* side : {"out-ports", "in-ports"}) {
            const bool output = side[0] == 'o';
            for (int endpoint : Endpoints(tree, nodes[i], side)) {
                const std::string where = tree.Path(endpoint) + ": ";
                // An endpoint without a partner is a port the board leaves unconnected.
                const std::optional<uint32_t> phandle = tree.Cell(endpoint, "remote-endpoint");
                if (!phandle)
                    continue;
                const int remote = tree.ByPhandle(*phandle);
                if (remote < 0) {
                    topology.m_problems.push_back(where + "its \"remote-endpoint\" names no node: left out");
                    continue;
                }
                const std::optional<uint32_t> back = tree.Cell(remote, "remote-endpoint");
                if (!back || tree.ByPhandle(*back) != endpoint) {
                    topology.m_problems.push_back(where + "its partner " + tree.Path(remote) +
                                                  " does not point back: left out");
                    continue;
                }
                if (ContainerName(tree, remote) != (output ? "in-ports" : "out-ports")) {
                    topology.m_problems.push_back(where + "an " + (output ? "output" : "input") + " joined to " +
                                                  tree.Path(remote) + ", which is not an " +
                                                  (output ? "input" : "output") + ": left out");
                    continue;
                }
                const int owner = Owner(tree, remote);
                const auto target = componentAt.find(owner);
                if (target == componentAt.end()) {
                    if (leftOut.count(owner) == 0)
                        topology.m_problems.push_back(where + "leads to " + tree.Path(owner) +
                                                      ", which is no CoreSight component: left out");
                    continue;
                }
                if (output)
                    topology.m_components[i].outputs.push_back(target->second);
            }
        }
    }
    topology.FindPaths();
    return topology;
}

std::vector<std::size_t> TraceTopology::sources() const
{
    std::vector<std::size_t> sources;
    for (bool stm : {false, true})
        for (std::size_t i = 0; i < m_components.size(); ++i)
            if (m_components[i].role == TraceRole::Source && m_components[i].stm == stm)
                sources.push_back(i);
    return sources;
}

void TraceTopology::FindPaths()
{
    // Links from which no sink can be reached are never entered, so the walk
    // spends its time only on paths it keeps.
    m_reachesSink.assign(m_components.size(), false);
    for (bool grew = true; grew;) {
        grew = false;
        for (std::size_t i = 0; i < m_components.size(); ++i) {
            const TraceComponent& component = m_components[i];
            const bool reaches = component.role == TraceRole::Sink ||
                                 (component.role == TraceRole::Link &&
                                  std::any_of(component.outputs.begin(), component.outputs.end(),
                                              [this](std::size_t next) { return m_reachesSink[next]; }));
            if (reaches && !m_reachesSink[i])
                m_reachesSink[i] = grew = true;
        }
    }
    std::vector<bool> onPath(m_components.size(), false);
    std::vector<std::size_t> links;
    for (std::size_t source : sources()) {
        onPath[source] = true;
        Walk(source, source, links, onPath);
        onPath[source] = false;
    }
    if (m_paths.size() >= kMaxPaths)
        m_problems.push_back("more than " + std::to_string(kMaxPaths) + " trace paths: the rest are left out");
}

void TraceTopology::Walk(std::size_t source, std::size_t at, std::vector<std::size_t>& links, std::vector<bool>& onPath)
{
    for (std::size_t next : m_components[at].outputs) {
        if (onPath[next] || !m_reachesSink[next] || m_paths.size() >= kMaxPaths)
            continue; // a loop in the graph, a dead end, or enough already
        if (m_components[next].role == TraceRole::Sink) {
            m_paths.push_back({source, links, next});
        } else if (m_components[next].role == TraceRole::Link) {
            onPath[next] = true;
            links.push_back(next);
            Walk(source, next, links, onPath);
            links.pop_back();
            onPath[next] = false;
        }
    }
}

} // namespace devid_cli

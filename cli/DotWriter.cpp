#include "cli/DotWriter.h"

#include <map>
#include <set>
#include <utility>

namespace devid_cli {

namespace {

enum class Role { Source, Link, Drm, Sink };

struct Node {
    Role role;
    std::string label;
    bool resolved;
};

const char* Style(Role role)
{
    switch (role) {
    case Role::Source: return "shape=box, style=\"rounded,filled\", fillcolor=\"#dbe9f6\"";
    case Role::Link: return "shape=ellipse, style=filled, fillcolor=\"#eeeeee\"";
    case Role::Drm: return "shape=diamond, style=filled, fillcolor=\"#f3efc2\"";
    case Role::Sink: break;
    }
    return "shape=cylinder, style=filled, fillcolor=\"#f6dfc9\"";
}

class Graph {
public:
    // A module serving in several roles is drawn once, in its strongest one.
    std::string AddModule(const ModuleRef& module, Role role)
    {
        const std::string id = "module:" + module.name;
        auto found = m_nodes.find(id);
        if (found == m_nodes.end()) {
            const std::string label = module.kind.empty() ? module.name : module.name + "\n" + module.kind;
            m_nodes.emplace(id, Node{role, label, module.resolved});
        } else if (role > found->second.role) {
            found->second.role = role;
        }
        return id;
    }

    std::string AddSource(const RouteView& route)
    {
        const std::string id = "source:" + route.source.name;
        const std::string label = route.sourceName.empty() || route.sourceName == route.source.name
                                      ? route.source.name
                                      : route.sourceName + "\n" + route.source.name;
        m_nodes.emplace(id, Node{Role::Source, label, route.source.resolved});
        return id;
    }

    void AddEdge(const std::string& from, const std::string& to, bool control)
    {
        m_edges.insert({{from, to}, control});
    }

    void Write(std::ostream& out) const
    {
        out << "digraph trace_topology {\n"
               "  rankdir=LR;\n"
               "  node [fontname=\"Helvetica\", fontsize=11];\n"
               "  edge [color=\"#555555\", fontname=\"Helvetica\", fontsize=9];\n";
        for (const auto& [id, node] : m_nodes) {
            out << "  " << DotWriter::Quote(id) << " [label=" << DotWriter::Quote(node.label) << ", " << Style(node.role);
            if (!node.resolved)
                out << ", color=red, fontcolor=red, penwidth=1.5, style=dashed";
            out << "];\n";
        }
        WriteRank(out, "source", Role::Source);
        WriteRank(out, "sink", Role::Sink);
        for (const auto& [ends, control] : m_edges) {
            out << "  " << DotWriter::Quote(ends.first) << " -> " << DotWriter::Quote(ends.second);
            if (control)
                out << " [style=dashed, arrowhead=odot, label=\"DRM\"]";
            out << ";\n";
        }
        out << "}\n";
    }

private:
    void WriteRank(std::ostream& out, const char* rank, Role role) const
    {
        std::string members;
        for (const auto& [id, node] : m_nodes)
            if (node.role == role)
                members += " " + DotWriter::Quote(id) + ";";
        if (!members.empty())
            out << "  { rank=" << rank << ";" << members << " }\n";
    }

    std::map<std::string, Node> m_nodes;
    std::set<std::pair<std::pair<std::string, std::string>, bool>> m_edges;
};

} // namespace

std::string DotWriter::Quote(const std::string& text)
{
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        if (c == '\n')
            quoted += "\\n";
        else if (static_cast<unsigned char>(c) < 0x20)
            quoted += '?';
        else
            quoted += c;
    }
    return quoted + "\"";
}

void DotWriter::Write(std::ostream& out, const std::vector<RouteView>& routes)
{
    Graph graph;
    for (const RouteView& route : routes) {
        std::string previous = route.source.name.empty() ? "" : graph.AddSource(route);
        std::string sink;
        for (const ModuleRef& link : route.links) {
            const std::string id = graph.AddModule(link, Role::Link);
            if (!previous.empty())
                graph.AddEdge(previous, id, false);
            previous = id;
        }
        if (!route.sink.name.empty()) {
            sink = graph.AddModule(route.sink, Role::Sink);
            if (!previous.empty())
                graph.AddEdge(previous, sink, false);
        }
        if (!route.drm.name.empty()) {
            const std::string drm = graph.AddModule(route.drm, Role::Drm);
            if (!sink.empty())
                graph.AddEdge(drm, sink, true);
        }
    }
    graph.Write(out);
}

} // namespace devid_cli

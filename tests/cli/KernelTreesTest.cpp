// The CoreSight boards of the Linux 6.1 sources, compiled by kernel-dtbs.sh:
// each one imported, checked, and its routes as the library serves them
// compared with the source-to-sink paths read here straight from the tree.
#include "tests/cli/DeviceTreeBoard.h"
#include "tests/cli/ToolRunner.h"

#include <libfdt.h>
#include <pugixml.hpp>

#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <set>

namespace devid_test {
namespace {

// What the tree says, read without the importer: paths by node path.
struct TreeGraph {
    bool hasComponent = false;
    std::size_t sources = 0;
    std::set<std::string> paths; // "source > link > ... > sink"
    std::string soc;             // the root's last compatible
};

int Parent(const void* fdt, int node, int levels = 1)
{
    while (levels-- > 0 && node >= 0)
        node = fdt_parent_offset(fdt, node);
    return node;
}

const char* NameOf(const void* fdt, int node) { return node >= 0 ? fdt_get_name(fdt, node, nullptr) : ""; }

int Remote(const void* fdt, int endpoint)
{
    int length = 0;
    const void* cell = fdt_getprop(fdt, endpoint, "remote-endpoint", &length);
    return cell != nullptr && length == 4 ? fdt_node_offset_by_phandle(fdt, fdt32_ld(static_cast<const fdt32_t*>(cell))) : -1;
}

TreeGraph ReadGraph(const std::string& blob)
{
    const void* fdt = blob.data();
    TreeGraph graph;
    int length = 0;
    const char* rootCompatible = static_cast<const char*>(fdt_getprop(fdt, 0, "compatible", &length));
    for (int at = 0; rootCompatible != nullptr && at < length; at += static_cast<int>(std::strlen(rootCompatible + at)) + 1)
        graph.soc = rootCompatible + at;

    std::map<int, char> role; // 's'ource, 'l'ink, 'k' sink
    for (int node = fdt_next_node(fdt, -1, nullptr); node >= 0; node = fdt_next_node(fdt, node, nullptr)) {
        const char* status = static_cast<const char*>(fdt_getprop(fdt, node, "status", nullptr));
        const char* compatible = static_cast<const char*>(fdt_getprop(fdt, node, "compatible", &length));
        if (compatible == nullptr || (status != nullptr && std::strcmp(status, "okay") != 0 && std::strcmp(status, "ok") != 0))
            continue;
        for (int at = 0; at < length; at += static_cast<int>(std::strlen(compatible + at)) + 1) {
            const std::string kind = compatible + at;
            if (kind.rfind("arm,coresight-", 0) != 0)
                continue;
            graph.hasComponent = true;
            if (kind == "arm,coresight-etm3x" || kind == "arm,coresight-etm4x" || kind == "arm,coresight-stm")
                role[node] = 's';
            else if (kind.find("funnel") != std::string::npos || kind.find("replicator") != std::string::npos)
                role[node] = 'l';
            else if (kind == "arm,coresight-etb10" || kind == "arm,coresight-tpiu")
                role[node] = 'k';
            else if (kind == "arm,coresight-tmc")
                role[node] = fdt_subnode_offset(fdt, node, "out-ports") >= 0 ? 'l' : 'k';
        }
    }
    // Component to component: an out-ports endpoint and an in-ports one that name each other.
    std::multimap<int, int> edges;
    for (int node = fdt_next_node(fdt, -1, nullptr); node >= 0; node = fdt_next_node(fdt, node, nullptr)) {
        const int remote = Remote(fdt, node);
        if (remote >= 0 && Remote(fdt, remote) == node && std::strcmp(NameOf(fdt, Parent(fdt, node, 2)), "out-ports") == 0 &&
            std::strcmp(NameOf(fdt, Parent(fdt, remote, 2)), "in-ports") == 0)
            edges.emplace(Parent(fdt, node, 3), Parent(fdt, remote, 3));
    }
    // Depth-first from every source; a node already on the path ends that branch.
    std::vector<int> path;
    const std::function<void(int)> walk = [&](int node) {
        for (auto [edge, end] = edges.equal_range(node); edge != end; ++edge) {
            const int next = edge->second;
            if (role.count(next) == 0 || std::find(path.begin(), path.end(), next) != path.end())
                continue;
            path.push_back(next);
            if (role[next] == 'k') {
                std::string text;
                char name[512] = "";
                for (int step : path)
                    text += (text.empty() ? "" : " > ") + std::string(fdt_get_path(fdt, step, name, sizeof name) == 0 ? name : "?");
                graph.paths.insert(text);
            } else if (role[next] == 'l') {
                walk(next);
            }
            path.pop_back();
        }
    };
    for (const auto& [node, kind] : role)
        if (kind == 's') {
            ++graph.sources;
            path = {node};
            walk(node);
        }
    return graph;
}

// The imported routes as the library serves them, by the node path each module names.
std::set<std::string> LibraryPaths(const ToolRunner& tool, const std::string& db, const std::string& board)
{
    pugi::xml_document description;
    const std::string file = db + "/" + std::filesystem::directory_iterator(db)->path().filename().string();
    EXPECT_TRUE(description.load_file(file.c_str())) << file;
    std::map<std::string, std::string> nodeOf;
    const pugi::xml_node device = description.child("database").child("device");
    for (pugi::xml_node module : device.child("modules").children("module"))
        nodeOf[module.attribute("id").value()] =
            module.child("characteristics").find_child_by_attribute("id", "node").attribute("value").value();
    for (pugi::xml_node source : device.child("sources").children("source"))
        nodeOf[source.attribute("id").value()] =
            nodeOf[source.child("components").child("component").attribute("module").value()];

    std::set<std::string> paths;
    const Json served = tool.JsonOf({"routes", "--db", db, "--board", board}, 0, false);
    for (const Json& route : served["routes"]) {
        std::string text = nodeOf[route["source"]["id"].get<std::string>()];
        for (const Json& link : route["links"])
            text += " > " + nodeOf[link["name"].get<std::string>()];
        paths.insert(text + " > " + nodeOf[route["sink"]["name"].get<std::string>()]);
    }
    return paths;
}

std::vector<std::string> Boards()
{
    std::vector<std::string> all;
    std::ifstream list(DEVID_KERNEL_DTB_CACHE "/boards.txt");
    for (std::string line; std::getline(list, line);)
        all.push_back(line);
    // A handful, spread over the list, where the whole set would take too long.
    const std::size_t step = DEVID_KERNEL_BOARDS == 0 ? 1 : std::max<std::size_t>(all.size() / DEVID_KERNEL_BOARDS, 1);
    std::vector<std::string> some;
    for (std::size_t i = 0; i < all.size(); i += step)
        some.push_back(all[i]);
    return some;
}

TEST(KernelTrees, EveryCoreSightBoardImportsCleanAndItsRoutesEqualTheTreesPaths)
{
    const std::vector<std::string> boards = Boards();
    ASSERT_FALSE(boards.empty()) << "no boards in " DEVID_KERNEL_DTB_CACHE "/boards.txt";
    ToolRunner tool;
    const std::string board = WriteRouterBoard(tool.scratch, "board");
    std::size_t imported = 0, traced = 0, sources = 0, routes = 0;
    std::set<std::string> socs;
    for (std::size_t i = 0; i < boards.size(); ++i) {
        const std::string dtb = DEVID_KERNEL_DTB_CACHE "/dtb/" + boards[i];
        const TreeGraph graph = ReadGraph(readFile(dtb));
        if (!graph.hasComponent)
            continue; // every component of this board is disabled
        const std::string db = "db" + std::to_string(i);
        const ToolResult result = tool.Run({"db", "import", dtb, "--out", db, "--id", kImportedId});
        ASSERT_EQ(result.status, 0) << boards[i] << ": " << result.err;
        EXPECT_EQ(tool.JsonOf({"db", "check", db}, 0, false)["errors"], 0) << boards[i];
        EXPECT_EQ(LibraryPaths(tool, tool.scratch.file(db), board), graph.paths) << boards[i];
        ++imported;
        if (graph.sources > 0) {
            ++traced;
            socs.insert(graph.soc);
        }
        sources += graph.sources;
        routes += graph.paths.size();
    }
    std::cout << "kernel trees: " << imported << " boards imported, " << traced << " with trace sources from "
              << socs.size() << " SoCs, " << sources << " sources, " << routes << " routes\n";
    if (DEVID_KERNEL_BOARDS == 0) {
        EXPECT_GE(traced, 150u) << "fewer CoreSight boards than Linux 6.1 has: is the cache complete?";
    }
}

} // namespace
} // namespace devid_test

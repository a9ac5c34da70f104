// A compiled device tree as `devid db import` reads it: the topology built
// from it, with and without disabled nodes, and the description written from
// that, which must name only what it holds.
#include "fuzz/entries/FuzzEntries.h"
#include "fuzz/entries/FuzzWorkspace.h"

#include "cli/DescriptionWriter.h"
#include "cli/DeviceTree.h"
#include "cli/TraceTopology.h"

#include <pugixml.hpp>

#include <set>
#include <string>

namespace devid_fuzz {

const char kEntry[] = "device_tree";

int DeviceTree(const uint8_t* data, size_t size)
{
    using namespace devid_cli;
    FuzzWorkspace& workspace = FuzzWorkspace::Get();
    const std::string file = workspace.Folder("devicetree") + "/board.dtb";
    workspace.WriteFile(file, data, size);

    std::string error;
    const devid_cli::DeviceTree tree = devid_cli::DeviceTree::Load(file, error);
    DEVID_FUZZ_CHECK(kEntry, tree.empty() != error.empty(), "a refused tree says why, a read one does not");
    for (bool keepDisabled : {false, true}) {
        const TraceTopology topology = TraceTopology::Read(tree, keepDisabled);
        if (topology.components().empty())
            continue;
        pugi::xml_document description;
        const std::string text = DescriptionWriter::Write(topology, DescriptionHeader{"fuzz", 1, 0xFFFFFFFF, file});
        DEVID_FUZZ_CHECK(kEntry, description.load_string(text.c_str()), "the description is well-formed XML");

        const pugi::xml_node device = description.child("database").child("device");
        std::set<std::string> procs, modules, sources;
        for (pugi::xml_node proc : device.child("procs").children())
            DEVID_FUZZ_CHECK(kEntry, procs.insert(proc.attribute("id").value()).second, "processor names are unique");
        for (pugi::xml_node module : device.child("modules").children()) {
            DEVID_FUZZ_CHECK(kEntry, modules.insert(module.attribute("id").value()).second, "module names are unique");
            DEVID_FUZZ_CHECK(kEntry, procs.count(module.attribute("proc").value()) == 1, "a module's processor exists");
        }
        for (pugi::xml_node source : device.child("sources").children())
            sources.insert(source.attribute("id").value());
        for (pugi::xml_node route : device.child("trace_routes").children()) {
            DEVID_FUZZ_CHECK(kEntry, sources.count(route.child("source").attribute("source").value()) == 1,
                             "a route starts at a source");
            for (pugi::xml_node link : route.children("link"))
                DEVID_FUZZ_CHECK(kEntry, modules.count(link.attribute("module").value()) == 1, "links are modules");
            DEVID_FUZZ_CHECK(kEntry, modules.count(route.child("sink").attribute("module").value()) == 1,
                             "the sink is a module");
        }
    }
    return 0;
}

} // namespace devid_fuzz

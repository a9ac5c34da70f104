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

        // Every name a module, source or route uses is defined before, and once in its section.
        std::set<std::string> names;
        const pugi::xml_node device = description.child("database").child("device");
        for (const char* section : {"procs", "modules", "sources"}) {
            std::set<std::string> defined;
            for (pugi::xml_node item : device.child(section).children()) {
                DEVID_FUZZ_CHECK(kEntry, defined.insert(item.attribute("id").value()).second, "names are unique");
                DEVID_FUZZ_CHECK(kEntry, !item.attribute("proc") || names.count(item.attribute("proc").value()) == 1,
                                 "a module's or source's processor comes before it");
            }
            names.insert(defined.begin(), defined.end());
        }
        for (pugi::xml_node route : device.child("trace_routes").children())
            for (pugi::xml_node step : route.children())
                DEVID_FUZZ_CHECK(kEntry, names.count(step.first_attribute().value()) == 1,
                                 "a route names only sources and modules of the description");
    }
    return 0;
}

} // namespace devid_fuzz

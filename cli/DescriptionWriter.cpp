#include "cli/DescriptionWriter.h"

#include <pugixml.hpp>

#include <cinttypes>
#include <cstdio>
#include <sstream>

namespace devid_cli {

namespace {

std::string Hex(uint64_t number)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%" PRIx64, number);
    return text;
}

// The CoreSight identification block at the top of every component's 4 KiB frame.
struct IdRegister {
    const char* name;
    uint32_t offset;
};
const IdRegister kIdRegisters[] = {
    {"PIDR4", 0xFD0}, {"PIDR0", 0xFE0}, {"PIDR1", 0xFE4}, {"PIDR2", 0xFE8}, {"PIDR3", 0xFEC},
    {"CIDR0", 0xFF0}, {"CIDR1", 0xFF4}, {"CIDR2", 0xFF8}, {"CIDR3", 0xFFC},
};

void Characteristic(pugi::xml_node parent, const char* id, const std::string& value, const char* description)
{
    pugi::xml_node node = parent.append_child("characteristic");
    node.append_attribute("id") = id;
    node.append_attribute("value") = value.c_str();
    node.append_attribute("description") = description;
}

void Module(pugi::xml_node modules, const TraceComponent& component, const TraceTopology& topology)
{
    pugi::xml_node module = modules.append_child("module");
    module.append_attribute("id") = component.name.c_str();
    module.append_attribute("kind") = component.kind.c_str();
    module.append_attribute("proc") = topology.processors()[component.processor].name.c_str();
    // The model holds 32-bit addresses: a frame above 4 GiB keeps its base but no registers.
    if (component.base && *component.base <= 0xFFFFF000u) {
        pugi::xml_node registers = module.append_child("registers");
        for (const IdRegister& id : kIdRegisters) {
            pugi::xml_node reg = registers.append_child("reg");
            reg.append_attribute("id") = id.name;
            reg.append_attribute("type") = "mem";
            reg.append_attribute("address") = Hex(*component.base + id.offset).c_str();
            reg.append_attribute("page") = "0";
            reg.append_attribute("addrunit") = "1";
            reg.append_attribute("width") = "32";
        }
    }
    pugi::xml_node characteristics = module.append_child("characteristics");
    if (component.base)
        Characteristic(characteristics, "base", Hex(*component.base), "Unit address in the device tree");
    Characteristic(characteristics, "node", component.path, "Device tree node");
}

} // namespace

std::string DescriptionWriter::Write(const TraceTopology& topology, const DescriptionHeader& header)
{
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    std::string origin = header.origin;
    for (std::size_t dashes; (dashes = origin.find("--")) != std::string::npos;)
        origin.replace(dashes, 2, "-_"); // "--" would end the comment
    document.append_child(pugi::node_comment).set_value((" Imported by devid db import from " + origin + ". ").c_str());
    pugi::xml_node device = document.append_child("database").append_child("device");
    device.append_attribute("id") = header.name.c_str();
    device.append_attribute("value") = Hex(header.value).c_str();
    device.append_attribute("mask") = Hex(header.mask).c_str();

    pugi::xml_node procs = device.append_child("procs");
    for (const TraceProcessor& processor : topology.processors()) {
        pugi::xml_node proc = procs.append_child("proc");
        proc.append_attribute("id") = processor.name.c_str();
        proc.append_attribute("kind") = processor.kind.c_str();
    }
    pugi::xml_node modules = device.append_child("modules");
    for (const TraceComponent& component : topology.components())
        Module(modules, component, topology);

    pugi::xml_node sources = device.append_child("sources");
    for (std::size_t index : topology.sources()) {
        const TraceComponent& component = topology.components()[index];
        pugi::xml_node source = sources.append_child("source");
        source.append_attribute("id") = component.name.c_str();
        source.append_attribute("proc") = topology.processors()[component.processor].name.c_str();
        source.append_attribute("stmmaster") = component.stm ? "true" : "false";
        source.append_child("components").append_child("component").append_attribute("module") =
            component.name.c_str();
    }
    pugi::xml_node routes = device.append_child("trace_routes");
    const std::vector<TraceComponent>& components = topology.components();
    for (const TracePath& path : topology.paths()) {
        pugi::xml_node route = routes.append_child("route");
        route.append_child("source").append_attribute("source") = components[path.source].name.c_str();
        for (std::size_t link : path.links)
            route.append_child("link").append_attribute("module") = components[link].name.c_str();
        route.append_child("sink").append_attribute("module") = components[path.sink].name.c_str();
    }
    std::ostringstream text;
    document.save(text, "  ");
    return text.str();
}

} // namespace devid_cli

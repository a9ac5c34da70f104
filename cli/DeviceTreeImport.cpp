#include "cli/DeviceTreeImport.h"

#include "cli/DescriptionWriter.h"
#include "cli/DeviceTree.h"
#include "cli/ToolError.h"
#include "cli/TraceTopology.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

namespace devid_cli {

namespace {

namespace fs = std::filesystem;

// A whole unsigned 32-bit number, decimal, 0x hexadecimal or 0 octal.
uint32_t NumberOption(const std::string& option, const std::string& text)
{
    char* end = nullptr;
    const unsigned long long number = std::strtoull(text.c_str(), &end, 0);
    if (text.empty() || !std::isdigit(static_cast<unsigned char>(text[0])) || *end != '\0' || number > 0xFFFFFFFFull)
        throw ToolError(ErrorKind::Usage, option + " " + text + " is not a 32-bit number");
    return static_cast<uint32_t>(number);
}

std::string Plural(std::size_t count, const char* noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

} // namespace

void DeviceTreeImport::Run(const ToolOptions& options, std::ostream& out, std::ostream& err)
{
    DescriptionHeader header;
    if (!options.importId.empty())
        header.value = NumberOption("--id", options.importId);
    if (!options.importMask.empty())
        header.mask = NumberOption("--mask", options.importMask);
    if (!options.importName.empty() && options.importTrees.size() > 1)
        throw ToolError(ErrorKind::Usage, "--name names one description: give one tree with it");
    std::set<std::string> names;
    for (const std::string& tree : options.importTrees) {
        const std::string name = options.importName.empty() ? fs::path(tree).stem().string() : options.importName;
        if (!names.insert(name).second)
            throw ToolError(ErrorKind::Usage, "two trees would both be written as device_" + name + ".xml");
    }
    std::error_code created;
    fs::create_directories(options.importOut, created);
    if (created || !fs::is_directory(options.importOut))
        throw ToolError(ErrorKind::File, "cannot make the folder " + options.importOut);
    if (options.importId.empty())
        err << "devid: warning: no --id given: the descriptions carry device ID 0 and will not match a live target "
               "until they are given its ID\n";

    std::size_t failed = 0;
    for (const std::string& path : options.importTrees) {
        std::string error;
        const DeviceTree tree = DeviceTree::Load(path, error);
        const TraceTopology topology = TraceTopology::Read(tree, options.importAll);
        if (error.empty() && topology.components().empty())
            error = "no CoreSight component";
        if (!error.empty()) {
            err << "devid: error: " << path << ": " << error << '\n';
            ++failed;
            continue;
        }
        for (const std::string& problem : topology.problems())
            err << "devid: warning: " << path << ": " << problem << '\n';

        header.name = options.importName.empty() ? fs::path(path).stem().string() : options.importName;
        header.origin = fs::path(path).filename().string();
        const std::string file = (fs::path(options.importOut) / ("device_" + header.name + ".xml")).string();
        std::ofstream stream(file, std::ios::binary | std::ios::trunc);
        stream << DescriptionWriter::Write(topology, header);
        stream.close();
        if (!stream) {
            err << "devid: error: cannot write " << file << '\n';
            ++failed;
            continue;
        }
        out << file << ": " << Plural(topology.processors().size(), "processor") << ", "
            << Plural(topology.components().size(), "module") << ", " << Plural(topology.sources().size(), "source") << ", "
            << Plural(topology.paths().size(), "route") << '\n';
    }
    if (failed > 0)
        throw ToolError(ErrorKind::File, Plural(failed, "tree") + " of " + std::to_string(options.importTrees.size()) +
                                             " could not be imported");
}

} // namespace devid_cli

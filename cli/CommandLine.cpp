#include "cli/CommandLine.h"

#include "cli/DatabaseChecker.h"
#include "cli/DeviceCommands.h"
#include "cli/DeviceTreeImport.h"
#include "cli/JsonFormatter.h"
#include "cli/TdfCommands.h"
#include "cli/TextFormatter.h"
#include "cli/ToolEnvironment.h"
#include "cli/ToolError.h"
#include "cli/ToolOptions.h"

#include <CLI/CLI.hpp>

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace devid_cli {

const char* CommandName(Command command)
{
    switch (command) {
    case Command::Identify: return "identify";
    case Command::Procs: return "procs";
    case Command::Proc: return "proc";
    case Command::Routes: return "routes";
    case Command::Settings: return "settings";
    case Command::Save: return "save";
    case Command::Load: return "load";
    case Command::TdfList: return "tdf ls";
    case Command::TdfCat: return "tdf cat";
    case Command::DbCheck: return "db check";
    case Command::DbImport: return "db import";
    case Command::None: break;
    }
    return "devid";
}

namespace {

const char kDefaultsNote[] =
    "\nWithout --db / --board (or TRACE_XMLDB_DEVICES / COMMON_VEXIF) the bundled example\n"
    "database and board are used. Exit status: 0 ok, 1 no device matched or check failed,\n"
    "2 bad command line, 3 unknown processor, 4 file problem, 5 internal error.\n";

CLI::App* AddCommand(CLI::App& parent, const char* name, const char* description, const std::string& examples,
                     ToolOptions& options, Command command)
{
    CLI::App* sub = parent.add_subcommand(name, description);
    sub->footer("\nExamples:\n" + examples);
    sub->callback([&options, command] { options.command = command; });
    return sub;
}

void AddJsonOption(CLI::App& app, ToolOptions& options)
{
    app.add_flag("--json", options.json, "Print one JSON document (schema devid/1, see docs/cli.md)");
}

// What every command that talks to the device identifier accepts.
void AddDeviceOptions(CLI::App& app, ToolOptions& options, bool withLoad)
{
    app.add_option("--db", options.databaseDir, "Folder of device description files (sets TRACE_XMLDB_DEVICES)")
        ->check(CLI::ExistingDirectory);
    app.add_option("--board", options.boardDir, "Folder of the (simulated) board (sets COMMON_VEXIF)")
        ->check(CLI::ExistingDirectory);
    app.add_option("--openocd", options.openOcd,
                   "Reach the device through a running OpenOCD's Tcl RPC port, HOST:PORT (docs/openocd.md)")
        ->check(CLI::Validator(
            [](std::string& text) {
                const size_t colon = text.rfind(':');
                const bool ok = colon != std::string::npos && colon > 0 && colon + 1 < text.size() &&
                                text.find_first_not_of("0123456789", colon + 1) == std::string::npos;
                return ok ? std::string() : "expected HOST:PORT, got \"" + text + "\"";
            },
            "HOST:PORT"));
    if (withLoad)
        app.add_option("--load", options.loadFile,
                       "Work offline from a saved configuration: a .dim file or a .tdf file");
    app.add_option("--log-level", options.logLevel, "Library logging level 0-6 (sets MORA_TRACE_LOGGING)")
        ->check(CLI::Range(0, 6));
    AddJsonOption(app, options);
}

// The queries; they exist at the top level and after "load FILE".
void AddDeviceCommands(CLI::App& parent, ToolOptions& options, bool withLoad)
{
    const std::string prefix = withLoad ? "devid " : "devid load run1.dim ";

    CLI::App* identify = AddCommand(parent, "identify",
                                    "Show the scan chain, the device IDs read and the description file each one matches",
                                    "  " + prefix + "identify\n  " + prefix + "identify --json\n", options,
                                    Command::Identify);
    AddDeviceOptions(*identify, options, withLoad);

    CLI::App* procs = AddCommand(parent, "procs", "List the processors and trace sources of the device",
                                 "  " + prefix + "procs\n  " + prefix + "procs --json\n  " + prefix + "procs --names\n",
                                 options, Command::Procs);
    CLI::Option* names = procs->add_flag(
        "--names", options.names, "Print only the names 'proc' and 'routes --proc' take, one per line");
    AddDeviceOptions(*procs, options, withLoad);
    names->excludes(procs->get_option("--json"));

    CLI::App* proc = AddCommand(parent, "proc",
                                "Show one processor: its modules with registers, characteristics, mappings and routes",
                                "  " + prefix + "proc TALON_0\n  " + prefix + "proc TALON_0 --json\n", options,
                                Command::Proc);
    proc->add_option("NAME", options.procName, "Processor name or source ID")->required();
    AddDeviceOptions(*proc, options, withLoad);

    CLI::App* routes = AddCommand(parent, "routes", "List the trace routes: source, links, sink and DRM module",
                                  "  " + prefix + "routes\n  " + prefix + "routes --proc TALON_0\n  " + prefix +
                                      "routes --dot | dot -Tsvg > topology.svg\n",
                                  options, Command::Routes);
    routes->add_option("--proc", options.procName, "Only the routes of this processor");
    CLI::Option* dot = routes->add_flag("--dot", options.dot, "Print the trace topology as a Graphviz graph");
    AddDeviceOptions(*routes, options, withLoad);
    dot->excludes(routes->get_option("--json"));

    CLI::App* settings = AddCommand(parent, "settings",
                                    "Show the session settings: debugger, emulator, port and trace output files",
                                    "  " + prefix + "settings\n  " + prefix + "settings TALON_0\n", options,
                                    Command::Settings);
    settings->add_option("PROC", options.procName, "Only this processor or scan-chain device");
    AddDeviceOptions(*settings, options, withLoad);

    CLI::App* save = AddCommand(
        parent, "save",
        "Save the session's configuration: NAME.dim in the trace logging folder, or the DEVID section of a TDF file",
        "  " + prefix + "save run1            # writes ~/.MORA-trace/run1.dim\n  " + prefix +
            "save trace.tdf --tdf  # appends a DEVID section, creating trace.tdf if needed\n",
        options, Command::Save);
    save->add_option("FILE", options.saveFile, "A name for the .dim file, or with --tdf the TDF file")->required();
    save->add_flag("--tdf", options.saveTdf, "Save into a TDF file instead");
    AddDeviceOptions(*save, options, withLoad);
}

void Build(CLI::App& app, ToolOptions& options)
{
    app.set_version_flag("--version", std::string("devid ") + DEVID_VERSION);
    app.require_subcommand(1);
    app.footer(std::string("\nExamples:\n"
                           "  devid identify\n"
                           "  devid proc TALON_0 --json\n"
                           "  devid routes --dot | dot -Tsvg > topology.svg\n"
                           "  devid save run1 && devid load run1.dim procs\n"
                           "  devid db check examples/db\n") +
               kDefaultsNote);
    AddDeviceOptions(app, options, true);
    AddDeviceCommands(app, options, true);

    CLI::App* load = AddCommand(app, "load",
                                "Load a saved configuration and show it, or run a query on it offline",
                                "  devid load run1.dim\n  devid load run1.dim procs\n  devid load trace.tdf routes --json\n",
                                options, Command::Load);
    load->add_option("FILE", options.loadFile,
                     "A .dim file (a path or a name in the trace logging folder) or a .tdf file")
        ->required();
    AddDeviceOptions(*load, options, false);
    AddDeviceCommands(*load, options, false);
    load->require_subcommand(0, 1);
    // The query after FILE sets its own command; without one, load shows the configuration.
    load->callback([&options] {
        if (options.command == Command::Load || options.command == Command::None)
            options.command = Command::Load;
    });

    CLI::App* tdf = app.add_subcommand("tdf", "Look into a TDF trace data file");
    tdf->require_subcommand(1);
    tdf->footer("\nExamples:\n  devid tdf ls trace.tdf\n  devid tdf cat trace.tdf DEVID 1\n");
    CLI::App* ls = AddCommand(*tdf, "ls", "List the sections: name, version, offset and length",
                              "  devid tdf ls trace.tdf\n  devid tdf ls trace.tdf --json\n", options, Command::TdfList);
    ls->add_option("FILE", options.tdfFile, "The TDF file")->required();
    AddJsonOption(*ls, options);
    CLI::App* cat = AddCommand(*tdf, "cat", "Write the raw data of one section to standard output",
                               "  devid tdf cat trace.tdf DEVID 1\n", options, Command::TdfCat);
    cat->add_option("FILE", options.tdfFile, "The TDF file")->required();
    cat->add_option("NAME", options.sectionName, "Section name (case matters)")->required();
    cat->add_option("VERSION", options.sectionVersion, "Section version")->required();

    CLI::App* db = app.add_subcommand("db", "Work with a device database folder");
    db->require_subcommand(1);
    db->footer("\nExamples:\n  devid db check\n  devid db check examples/db --json\n"
               "  devid db import juno-r1.dtb --out mydb --id 0x4BA00477\n");
    CLI::App* check = AddCommand(*db, "check",
                                 "Check every device description file of a folder as the library will read it",
                                 "  devid db check\n  devid db check examples/db --json\n", options, Command::DbCheck);
    check->add_option("DIR", options.checkDir, "The folder (default: --db, TRACE_XMLDB_DEVICES or the bundled example)")
        ->check(CLI::ExistingDirectory);
    check->add_option("--db", options.databaseDir, "The folder, as for the other commands")->check(CLI::ExistingDirectory);
    AddJsonOption(*check, options);

    CLI::App* import = AddCommand(*db, "import",
                                  "Write device description files from device trees (docs/device-tree-import.md)",
                                  "  devid db import juno-r1.dtb --out mydb --id 0x4BA00477\n"
                                  "  devid db import /sys/firmware/fdt --out mydb --name myboard\n",
                                  options, Command::DbImport);
    import->add_option("DTB", options.importTrees, "Compiled device trees (.dtb), or sources (.dts) that dtc compiles")
        ->required();
    import->add_option("--out", options.importOut, "The folder to write device_NAME.xml into")->required();
    CLI::Option* id = import->add_option("--id", options.importId, "The device ID the descriptions match (default 0)");
    import->add_option("--mask", options.importMask, "Which bits of the ID must match (default 0xFFFFFFFF)")->needs(id);
    import->add_option("--name", options.importName, "The description's name (default: the tree's file name)");
    import->add_flag("--all", options.importAll, "Keep nodes with status \"disabled\"");
}

// The command a failed command line was heading for, named as a successful
// run of it would be.
std::string AttemptedCommand(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* level = &app; !level->get_subcommands().empty();) {
        level = level->get_subcommands().front();
        names.push_back(level->get_name());
    }
    if (names.empty())
        return "devid";
    if (names.front() == "tdf" || names.front() == "db")
        return names.size() > 1 ? names[0] + " " + names[1] : names[0];
    return names.back();
}

// --json must shape the error about a command line that did not parse.
bool AsksForJson(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--json") == 0)
            return true;
    return false;
}

void RunCommand(const ToolOptions& options, Formatter& formatter, std::ostream& out, std::ostream& err)
{
    switch (options.command) {
    case Command::TdfList:
        TdfCommands::List(options.tdfFile, formatter);
        return;
    case Command::TdfCat:
        TdfCommands::Cat(options.tdfFile, options.sectionName, options.sectionVersion, out);
        return;
    case Command::DbCheck: {
        std::string directory = options.checkDir;
        if (directory.empty())
            directory = ToolEnvironment::Prepare(options).databaseDir();
        if (directory.empty())
            throw ToolError(ErrorKind::Usage, "no database folder: give DIR or --db");
        const DatabaseReport report = DatabaseChecker::CheckFolder(directory);
        formatter.DatabaseCheck(report);
        if (report.Count(true) > 0)
            throw ToolError(ErrorKind::CheckFailed, "the database in " + directory + " has " +
                                                        std::to_string(report.Count(true)) + " error(s)");
        return;
    }
    case Command::DbImport:
        DeviceTreeImport::Run(options, out, err);
        return;
    default:
        DeviceCommands(options, formatter, out).Run();
    }
}

std::unique_ptr<Formatter> MakeFormatter(bool json, const std::string& command, std::ostream& out, std::ostream& err)
{
    if (json)
        return std::make_unique<JsonFormatter>(out, command);
    return std::make_unique<TextFormatter>(out, err);
}

} // namespace

int CommandLine::Run(int argc, char** argv, std::ostream& out, std::ostream& err)
{
    ToolOptions options;
    CLI::App app{"devid: which target device sits behind the emulator", "devid"};
    Build(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
            return app.exit(error, out, err);
        const ToolError usage(ErrorKind::Usage, error.what());
        const bool json = AsksForJson(argc, argv);
        MakeFormatter(json, AttemptedCommand(app), out, err)->Finish(&usage, "");
        if (!json)
            err << "Run 'devid --help' (or 'devid COMMAND --help') for usage.\n";
        return usage.exitCode();
    }

    const std::unique_ptr<Formatter> formatter = MakeFormatter(options.json, CommandName(options.command), out, err);
    std::optional<ToolError> failure;
    try {
        RunCommand(options, *formatter, out, err);
    } catch (const ToolError& error) {
        failure = error;
    } catch (const std::exception& error) {
        failure = ToolError(ErrorKind::Internal, error.what());
    }
    formatter->Finish(failure ? &*failure : nullptr, ToolEnvironment::LogFile());
    return failure ? failure->exitCode() : 0;
}

} // namespace devid_cli

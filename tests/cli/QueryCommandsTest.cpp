// The device queries end to end on the example board and database, as text and
// as JSON, and the exit status of each class of failure.
#include "tests/cli/ToolRunner.h"

namespace devid_test {
namespace {

TEST(QueryCommands, TextOutputOfEachCommand)
{
    ToolRunner tool;
    const std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> cases{
        {{"identify"}, {"9  WREN_CORE   DBGR    0x51b00001  9         WREN_DAP", "0x0a61c02f  " + kExampleDb + "/device_plover.xml"}},
        {{"procs"}, {"wisp0    wisp0    yes         WISP_STM", "DSP_ID at 0xe00ff000       0x51510001"}},
        {{"proc", "TALON_0"}, {"driver ETMIDR", "timestamp_bits -> 48"}},
        {{"routes"}, {"Routes (7)", "3  quill0   K_FUNNEL                  K_ETB   -"}},
        {{"routes", "--proc", "TALON_1"}, {"Routes (1)", "talon1 (TALON_1)  K_FUNNEL -> K_REPLICATOR  K_ETB  K_DRM"}},
        {{"settings"}, {"Emulator:  kmr770u", "TALON_0     trace_talon0.tdf"}},
        {{"settings", "PLOVER_CPU"}, {"trace_plover.tdf"}},
    };
    for (const auto& [args, expected] : cases) {
        const ToolResult result = tool.RunOnExample(args);
        EXPECT_EQ(result.status, 0) << args[0] << ": " << result.err;
        for (const std::string& part : expected)
            EXPECT_NE(result.out.find(part), std::string::npos) << part << " in\n" << result.out;
    }
}

TEST(QueryCommands, JsonOfEachCommand)
{
    ToolRunner tool;
    const Json identify = tool.JsonOf({"identify"});
    EXPECT_EQ(identify.at("command"), "identify");
    ASSERT_EQ(identify.at("chain").size(), 10u);
    const Json& talon = FindBy(identify.at("chain"), "name", "TALON_0");
    EXPECT_EQ(Text(talon.at("parent")) + " " + Text(talon.at("dap")), "JTAG_K DAP_K");
    EXPECT_EQ(talon.at("traceId"), 3);
    // The DAP behind the debug router carries the third ID; each ID names its own file.
    std::string descriptions;
    for (const Json& d : identify.at("descriptions"))
        descriptions += Text(d.at("deviceId")) + " " + Text(d.at("file")).substr(kExampleDb.size() + 1) + ";";
    EXPECT_EQ(descriptions, "0x2b8e402f device_kestrel.xml;0x0a61c02f device_plover.xml;0x3b9af02f device_wren.xml;");

    const Json procs = tool.JsonOf({"procs"});
    EXPECT_TRUE(FindBy(procs.at("sources"), "id", "wisp0").at("stmMaster").get<bool>());
    EXPECT_EQ(FindBy(procs.at("processors"), "id", "quill0").at("idValue"), "0x51510001");
    EXPECT_TRUE(FindBy(procs.at("processors"), "id", "wisp0").at("idRegister").is_null());

    const Json proc = tool.JsonOf({"proc", "TALON_0"});
    EXPECT_EQ(proc.at("routes").size(), 2u);
    const Json& etm = proc.at("processor").at("modules").at(0);
    EXPECT_EQ(FindBy(etm.at("registers"), "name", "ETM_CTRL").at("address"), "0xe0041000");
    EXPECT_TRUE(FindBy(etm.at("registers"), "name", "ETM_ID").at("address").is_null());
    EXPECT_EQ(etm.at("mappings").at(0).at("entries").at(1).at("value"), "48");

    const Json routes = tool.JsonOf({"routes"}).at("routes");
    ASSERT_EQ(routes.size(), 7u);
    const Json& talon0 = routes.at(0);
    EXPECT_EQ(Text(talon0.at("links").at(1).at("name")) + " " + Text(talon0.at("sink").at("name")) + " " +
                  Text(talon0.at("drm").at("name")), "K_REPLICATOR K_ETB K_DRM");
    EXPECT_TRUE(routes.at(3).at("drm").is_null()) << "quill0's route has no DRM";
    EXPECT_EQ(tool.JsonOf({"routes", "--proc", "TALON_1"}).at("routes").size(), 1u);

    const Json settings = tool.JsonOf({"settings"});
    EXPECT_EQ(settings.at("debugger"), "Quarry Workbench");
    EXPECT_EQ(FindBy(settings.at("outFiles"), "name", "TALON_0").at("file"), "trace_talon0.tdf");
}

TEST(QueryCommands, DotOutputRendersWithGraphviz)
{
    ToolRunner tool;
    const ToolResult result = tool.RunOnExample({"routes", "--dot"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out.rfind("digraph", 0), 0u);
    EXPECT_NE(result.out.find("\"module:K_FUNNEL\" -> \"module:K_REPLICATOR\""), std::string::npos);
    if (std::system("command -v dot >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "Graphviz is not installed";
    const std::string dot = tool.scratch.write("topology.dot", result.out);
    ASSERT_EQ(std::system(("dot -Tsvg '" + dot + "' -o '" + dot + ".svg' 2>/dev/null").c_str()), 0);
    EXPECT_NE(readFile(dot + ".svg").find("<svg"), std::string::npos);
}

TEST(QueryCommands, CompletionAsksTheToolForProcessorNames)
{
    ToolRunner tool;
    EXPECT_EQ(tool.RunOnExample({"procs", "--names"}).out, "talon0\ntalon1\nquill0\nwisp0\ngannet0\nfinch0\n");
    ASSERT_EQ(tool.RunOnExample({"save", "run1"}).status, 0);
    tool.scratch.write("emptyboard/.keep", "");
    // bash-completion's own helpers are stubbed: only our script runs.
    const std::string script = tool.scratch.write("complete.sh", R"(
_init_completion() { words=("${COMP_WORDS[@]}"); cword=$COMP_CWORD; cur=${words[cword]}; prev=${words[cword - 1]}; }
_filedir() { :; }
source ")" DEVID_SOURCE_DIR R"(/completion/devid.bash"
line() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMPREPLY=(); _devid; echo "${COMPREPLY[*]}"; }
devid=)" DEVID_BUILD_DIR R"(/bin/devid db=$1 board=$2
line $devid proc --db $db --board $board t
line $devid --board $board routes --db $db --proc ""
line $devid proc --board emptyboard ""
line $devid load run1 --db $db --board emptyboard proc q
)");
    const std::string command = "cd '" + tool.scratch.path() + "' && HOME='" + tool.home() + "' timeout 60 bash '" +
                                script + "' '" + kExampleDb + "' '" + kExampleBoard + "' >out.txt 2>err.txt";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(readFile(tool.scratch.file("out.txt")),
              "talon0 talon1\ntalon0 talon1 quill0 wisp0 gannet0 finch0\n\nquill0\n")
        << "no names without a board, but a saved configuration needs none";
    EXPECT_EQ(readFile(tool.scratch.file("err.txt")), "") << "completion stays quiet";
}

TEST(QueryCommands, EachFailureHasItsExitStatusAndErrorCode)
{
    ToolRunner tool;
    tool.scratch.write("emptydb/README", "");
    const std::string emptyDb = tool.scratch.file("emptydb");
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string code;
    };
    const std::vector<Case> cases{
        {{"proc", "NO_SUCH_CORE"}, 3, "unknown-processor"},
        {{"routes", "--proc", "NO_SUCH_CORE"}, 3, "unknown-processor"},
        {{"settings", "NOBODY"}, 3, "unknown-processor"},
        {{"identify", "--db", emptyDb}, 1, "no-device"},
        {{"procs", "--db", emptyDb}, 1, "no-device"},
        {{"load", "nothere.dim"}, 4, "file"},
        {{"procs", "--bogus"}, 2, "usage"},
        {{"routes", "--dot"}, 2, "usage"},  // with --json
    };
    for (const Case& c : cases) {
        if (c.args[1] != "--dot") {
            const ToolResult text = tool.RunOnExample(c.args);
            EXPECT_EQ(text.status, c.status) << c.args[0] << " " << c.args[1];
            // Without a matching device the chain is still worth showing.
            EXPECT_TRUE(c.status == 1 || text.out.empty()) << text.out;
            EXPECT_NE(text.err.find("devid: error:"), std::string::npos) << text.err;
        }
        EXPECT_EQ(Text(tool.JsonOf(c.args, c.status).at("error").at("code")), c.code) << c.args[0] << " " << c.args[1];
    }
    EXPECT_NE(tool.RunOnExample({"proc", "NO_SUCH_CORE"}).err.find("talon1"), std::string::npos)
        << "the known names are listed";
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"identify", "--log-level", "9"}, {"proc"}, {"routes", "--dot", "--proc"},
          {"identify", "--db", tool.scratch.file("missing")}, {}})
        EXPECT_EQ(tool.Run(args).status, 2) << (args.empty() ? "" : args[0]);
}

TEST(QueryCommands, DatabaseDefaultVariableAndLog)
{
    ToolRunner tool;
    EXPECT_EQ(Text(tool.JsonOf({"identify"}, 0, false).at("database")), kExampleDb);
    tool.scratch.write("otherdb/notes.txt", "");
    const std::string other = tool.scratch.file("otherdb");
    const ToolResult result = tool.Run({"identify", "--json"}, {"TRACE_XMLDB_DEVICES=" + other});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Text(Json::parse(result.out).at("database")), other);

    // Log lines echoed to the console stay out of the JSON.
    const ToolResult logged = tool.RunOnExample({"identify", "--json", "--log-level", "2"});
    const std::string log = Text(Json::parse(logged.out).at("log"));
    EXPECT_EQ(log.rfind(tool.home() + "/.MORA-trace/mora_trace_log", 0), 0u) << log;
    EXPECT_NE(readFile(log).find("DevId: "), std::string::npos);
    EXPECT_NE(logged.err.find("DevId: "), std::string::npos);
}

} // namespace
} // namespace devid_test

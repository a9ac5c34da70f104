// The device queries end to end on the example board and database: what the
// tool prints, as text and as JSON, and the exit status of each failure.
#include "tests/cli/ToolRunner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace devid_test {
namespace {

const Json* FindByName(const Json& list, const std::string& key, const std::string& value)
{
    for (const Json& item : list.items)
        if (item[key].text == value)
            return &item;
    return nullptr;
}

void ExpectEnvelope(const Json& doc, const std::string& command, bool ok)
{
    EXPECT_EQ(doc["schema"].text, "devid/1");
    EXPECT_EQ(doc["command"].text, command);
    EXPECT_EQ(doc["ok"].boolean, ok);
    EXPECT_EQ(doc.has("error"), !ok);
}

TEST(QueryCommands, IdentifyShowsChainIdsAndOneDescriptionPerDevice)
{
    ToolRunner tool;
    const ToolResult text = tool.RunOnExample({"identify"});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_NE(text.out.find("WREN_CORE"), std::string::npos);
    EXPECT_NE(text.out.find("device_kestrel.xml"), std::string::npos);

    const ToolResult result = tool.RunOnExample({"identify", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    const Json doc = result.json();
    ExpectEnvelope(doc, "identify", true);
    ASSERT_EQ(doc["chain"].size(), 10u);
    const Json* talon = FindByName(doc["chain"], "name", "TALON_0");
    ASSERT_NE(talon, nullptr);
    EXPECT_EQ((*talon)["parent"].text, "JTAG_K");
    EXPECT_EQ((*talon)["type"].text, "0x51a00010");
    EXPECT_EQ((*talon)["traceId"].number, 3);
    EXPECT_EQ((*talon)["dap"].text, "DAP_K");

    // The DAP behind the debug router carries the third ID; each ID names its own file.
    const Json& descriptions = doc["descriptions"];
    ASSERT_EQ(descriptions.size(), 3u);
    const std::vector<std::pair<std::string, std::string>> expected{
        {"0x2b8e402f", "device_kestrel.xml"}, {"0x0a61c02f", "device_plover.xml"}, {"0x3b9af02f", "device_wren.xml"}};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(descriptions[i]["deviceId"].text, expected[i].first);
        EXPECT_EQ(descriptions[i]["file"].text, ToolRunner::ExampleDb() + "/" + expected[i].second);
    }
    EXPECT_TRUE(doc["matched"].boolean);
    EXPECT_TRUE(doc["log"].isNull());
}

TEST(QueryCommands, NothingMatchesInAnEmptyDatabase)
{
    ToolRunner tool;
    tool.scratch().write("emptydb/README", "no descriptions here\n");
    const std::string emptyDb = tool.scratch().file("emptydb");

    const ToolResult result = tool.Run({"identify", "--json", "--db", emptyDb, "--board", ToolRunner::ExampleBoard()});
    EXPECT_EQ(result.status, 1);
    const Json doc = result.json();
    ExpectEnvelope(doc, "identify", false);
    EXPECT_EQ(doc["error"]["code"].text, "no-device");
    // The chain is still worth showing: it says what was read.
    EXPECT_EQ(doc["chain"].size(), 10u);
    EXPECT_FALSE(doc["matched"].boolean);
    for (const Json& description : doc["descriptions"].items)
        EXPECT_TRUE(description["file"].isNull());

    const ToolResult procs = tool.Run({"procs", "--db", emptyDb, "--board", ToolRunner::ExampleBoard()});
    EXPECT_EQ(procs.status, 1);
    EXPECT_NE(procs.err.find("no device description"), std::string::npos);
}

TEST(QueryCommands, ProcsListsSourcesWithResolvedComponentsAndProcessors)
{
    ToolRunner tool;
    const ToolResult result = tool.RunOnExample({"procs", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    const Json doc = result.json();
    ExpectEnvelope(doc, "procs", true);

    const Json* wisp = FindByName(doc["sources"], "id", "wisp0");
    ASSERT_NE(wisp, nullptr);
    EXPECT_TRUE((*wisp)["stmMaster"].boolean);
    ASSERT_EQ((*wisp)["components"].size(), 1u);
    EXPECT_EQ((*wisp)["components"][0]["name"].text, "WISP_STM");
    EXPECT_TRUE((*wisp)["components"][0]["resolved"].boolean);
    EXPECT_EQ((*wisp)["components"][0]["kind"].text, "stm");

    const Json* quill = FindByName(doc["processors"], "id", "quill0");
    ASSERT_NE(quill, nullptr);
    EXPECT_EQ((*quill)["idValue"].text, "0x51510001");
    EXPECT_TRUE((*quill)["idRegister"]["memoryMapped"].boolean);
    EXPECT_EQ((*quill)["idRegister"]["address"].text, "0xe00ff000");
    const Json* plainWisp = FindByName(doc["processors"], "id", "wisp0");
    ASSERT_NE(plainWisp, nullptr);
    EXPECT_TRUE((*plainWisp)["idRegister"].isNull());
}

TEST(QueryCommands, ProcShowsModulesRegistersMappingsAndRoutes)
{
    ToolRunner tool;
    const ToolResult result = tool.RunOnExample({"proc", "TALON_0", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    const Json doc = result.json();
    ExpectEnvelope(doc, "proc", true);
    const Json& proc = doc["processor"];
    EXPECT_EQ(proc["id"].text, "talon0");
    ASSERT_EQ(proc["modules"].size(), 1u);
    const Json& etm = proc["modules"][0];
    EXPECT_EQ(etm["name"].text, "TALON0_ETM");
    EXPECT_EQ(etm["version"].text, "4.2");

    const Json* ctrl = FindByName(etm["registers"], "name", "ETM_CTRL");
    ASSERT_NE(ctrl, nullptr);
    EXPECT_EQ((*ctrl)["address"].text, "0xe0041000");
    EXPECT_TRUE((*ctrl)["driverName"].isNull());
    EXPECT_EQ((*ctrl)["width"].number, 32);
    const Json* id = FindByName(etm["registers"], "name", "ETM_ID");
    ASSERT_NE(id, nullptr);
    EXPECT_FALSE((*id)["memoryMapped"].boolean);
    EXPECT_EQ((*id)["driverName"].text, "ETMIDR");
    EXPECT_TRUE((*id)["address"].isNull());

    ASSERT_EQ(etm["mappings"].size(), 1u);
    EXPECT_EQ(etm["mappings"][0]["id"].text, "name.value");
    EXPECT_EQ(etm["mappings"][0]["entries"][1]["key"].text, "timestamp_bits");
    EXPECT_EQ(etm["mappings"][0]["entries"][1]["value"].text, "48");
    const Json* fifo = FindByName(etm["characteristics"], "name", "fifo_bytes");
    ASSERT_NE(fifo, nullptr);
    EXPECT_EQ((*fifo)["value"].text, "64");

    ASSERT_EQ(doc["routes"].size(), 2u);
    for (const Json& route : doc["routes"].items)
        EXPECT_EQ(route["source"]["name"].text, "TALON_0");

    const ToolResult text = tool.RunOnExample({"proc", "TALON_0"});
    ASSERT_EQ(text.status, 0);
    EXPECT_NE(text.out.find("driver ETMIDR"), std::string::npos);
    EXPECT_NE(text.out.find("timestamp_bits -> 48"), std::string::npos);
}

TEST(QueryCommands, UnknownProcessorExitsThreeWithTheKnownNames)
{
    ToolRunner tool;
    const ToolResult text = tool.RunOnExample({"proc", "NO_SUCH_CORE"});
    EXPECT_EQ(text.status, 3);
    EXPECT_TRUE(text.out.empty());
    EXPECT_NE(text.err.find("NO_SUCH_CORE"), std::string::npos);
    EXPECT_NE(text.err.find("talon1"), std::string::npos);

    const ToolResult json = tool.RunOnExample({"routes", "--proc", "NO_SUCH_CORE", "--json"});
    EXPECT_EQ(json.status, 3);
    const Json doc = json.json();
    ExpectEnvelope(doc, "routes", false);
    EXPECT_EQ(doc["error"]["code"].text, "unknown-processor");
}

TEST(QueryCommands, RoutesKeepLinkOrderAndShowMissingDrmAsNull)
{
    ToolRunner tool;
    const ToolResult result = tool.RunOnExample({"routes", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    const Json doc = result.json();
    const Json& routes = doc["routes"];
    ASSERT_EQ(routes.size(), 7u);
    EXPECT_EQ(routes[0]["links"][0]["name"].text, "K_FUNNEL");
    EXPECT_EQ(routes[0]["links"][1]["name"].text, "K_REPLICATOR");
    EXPECT_EQ(routes[0]["sink"]["name"].text, "K_ETB");
    EXPECT_EQ(routes[0]["drm"]["name"].text, "K_DRM");
    const auto quill = std::find_if(routes.items.begin(), routes.items.end(),
                                    [](const Json& r) { return r["source"]["id"].text == "quill0"; });
    ASSERT_NE(quill, routes.items.end());
    EXPECT_TRUE((*quill)["drm"].isNull());

    const ToolResult one = tool.RunOnExample({"routes", "--proc", "TALON_1", "--json"});
    ASSERT_EQ(one.status, 0);
    EXPECT_EQ(one.json()["routes"].size(), 1u);
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
    const std::string dotFile = tool.scratch().write("topology.dot", result.out);
    const std::string svgFile = tool.scratch().file("topology.svg");
    ASSERT_EQ(std::system(("dot -Tsvg '" + dotFile + "' -o '" + svgFile + "' 2>/dev/null").c_str()), 0);
    EXPECT_NE(readFile(svgFile).find("<svg"), std::string::npos);
}

TEST(QueryCommands, SettingsComeFromTheBoard)
{
    ToolRunner tool;
    const ToolResult result = tool.RunOnExample({"settings", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    const Json doc = result.json();
    EXPECT_EQ(doc["debugger"].text, "Quarry Workbench");
    EXPECT_EQ(doc["emulator"].text, "kmr770u");
    EXPECT_EQ(doc["port"].text, "0x240");
    const Json* talon = FindByName(doc["outFiles"], "name", "TALON_0");
    ASSERT_NE(talon, nullptr);
    EXPECT_EQ((*talon)["file"].text, "trace_talon0.tdf");

    const ToolResult one = tool.RunOnExample({"settings", "PLOVER_CPU"});
    ASSERT_EQ(one.status, 0);
    EXPECT_NE(one.out.find("trace_plover.tdf"), std::string::npos);
    EXPECT_EQ(tool.RunOnExample({"settings", "NOBODY"}).status, 3);
}

TEST(QueryCommands, BadCommandLinesExitTwo)
{
    ToolRunner tool;
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"identify", "--frobnicate"}, {"proc"}, {"identify", "--log-level", "9"},
          {"routes", "--dot", "--proc"}, {"identify", "--db", tool.scratch().file("missing")}, {}}) {
        const ToolResult result = tool.Run(args);
        EXPECT_EQ(result.status, 2) << "args: " << (args.empty() ? "" : args[0]);
        EXPECT_TRUE(result.out.empty());
    }
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"procs", "--json", "--bogus"}, {"routes", "--dot", "--json"}}) {
        const ToolResult json = tool.Run(args);
        EXPECT_EQ(json.status, 2);
        const Json doc = json.json();
        EXPECT_EQ(doc["command"].text, args[0]);
        EXPECT_EQ(doc["error"]["code"].text, "usage");
    }

    const ToolResult help = tool.Run({"routes", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("Examples:"), std::string::npos);
}

TEST(QueryCommands, LoggingNamesTheLogAndKeepsJsonClean)
{
    ToolRunner tool;
    // Level 2 also echoes log lines to the console; they must not reach the JSON.
    const ToolResult result = tool.RunOnExample({"identify", "--json", "--log-level", "2"});
    ASSERT_EQ(result.status, 0) << result.err;
    const std::string log = result.json()["log"].text;
    EXPECT_EQ(log.rfind(tool.home() + "/.MORA-trace/mora_trace_log", 0), 0u) << log;
    EXPECT_NE(readFile(log).find("DevId: "), std::string::npos);
    EXPECT_NE(result.err.find("DevId: "), std::string::npos);
}

TEST(QueryCommands, BundledExamplesAreTheDefault)
{
    ToolRunner tool;
    const ToolResult result = tool.Run({"identify", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.json()["database"].text, ToolRunner::ExampleDb());

    // A variable the user set wins over the bundled copy.
    tool.scratch().write("otherdb/notes.txt", "");
    const ToolResult fromVariable =
        tool.Run({"identify", "--json"}, {"TRACE_XMLDB_DEVICES=" + tool.scratch().file("otherdb")});
    EXPECT_EQ(fromVariable.status, 1);
    EXPECT_EQ(fromVariable.json()["database"].text, tool.scratch().file("otherdb"));
}

} // namespace
} // namespace devid_test

// `devid db import` on small trees written here: what it makes of each kind
// of component, of disabled nodes and of broken port graphs, and that the
// library identifies and answers from what it wrote.
#include "tests/cli/DeviceTreeBoard.h"
#include "tests/cli/ToolRunner.h"

namespace devid_test {
namespace {

// An STM and two traced cores feed a funnel, then an ETF, then a static
// replicator that splits to an ETB and a TPIU; a second ETB is disabled.
const char kBoard[] = R"(/dts-v1/;
/ {
  #address-cells = <1>; #size-cells = <1>;
  cpus { #address-cells = <1>; #size-cells = <0>;
    cpu0: cpu@0 { device_type = "cpu"; compatible = "arm,cortex-a53"; reg = <0>; };
    cpu1: cpu@1 { device_type = "cpu"; compatible = "arm,cortex-a53"; reg = <1>; };
  };
  stm@20100000 { compatible = "arm,coresight-stm", "arm,primecell"; reg = <0x20100000 0x1000>;
    out-ports { port { stm_out: endpoint { remote-endpoint = <&funnel_in2>; }; }; }; };
  etm@22040000 { compatible = "arm,coresight-etm4x", "arm,primecell"; reg = <0x22040000 0x1000>; cpu = <&cpu0>;
    out-ports { port { etm0_out: endpoint { remote-endpoint = <&funnel_in0>; }; }; }; };
  etm@22140000 { compatible = "arm,coresight-etm4x", "arm,primecell"; reg = <0x22140000 0x1000>; cpu = <&cpu1>;
    out-ports { port { etm1_out: endpoint { remote-endpoint = <&funnel_in1>; }; }; }; };
  funnel@20040000 { compatible = "arm,coresight-dynamic-funnel", "arm,primecell"; reg = <0x20040000 0x1000>;
    in-ports { #address-cells = <1>; #size-cells = <0>;
      port@0 { reg = <0>; funnel_in0: endpoint { remote-endpoint = <&etm0_out>; }; };
      port@1 { reg = <1>; funnel_in1: endpoint { remote-endpoint = <&etm1_out>; }; };
      port@2 { reg = <2>; funnel_in2: endpoint { remote-endpoint = <&stm_out>; }; };
      port@3 { reg = <3>; endpoint { }; }; };
    out-ports { port { funnel_out: endpoint { remote-endpoint = <&etf_in>; }; }; }; };
  etf@20010000 { compatible = "arm,coresight-tmc", "arm,primecell"; reg = <0x20010000 0x1000>;
    in-ports { port { etf_in: endpoint { remote-endpoint = <&funnel_out>; }; }; };
    out-ports { port { etf_out: endpoint { remote-endpoint = <&rep_in>; }; }; }; };
  replicator { compatible = "arm,coresight-static-replicator";
    in-ports { port { rep_in: endpoint { remote-endpoint = <&etf_out>; }; }; };
    out-ports { #address-cells = <1>; #size-cells = <0>;
      port@0 { reg = <0>; rep_out0: endpoint { remote-endpoint = <&etr_in>; }; };
      port@1 { reg = <1>; rep_out1: endpoint { remote-endpoint = <&tpiu_in>; }; };
      port@2 { reg = <2>; rep_out2: endpoint { remote-endpoint = <&etb_in>; }; }; }; };
  etr@20070000 { compatible = "arm,coresight-tmc", "arm,primecell"; reg = <0x20070000 0x1000>;
    in-ports { port { etr_in: endpoint { remote-endpoint = <&rep_out0>; }; }; }; };
  tpiu@20030000 { compatible = "arm,coresight-tpiu", "arm,primecell"; reg = <0x20030000 0x1000>;
    in-ports { port { tpiu_in: endpoint { remote-endpoint = <&rep_out1>; }; }; }; };
  etb@20020000 { compatible = "arm,coresight-etb10", "arm,primecell"; reg = <0x20020000 0x1000>; status = "disabled";
    in-ports { port { etb_in: endpoint { remote-endpoint = <&rep_out2>; }; }; }; };
};
)";

// Every fault the importer must survive: a partner that points elsewhere, an
// output joined to an output, a source with inputs, a dangling phandle.
const char kBroken[] = R"(/dts-v1/;
/ {
  cpus { cpu0: cpu@0 { compatible = "arm,cortex-a7"; }; };
  ptm@1000 { compatible = "arm,coresight-etm3x"; cpu = <&cpu0>;
    out-ports { port { ptm_out: endpoint { remote-endpoint = <&etb_in>; }; }; }; };
  etm@2000 { compatible = "arm,coresight-etm3x"; cpu = <&cpu0>;
    in-ports { port { endpoint { remote-endpoint = <&etb_in>; }; }; };
    out-ports { port { endpoint { remote-endpoint = <&etb_in>; }; }; }; };
  funnel@3000 { compatible = "arm,coresight-dynamic-funnel";
    out-ports { port { funnel_out: endpoint { remote-endpoint = <&tpiu_out>; }; }; }; };
  tpiu@4000 { compatible = "arm,coresight-tmc";
    out-ports { port { tpiu_out: endpoint { remote-endpoint = <&funnel_out>; }; }; }; };
  etb@5000 { compatible = "arm,coresight-etb10";
    in-ports { #address-cells = <1>; #size-cells = <0>;
      port@0 { reg = <0>; etb_in: endpoint { remote-endpoint = <&ptm_out>; }; };
      port@1 { reg = <1>; endpoint { remote-endpoint = <0x4444>; }; }; }; };
};
)";

std::vector<std::string> RouteTexts(const Json& doc)
{
    std::vector<std::string> routes;
    for (const Json& route : doc["routes"]) {
        std::string text = route["source"]["id"].get<std::string>();
        for (const Json& link : route["links"])
            text += " > " + link["name"].get<std::string>();
        routes.push_back(text + " > " + route["sink"]["name"].get<std::string>());
    }
    return routes;
}

TEST(DeviceTreeImport, DescriptionIsCleanAndTheLibraryIdentifiesAndAnswersFromIt)
{
    ToolRunner tool;
    const std::string tree = tool.scratch.write("soc.dts", kBoard);
    const std::string board = WriteRouterBoard(tool.scratch, "board");
    ToolResult imported = tool.Run({"db", "import", tree, "--out", "db", "--id", kImportedId});
    ASSERT_EQ(imported.status, 0) << imported.err;
    EXPECT_EQ(imported.err, "");
    EXPECT_EQ(imported.out, "db/device_soc.xml: 2 processors, 8 modules, 3 sources, 6 routes\n");
    EXPECT_EQ(tool.JsonOf({"db", "check", "db"}, 0, false)["warnings"], 0);

    const Json identified = tool.JsonOf({"identify", "--db", "db", "--board", board}, 0, false);
    EXPECT_NE(identified["descriptions"].at(0)["file"].get<std::string>().find("device_soc.xml"), std::string::npos)
        << identified["descriptions"].at(0)["file"].get<std::string>();
    const std::vector<std::string> expected{
        "ETM4_22040000 > FUNNEL_20040000 > TMC_ETF_20010000 > REPLICATOR > TMC_ETR_20070000",
        "ETM4_22040000 > FUNNEL_20040000 > TMC_ETF_20010000 > REPLICATOR > TPIU_20030000",
        "ETM4_22140000 > FUNNEL_20040000 > TMC_ETF_20010000 > REPLICATOR > TMC_ETR_20070000",
        "ETM4_22140000 > FUNNEL_20040000 > TMC_ETF_20010000 > REPLICATOR > TPIU_20030000",
        "STM_20100000 > FUNNEL_20040000 > TMC_ETF_20010000 > REPLICATOR > TMC_ETR_20070000",
        "STM_20100000 > FUNNEL_20040000 > TMC_ETF_20010000 > REPLICATOR > TPIU_20030000"};
    EXPECT_EQ(RouteTexts(tool.JsonOf({"routes", "--db", "db", "--board", board}, 0, false)), expected);

    // The first core is found by its ETM, not by the STM listed before it, and
    // the ETM carries its identification registers at the top of its frame.
    const Json proc = tool.JsonOf({"proc", "CPU_0", "--db", "db", "--board", board}, 0, false);
    const Json& etm = proc["processor"]["modules"].at(0);
    EXPECT_EQ(etm["name"].get<std::string>(), "ETM4_22040000");
    EXPECT_EQ(FindBy(etm["registers"], "name", "CIDR0")["address"].get<std::string>(), "0x22040ff0");
    EXPECT_EQ(FindBy(etm["registers"], "name", "PIDR4")["address"].get<std::string>(), "0x22040fd0");
    EXPECT_EQ(FindBy(etm["characteristics"], "name", "base")["value"].get<std::string>(), "0x22040000");

    // --all keeps the disabled ETB; no --id leaves the ID 0 with a warning.
    imported = tool.Run({"db", "import", tree, "--out", "all", "--all", "--name", "every"});
    EXPECT_EQ(imported.status, 0) << imported.err;
    EXPECT_NE(imported.err.find("warning: no --id given"), std::string::npos) << imported.err;
    EXPECT_EQ(imported.out, "all/device_every.xml: 2 processors, 9 modules, 3 sources, 9 routes\n");
    EXPECT_NE(readFile(tool.scratch.file("all/device_every.xml")).find(R"(id="every" value="0x0")"), std::string::npos);
}

TEST(DeviceTreeImport, BrokenGraphsAndBadInputAreReportedNeverFatal)
{
    ToolRunner tool;
    const std::string broken = tool.scratch.write("broken.dts", kBroken);
    const ToolResult result = tool.Run({"db", "import", broken, "--out", "db", "--id", "1", "--mask", "0xF"});
    EXPECT_EQ(result.status, 0) << result.err;
    for (const char* problem :
         {"/etm@2000: a trace source with in-ports, ports in the wrong direction: left out",
          "/funnel@3000/out-ports/port/endpoint: an output joined to /tpiu@4000/out-ports/port/endpoint, which is not an input",
          "/etb@5000/in-ports/port@1/endpoint: its \"remote-endpoint\" names no node",
          "/tpiu@4000/out-ports/port/endpoint: an output joined to /funnel@3000/out-ports/port/endpoint"})
        EXPECT_NE(result.err.find(problem), std::string::npos) << problem << "\n" << result.err;
    // What survives still checks clean: the PTM straight into the ETB.
    EXPECT_EQ(result.out, "db/device_broken.xml: 1 processor, 4 modules, 1 source, 1 route\n");
    EXPECT_EQ(tool.JsonOf({"db", "check", "db"}, 0, false)["errors"], 0);

    tool.scratch.write("garbage.dtb", "not a tree");
    tool.scratch.write("empty.dts", "/dts-v1/;\n/ { cpus { }; };\n");
    const ToolResult bad = tool.Run({"db", "import", "garbage.dtb", "empty.dts", "missing.dtb", broken, "--out", "db2"});
    EXPECT_EQ(bad.status, 4);
    for (const char* problem : {"garbage.dtb: not a compiled device tree", "empty.dts: no CoreSight component",
                                "missing.dtb: cannot read the file", "3 trees of 4 could not be imported"})
        EXPECT_NE(bad.err.find(problem), std::string::npos) << problem << "\n" << bad.err;
    EXPECT_EQ(bad.out, "db2/device_broken.xml: 1 processor, 4 modules, 1 source, 1 route\n");

    for (const std::vector<std::string>& usage :
         {std::vector<std::string>{broken, "--out", "x", "--id", "0x100000000"},
          {broken, "--out", "x", "--mask", "1"},
          {broken, broken, "--out", "x"},
          {broken, "garbage.dtb", "--out", "x", "--name", "one"}}) {
        std::vector<std::string> args{"db", "import"};
        args.insert(args.end(), usage.begin(), usage.end());
        EXPECT_EQ(tool.Run(args).status, 2) << usage[2] << " " << usage.back();
    }
}

} // namespace
} // namespace devid_test

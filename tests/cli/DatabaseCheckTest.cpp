// `devid db check` on the example database and on broken folders written here.
#include "tests/cli/ToolRunner.h"

#include <gtest/gtest.h>

namespace devid_test {
namespace {

// Every problem of one file as "severity element: message" lines, for searching.
std::string ProblemsOf(const Json& doc, const std::string& fileName)
{
    std::string lines;
    for (const Json& file : doc["files"].items) {
        if (file["path"].text.size() < fileName.size() ||
            file["path"].text.compare(file["path"].text.size() - fileName.size(), fileName.size(), fileName) != 0)
            continue;
        for (const Json& problem : file["problems"].items)
            lines += problem["severity"].text + " " + problem["element"].text + ": " + problem["message"].text + "\n";
    }
    return lines;
}

bool Has(const std::string& lines, const std::string& severityAndElement, const std::string& part)
{
    std::size_t at = 0;
    while ((at = lines.find(severityAndElement + ":", at)) != std::string::npos) {
        const std::size_t end = lines.find('\n', at);
        if (lines.substr(at, end - at).find(part) != std::string::npos)
            return true;
        at = end;
    }
    return false;
}

const char kBroken[] = R"(<?xml version="1.0"?>
<database>
  <device id="broken" value="0x10" mask="0xFF">
    <modules>
      <module id="EARLY" kind="etm" proc="cpu0"/>
    </modules>
    <procs>
      <proc id="cpu0" kind="Core">
        <identifier>
          <register id="ID" type="mem" address="0x100" page="0" addrunit="1"/>
        </identifier>
      </proc>
    </procs>
    <modules>
      <module id="ETM" proc="cpu0">
        <registers>
          <reg id="CTRL" type="mem" address="0x1000" page="0" addrunit="1"/>
          <reg id="STAT" type="mem" address="oops" page="0" addrunit="1" width="32"/>
        </registers>
        <mapping id="nodot"><map a="1"/></mapping>
      </module>
      <module id="SINK" kind="etb" proc="cpu0"/>
    </modules>
    <sources>
      <source id="src0" proc="cpu9" stmmaster="false">
        <components><component module="GHOST"/></components>
      </source>
      <source id="src1" proc="cpu0"/>
    </sources>
    <trace_routes>
      <route><source source="src0"/><link module="ETM"/><sink module="NOWHERE"/><pin module="NODRM"/></route>
      <route><source source="src1"/></route>
    </trace_routes>
    <extras/>
  </device>
</database>
)";

TEST(DatabaseCheck, TheExampleDatabasePasses)
{
    ToolRunner tool;
    const ToolResult result = tool.Run({"db", "check", ToolRunner::ExampleDb(), "--json"});
    ASSERT_EQ(result.status, 0) << result.out << result.err;
    const Json doc = result.json();
    EXPECT_EQ(doc["errors"].number, 0);
    EXPECT_TRUE(doc["ok"].boolean);
    // The capitalised file is listed as one the library never reads.
    EXPECT_NE(ProblemsOf(doc, "Device_upper.xml").find("never reads"), std::string::npos);
}

TEST(DatabaseCheck, ReportsEachFaultOfABrokenDescription)
{
    ToolRunner tool;
    tool.scratch().write("db/device_broken.xml", kBroken);
    const ToolResult result = tool.Run({"db", "check", tool.scratch().file("db"), "--json"});
    EXPECT_EQ(result.status, 1);
    const Json doc = result.json();
    EXPECT_EQ(doc["error"]["code"].text, "check-failed");
    const std::string problems = ProblemsOf(doc, "device_broken.xml");

    EXPECT_TRUE(Has(problems, "error module[EARLY]", "names no processor listed before")) << problems;
    EXPECT_TRUE(Has(problems, "error proc[cpu0]/identifier/register", "\"width\"")) << problems;
    EXPECT_TRUE(Has(problems, "error module[ETM]", "\"kind\"")) << problems;
    EXPECT_TRUE(Has(problems, "error module[ETM]/registers/reg[CTRL]", "\"width\"")) << problems;
    EXPECT_TRUE(Has(problems, "warning module[ETM]/registers/reg[STAT]", "reads as 0")) << problems;
    EXPECT_TRUE(Has(problems, "warning module[ETM]/mapping[nodot]", "every entry is dropped")) << problems;
    EXPECT_TRUE(Has(problems, "error source[src0]", "\"cpu9\"")) << problems;
    EXPECT_TRUE(Has(problems, "error source[src0]/component[GHOST]", "names no module")) << problems;
    EXPECT_TRUE(Has(problems, "error source[src1]", "\"stmmaster\"")) << problems;
    EXPECT_TRUE(Has(problems, "error route[#1]/sink", "\"NOWHERE\"")) << problems;
    EXPECT_TRUE(Has(problems, "error route[#1]/pin", "\"NODRM\"")) << problems;
    // src1 is dropped by the loader, so the route naming it dangles too.
    EXPECT_TRUE(Has(problems, "error route[#2]/source", "\"src1\" names no source")) << problems;
    EXPECT_TRUE(Has(problems, "error route[#2]", "no sink")) << problems;
    EXPECT_TRUE(Has(problems, "error extras", "unknown section")) << problems;
    EXPECT_FALSE(Has(problems, "error module[SINK]", "")) << problems;

    // Problems carry the line of their element.
    for (const Json& file : doc["files"].items) {
        for (const Json& problem : file["problems"].items) {
            if (problem["element"].text == "extras") {
                EXPECT_EQ(problem["line"].number, 34);
            }
        }
    }

    const ToolResult text = tool.Run({"db", "check", tool.scratch().file("db")});
    EXPECT_EQ(text.status, 1);
    EXPECT_NE(text.out.find("device_broken.xml:34: error: extras: unknown section"), std::string::npos) << text.out;
}

TEST(DatabaseCheck, OverlappingDeviceIdsAndUnreadableFilesFail)
{
    ToolRunner tool;
    const auto device = [](const std::string& attributes) {
        return "<database><device " + attributes + "><procs/></device></database>";
    };
    tool.scratch().write("db/device_a.xml", device(R"(id="a" value="0x1000002F" mask="0x0FFFFFFF")"));
    tool.scratch().write("db/device_b.xml", device(R"(id="b" value="0x3000002F" mask="0xFFFFFFFF")"));
    tool.scratch().write("db/device_c.xml", device(R"(id="c" value="0x4000003F" mask="0xFFFFFFFF")"));
    tool.scratch().write("db/device_d.xml", "<database><device id=\"d\" value=\"1\"></database>");
    tool.scratch().write("db/device_e.xml", device(R"(value="0x5")"));

    const ToolResult result = tool.Run({"db", "check", tool.scratch().file("db"), "--json"});
    EXPECT_EQ(result.status, 1);
    const Json doc = result.json();
    // a ignores the top nibble, so it accepts b's ID; c differs from both in bits both masks test.
    EXPECT_TRUE(Has(ProblemsOf(doc, "device_a.xml"), "error device", "device_b.xml"));
    EXPECT_TRUE(Has(ProblemsOf(doc, "device_b.xml"), "error device", "device_a.xml"));
    EXPECT_EQ(ProblemsOf(doc, "device_c.xml"), "");
    EXPECT_NE(ProblemsOf(doc, "device_d.xml").find("not well-formed XML"), std::string::npos);
    EXPECT_TRUE(Has(ProblemsOf(doc, "device_e.xml"), "error device", "\"id\""));

    tool.scratch().write("empty/notes.txt", "");
    const ToolResult empty = tool.Run({"db", "check", tool.scratch().file("empty")});
    EXPECT_EQ(empty.status, 1);
    EXPECT_NE(empty.out.find("no device description"), std::string::npos);
}

} // namespace
} // namespace devid_test

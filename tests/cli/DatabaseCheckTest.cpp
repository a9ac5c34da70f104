// `devid db check` on the example database and on broken folders written here.
#include "tests/cli/ToolRunner.h"

#include <sys/stat.h>

namespace devid_test {
namespace {

// Every problem of one file as "severity element: message" lines, for searching.
std::string ProblemsOf(const Json& doc, const std::string& fileName)
{
    std::string lines;
    for (const Json& file : doc.at("files"))
        if (Text(file.at("path")).substr(Text(file.at("path")).rfind('/') + 1) == fileName)
            for (const Json& problem : file.at("problems"))
                lines += Text(problem.at("severity")) + " " + Text(problem.at("element")) + ": " +
                         Text(problem.at("message")) + "\n";
    return lines;
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

TEST(DatabaseCheck, ExampleDatabasePassesAndEachFaultOfABrokenFolderIsReported)
{
    ToolRunner tool;
    const Json example = tool.JsonOf({"db", "check", kExampleDb}, 0, false);
    EXPECT_EQ(example.at("errors"), 0);
    // The capitalised file is listed as one the library never reads.
    EXPECT_NE(ProblemsOf(example, "Device_upper.xml").find("never reads"), std::string::npos);
    EXPECT_NE(tool.Run({"db", "check", kExampleDb}).out.find(
                  "device_kestrel.xml: ok (4 processors, 9 modules, 4 sources, 5 routes)"), std::string::npos);

    const auto device = [](const std::string& attributes) {
        return "<database><device " + attributes + "><procs/></device></database>";
    };
    tool.scratch.write("db/device_broken.xml", kBroken);
    // a ignores the top nibble, so it accepts b's ID; c differs from both in bits both masks test.
    tool.scratch.write("db/device_a.xml", device(R"(id="a" value="0x1000002F" mask="0x0FFFFFFF")"));
    tool.scratch.write("db/device_b.xml", device(R"(id="b" value="0x3000002F" mask="0xFFFFFFFF")"));
    tool.scratch.write("db/device_c.xml", device(R"(id="c" value="0x4000003F" mask="0xFFFFFFFF")"));
    tool.scratch.write("db/device_d.xml", "<database><device id=\"d\" value=\"1\"></database>");
    tool.scratch.write("db/device_e.xml", device(R"(value="0x5")"));
    ASSERT_EQ(mkfifo(tool.scratch.file("db/device_fifo.xml").c_str(), 0600), 0);
    const Json doc = tool.JsonOf({"db", "check", tool.scratch.file("db")}, 1, false);
    EXPECT_EQ(doc.at("error").at("code"), "check-failed");

    const std::vector<std::vector<std::string>> expected{
        {"device_broken.xml", "error module[EARLY]", "names no processor listed before"},
        {"device_broken.xml", "error proc[cpu0]/identifier/register", "\"width\""},
        {"device_broken.xml", "error module[ETM]", "\"kind\""},
        {"device_broken.xml", "error module[ETM]/registers/reg[CTRL]", "\"width\""},
        {"device_broken.xml", "warning module[ETM]/registers/reg[STAT]", "reads as 0"},
        {"device_broken.xml", "warning module[ETM]/mapping[nodot]", "every entry is dropped"},
        {"device_broken.xml", "error source[src0]", "\"cpu9\""},
        {"device_broken.xml", "error source[src0]/component[GHOST]", "names no module"},
        {"device_broken.xml", "error source[src1]", "\"stmmaster\""},
        {"device_broken.xml", "error route[#1]/sink", "\"NOWHERE\""},
        {"device_broken.xml", "error route[#1]/pin", "\"NODRM\""},
        // src1 is dropped by the loader, so the route naming it dangles too.
        {"device_broken.xml", "error route[#2]/source", "\"src1\" names no source"},
        {"device_broken.xml", "error route[#2]", "no sink"},
        {"device_broken.xml", "error extras", "unknown section"},
        {"device_a.xml", "error device", "device_b.xml"},
        {"device_b.xml", "error device", "device_a.xml"},
        {"device_d.xml", "error ", "not well-formed XML"},
        {"device_e.xml", "error device", "\"id\""},
        {"device_fifo.xml", "warning ", "not a regular file"},
    };
    for (const auto& e : expected) {
        const std::string problems = ProblemsOf(doc, e[0]);
        bool found = false;
        for (std::size_t at = problems.find(e[1] + ":"); at != std::string::npos && !found;
             at = problems.find(e[1] + ":", at + 1))
            found = problems.substr(at, problems.find('\n', at) - at).find(e[2]) != std::string::npos;
        EXPECT_TRUE(found) << e[0] << ": " << e[1] << "\n" << problems;
    }
    EXPECT_EQ(ProblemsOf(doc, "device_broken.xml").find("error module[SINK]:"), std::string::npos);
    EXPECT_EQ(ProblemsOf(doc, "device_c.xml"), "");

    // Problems carry the line of their element.
    const ToolResult text = tool.Run({"db", "check", tool.scratch.file("db")});
    EXPECT_EQ(text.status, 1);
    EXPECT_NE(text.out.find("device_broken.xml:34: error: extras: unknown section"), std::string::npos) << text.out;

    tool.scratch.write("empty/notes.txt", "");
    const ToolResult empty = tool.Run({"db", "check", tool.scratch.file("empty")});
    EXPECT_EQ(empty.status, 1);
    EXPECT_NE(empty.out.find("no device description"), std::string::npos);
}

} // namespace
} // namespace devid_test

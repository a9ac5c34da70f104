// What the loaders make of a description: conversions, defaults, document
// order, rejection of malformed descriptions, and a large generated device.
#include "tests/database/DatabaseTestSupport.h"

#include "devid/DeviceXmlCache.h"

#include <string>

namespace devid_test {
namespace {

using Mora::Lux::Trace::CCharacteristic;
using Mora::Lux::Trace::CMappingInfo;
using Mora::Lux::Trace::CModuleInfoImpl;
using Mora::Lux::Trace::CProcIdentifier;
using Mora::Lux::Trace::CRegisterInfo;
using Mora::Lux::Trace::DeviceIdentifierTestAccess;
using Mora::Lux::Trace::InvalidateDeviceXmlName;

const char kConversions[] = R"(
<PROCS>
  <proc id="core0" kind="CortexM" traceid="12">
    <identifier>
      <register id="CPUID" type="REG" address="cpuid_reg" page="1" addrunit="4" width="32"/>
      <value idvalue="0x410FC240"/>
    </identifier>
  </proc>
  <proc id="core1" kind="dsp" traceid="0x0C">
    <Identifier>
      <register id="ID" type="mem" address="0x1000" page="0" addrunit="010" width="zz"/>
      <note/>
      <value idvalue="5"/>
    </Identifier>
  </proc>
  <proc id="core2" traceid="010">
    <note/>
    <identifier><register id="ID" address="0x20" page="0" addrunit="1" width="8"/></identifier>
  </proc>
  <proc id="core3">
    <identifier><register id="ID" address="0x20" page="0" addrunit="1" width="8"/><VALUE IDVALUE="-1"/></identifier>
  </proc>
  <proc/>
</PROCS>
<Modules>
  <module ID="etm0" KIND="ETM" proc="core0" version="3.5">
    <registers>
      <reg id="ctrl" type="MEM" address="0x1000" page="2" addrunit="1" width="32"/>
      <reg id="oct" type="mem" address="010" page="0x10" addrunit="2" width="16"/>
      <reg id="junk" type="mem" address="zz" page="7x" addrunit="1" width="8"/>
      <reg id="drv" type="reg" address="ETMCR" page="0" addrunit="1" width="32"/>
      <reg id="io" type="io" address="0x10" page="0" addrunit="1" width="32"/>
    </registers>
    <characteristics>
      <c id="a" value="1" description="first"/>
      <c id="b" value="2"/>
      <c value="3"/>
      <c id="d"/>
    </characteristics>
    <mapping id="name.value">
      <map name="k1" value="v1"/><map name="k2"/><map value="v3"/><map NAME="k4" VALUE="v4"/>
    </mapping>
    <mapping id="empty.list"/>
    <mapping id="whole"><map whole="x"/></mapping>
    <mapping id="..a..b.c"><map a="1" b="2" c="3"/></mapping>
    <mapping id="twice.v"><map twice="old" v="1"/></mapping>
    <mapping id="twice.v"><map twice="new" v="2"/></mapping>
    <characteristics><c id="e" value="5"/></characteristics>
    <unknown/>
  </module>
  <module id="tpiu" kind="TPIU" proc="nosuch"/>
</Modules>
<sources>
  <source id="s0" proc="core0" stmmaster="TRUE">
    <components><component module="etm0"/><component/><component module="tpiu"/></components>
    <characteristics><c id="x" value="y"/></characteristics>
  </source>
  <source id="s1" proc="ghost" stmmaster="yes"/>
  <source id="s2" proc="core1" stmmaster="1"/>
  <source id="dropped" proc="core0"><characteristics><c id="leak" value="1"/></characteristics></source>
  <source proc="core0" stmmaster="true"/>
</sources>
<trace_routes>
  <route>
    <source source="s0"/><link module="l1"/><link module="l2"/><link/><link module="l3"/>
    <sink module="a"/><sink module="b"/><sink/><pin module="drm"/><other module="x"/>
  </route>
  <route/>
</trace_routes>
<unknown_section><module id="ignored" kind="k" proc="p"/></unknown_section>
)";

class DatabaseLoaderTest : public DatabaseTest {
protected:
    void TearDown() override { InvalidateDeviceXmlName(); }

    // Loads a description of device 0x42 with the given sections.
    bool Load(const std::string& body, CDeviceIdentifierImpl& devId)
    {
        db.write("device.xml", DeviceXml("id=\"dev\" value=\"0x42\"", body));
        return devId.LoadDeviceDatabase(0x42);
    }
};

TEST_F(DatabaseLoaderTest, ProcessorsConvertTheirAttributes)
{
    auto devId = MakeDevId();
    ASSERT_TRUE(Load(kConversions, *devId));
    const auto& procs = devId->GetProcessors();
    ASSERT_EQ(5u, procs.size());

    const CProcIdentifier& core0 = *procs[0];
    EXPECT_EQ("core0", core0.procName);
    EXPECT_EQ("CortexM", core0.kind);
    EXPECT_EQ(12, core0.traceId);
    EXPECT_EQ(0x410FC240u, core0.idValue);
    ASSERT_TRUE(core0.idRegister);
    EXPECT_EQ("CPUID", core0.idRegister->GetName());
    EXPECT_FALSE(core0.idRegister->IsMemoryMapped());
    EXPECT_EQ("cpuid_reg", core0.idRegister->GetDriverRegisterName());

    // Decimal trace IDs; a value not right after the register is not read.
    const CProcIdentifier& core1 = *procs[1];
    EXPECT_EQ(0, core1.traceId);
    EXPECT_EQ(0u, core1.idValue);
    ASSERT_TRUE(core1.idRegister);
    EXPECT_TRUE(core1.idRegister->IsMemoryMapped());
    EXPECT_EQ(0x1000u, core1.idRegister->GetMemoryAddress());
    EXPECT_EQ(8u, core1.idRegister->GetAddresableUnit());
    EXPECT_EQ(0u, core1.idRegister->GetWidthInBits());

    // The identifier counts only as the processor's first child.
    EXPECT_EQ(10, procs[2]->traceId);
    EXPECT_FALSE(procs[2]->idRegister);

    // No type means memory mapped; a negative number wraps like strtoul.
    ASSERT_TRUE(procs[3]->idRegister);
    EXPECT_TRUE(procs[3]->idRegister->IsMemoryMapped());
    EXPECT_EQ(0x20u, procs[3]->idRegister->GetMemoryAddress());
    EXPECT_EQ(0xFFFFFFFFu, procs[3]->idValue);

    EXPECT_EQ("", procs[4]->id);
}

TEST_F(DatabaseLoaderTest, ModulesConvertRegistersCharacteristicsAndMappings)
{
    auto devId = MakeDevId();
    std::size_t mark = Log().size();
    ASSERT_TRUE(Load(kConversions, *devId));
    const auto& modules = devId->GetModules();
    ASSERT_EQ(2u, modules.size());
    CModuleInfoImpl& etm = *modules[0];
    EXPECT_EQ("etm0", etm.GetName());
    EXPECT_EQ("ETM", etm.GetModuleKindStr());
    EXPECT_EQ("core0", etm.GetModuleAccessStr());
    EXPECT_EQ("3.5", etm.GetVersion());
    EXPECT_EQ("0", modules[1]->GetVersion());
    EXPECT_EQ("nosuch", modules[1]->GetModuleAccessStr());

    std::vector<CRegisterInfo*> regs = etm.GetRegisterInfo();
    ASSERT_EQ(5u, regs.size());
    EXPECT_TRUE(regs[0]->IsMemoryMapped());
    EXPECT_EQ(4096u, regs[0]->GetMemoryAddress());
    EXPECT_EQ(2u, regs[0]->GetMemoryPage());
    EXPECT_EQ(8u, regs[1]->GetMemoryAddress());
    EXPECT_EQ(0u, regs[2]->GetMemoryAddress());
    EXPECT_EQ(7u, regs[2]->GetMemoryPage());
    EXPECT_FALSE(regs[3]->IsMemoryMapped());
    EXPECT_EQ("ETMCR", regs[3]->GetDriverRegisterName());
    EXPECT_FALSE(regs[4]->IsMemoryMapped());
    EXPECT_EQ("0x10", regs[4]->GetDriverRegisterName());

    // Both characteristics sections add up, in document order.
    std::vector<CCharacteristic*> chars = etm.GetCharacteristics();
    ASSERT_EQ(3u, chars.size());
    EXPECT_EQ("a", chars[0]->GetName());
    EXPECT_EQ("first", chars[0]->GetDescription());
    EXPECT_EQ("", chars[1]->GetDescription());
    EXPECT_EQ("5", etm.LookupCharacteristicValue("e"));

    EXPECT_EQ((std::vector<std::string>{"..a..b.c", "empty.list", "name.value", "twice.v", "whole"}), etm.GetMapIds());
    std::vector<CMappingInfo*> map = etm.GetMappingInfo("name.value");
    ASSERT_EQ(2u, map.size());
    EXPECT_EQ("k1", map[0]->GetKey());
    EXPECT_EQ("v1", map[0]->GetValue());
    EXPECT_TRUE(etm.GetMappingInfo("empty.list").empty());
    EXPECT_TRUE(etm.GetMappingInfo("whole").empty());
    map = etm.GetMappingInfo("..a..b.c");
    ASSERT_EQ(1u, map.size());
    EXPECT_EQ("2", map[0]->GetValue());
    map = etm.GetMappingInfo("twice.v");
    ASSERT_EQ(1u, map.size());
    EXPECT_EQ("new", map[0]->GetKey());

    std::string log = LogSince(mark);
    EXPECT_NE(std::string::npos, log.find("DevId: Module added name: etm0, kind:ETM, access proc:core0, version=3.5"));
    EXPECT_NE(std::string::npos, log.find("DevId: Module register added oct, 010, 0x10, 2, 16"));
    EXPECT_NE(std::string::npos, log.find("DevId: Adding route src=s0, sink=b, drm=drm"));
}

TEST_F(DatabaseLoaderTest, SourcesAndRoutesKeepNamesUntilLinked)
{
    auto devId = MakeDevId();
    ASSERT_TRUE(Load(kConversions, *devId));
    const auto& sources = devId->GetSources();
    ASSERT_EQ(3u, sources.size());
    EXPECT_EQ("core0", sources[0]->GetName());
    EXPECT_TRUE(sources[0]->IsSTMMaster());
    EXPECT_EQ((std::vector<std::string>{"etm0", "tpiu"}), sources[0]->GetComponentNames());
    EXPECT_EQ("y", sources[0]->LookupCharacteristicValue("x"));
    EXPECT_EQ("ghost", sources[1]->GetName());
    EXPECT_FALSE(sources[1]->IsSTMMaster());
    EXPECT_FALSE(sources[2]->IsSTMMaster());

    const auto& routes = devId->GetRoutes();
    ASSERT_EQ(2u, routes.size());
    EXPECT_EQ("s0", routes[0]->GetSourceId());
    EXPECT_EQ((std::vector<std::string>{"l1", "l2", "l3"}), routes[0]->GetLinkNames());
    EXPECT_EQ("b", routes[0]->GetSinkName());
    EXPECT_EQ("drm", routes[0]->GetDRMName());
    EXPECT_EQ("", routes[1]->GetSourceId());
    EXPECT_TRUE(routes[1]->GetLinkNames().empty());
}

TEST_F(DatabaseLoaderTest, ProcessorNamesReachOnlyLaterSections)
{
    // A scan-chain device with the processor's trace ID renames it, without
    // any target access; sections before the processors keep the ID.
    const std::string procs =
        "<procs><proc id=\"cpu\" kind=\"CortexM\" traceid=\"7\"/></procs>";
    const std::string modules = "<modules><module id=\"m\" kind=\"ETM\" proc=\"cpu\"/></modules>";
    const std::string sources = "<sources><source id=\"s\" proc=\"cpu\" stmmaster=\"false\"/></sources>";
    struct Case {
        std::string body;
        const char* moduleAccess;
        const char* sourceName;
    } cases[] = {
        {procs + modules + sources, "CPU_A", "CPU_A"},
        {modules + sources + procs, "cpu", "cpu"},
        {modules + procs + sources, "cpu", "CPU_A"},
    };
    for (const Case& c : cases) {
        auto devId = MakeDevId();
        DeviceIdentifierTestAccess access(*devId);
        access.AddFamily(0x5, "cortexm");
        access.AddConnection(0x5, 7, "CPU_A", "");
        ASSERT_TRUE(Load(c.body, *devId));
        ASSERT_EQ(1u, devId->GetProcessors().size());
        EXPECT_EQ("CPU_A", devId->GetProcessors()[0]->procName);
        EXPECT_EQ("cpu", devId->GetProcessors()[0]->id);
        EXPECT_EQ(c.moduleAccess, devId->GetModules()[0]->GetModuleAccessStr());
        EXPECT_EQ(c.sourceName, devId->GetSources()[0]->GetName());
        InvalidateDeviceXmlName();
    }
}

TEST_F(DatabaseLoaderTest, MissingRequiredAttributeRejectsTheFile)
{
    const std::string goodProcs = "<procs><proc id=\"p\"/></procs>";
    const std::string goodModule = "<module id=\"ok\" kind=\"k\" proc=\"p\"/>";
    const std::string reg = "<registers><reg id=\"r\" type=\"mem\" address=\"0\" page=\"0\" addrunit=\"1\"/></registers>";
    struct Case {
        std::string body;
        std::string element;
        std::string attribute;
    } cases[] = {
        {goodProcs + "<modules>" + goodModule + "<module id=\"m\" proc=\"p\"/></modules>", "module", "kind"},
        {"<modules><module kind=\"k\" proc=\"p\"/></modules>", "module", "id"},
        {"<modules><Module id=\"m\" kind=\"k\"/></modules>", "Module", "proc"},
        {"<modules><module id=\"m\" kind=\"k\" proc=\"p\">" + reg + "</module></modules>", "reg", "width"},
        {"<modules><module id=\"m\" kind=\"k\" proc=\"p\"><registers><reg id=\"r\" address=\"0\" page=\"0\" "
         "addrunit=\"1\" width=\"8\"/></registers></module></modules>",
         "reg", "type"},
        {"<modules><module id=\"m\" kind=\"k\" proc=\"p\"><mapping/></module></modules>", "mapping", "id"},
        {goodProcs + "<procs><proc id=\"q\"><identifier><register id=\"r\" address=\"0\" addrunit=\"1\" "
                     "width=\"8\"/></identifier></proc></procs>",
         "register", "page"},
    };
    for (const Case& c : cases) {
        auto devId = MakeDevId();
        std::size_t mark = Log().size();
        EXPECT_FALSE(Load(c.body, *devId)) << c.body;
        std::string expected = "DevId: " + Path("device.xml") + ": " + c.element +
                               " element without required attribute \"" + c.attribute + "\"";
        std::string log = LogSince(mark);
        EXPECT_EQ(1u, CountOf(log, expected)) << log;
        EXPECT_EQ(1u, CountOf(log, "element without required attribute"));
        // Nothing of the rejected file stays behind or is remembered.
        EXPECT_TRUE(devId->GetProcessors().empty());
        EXPECT_TRUE(devId->GetModules().empty());
        EXPECT_EQ("", devId->GetLoadedDeviceFile());
        EXPECT_EQ("", CDeviceIdentifierImpl::GetMatchedDeviceFile());
    }
}

TEST_F(DatabaseLoaderTest, OverlongMappingIdRejectsInsteadOfCrashing)
{
    auto mapping = [](const std::string& id, bool entries) {
        return "<modules><module id=\"m\" kind=\"k\" proc=\"p\"><mapping id=\"" + id + "\">" +
               (entries ? "<map a=\"1\"/>" : "") + "</mapping></module></modules>";
    };
    std::string fits = "a." + std::string(2045, 'b');
    std::string tooLong = fits + "b";
    auto devId = MakeDevId();
    EXPECT_TRUE(Load(mapping(fits, true), *devId));
    InvalidateDeviceXmlName();
    // Without entries the id is only stored, never split.
    EXPECT_TRUE(Load(mapping(tooLong, false), *devId));
    InvalidateDeviceXmlName();
    std::size_t mark = Log().size();
    EXPECT_FALSE(Load(mapping(tooLong, true), *devId));
    EXPECT_NE(std::string::npos, LogSince(mark).find("mapping element with an id of 2048 or more characters"));
    EXPECT_EQ(2u, devId->GetModules().size());
}

TEST_F(DatabaseLoaderTest, LargeGeneratedDescriptionLoadsInOrder)
{
    const int count = 3000;
    std::string body = "<procs>";
    for (int i = 0; i < 100; ++i)
        body += "<proc id=\"p" + std::to_string(i) + "\" traceid=\"" + std::to_string(i) + "\"/>";
    body += "</procs><modules>";
    for (int i = 0; i < count; ++i) {
        body += "<module id=\"m" + std::to_string(i) + "\" kind=\"ETM\" proc=\"p" + std::to_string(i % 100) +
                "\"><registers><reg id=\"r\" type=\"mem\" address=\"" + std::to_string(i * 4) +
                "\" page=\"0\" addrunit=\"1\" width=\"32\"/></registers></module>";
    }
    body += "</modules><sources>";
    for (int i = 0; i < count; ++i) {
        body += "<source id=\"s" + std::to_string(i) + "\" proc=\"p" + std::to_string(i % 100) +
                "\" stmmaster=\"false\"><components><c module=\"m" + std::to_string(i) + "\"/></components></source>";
    }
    body += "</sources><trace_routes>";
    for (int i = 0; i < count; ++i)
        body += "<route><source source=\"s" + std::to_string(i) + "\"/><sink module=\"m0\"/></route>";
    body += "</trace_routes>";

    setenv("MORA_TRACE_LOGGING", "0", 1);
    auto devId = MakeDevId();
    ASSERT_TRUE(Load(body, *devId));
    ASSERT_EQ(100u, devId->GetProcessors().size());
    ASSERT_EQ(static_cast<std::size_t>(count), devId->GetModules().size());
    ASSERT_EQ(static_cast<std::size_t>(count), devId->GetSources().size());
    ASSERT_EQ(static_cast<std::size_t>(count), devId->GetRoutes().size());
    EXPECT_EQ("m2999", devId->GetModules().back()->GetName());
    EXPECT_EQ(2999u * 4, devId->GetModules().back()->GetRegisterInfo().front()->GetMemoryAddress());
    EXPECT_EQ("p99", devId->GetModules().back()->GetModuleAccessStr());
    EXPECT_EQ("s1234", devId->GetRoutes()[1234]->GetSourceId());
}

} // namespace
} // namespace devid_test

// What the loaders make of a description: conversions, defaults, document
// order, rejection of malformed descriptions, and a large generated device.
#include "tests/database/DatabaseTestSupport.h"

namespace devid_test {
namespace {

const char kConversions[] = R"(
<PROCS>
  <proc id="core0" kind="CortexM" traceid="12">
    <identifier><register id="CPUID" type="REG" address="cpuid_reg" page="1" addrunit="4" width="32"/>
      <value idvalue="0x410FC240"/></identifier>
  </proc>
  <proc id="core1" traceid="0x0C">
    <Identifier><register id="ID" type="mem" address="0x1000" page="0" addrunit="010" width="zz"/>
      <note/><value idvalue="5"/></Identifier>
  </proc>
  <proc id="core2" traceid="010"><note/><identifier><register id="ID" address="0" page="0" addrunit="1" width="8"/></identifier></proc>
  <proc id="core3"><identifier><register id="ID" address="0x20" page="0" addrunit="1" width="8"/><VALUE IDVALUE="-1"/></identifier></proc>
</PROCS>
<Modules>
  <module ID="etm0" KIND="ETM" proc="core0" version="3.5">
    <registers>
      <reg id="ctrl" type="MEM" address="0x1000" page="2" addrunit="1" width="32"/>
      <reg id="oct" type="mem" address="010" page="7x" addrunit="2" width="16"/>
      <reg id="drv" type="reg" address="ETMCR" page="0" addrunit="1" width="32"/>
      <reg id="io" type="io" address="0x10" page="0" addrunit="1" width="32"/>
    </registers>
    <characteristics><c id="a" value="1" description="first"/><c id="b" value="2"/><c value="3"/></characteristics>
    <mapping id="name.value"><map name="k1" value="v1"/><map name="k2"/><map value="v3"/><map NAME="k4" VALUE="v4"/></mapping>
    <mapping id="..a..b.c"><map a="1" b="2" c="3"/></mapping>
    <characteristics><c id="e" value="5"/></characteristics>
  </module>
  <module id="tpiu" kind="TPIU" proc="nosuch"/>
</Modules>
<sources>
  <source id="s0" proc="core0" stmmaster="TRUE">
    <components><component module="etm0"/><component/><component module="tpiu"/></components>
    <characteristics><c id="x" value="y"/></characteristics>
  </source>
  <source id="s1" proc="ghost" stmmaster="yes"/>
  <source id="dropped" proc="core0"/>
  <source proc="core0" stmmaster="true"/>
</sources>
<trace_routes>
  <route><source source="s0"/><link module="l1"/><link/><link module="l3"/>
    <sink module="a"/><sink module="b"/><pin module="drm"/><other module="x"/></route>
  <route/>
</trace_routes>
<unknown_section><module id="ignored" kind="k" proc="p"/></unknown_section>
)";

// A register as one line: where it is read and how.
std::string Describe(CRegisterInfo* reg)
{
    if (reg == nullptr)
        return "none";
    if (!reg->IsMemoryMapped())
        return "drv " + reg->GetDriverRegisterName();
    return "mem " + std::to_string(reg->GetMemoryAddress()) + " page " + std::to_string(reg->GetMemoryPage()) +
           " unit " + std::to_string(reg->GetAddresableUnit()) + " width " + std::to_string(reg->GetWidthInBits());
}

class DatabaseLoaderTest : public DatabaseTest {
protected:
    bool Load(const std::string& body, CDeviceIdentifierImpl& devId)
    {
        db.write("device.xml", DeviceXml("id=\"dev\" value=\"0x42\"", body));
        return devId.LoadDeviceDatabase(0x42);
    }
};

TEST_F(DatabaseLoaderTest, AttributesConvertWithTheirDefaults)
{
    auto devId = MakeDevId();
    // The second round reads a model loaded again after a reset: nothing may
    // point into the texts of the first.
    for (int round = 0; round < 2; ++round) {
        if (round > 0)
            devId->Reset();
        ASSERT_TRUE(Load(kConversions, *devId));
        const auto& procs = devId->GetProcessors();
        ASSERT_EQ(4u, procs.size());
        // Trace IDs are decimal; a value not right after the register is not read;
        // the identifier counts only as the first child; negative values wrap like strtoul.
        EXPECT_EQ((std::vector<int>{12, 0, 10, 0}), (std::vector<int>{procs[0]->traceId, procs[1]->traceId,
                                                                     procs[2]->traceId, procs[3]->traceId}));
        EXPECT_EQ((std::vector<uint32_t>{0x410FC240u, 0, 0, 0xFFFFFFFFu}),
                  (std::vector<uint32_t>{procs[0]->idValue, procs[1]->idValue, procs[2]->idValue,
                                         procs[3]->idValue}));
        EXPECT_EQ("drv cpuid_reg", Describe(procs[0]->idRegister.get()));
        EXPECT_EQ("mem 4096 page 0 unit 8 width 0", Describe(procs[1]->idRegister.get()));
        EXPECT_EQ("none", Describe(procs[2]->idRegister.get()));
        EXPECT_EQ("mem 32 page 0 unit 1 width 8", Describe(procs[3]->idRegister.get())) << "no type is memory mapped";

        const auto& modules = devId->GetModules();
        ASSERT_EQ(2u, modules.size());
        CModuleInfoImpl& etm = *modules[0];
        EXPECT_EQ("etm0 ETM 3.5", etm.GetName() + " " + etm.GetModuleKindStr() + " " + etm.GetVersion());
        EXPECT_EQ("0", modules[1]->GetVersion());
        std::vector<std::string> regs;
        for (CRegisterInfo* reg : etm.GetRegisterInfo())
            regs.push_back(Describe(reg));
        EXPECT_EQ((std::vector<std::string>{"mem 4096 page 2 unit 1 width 32", "mem 8 page 7 unit 2 width 16",
                                            "drv ETMCR", "drv 0x10"}),
                  regs);

        // Both characteristics sections add up, in document order.
        std::vector<CCharacteristic*> chars = etm.GetCharacteristics();
        ASSERT_EQ(3u, chars.size());
        EXPECT_EQ("first|", chars[0]->GetDescription() + "|" + chars[1]->GetDescription());
        EXPECT_EQ("5", etm.LookupCharacteristicValue("e"));
        std::vector<CMappingInfo*> map = etm.GetMappingInfo("name.value");
        ASSERT_EQ(2u, map.size());
        EXPECT_EQ("k1=v1", map[0]->GetKey() + "=" + map[0]->GetValue());
        map = etm.GetMappingInfo("..a..b.c");
        ASSERT_EQ(1u, map.size());
        EXPECT_EQ("2", map[0]->GetValue());

        const auto& sources = devId->GetSources();
        ASSERT_EQ(2u, sources.size());
        EXPECT_EQ("core0", sources[0]->GetName());
        EXPECT_TRUE(sources[0]->IsSTMMaster() && !sources[1]->IsSTMMaster());
        EXPECT_EQ((std::vector<std::string>{"etm0", "tpiu"}), sources[0]->GetComponentNames());
        EXPECT_EQ("y", sources[0]->LookupCharacteristicValue("x"));

        const auto& routes = devId->GetRoutes();
        ASSERT_EQ(2u, routes.size());
        EXPECT_EQ("s0 b drm",
                  routes[0]->GetSourceId() + " " + routes[0]->GetSinkName() + " " + routes[0]->GetDRMName());
        EXPECT_EQ((std::vector<std::string>{"l1", "l3"}), routes[0]->GetLinkNames());
    }
}

TEST_F(DatabaseLoaderTest, ProcessorNamesReachOnlyLaterSections)
{
    // A processor with a connected trace ID is renamed without target access;
    // the modules before the processors keep the ID, the sources after get the name.
    auto devId = MakeDevId();
    DeviceIdentifierTestAccess access(*devId);
    access.AddFamily(0x5, "cortexm");
    access.AddConnection(0x5, 7, "CPU_A", "");
    ASSERT_TRUE(Load("<modules><module id=\"m\" kind=\"ETM\" proc=\"cpu\"/></modules>"
                     "<procs><proc id=\"cpu\" kind=\"CortexM\" traceid=\"7\"/></procs>"
                     "<sources><source id=\"s\" proc=\"cpu\" stmmaster=\"false\"/></sources>",
                     *devId));
    EXPECT_EQ("CPU_A", devId->GetProcessors()[0]->procName);
    EXPECT_EQ("cpu", devId->GetModules()[0]->GetModuleAccessStr());
    EXPECT_EQ("CPU_A", devId->GetSources()[0]->GetName());
}

TEST_F(DatabaseLoaderTest, MissingRequiredAttributeRejectsTheFile)
{
    const std::string module = "<modules><module id=\"m\" kind=\"k\" proc=\"p\">";
    struct Case {
        std::string body;
        std::string element;
        std::string attribute;
    } cases[] = {
        {"<procs><proc id=\"p\"/></procs><modules><module id=\"ok\" kind=\"k\" proc=\"p\"/><module id=\"m\" proc=\"p\"/></modules>",
         "module", "kind"},
        {"<modules><Module id=\"m\" kind=\"k\"/></modules>", "Module", "proc"},
        {module + "<registers><reg id=\"r\" type=\"mem\" address=\"0\" page=\"0\" addrunit=\"1\"/></registers></module></modules>",
         "reg", "width"},
        {module + "<mapping/></module></modules>", "mapping", "id"},
        {"<procs><proc id=\"q\"><identifier><register id=\"r\" address=\"0\" addrunit=\"1\" width=\"8\"/></identifier></proc></procs>",
         "register", "page"},
    };
    for (const Case& c : cases) {
        auto devId = MakeDevId();
        std::size_t mark = Log().size();
        EXPECT_FALSE(Load(c.body, *devId)) << c.body;
        std::string log = LogSince(mark);
        EXPECT_EQ(1u, CountOf(log, "DevId: " + Path("device.xml") + ": " + c.element +
                                       " element without required attribute \"" + c.attribute + "\""))
            << log;
        // Nothing of the rejected file stays behind or is remembered.
        EXPECT_TRUE(devId->GetProcessors().empty() && devId->GetModules().empty());
        EXPECT_EQ("", CDeviceIdentifierImpl::GetMatchedDeviceFile());
    }
}

TEST_F(DatabaseLoaderTest, LargeGeneratedDescriptionLoadsInOrder)
{
    const int count = 3000;
    std::string body = "<procs>";
    for (int i = 0; i < 100; ++i)
        body += "<proc id=\"p" + std::to_string(i) + "\" traceid=\"" + std::to_string(i) + "\"/>";
    std::string modules = "</procs><modules>", routes = "<trace_routes>";
    for (int i = 0; i < count; ++i) {
        const std::string n = std::to_string(i), proc = "p" + std::to_string(i % 100);
        modules += "<module id=\"m" + n + "\" kind=\"ETM\" proc=\"" + proc + "\"><registers><reg id=\"r\" type=\"mem\" address=\"" +
                   std::to_string(i * 4) + "\" page=\"0\" addrunit=\"1\" width=\"32\"/></registers></module>";
        routes += "<route><source source=\"s" + n + "\"/><sink module=\"m0\"/></route>";
    }
    body += modules + "</modules>" + routes + "</trace_routes>";

    setenv("MORA_TRACE_LOGGING", "0", 1);
    auto devId = MakeDevId();
    ASSERT_TRUE(Load(body, *devId));
    ASSERT_EQ(static_cast<std::size_t>(count), devId->GetModules().size());
    ASSERT_EQ(static_cast<std::size_t>(count), devId->GetRoutes().size());
    EXPECT_EQ(2999u * 4, devId->GetModules().back()->GetRegisterInfo().front()->GetMemoryAddress());
    EXPECT_EQ("p99", devId->GetModules().back()->GetModuleAccessStr());
    EXPECT_EQ("s1234", devId->GetRoutes()[1234]->GetSourceId());
}

} // namespace
} // namespace devid_test

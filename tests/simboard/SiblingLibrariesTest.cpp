// The three sibling libraries, loaded by their short names and called only
// through the client's own copy of the interfaces.
#include "SiblingClient.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <memory>

using namespace sibling_client;

namespace {

class SiblingLibrariesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        WriteBoard(R"(<device name="ROUTER" type="0x38000101"/>
  <device name="CORE_A" type="0x51A00010" parent="ROUTER" traceid="3" dap="DAP_X" outfile="a.tdf">
    <register name="CORE_ID" value="7"/><register name="BROKEN" value="5" fail="true"/>
    <memory address="0xE00FF000" value="0xCAFE0001"/></device>
  <device name="CORE_B" type="0x51A00020" parent="ROUTER" ready="false"/>
  <device name="HIDDEN" type="0x51A00030" parent="ROUTER" adapter="false"/>)");
        setenv("COMMON_VEXIF", m_dir.path().c_str(), 1);
    }
    void WriteBoard(const std::string& body) const
    {
        m_dir.write("simboard.xml", "<simboard config=\"bench.cfg\">" + body + "</simboard>");
    }
    devid_test::TempDir m_dir;
};

} // namespace

TEST_F(SiblingLibrariesTest, SetupAdapterReportsTheScanChain)
{
    void* lib = Open("libSetupAdapter4.so");
    ScanSetup* setup = Symbol<ScanSetup* (*)()>(lib, "CreateSetupAdapter")();
    std::string text = "SetupAdapter4", path, name, parent, dap;
    ASSERT_TRUE(setup->Open(text));
    setup->BoardFile(path);
    EXPECT_EQ(path, m_dir.file("bench.cfg"));
    int32_t count = 0;
    uint32_t type = 0, traceId = 0, parentType = 0;
    ASSERT_TRUE(setup->Count(count));
    EXPECT_EQ(count, 4);
    setup->Device(1, name, type);
    setup->TraceId(1, traceId);
    EXPECT_EQ(name, "CORE_A");
    EXPECT_EQ(type, 0x51A00010u);
    EXPECT_EQ(traceId, 3u);
    ASSERT_TRUE(setup->Parent(parent, parentType, "CORE_B"));
    EXPECT_EQ(parent, "ROUTER");
    EXPECT_EQ(parentType, 0x38000101u);
    EXPECT_FALSE(setup->Parent(parent, parentType, "ROUTER"));
    setup->Dap("CORE_A", dap);
    EXPECT_EQ(dap, "DAP_X");

    // A board that turned bad forgets the devices read before.
    WriteBoard("<device name=\"X\"/>");
    EXPECT_FALSE(setup->Open(text));
    EXPECT_NE(text.find("missing attribute \"type\""), std::string::npos) << text;
    EXPECT_FALSE(setup->Count(count));
    EXPECT_EQ(count, 0);
    Symbol<void (*)(ScanSetup*)>(lib, "DestroySetupAdapter")(setup);
    dlclose(lib);
}

TEST_F(SiblingLibrariesTest, TargetAdapterReadsRegistersAndMemory)
{
    void* lib = Open("libProbeTargetAdapter.so");
    auto create = Symbol<int (*)(const char*, Probe**)>(lib, "NewTargetAdapter");
    auto make = [&](const char* name) {
        Probe* probe = nullptr;
        const int status = create(name, &probe);
        EXPECT_EQ(status == 0, probe != nullptr) << name;
        return std::unique_ptr<Probe, void (*)(Probe*)>(probe, Symbol<void (*)(Probe*)>(lib, "FreeTargetAdapter"));
    };
    auto core = make("CORE_A");
    ASSERT_NE(core, nullptr);
    EXPECT_TRUE(core->Ready());
    uint32_t handle = 0, value = 0;
    ASSERT_EQ(core->Lookup("CORE_ID", handle), 0u);
    EXPECT_EQ(core->Register(handle, value), 0u);
    EXPECT_EQ(value, 7u);
    ASSERT_EQ(core->Lookup("BROKEN", handle), 0u);
    EXPECT_NE(core->Register(handle, value), 0u);
    EXPECT_EQ(core->Memory(value, 0xE00FF000, 1, false), 0u);
    EXPECT_EQ(value, 0xCAFE0001u);
    EXPECT_NE(core->Memory(value, 0xE00FF004, 1, false), 0u);
    EXPECT_FALSE(make("CORE_B")->Ready());
    EXPECT_EQ(make("NO_SUCH"), nullptr);
    EXPECT_EQ(make("HIDDEN"), nullptr);
}

TEST_F(SiblingLibrariesTest, TraceFactoryConnectsWhenTheBoardAllows)
{
    void* lib = Open("libTraceFactory.so");
    Factory* traces = Symbol<Factory* (*)()>(lib, "CreateTraceFactory")();
    Channel* server = nullptr;
    traces->Connect(&server, 1);
    ASSERT_NE(server, nullptr);
    std::string file;
    server->OutFile("CORE_A", file);
    EXPECT_EQ(file, "a.tdf");
    traces->Disconnect(server, 0);

    WriteBoard("<tracefactory connect=\"throw\" message=\"probe busy\"/>");
    server = reinterpret_cast<Channel*>(0x1);
    EXPECT_THROW(traces->Connect(&server, 1), std::exception);
    EXPECT_EQ(server, nullptr);
    Symbol<void (*)(Factory*)>(lib, "DestroyTraceFactory")(traces);
    dlclose(lib);
}

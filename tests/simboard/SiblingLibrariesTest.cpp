// The three sibling libraries, loaded by their short names and called through
// a client's own copy of the interfaces.
#include "SiblingClient.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>

using namespace sibling_client;

namespace {

#if defined(__SANITIZE_ADDRESS__)
#define SIBLING_TEST_UNDER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SIBLING_TEST_UNDER_ASAN 1
#endif
#endif

class Library {
public:
    explicit Library(const char* fileName)
    {
#ifdef SIBLING_TEST_UNDER_ASAN
        // The sanitizer's dlopen wrapper hides this program's run path from the
        // loader; once opened by full path, the short name finds the library by
        // its SONAME. The plain build checks the short-name search itself.
        m_preloaded = dlopen((std::string(DEVID_BUILD_DIR "/lib/") + fileName).c_str(), RTLD_NOW | RTLD_LOCAL);
#endif
        m_handle = dlopen(fileName, RTLD_NOW | RTLD_LOCAL);
        if (m_handle == nullptr)
            throw std::runtime_error(dlerror());
    }
    ~Library()
    {
        dlclose(m_handle);
        if (m_preloaded != nullptr)
            dlclose(m_preloaded);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    template <typename Fn>
    Fn Symbol(const char* name) const
    {
        void* address = dlsym(m_handle, name);
        if (address == nullptr)
            throw std::runtime_error(std::string("missing symbol ") + name);
        return reinterpret_cast<Fn>(address);
    }

private:
    void* m_preloaded = nullptr;
    void* m_handle = nullptr;
};

const char* const Board = R"(<?xml version="1.0"?>
<simboard config="bench.cfg" ready="true">
  <device name="ROUTER" type="0x38000101">
    <register name="IP_TAPID" value="0x1234502F"/>
  </device>
  <device name="CORE_A" type="0x51A00010" parent="ROUTER" traceid="3" dap="DAP_X" outfile="a.tdf">
    <register name="CORE_ID" value="7"/>
    <register name="BROKEN" value="5" fail="true"/>
    <memory address="0xE00FF000" value="0xCAFE0001"/>
  </device>
  <device name="CORE_B" type="0x51A00020" parent="ROUTER" ready="false"/>
  <device name="HIDDEN" type="0x51A00030" parent="ROUTER" adapter="false"/>
</simboard>
)";

class SiblingLibrariesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_dir.write("simboard.xml", Board);
        setenv("COMMON_VEXIF", m_dir.path().c_str(), 1);
    }

    devid_test::TempDir m_dir;
};

struct ScanSetupLibrary {
    Library library{"libSetupAdapter4.so"};
    std::unique_ptr<ScanSetup, DestroyScanSetupFn> adapter{
        library.Symbol<CreateScanSetupFn>("CreateSetupAdapter")(),
        library.Symbol<DestroyScanSetupFn>("DestroySetupAdapter")};
};

struct ProbeLibrary {
    Library library{"libProbeTargetAdapter.so"};
    NewProbeFn create = library.Symbol<NewProbeFn>("NewTargetAdapter");
    FreeProbeFn destroy = library.Symbol<FreeProbeFn>("FreeTargetAdapter");

    std::unique_ptr<Probe, FreeProbeFn> Make(const char* name, int* status = nullptr)
    {
        Probe* probe = reinterpret_cast<Probe*>(0x1);
        int result = create(name, &probe);
        if (status != nullptr)
            *status = result;
        return {probe, destroy};
    }
};

struct FactoryLibrary {
    Library library{"libTraceFactory.so"};
    std::unique_ptr<Factory, DestroyFactoryFn> factory{
        library.Symbol<CreateFactoryFn>("CreateTraceFactory")(),
        library.Symbol<DestroyFactoryFn>("DestroyTraceFactory")};
};

} // namespace

TEST_F(SiblingLibrariesTest, SetupAdapterReportsTheScanChain)
{
    ScanSetupLibrary setup;
    std::string text = "SetupAdapter4";
    ASSERT_TRUE(setup.adapter->Open(text));
    EXPECT_EQ(text, "SetupAdapter4");

    std::string path;
    setup.adapter->BoardFile(path);
    EXPECT_EQ(path, m_dir.file("bench.cfg"));

    int32_t count = 0;
    ASSERT_TRUE(setup.adapter->Count(count));
    ASSERT_EQ(count, 4);
    std::string name;
    uint32_t type = 0;
    uint32_t traceId = 99;
    setup.adapter->Device(1, name, type);
    setup.adapter->TraceId(1, traceId);
    EXPECT_EQ(name, "CORE_A");
    EXPECT_EQ(type, 0x51A00010u);
    EXPECT_EQ(traceId, 3u);
    setup.adapter->TraceId(2, traceId);
    EXPECT_EQ(traceId, 0u);

    // Out of range leaves the caller's values alone.
    setup.adapter->Device(4, name, type);
    setup.adapter->Device(-1, name, type);
    setup.adapter->TraceId(4, traceId);
    EXPECT_EQ(name, "CORE_A");
    EXPECT_EQ(type, 0x51A00010u);
    EXPECT_EQ(traceId, 0u);

    std::string parent = "untouched";
    uint32_t parentType = 0;
    ASSERT_TRUE(setup.adapter->Parent(parent, parentType, "CORE_B"));
    EXPECT_EQ(parent, "ROUTER");
    EXPECT_EQ(parentType, 0x38000101u);
    parent = "untouched";
    EXPECT_FALSE(setup.adapter->Parent(parent, parentType, "ROUTER"));
    EXPECT_FALSE(setup.adapter->Parent(parent, parentType, "NO_SUCH"));
    EXPECT_FALSE(setup.adapter->Parent(parent, parentType, nullptr));
    EXPECT_EQ(parent, "untouched");

    std::string dap = "stale";
    setup.adapter->Dap("CORE_A", dap);
    EXPECT_EQ(dap, "DAP_X");
    setup.adapter->Dap("CORE_B", dap);
    EXPECT_EQ(dap, "");
    setup.adapter->Unused6();
}

TEST_F(SiblingLibrariesTest, SetupAdapterWithoutABoardHasNoDevices)
{
    ScanSetupLibrary setup;
    std::string text = "SetupAdapter4";
    ASSERT_TRUE(setup.adapter->Open(text));

    // A board that turned bad forgets the devices read before.
    m_dir.write("simboard.xml", "<simboard config=\"b.cfg\"><device name=\"X\"/></simboard>");
    text = "SetupAdapter4";
    EXPECT_FALSE(setup.adapter->Open(text));
    EXPECT_NE(text.find("missing attribute \"type\""), std::string::npos) << text;
    int32_t count = 5;
    EXPECT_FALSE(setup.adapter->Count(count));
    EXPECT_EQ(count, 0);
    std::string path = "stale";
    setup.adapter->BoardFile(path);
    EXPECT_EQ(path, "");
    std::string dap = "stale";
    setup.adapter->Dap("CORE_A", dap);
    EXPECT_EQ(dap, "");

    unsetenv("COMMON_VEXIF");
    text = "SetupAdapter4";
    EXPECT_FALSE(setup.adapter->Open(text));
    EXPECT_NE(text.find("COMMON_VEXIF"), std::string::npos) << text;
}

TEST_F(SiblingLibrariesTest, TargetAdapterReadsRegistersAndMemory)
{
    ProbeLibrary probes;
    int status = -1;
    auto core = probes.Make("CORE_A", &status);
    ASSERT_EQ(status, 0);
    ASSERT_NE(core, nullptr);
    EXPECT_TRUE(core->Ready());

    uint32_t handle = 0xABCD;
    ASSERT_EQ(core->Lookup("CORE_ID", handle), 0u);
    EXPECT_NE(handle, 0u);
    uint32_t value = 0;
    EXPECT_EQ(core->Register(handle, value), 0u);
    EXPECT_EQ(value, 7u);

    uint32_t broken = 0;
    ASSERT_EQ(core->Lookup("BROKEN", broken), 0u);
    EXPECT_NE(broken, handle);
    value = 42;
    EXPECT_NE(core->Register(broken, value), 0u);
    EXPECT_NE(core->Register(0xFFFFFFFF, value), 0u);
    EXPECT_NE(core->Register(0, value), 0u);
    EXPECT_EQ(value, 42u);

    handle = 0xABCD;
    EXPECT_EQ(core->Lookup("IP_TAPID", handle), 0xFFFFFFFFu);
    EXPECT_EQ(core->Lookup("core_id", handle), 0xFFFFFFFFu);
    EXPECT_EQ(core->Lookup(nullptr, handle), 0xFFFFFFFFu);
    EXPECT_EQ(handle, 0xABCDu);

    EXPECT_EQ(core->Memory(value, 0xE00FF000, 1, false), 0u);
    EXPECT_EQ(value, 0xCAFE0001u);
    EXPECT_EQ(core->Memory(value, 0xE00FF000, 1, true), 0u);
    value = 42;
    EXPECT_NE(core->Memory(value, 0xE00FF004, 1, false), 0u);
    EXPECT_EQ(value, 42u);

    // The router's own adapter answers its ID register.
    auto router = probes.Make("ROUTER");
    ASSERT_NE(router, nullptr);
    ASSERT_EQ(router->Lookup("IP_TAPID", handle), 0u);
    EXPECT_EQ(router->Register(handle, value), 0u);
    EXPECT_EQ(value, 0x1234502Fu);

    auto stopped = probes.Make("CORE_B");
    ASSERT_NE(stopped, nullptr);
    EXPECT_FALSE(stopped->Ready());
}

TEST_F(SiblingLibrariesTest, TargetAdapterRefusesUnknownOrUnreachableDevices)
{
    ProbeLibrary probes;
    int status = 0;
    EXPECT_EQ(probes.Make("NO_SUCH", &status), nullptr);
    EXPECT_NE(status, 0);
    EXPECT_EQ(probes.Make("HIDDEN", &status), nullptr);
    EXPECT_NE(status, 0);
    EXPECT_EQ(probes.Make(nullptr, &status), nullptr);
    EXPECT_NE(status, 0);
    EXPECT_NE(probes.create("CORE_A", nullptr), 0);
    probes.destroy(nullptr);

    unsetenv("COMMON_VEXIF");
    EXPECT_EQ(probes.Make("CORE_A", &status), nullptr);
    EXPECT_NE(status, 0);
}

TEST_F(SiblingLibrariesTest, TraceFactoryConnectsAChannelServer)
{
    FactoryLibrary traces;
    Channel* server = nullptr;
    traces.factory->Connect(&server, 1);
    ASSERT_NE(server, nullptr);
    std::string file = "stale";
    server->OutFile("CORE_A", file);
    EXPECT_EQ(file, "a.tdf");
    file = "stale";
    server->OutFile("CORE_B", file);
    EXPECT_EQ(file, "");
    file = "stale";
    server->OutFile("NO_SUCH", file);
    EXPECT_EQ(file, "");
    traces.factory->Disconnect(server, 0);
    traces.factory->Disconnect(nullptr, 0);
    traces.factory->Connect(nullptr, 1);

    // A server left connected is freed with the factory (checked under ASan).
    Channel* kept = nullptr;
    traces.factory->Connect(&kept, 1);
    EXPECT_NE(kept, nullptr);
}

TEST_F(SiblingLibrariesTest, TraceFactoryFailsOrThrowsWhenTheBoardSaysSo)
{
    FactoryLibrary traces;
    Channel* server = reinterpret_cast<Channel*>(0x1);

    m_dir.write("simboard.xml", "<simboard config=\"b.cfg\"><tracefactory connect=\"fail\"/></simboard>");
    traces.factory->Connect(&server, 1);
    EXPECT_EQ(server, nullptr);

    m_dir.write("simboard.xml",
                "<simboard config=\"b.cfg\"><tracefactory connect=\"throw\" message=\"probe busy\"/></simboard>");
    server = reinterpret_cast<Channel*>(0x1);
    try {
        traces.factory->Connect(&server, 1);
        ADD_FAILURE() << "no exception";
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "probe busy");
    }
    EXPECT_EQ(server, nullptr);

    m_dir.write("simboard.xml", "not xml");
    server = reinterpret_cast<Channel*>(0x1);
    traces.factory->Connect(&server, 1);
    EXPECT_EQ(server, nullptr);

    unsetenv("COMMON_VEXIF");
    server = reinterpret_cast<Channel*>(0x1);
    traces.factory->Connect(&server, 1);
    EXPECT_EQ(server, nullptr);
}

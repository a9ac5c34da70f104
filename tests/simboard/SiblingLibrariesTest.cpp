// The three sibling libraries, loaded by their short names and called through
// a client's own copy of the interfaces.
#include "SiblingClient.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <memory>
#include <stdexcept>

using namespace sibling_client;

namespace {

using Library = std::unique_ptr<void, int (*)(void*)>;

Library Open(const std::string& fileName)
{
#ifdef SIBLING_TEST_FULL_PATHS
    const std::string path = DEVID_BUILD_DIR "/lib/" + fileName;
#else
    const std::string& path = fileName;
#endif
    Library library(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL), dlclose);
    if (!library)
        throw std::runtime_error(dlerror());
    return library;
}

template <typename Fn>
Fn Symbol(const Library& library, const char* name)
{
    void* address = dlsym(library.get(), name);
    if (address == nullptr)
        throw std::runtime_error(std::string("missing symbol ") + name);
    return reinterpret_cast<Fn>(address);
}

// Makes an object through a library's factory and frees it through the
// library's matching entry.
template <typename T>
struct Made {
    Made(const char* file, const char* create, const char* destroy)
        : library(Open(file)), object(Symbol<T* (*)()>(library, create)(), Symbol<void (*)(T*)>(library, destroy))
    {
    }
    Library library;
    std::unique_ptr<T, void (*)(T*)> object;
};

class SiblingLibrariesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        WriteBoard(R"(
  <device name="ROUTER" type="0x38000101"/>
  <device name="CORE_A" type="0x51A00010" parent="ROUTER" traceid="3" dap="DAP_X" outfile="a.tdf">
    <register name="CORE_ID" value="7"/>
    <register name="BROKEN" value="5" fail="true"/>
    <memory address="0xE00FF000" value="0xCAFE0001"/>
  </device>
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
    Made<ScanSetup> setup("libSetupAdapter4.so", "CreateSetupAdapter", "DestroySetupAdapter");
    std::string text = "SetupAdapter4";
    ASSERT_TRUE(setup.object->Open(text));
    EXPECT_EQ(text, "SetupAdapter4");
    std::string path;
    setup.object->BoardFile(path);
    EXPECT_EQ(path, m_dir.file("bench.cfg"));

    int32_t count = 0;
    ASSERT_TRUE(setup.object->Count(count));
    EXPECT_EQ(count, 4);
    std::string name;
    uint32_t type = 0;
    uint32_t traceId = 0;
    setup.object->Device(1, name, type);
    setup.object->TraceId(1, traceId);
    EXPECT_EQ(name, "CORE_A");
    EXPECT_EQ(type, 0x51A00010u);
    EXPECT_EQ(traceId, 3u);

    std::string parent;
    uint32_t parentType = 0;
    ASSERT_TRUE(setup.object->Parent(parent, parentType, "CORE_B"));
    EXPECT_EQ(parent, "ROUTER");
    EXPECT_EQ(parentType, 0x38000101u);
    EXPECT_FALSE(setup.object->Parent(parent, parentType, "ROUTER"));

    std::string dap;
    setup.object->Dap("CORE_A", dap);
    EXPECT_EQ(dap, "DAP_X");

    // A board that turned bad forgets the devices read before.
    WriteBoard("<device name=\"X\"/>");
    EXPECT_FALSE(setup.object->Open(text));
    EXPECT_NE(text.find("missing attribute \"type\""), std::string::npos) << text;
    EXPECT_FALSE(setup.object->Count(count));
    EXPECT_EQ(count, 0);

    unsetenv("COMMON_VEXIF");
    text = "SetupAdapter4";
    EXPECT_FALSE(setup.object->Open(text));
    EXPECT_NE(text.find("COMMON_VEXIF"), std::string::npos) << text;
}

TEST_F(SiblingLibrariesTest, TargetAdapterReadsRegistersAndMemory)
{
    Library library = Open("libProbeTargetAdapter.so");
    auto create = Symbol<int (*)(const char*, Probe**)>(library, "NewTargetAdapter");
    auto destroy = Symbol<void (*)(Probe*)>(library, "FreeTargetAdapter");
    auto make = [&](const char* name) {
        Probe* probe = nullptr;
        int status = create(name, &probe);
        EXPECT_EQ(status == 0, probe != nullptr) << name;
        return std::unique_ptr<Probe, void (*)(Probe*)>(probe, destroy);
    };

    auto core = make("CORE_A");
    ASSERT_NE(core, nullptr);
    EXPECT_TRUE(core->Ready());
    uint32_t handle = 0;
    uint32_t value = 0;
    ASSERT_EQ(core->Lookup("CORE_ID", handle), 0u);
    EXPECT_EQ(core->Register(handle, value), 0u);
    EXPECT_EQ(value, 7u);
    EXPECT_EQ(core->Lookup("core_id", handle), 0xFFFFFFFFu);

    // Found by name, yet unreadable; handle 0 is not the first register.
    ASSERT_EQ(core->Lookup("BROKEN", handle), 0u);
    value = 42;
    EXPECT_NE(core->Register(handle, value), 0u);
    EXPECT_NE(core->Register(0, value), 0u);
    EXPECT_EQ(value, 42u);

    EXPECT_EQ(core->Memory(value, 0xE00FF000, 1, false), 0u);
    EXPECT_EQ(value, 0xCAFE0001u);
    EXPECT_NE(core->Memory(value, 0xE00FF004, 1, false), 0u);

    EXPECT_FALSE(make("CORE_B")->Ready());

    EXPECT_EQ(make("NO_SUCH"), nullptr);
    EXPECT_EQ(make("HIDDEN"), nullptr);
    EXPECT_EQ(make(nullptr), nullptr);
    unsetenv("COMMON_VEXIF");
    EXPECT_EQ(make("CORE_A"), nullptr);
}

TEST_F(SiblingLibrariesTest, TraceFactoryConnectsWhenTheBoardAllows)
{
    Made<Factory> traces("libTraceFactory.so", "CreateTraceFactory", "DestroyTraceFactory");
    Channel* server = nullptr;
    traces.object->Connect(&server, 1);
    ASSERT_NE(server, nullptr);
    std::string file;
    server->OutFile("CORE_A", file);
    EXPECT_EQ(file, "a.tdf");
    server->OutFile("NO_SUCH", file);
    EXPECT_EQ(file, "");
    traces.object->Disconnect(server, 0);
    // Left connected: freed with the factory (the sanitizer build checks).
    traces.object->Connect(&server, 1);

    WriteBoard("<tracefactory connect=\"fail\"/>");
    traces.object->Connect(&server, 1);
    EXPECT_EQ(server, nullptr);

    WriteBoard("<tracefactory connect=\"throw\" message=\"probe busy\"/>");
    server = reinterpret_cast<Channel*>(0x1);
    try {
        traces.object->Connect(&server, 1);
        ADD_FAILURE() << "no exception";
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "probe busy");
    }
    EXPECT_EQ(server, nullptr);

    unsetenv("COMMON_VEXIF");
    server = reinterpret_cast<Channel*>(0x1);
    traces.object->Connect(&server, 1);
    EXPECT_EQ(server, nullptr);
}

// The sibling libraries and devid through Debian's OpenOCD, which autoprobes
// the chain that devid-jtagsim simulates.
#include "OpenOcdBench.h"
#include "SiblingClient.h"
#include "tests/cli/ToolRunner.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

using namespace sibling_client;
using devid_test::OpenOcdBench;

namespace {

class OpenOcdTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        unsetenv("COMMON_VEXIF");
        unsetenv("DEVID_OPENOCD");
        m_setupLibrary = Open("libSetupAdapter4.so");
        m_targetLibrary = Open("libProbeTargetAdapter.so");
    }

    std::string Log() const { return m_dir.file("openocd.log"); }

    /// A board folder holding simboard.xml with these lines.
    std::string Board(const std::string& name, const std::string& body) const
    {
        m_dir.write(name + "/simboard.xml", "<simboard config=\"board.cfg\">" + body + "</simboard>");
        return m_dir.file(name);
    }

    using SetupPtr = std::unique_ptr<ScanSetup, void (*)(ScanSetup*)>;
    SetupPtr Setup() const
    {
        return SetupPtr(Symbol<ScanSetup* (*)()>(m_setupLibrary, "CreateSetupAdapter")(),
                        Symbol<void (*)(ScanSetup*)>(m_setupLibrary, "DestroySetupAdapter"));
    }

    using ProbePtr = std::unique_ptr<Probe, void (*)(Probe*)>;
    ProbePtr Target(const char* name) const
    {
        Probe* probe = nullptr;
        Symbol<int (*)(const char*, Probe**)>(m_targetLibrary, "NewTargetAdapter")(name, &probe);
        return ProbePtr(probe, Symbol<void (*)(Probe*)>(m_targetLibrary, "FreeTargetAdapter"));
    }

    /// The ID register's value, or 0 when the device has none.
    uint32_t TapId(const char* name) const
    {
        ProbePtr probe = Target(name);
        uint32_t handle = 0, value = 0;
        if (probe == nullptr || probe->Lookup("IP_TAPID", handle) != 0)
            return 0;
        EXPECT_EQ(probe->Register(handle, value), 0u) << name;
        return value;
    }

    devid_test::TempDir m_dir;
    void* m_setupLibrary = nullptr;
    void* m_targetLibrary = nullptr;
};

// Everything the direct run shows, except TALON_1: its CORE_ID register is
// only known to a processor target, and the simulated chain has none.
TEST_F(OpenOcdTest, ExampleBoardIdentifiesAsInTheDirectRun)
{
    OpenOcdBench bench(devid_test::kExampleBoard, Log());
    ASSERT_TRUE(bench.ready()) << devid_test::readFile(Log());
    devid_test::ToolRunner tool;
    for (std::vector<std::string> command : std::vector<std::vector<std::string>>{
             {"identify"}, {"routes"}, {"proc", "QUILL_DSP"}, {"proc", "PLOVER_CPU"}, {"proc", "WREN_CORE"}}) {
        const devid_test::ToolResult direct = tool.RunOnExample(command);
        command.insert(command.end(), {"--openocd", bench.address()});
        const devid_test::ToolResult through = tool.RunOnExample(command);
        EXPECT_EQ(direct.status, 0) << command[0];
        EXPECT_EQ(through.status, 0) << command[0] << ": " << through.err;
        EXPECT_EQ(through.out, direct.out) << command[0];
    }

    // No board: the chain is what OpenOCD found, and it still matches.
    const std::string bare =
        tool.Run({"identify", "--db", devid_test::kExampleDb, "--openocd", bench.address()}).out;
    EXPECT_NE(bare.find("Scan chain (3 devices)"), std::string::npos) << bare;
    EXPECT_NE(bare.find("auto2.tap"), std::string::npos) << bare;
    for (const char* match : {"0x2b8e402f  " DEVID_SOURCE_DIR "/examples/db/device_kestrel.xml",
                              "0x0a61c02f  " DEVID_SOURCE_DIR "/examples/db/device_plover.xml",
                              "0x3b9af02f  " DEVID_SOURCE_DIR "/examples/db/device_wren.xml"})
        EXPECT_NE(bare.find(match), std::string::npos) << bare;
}

// Eight TAPs of IR lengths 2 to 8, one without IDCODE: the memory word behind
// the debug port in the middle only reads right when every length is right.
TEST_F(OpenOcdTest, MixedChainOfEightTaps)
{
    const std::string board = Board("chain", R"(
  <device name="T0" type="1" irlen="2"><register name="IP_TAPID" value="0x1000001F"/></device>
  <device name="T1" type="1" irlen="3"><register name="IP_TAPID" value="0x1000003F"/></device>
  <device name="T2" type="1" irlen="8"/>
  <device name="T3" type="1" irlen="5"><register name="IP_TAPID" value="0x1000005F"/></device>
  <device name="T4" type="1" irlen="4"><register name="IP_TAPID" value="0x4BA00477"/></device>
  <device name="CORE" type="2" parent="T4"><memory address="0x20000010" value="0xC0FFEE01"/></device>
  <device name="T5" type="1" irlen="7"><register name="IP_TAPID" value="0x1000007F"/></device>
  <device name="T6" type="1" irlen="6"><register name="IP_TAPID" value="0x1000009F"/></device>
  <device name="T7" type="1" irlen="2"><register name="IP_TAPID" value="0x100000BF"/></device>)");
    OpenOcdBench bench(board, Log());
    ASSERT_TRUE(bench.ready()) << devid_test::readFile(Log());
    setenv("DEVID_OPENOCD", bench.address().c_str(), 1);

    // Without a description: each TAP is a router of its own, in chain order.
    SetupPtr setup = Setup();
    std::string text = "SetupAdapter4", name, parent;
    ASSERT_TRUE(setup->Open(text)) << text;
    int32_t count = 0;
    uint32_t type = 0;
    ASSERT_TRUE(setup->Count(count));
    ASSERT_EQ(count, 8);
    setup->Device(7, name, type);
    EXPECT_EQ(name, "auto7.tap");
    EXPECT_TRUE(setup->Parent(parent, type, "auto7.tap"));
    EXPECT_EQ(parent, "auto7.tap");
    EXPECT_EQ(TapId("auto0.tap"), 0x1000001Fu);
    EXPECT_EQ(TapId("auto2.tap"), 0u);
    EXPECT_EQ(TapId("auto7.tap"), 0x100000BFu);

    // With the description: its names, and reads through the right TAP.
    setenv("COMMON_VEXIF", board.c_str(), 1);
    ASSERT_TRUE(setup->Open(text)) << text;
    ASSERT_TRUE(setup->Count(count));
    EXPECT_EQ(count, 9);
    EXPECT_EQ(TapId("T6"), 0x1000009Fu);
    EXPECT_EQ(TapId("T2"), 0u);
    uint32_t value = 0;
    ProbePtr core = Target("CORE");
    ASSERT_NE(core, nullptr);
    EXPECT_EQ(core->Memory(value, 0x20000010, 1, false), 0u);
    EXPECT_EQ(value, 0xC0FFEE01u);
    EXPECT_NE(Target("T3")->Memory(value, 0x20000010, 1, false), 0u) << "T3 holds no debug port";
    EXPECT_EQ(TapId("T7"), 0x100000BFu) << "OpenOCD survived";
}

TEST_F(OpenOcdTest, FailuresAreReportedWithoutHanging)
{
    const std::string board = Board("one", R"(
  <device name="R" type="1"><register name="IP_TAPID" value="0x2B8E402F"/></device>
  <device name="C" type="2" parent="R"><memory address="0x100" value="7"/></device>)");

    // Nobody listens.
    const std::string refused = "127.0.0.1:" + std::to_string(Mora::Lux::Sim::FreeLoopbackPort());
    setenv("DEVID_OPENOCD", refused.c_str(), 1);
    std::string text = "SetupAdapter4";
    EXPECT_FALSE(Setup()->Open(text));
    EXPECT_EQ(text, "cannot reach OpenOCD at " + refused + ": connection refused");

    {
        // OpenOCD was told to expect another chip.
        OpenOcdBench bench(board, Log(), "jtag newtap chip tap -irlen 4 -expected-id 0x12345678");
        ASSERT_TRUE(bench.ready()) << devid_test::readFile(Log());
        setenv("DEVID_OPENOCD", bench.address().c_str(), 1);
        text = "SetupAdapter4";
        EXPECT_FALSE(Setup()->Open(text));
        EXPECT_EQ(text, "TAP chip.tap: IDCODE 0x2b8e402f where -expected-id is 0x12345678");
    }

    // OpenOCD killed while adapters are connected: each read fails at once.
    OpenOcdBench bench(board, Log());
    ASSERT_TRUE(bench.ready()) << devid_test::readFile(Log());
    setenv("DEVID_OPENOCD", bench.address().c_str(), 1);
    setenv("COMMON_VEXIF", board.c_str(), 1);
    ProbePtr router = Target("R");
    ProbePtr core = Target("C");
    ASSERT_TRUE(router != nullptr && core != nullptr);
    uint32_t handle = 0, value = 0;
    ASSERT_EQ(router->Lookup("IP_TAPID", handle), 0u);
    EXPECT_EQ(core->Memory(value, 0x100, 1, false), 0u);
    EXPECT_EQ(value, 7u);
    bench.openocd().Stop(SIGKILL);
    const auto start = std::chrono::steady_clock::now();
    try {
        router->Register(handle, value);
        ADD_FAILURE() << "a read through a killed OpenOCD succeeded";
    } catch (const std::exception& error) {
        EXPECT_NE(std::string(error.what()).find("OpenOCD at " + bench.address()), std::string::npos) << error.what();
    }
    EXPECT_THROW(core->Memory(value, 0x100, 1, false), std::exception);
    EXPECT_THROW(Target("R"), std::exception);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));

    // The simulator goes with its client.
    for (int i = 0; i < 100 && bench.sim().process().Running(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(bench.sim().process().Running());
}

// The board's own OpenOCD configuration, with a memory access port target
// declared before init, as a real target configuration would.
TEST_F(OpenOcdTest, SetupAdapterStartsAndStopsOpenOcd)
{
    devid_test::JtagSim sim(devid_test::kExampleBoard);
    ASSERT_NE(sim.port(), 0);
    m_dir.write("started/probe.cfg", sim.adapterCommands() + R"(
jtag newtap k tap -irlen 4
jtag newtap p tap -irlen 4
jtag newtap w tap -irlen 4
dap create k.dap -chain-position k.tap
target create k.mem mem_ap -dap k.dap -ap-num 0
)");
    const std::string board = Board("started", R"(<openocd script="probe.cfg" timeout="30000"/>
  <device name="JTAG_K" type="0x38000101"/>
  <device name="QUILL_DSP" type="0x51A00020" parent="JTAG_K" target="k.mem"/>)");
    setenv("COMMON_VEXIF", board.c_str(), 1);

    std::string address;
    {
        SetupPtr setup = Setup();
        std::string text = "SetupAdapter4";
        ASSERT_TRUE(setup->Open(text)) << text;
        int32_t count = 0;
        ASSERT_TRUE(setup->Count(count));
        EXPECT_EQ(count, 4); // the described router and core, then p.tap and w.tap
        ASSERT_NE(getenv("DEVID_OPENOCD"), nullptr);
        address = getenv("DEVID_OPENOCD");
        EXPECT_EQ(TapId("JTAG_K"), 0x2B8E402Fu);
        ProbePtr quill = Target("QUILL_DSP");
        ASSERT_NE(quill, nullptr);
        uint32_t value = 0, handle = 0;
        EXPECT_EQ(quill->Memory(value, 0xE00FF000, 1, false), 0u);
        EXPECT_EQ(value, 0x51510001u);
        EXPECT_EQ(quill->Lookup("CORE_ID", handle), 0xFFFFFFFFu);
    }
    EXPECT_EQ(getenv("DEVID_OPENOCD"), nullptr);
    EXPECT_FALSE(devid_test::Accepts(static_cast<uint16_t>(std::stoul(address.substr(address.rfind(':') + 1)))));
}

} // namespace

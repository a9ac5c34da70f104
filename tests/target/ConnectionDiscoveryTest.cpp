// Discovery of the scan chain and the device IDs, the queries over them, adapters and the channel server.
#include "tests/target/TargetBoard.h"

#include <gtest/gtest.h>

namespace {

using IdList = std::vector<uint32_t>;

std::string Router(const std::string& name, const std::string& tapId, const std::string& extra = "")
{
    return "<device name=\"" + name + "\" type=\"0x38000101\"><register name=\"IP_TAPID\" value=\"" + tapId + "\"" +
           extra + "/></device>\n";
}

std::string Core(const std::string& name, const std::string& parent, const std::string& type = "0x51A00010")
{
    return "<device name=\"" + name + "\" type=\"" + type + "\" parent=\"" + parent + "\" traceid=\"4\"/>\n";
}

TEST(ConnectionDiscoveryTest, TwoDevicesBehindOneRouterRunOnce)
{
    devid_test::TargetBoard board;
    board.devices(Router("JTAG_K", "0x2B8E402F") + Core("TALON_0", "JTAG_K") + Core("TALON_1", "JTAG_K"));
    auto identifier = board.identifier();
    identifier->LoadDeviceConnectionInfo();

    const auto& chain = identifier->GetConnections();
    ASSERT_EQ(chain.size(), 3u);
    EXPECT_EQ(chain[2].name + "<" + chain[2].parentName, "TALON_1<JTAG_K");
    EXPECT_EQ(identifier->GetDeviceIds(), IdList{0x2B8E402Fu});

    // Once per object, whatever the target does later.
    board.devices(Router("JTAG_K", "0x2B8E402F"));
    identifier->LoadDeviceConnectionInfo();
    EXPECT_EQ(identifier->GetConnections().size(), 3u);
    EXPECT_EQ(board.logged("DevId: Loading device info..."), 1);
}

TEST(ConnectionDiscoveryTest, DapBehindDebugRouterIsReadThroughItsOwnRegister)
{
    devid_test::TargetBoard board;
    auto discover = [&](const std::string& deviceId) {
        board.devices("<device name=\"DBGR\" type=\"0x38000405\"><register name=\"DEVICE_ID\" value=\"" + deviceId +
                      "\"/></device>\n" + Core("DAP_0", "DBGR", "0x75803800") + Core("TALON_0", "DBGR"));
        auto identifier = board.identifier();
        identifier->LoadDeviceConnectionInfo();
        EXPECT_EQ(identifier->GetConnections().size(), 3u);
        return identifier->GetDeviceIds();
    };
    // The version nibble does not matter; a foreign part number is replaced.
    EXPECT_EQ(discover("0x1B9AF02F"), IdList{0x1B9AF02Fu});
    EXPECT_EQ(discover("0x0B9AF02E"), IdList{0xF0F0F0F0u});
}

TEST(ConnectionDiscoveryTest, ReadFailureEmptiesTheChain)
{
    devid_test::TargetBoard board;
    board.devices(Router("JTAG_K", "0x2B8E402F") + Core("TALON_0", "JTAG_K") +
                  Router("JTAG_B", "1", " fail=\"true\"") + Core("TALON_9", "JTAG_B"));
    auto identifier = board.identifier();
    identifier->LoadDeviceConnectionInfo();
    EXPECT_TRUE(identifier->GetConnections().empty());
    EXPECT_EQ(identifier->GetDeviceIds(), IdList{0x2B8E402Fu});
    EXPECT_EQ(board.logged("DevId: read device ID failed"), 1);
}

TEST(DeviceIdQueryTest, MatchAndTypeCodes)
{
    devid_test::TargetBoard board;
    board.devices(Router("JTAG_K", "0x2B8E402F") + Core("CORE_A", "JTAG_K", "0x500191B8") +
                  Router("JTAG_B", "0x3B8E5000") + Core("CORE_B", "JTAG_B"));
    auto identifier = board.identifier();
    EXPECT_FALSE(identifier->DeviceMatch(0x2B8E402Fu, 0xFFFFFFFFu));
    identifier->LoadDeviceConnectionInfo();

    EXPECT_TRUE(identifier->DeviceMatch(0x0B8E5000u, 0x0FFFFFFFu));
    const std::string log = board.log();
    EXPECT_LT(log.find("DevId: did not match ID 0x2b8e402f"), log.find("DevId: matched ID 0x3b8e5000"));
    EXPECT_FALSE(identifier->DeviceMatch(0x3B8E5001u, 0xFFFFFFFFu));

    EXPECT_EQ(identifier->GetProcId("CORE_A"), 0x50019348u);
    EXPECT_EQ(identifier->GetProcId("CORE_B"), 0x51A00010u);
}

const char kAdapterBoard[] = "<device name=\"TALON_0\" type=\"0x51A00010\"/>\n"
                      "<device name=\"FAR\" type=\"0x51A00010\" adapter=\"false\"/>\n";

TEST(TargetAdapterTest, ThrowingFactoryIsRetriedAdaptersCachedAndWithdrawnAfterConfigurationLoad)
{
    devid_test::TargetBoard board;
    board.devices(std::string(kAdapterBoard) + "<tracefactory connect=\"throw\"/>\n");
    auto identifier = board.identifier();
    identifier->LoadDeviceConnectionInfo();
    EXPECT_TRUE(identifier->GetConnections().empty());
    EXPECT_EQ(board.logged("DevId: Exception in connecting Channel Server "), 1);
    EXPECT_EQ(board.logged("DevId: channel driver is not valid in LoadDeviceConnectionInfo()"), 1);
    // Nothing was left half-connected: the next load connects and reads the chain.
    board.devices(kAdapterBoard);
    identifier->LoadDeviceConnectionInfo();
    EXPECT_EQ(identifier->GetConnections().size(), 2u);

    auto* adapter = identifier->GetTargetAdapter("TALON_0");
    ASSERT_NE(adapter, nullptr);
    EXPECT_EQ(identifier->GetTargetAdapter("TALON_0"), adapter);
    EXPECT_EQ(board.logged("DevId: Target adapter instance for TALON_0 is 0x"), 1);
    EXPECT_EQ(identifier->GetTargetAdapter("FAR"), nullptr);
    identifier->LoadConfiguration(0x1234u);
    EXPECT_EQ(identifier->GetTargetAdapter("TALON_0"), nullptr);
}

} // namespace

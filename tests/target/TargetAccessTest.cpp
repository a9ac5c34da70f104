// Target adapters per device and the channel server connection.
#include "devid/target/TargetAdapter.h"
#include "tests/target/TargetBoard.h"

#include <gtest/gtest.h>

namespace {

const char kBoard[] = "<device name=\"TALON_0\" type=\"0x51A00010\" dap=\"DAP_K\">"
                      "<register name=\"CORE_ID\" value=\"7\"/></device>\n"
                      "<device name=\"FAR\" type=\"0x51A00010\" adapter=\"false\"/>\n";

TEST(TargetAdapterTest, MadeOnceAndWithdrawnAfterConfigurationLoad)
{
    devid_test::TargetBoard board;
    board.devices(kBoard);
    auto identifier = board.identifier();

    Mora::Lux::Hexkit::TargetAdapter* adapter = identifier->GetTargetAdapter("TALON_0");
    ASSERT_NE(adapter, nullptr);
    EXPECT_EQ(identifier->GetTargetAdapter("TALON_0"), adapter);
    EXPECT_EQ(board.logged("DevId: Target adapter instance for TALON_0 is 0x"), 1);
    uint32_t handle = 0;
    uint32_t value = 0;
    ASSERT_EQ(adapter->FindRegister("CORE_ID", handle), 0u);
    ASSERT_EQ(adapter->ReadRegister(handle, value), 0u);
    EXPECT_EQ(value, 7u);

    // No adapter is not cached: the probe is asked again.
    EXPECT_EQ(identifier->GetTargetAdapter("FAR"), nullptr);
    EXPECT_EQ(identifier->GetTargetAdapter("FAR"), nullptr);
    EXPECT_EQ(board.logged("DevId: Target adapter instance for FAR is 0x0"), 2);

    identifier->LoadConfiguration(0x1234u);
    EXPECT_EQ(identifier->GetTargetAdapter("TALON_0"), nullptr);
}

TEST(ChannelDriverTest, ThrowingFactoryLeavesNoServerAndIsRetried)
{
    devid_test::TargetBoard board;
    board.devices(std::string(kBoard) + "<tracefactory connect=\"throw\"/>\n");
    auto identifier = board.identifier();
    identifier->LoadDeviceConnectionInfo();
    EXPECT_TRUE(identifier->GetConnections().empty());
    EXPECT_EQ(board.logged("DevId: Exception in connecting Channel Server "), 1);
    EXPECT_EQ(board.logged("DevId: channel driver is not valid in LoadDeviceConnectionInfo()"), 1);

    board.devices(kBoard);
    identifier->CreateChannelDriver();
    identifier->CreateChannelDriver();
    // One factory serves every attempt; a connected server is not connected again.
    EXPECT_EQ(board.logged("DevId: Connecting to Trace factory"), 1);
    EXPECT_EQ(board.logged("DevId: Connecting Live Channel Server "), 2);
    EXPECT_EQ(board.logged("DevId: Done - Connecting Channel Server "), 1);

    EXPECT_EQ(identifier->GetDAPName("TALON_0"), "");
    identifier->LoadDeviceConnectionInfo();
    EXPECT_EQ(identifier->GetConnections().size(), 2u);
    EXPECT_EQ(identifier->GetDAPName("TALON_0"), "DAP_K");
}

} // namespace

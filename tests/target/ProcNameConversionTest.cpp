// Renaming database processors to scan-chain devices on the live target.
#include "devid/model/CProcIdentifier.h"
#include "tests/target/TargetBoard.h"

#include <gtest/gtest.h>

namespace {

using Mora::Lux::Trace::CProcIdentifier;
using Mora::Lux::Trace::CRegisterInfoImpl;

// Two Talon cores and a Crow core behind JTAG_K; TALON_9 behind another router.
const char kBoard[] =
    "<device name=\"JTAG_K\" type=\"0x38000101\"><register name=\"IP_TAPID\" value=\"0x2B8E402F\"/></device>\n"
    "<device name=\"TALON_0\" type=\"0x51A00010\" parent=\"JTAG_K\" traceid=\"3\">"
    "<register name=\"CORE_ID\" value=\"0\"/><register name=\"BAD\" value=\"0\" fail=\"true\"/>"
    "<memory address=\"0xE00FF000\" value=\"0x51510000\"/></device>\n"
    "<device name=\"CROW_0\" type=\"0x52B00020\" parent=\"JTAG_K\"/>\n"
    "<device name=\"TALON_1\" type=\"0x51A00010\" parent=\"JTAG_K\" traceid=\"4\">"
    "<register name=\"CORE_ID\" value=\"1\"/><memory address=\"0xE00FF000\" value=\"0x51510001\"/></device>\n"
    "<device name=\"JTAG_M\" type=\"0x38000101\"><register name=\"IP_TAPID\" value=\"0x3B8E402F\"/></device>\n"
    "<device name=\"TALON_9\" type=\"0x51A00010\" parent=\"JTAG_M\"><register name=\"CORE_ID\" value=\"2\"/></device>\n";

class ProcNameConversionTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        board.devices(kBoard);
        board.raw("kmralias.cfg", "families\n~ Talon\nalias = 0x51A00010\n~\n~ Crow\nalias = 0x52B00020\n");
        identifier = board.identifier();
        identifier->LoadDeviceConnectionInfo();
        ASSERT_EQ(identifier->GetConnections().size(), 6u);
        Mora::Lux::Trace::DeviceIdentifierTestAccess(*identifier).SelectProc("TALON_0");
    }

    // A Talon processor "db_core"; a register name starting with "@" means a memory word at that address.
    std::string convert(uint32_t idValue, const std::string& reg = "", int32_t traceId = 0)
    {
        CProcIdentifier proc;
        proc.kind = "tALON", proc.procName = "db_core", proc.idValue = idValue, proc.traceId = traceId;
        if (!reg.empty()) {
            proc.idRegister = std::make_unique<CRegisterInfoImpl>("ID");
            if (reg[0] == '@') {
                proc.idRegister->memoryMapped = true;
                proc.idRegister->memoryAddress = static_cast<uint32_t>(std::stoul(reg.substr(1), nullptr, 0));
            } else {
                proc.idRegister->driverRegisterName = reg.c_str();
            }
        }
        identifier->ConvertProcName(&proc);
        return proc.procName;
    }

    devid_test::TargetBoard board;
    std::unique_ptr<Mora::Lux::Trace::CDeviceIdentifierImpl> identifier;
};

TEST_F(ProcNameConversionTest, ByTraceIdRegisterMemoryWordOrGuess)
{
    EXPECT_EQ(convert(99, "CORE_ID", 3), "TALON_0");
    EXPECT_EQ(board.logged("Target adapter instance for TALON_0"), 0);
    EXPECT_EQ(convert(1, "CORE_ID"), "TALON_1");
    EXPECT_EQ(convert(0x51510001, "@0xE00FF000"), "TALON_1");
    // TALON_9 holds this value but sits behind another router; no candidate matches and none is guessed.
    EXPECT_EQ(convert(2, "CORE_ID"), "db_core");

    // Without identifying data every candidate is tried as a guess; the last one stays.
    EXPECT_EQ(convert(0), "TALON_1");
    EXPECT_EQ(board.logged("DevId: No defined infomration is found. Guess: Convert db_core to TALON_0 "), 1);
    EXPECT_EQ(board.logged("DevId: No defined infomration is found. Guess: Convert TALON_0 to TALON_1 "), 1);

    // Offline there is no adapter, so a readable register is guessed too.
    identifier->LoadConfiguration(0x1234u);
    EXPECT_EQ(convert(0, "CORE_ID"), "TALON_1");
}

} // namespace

#include "devid/model/CCharacteristicImpl.h"
#include "devid/model/CMappingInfoImpl.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CProcIdentifier.h"
#include "devid/model/CSourceInfoImpl.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Mora::Lux::Trace;

namespace {

CCharacteristic* Characteristic(const std::string& name, const std::string& value)
{
    return new CCharacteristicImpl(name, value, "about " + name);
}

std::vector<std::string> Values(const std::vector<CMappingInfo*>& list)
{
    std::vector<std::string> out;
    for (CMappingInfo* item : list)
        out.push_back(item->GetKey() + "=" + item->GetValue());
    return out;
}

} // namespace

TEST(ModelObjects, ModuleConstructorKeepsArgumentOrder)
{
    CModuleInfoImpl module("ETM0", "etm", "core0", "4.1");
    EXPECT_EQ(module.GetName(), "ETM0");
    EXPECT_EQ(module.GetModuleKindStr(), "etm");
    EXPECT_EQ(module.GetModuleAccessStr(), "core0");
    EXPECT_EQ(module.GetVersion(), "4.1");
    module.UpdateProcName("Cortex_0");
    EXPECT_EQ(module.GetModuleAccessStr(), "Cortex_0");
}

TEST(ModelObjects, CharacteristicLookupTakesFirstMatchAndDefaultsToEmpty)
{
    CModuleInfoImpl module("m", "k", "p", "0");
    EXPECT_EQ(module.LookupCharacteristicValue("fifo"), "");
    module.AddCharacteristics({Characteristic("fifo", "64"), Characteristic("fifo", "128")});
    EXPECT_EQ(module.LookupCharacteristicValue("fifo"), "64");
    EXPECT_EQ(module.LookupCharacteristicValue("FIFO"), "");

    CSourceInfoImpl source("c0", "Core0", {}, {Characteristic("isa", "v7"), Characteristic("isa", "v8")}, true);
    EXPECT_EQ(source.LookupCharacteristicValue("isa"), "v7");
    EXPECT_EQ(source.LookupCharacteristicValue("missing"), "");
    EXPECT_TRUE(source.IsSTMMaster());
    EXPECT_EQ(source.GetID(), "c0");
    EXPECT_EQ(source.GetName(), "Core0");
}

TEST(ModelObjects, AccumulatedCharacteristicsAreOwnedOnce)
{
    // Loaders pass a growing list again for each characteristics section.
    CModuleInfoImpl module("m", "k", "p", "0");
    std::vector<CCharacteristic*> list{Characteristic("a", "1")};
    module.AddCharacteristics(list);
    list.push_back(Characteristic("b", "2"));
    module.AddCharacteristics(list);
    ASSERT_EQ(module.GetCharacteristics().size(), 2u);
    EXPECT_EQ(module.LookupCharacteristicValue("a"), "1");
    EXPECT_EQ(module.LookupCharacteristicValue("b"), "2");

    module.AddCharacteristics({Characteristic("c", "3"), nullptr});
    ASSERT_EQ(module.GetCharacteristics().size(), 1u);
    EXPECT_EQ(module.LookupCharacteristicValue("a"), "");
}

TEST(ModelObjects, MapIdsAreCachedAtFirstNonEmptyCall)
{
    CModuleInfoImpl module("m", "k", "p", "0");
    EXPECT_TRUE(module.GetMapIds().empty());
    module.AddMappingInfo("name.value", {new CMappingInfoImpl("a", "1")});
    module.AddMappingInfo("id.level", {});
    EXPECT_EQ(module.GetMapIds(), (std::vector<std::string>{"id.level", "name.value"}));

    module.AddMappingInfo("aaa.bbb", {new CMappingInfoImpl("x", "y")});
    EXPECT_EQ(module.GetMapIds(), (std::vector<std::string>{"id.level", "name.value"}));
    EXPECT_EQ(Values(module.GetMappingInfo("aaa.bbb")), (std::vector<std::string>{"x=y"}));
    EXPECT_TRUE(module.GetMappingInfo("id.level").empty());
    EXPECT_TRUE(module.GetMappingInfo("absent").empty());
}

TEST(ModelObjects, ReplacedMappingListIsReleased)
{
    CModuleInfoImpl module("m", "k", "p", "0");
    module.AddMappingInfo("k.v", {new CMappingInfoImpl("a", "1"), new CMappingInfoImpl("b", "2")});
    module.AddMappingInfo("k.v", {new CMappingInfoImpl("c", "3")});
    EXPECT_EQ(Values(module.GetMappingInfo("k.v")), (std::vector<std::string>{"c=3"}));
}

TEST(ModelObjects, RegistersIgnoreNullAndClear)
{
    CModuleInfoImpl module("m", "k", "p", "0");
    module.AddRegister(nullptr);
    EXPECT_TRUE(module.GetRegisterInfo().empty());
    auto* reg = new CRegisterInfoImpl("CTRL");
    reg->memoryMapped = true;
    reg->memoryAddress = 0x1000;
    module.AddRegister(reg);
    ASSERT_EQ(module.GetRegisterInfo().size(), 1u);
    EXPECT_EQ(module.GetRegisterInfo()[0]->GetMemoryAddress(), 0x1000u);
    module.ClearRegisters();
    EXPECT_TRUE(module.GetRegisterInfo().empty());
}

TEST(ModelObjects, DeletingThroughInterfacesReleasesEverything)
{
    // Run under the sanitizer build: a missing release shows as a leak.
    auto* impl = new CModuleInfoImpl("m", "k", "p", "0");
    impl->AddRegister(new CRegisterInfoImpl("r"));
    impl->AddCharacteristics({Characteristic("c", "v")});
    impl->AddMappingInfo("k.v", {new CMappingInfoImpl("a", "b")});
    CModuleInfo* module = impl;
    delete module;

    CSourceInfo* source = new CSourceInfoImpl("s", "n", {"m"}, {Characteristic("c", "v")}, false);
    delete source;

    auto* proc = new CProcIdentifier;
    proc->idRegister = std::make_unique<CRegisterInfoImpl>("MIDR");
    delete proc;
}

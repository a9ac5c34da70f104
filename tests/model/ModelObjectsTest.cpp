#include "devid/model/CCharacteristicImpl.h"
#include "devid/model/CMappingInfoImpl.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CProcIdentifier.h"
#include "devid/model/CSourceInfoImpl.h"

#include <gtest/gtest.h>

using namespace Mora::Lux::Trace;

namespace {

CCharacteristic* Characteristic(const std::string& name, const std::string& value)
{
    return new CCharacteristicImpl(name, value, "");
}

std::vector<std::string> Pairs(const std::vector<CMappingInfo*>& list)
{
    std::vector<std::string> out;
    for (CMappingInfo* item : list)
        out.push_back(item->GetKey() + "=" + item->GetValue());
    return out;
}

} // namespace

TEST(ModelObjects, CharacteristicLookupAndAccumulatedLists)
{
    CModuleInfoImpl module("ETM0", "etm", "core0", "4.1");
    EXPECT_EQ(module.GetModuleKindStr() + module.GetModuleAccessStr() + module.GetVersion(), "etmcore04.1");
    EXPECT_EQ(module.LookupCharacteristicValue("fifo"), "");

    // Loaders hand the growing list over again for each characteristics section.
    std::vector<CCharacteristic*> list{Characteristic("fifo", "64"), Characteristic("fifo", "128")};
    module.AddCharacteristics(list);
    list.push_back(Characteristic("width", "32"));
    module.AddCharacteristics(list);
    EXPECT_EQ(module.GetCharacteristics().size(), 3u);
    EXPECT_EQ(module.LookupCharacteristicValue("fifo"), "64");
    EXPECT_EQ(module.LookupCharacteristicValue("FIFO"), "");
    module.AddCharacteristics({Characteristic("c", "3"), nullptr});
    EXPECT_EQ(module.GetCharacteristics().size(), 1u);

    CSourceInfoImpl source("c0", "Core0", {}, {Characteristic("isa", "v7"), Characteristic("isa", "v8")}, true);
    EXPECT_EQ(source.GetID() + source.GetName(), "c0Core0");
    EXPECT_EQ(source.LookupCharacteristicValue("isa"), "v7");
    EXPECT_EQ(source.LookupCharacteristicValue("none"), "");
}

TEST(ModelObjects, MapIdsAreCachedAtTheFirstNonEmptyCall)
{
    CModuleInfoImpl module("m", "k", "p", "0");
    EXPECT_TRUE(module.GetMapIds().empty());
    module.AddMappingInfo("name.value", {new CMappingInfoImpl("a", "1"), new CMappingInfoImpl("b", "2")});
    module.AddMappingInfo("id.level", {});
    EXPECT_EQ(module.GetMapIds(), (std::vector<std::string>{"id.level", "name.value"}));

    module.AddMappingInfo("aaa.bbb", {new CMappingInfoImpl("x", "y")});
    module.AddMappingInfo("name.value", {new CMappingInfoImpl("c", "3")});
    EXPECT_EQ(module.GetMapIds(), (std::vector<std::string>{"id.level", "name.value"}));
    EXPECT_EQ(Pairs(module.GetMappingInfo("aaa.bbb")), (std::vector<std::string>{"x=y"}));
    EXPECT_EQ(Pairs(module.GetMappingInfo("name.value")), (std::vector<std::string>{"c=3"}));
    EXPECT_TRUE(module.GetMappingInfo("absent").empty());
}

TEST(ModelObjects, DeletingThroughInterfacesReleasesEverything)
{
    // Meant for the sanitizer build, where anything left over is a leak.
    auto* impl = new CModuleInfoImpl("m", "k", "p", "0");
    impl->AddRegister(nullptr);
    EXPECT_TRUE(impl->GetRegisterInfo().empty());
    impl->AddRegister(new CRegisterInfoImpl("r"));
    impl->AddCharacteristics({Characteristic("c", "v")});
    impl->AddMappingInfo("k.v", {new CMappingInfoImpl("a", "b")});
    EXPECT_EQ(impl->GetRegisterInfo().size(), 1u);
    CModuleInfo* module = impl;
    delete module;

    CSourceInfo* source = new CSourceInfoImpl("s", "n", {"m"}, {Characteristic("c", "v")}, false);
    delete source;
    auto* proc = new CProcIdentifier;
    proc->idRegister = std::make_unique<CRegisterInfoImpl>("MIDR");
    delete proc;
}

#include "devid/model/CCharacteristicImpl.h"
#include "devid/model/CMappingInfoImpl.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CProcIdentifier.h"
#include "devid/model/CSourceInfoImpl.h"

#include <gtest/gtest.h>

using namespace Mora::Lux::Trace;

namespace {

CCharacteristic* Characteristic(const char* name, const char* value)
{
    return new CCharacteristicImpl(name, value, "");
}

} // namespace

TEST(ModelObjects, FirstCharacteristicWinsOverTheAccumulatedList)
{
    CModuleInfoImpl module("ETM0", "etm", "core0", "4.1");
    // Loaders hand the growing list over again for each characteristics section.
    std::vector<CCharacteristic*> list{Characteristic("fifo", "64"), Characteristic("fifo", "128")};
    module.AddCharacteristics(list);
    list.push_back(Characteristic("width", "32"));
    module.AddCharacteristics(list);
    EXPECT_EQ(module.GetCharacteristics().size(), 3u);
    EXPECT_EQ(module.LookupCharacteristicValue("fifo"), "64");
    EXPECT_EQ(module.LookupCharacteristicValue("FIFO"), "");

    CSourceInfoImpl source("c0", "Core0", {}, {Characteristic("isa", "v7"), Characteristic("isa", "v8")}, true);
    EXPECT_EQ(source.LookupCharacteristicValue("isa"), "v7");
}

TEST(ModelObjects, MapIdsAreCachedAtTheFirstNonEmptyCall)
{
    CModuleInfoImpl module("m", "k", "p", "0");
    EXPECT_TRUE(module.GetMapIds().empty());
    module.AddMappingInfo("name.value", {new CMappingInfoImpl("a", "1")});
    module.AddMappingInfo("id.level", {});
    EXPECT_EQ(module.GetMapIds(), (std::vector<std::string>{"id.level", "name.value"}));

    module.AddMappingInfo("aaa.bbb", {new CMappingInfoImpl("x", "y")});
    module.AddMappingInfo("name.value", {new CMappingInfoImpl("c", "3")});
    EXPECT_EQ(module.GetMapIds(), (std::vector<std::string>{"id.level", "name.value"}));
    ASSERT_EQ(module.GetMappingInfo("aaa.bbb").size(), 1u);
    EXPECT_EQ(module.GetMappingInfo("name.value").at(0)->GetValue(), "3");
}

TEST(ModelObjects, DeletingThroughInterfacesReleasesEverything)
{
    // Meant for the sanitizer build, where anything left over is a leak.
    auto* impl = new CModuleInfoImpl("m", "k", "p", "0");
    impl->AddRegister("r");
    impl->AddCharacteristics({Characteristic("c", "v")});
    impl->AddMappingInfo("k.v", {new CMappingInfoImpl("a", "b")});
    delete static_cast<CModuleInfo*>(impl);
    delete static_cast<CSourceInfo*>(new CSourceInfoImpl("s", "n", {"m"}, {Characteristic("c", "v")}, false));
    auto* proc = new CProcIdentifier;
    proc->idRegister = std::make_unique<CRegisterInfoImpl>("MIDR");
    delete proc;
}

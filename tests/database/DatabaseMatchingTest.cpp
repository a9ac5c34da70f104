// Which description file a device ID selects: candidates, masks, order, the
// process-wide cache and the looser acceptance after a configuration load.
#include "tests/database/DatabaseTestSupport.h"

namespace devid_test {
namespace {

// One module named after the file, so a test can see which file was loaded.
std::string Tagged(const std::string& attributes, const std::string& tag)
{
    return DeviceXml(attributes, "<modules><module id=\"" + tag + "\" kind=\"k\" proc=\"p\"/></modules>");
}

std::vector<std::string> DirectoryOrder(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

class DatabaseMatchingTest : public DatabaseTest {
protected:
    // Loads `deviceId` with a fresh cache and returns the module tag loaded, or "".
    std::string Select(uint32_t deviceId)
    {
        InvalidateDeviceXmlName();
        auto devId = MakeDevId();
        if (!devId->LoadDeviceDatabase(deviceId) || devId->GetModules().empty())
            return "";
        return devId->GetModules().front()->GetName();
    }
};

TEST_F(DatabaseMatchingTest, OnlyNamesHoldingDeviceAndXmlAreCandidates)
{
    db.write("readme.txt", "nothing");
    EXPECT_EQ("", Select(0x100));
    EXPECT_NE(std::string::npos, Log().find("DevId: No XML file found."));

    db.write("mydevice_xml.bak", Tagged("id=\"a\" value=\"0x100\"", "bak"));
    db.write("Device.xml", Tagged("id=\"b\" value=\"0x100\"", "capital"));
    db.write("device_notes.txt", Tagged("id=\"c\" value=\"0x100\"", "txt"));
    db.write("board.xml", Tagged("id=\"d\" value=\"0x100\"", "board"));
    db.write("device_broken.xml", "<database><device id=\"x\" value=\"0x1\">");
    db.write("device_novalue.xml", Tagged("id=\"n\" mask=\"0\"", "novalue"));
    EXPECT_EQ("bak", Select(0x100));
    EXPECT_EQ("", Select(0x1)) << "a broken file or one without a value matches nothing";
    EXPECT_EQ("", CDeviceIdentifierImpl::GetMatchedDeviceFile());
}

TEST_F(DatabaseMatchingTest, MaskSelectsTheBitsThatMustMatch)
{
    struct Case {
        const char* mask;
        uint32_t deviceId;
        bool accepted;
    } cases[] = {
        {nullptr, 0x1234ABCD, true},  {nullptr, 0x1234ABCC, false},   {"0x0", 0xFFFFFFFF, true},
        {"", 0xF234ABCD, true},       {"", 0x1234ABCE, false},        {"0xFFFF0000", 0x1234FFFF, true},
        {"0xFFFF0000", 0x1235ABCD, false}, {"65535", 0xFFFFABCD, true}, {"017", 0x0000000D, true},
    };
    for (const Case& c : cases) {
        std::string attributes = "id=\"d\" value=\"0x1234ABCD\"";
        if (c.mask != nullptr)
            attributes += std::string(" mask=\"") + c.mask + "\"";
        db.write("device.xml", Tagged(attributes, "only"));
        EXPECT_EQ(c.accepted ? "only" : "", Select(c.deviceId))
            << "mask " << (c.mask ? c.mask : "(none)") << " device 0x" << std::hex << c.deviceId;
    }
}

TEST_F(DatabaseMatchingTest, MaskCarriesOverToTheNextFile)
{
    db.write("device_1.xml", "");
    db.write("device_2.xml", "");
    std::vector<std::string> order = DirectoryOrder(db.path());
    // The first file read sets a mask but does not match; the second matches only under that mask.
    db.write(order[0], Tagged("id=\"a\" value=\"0x01\" mask=\"0xFF\"", "first"));
    db.write(order[1], Tagged("id=\"b\" value=\"0x3302\"", "second"));
    EXPECT_EQ("second", Select(0x1202));
}

TEST_F(DatabaseMatchingTest, FirstFileInDirectoryOrderIsCachedUntilAnotherDevice)
{
    for (std::string tag : {"p", "q", "r"})
        db.write("device_" + tag + ".xml", Tagged("id=\"" + tag + "\" value=\"0x100\" mask=\"0xF00\"", tag));
    db.write("device_two.xml", Tagged("id=\"two\" value=\"0x200\"", "two"));
    std::string first;
    for (const std::string& name : DirectoryOrder(db.path()))
        if (first.empty() && name != "device_two.xml")
            first = name;
    EXPECT_EQ(first.substr(7, 1), Select(0x105));
    EXPECT_EQ(Path(first), CDeviceIdentifierImpl::GetMatchedDeviceFile());

    // A second instance tries the cached file first and needs no scan.
    std::size_t mark = Log().size();
    ASSERT_TRUE(MakeDevId()->LoadDeviceDatabase(0x109));
    std::string log = LogSince(mark);
    EXPECT_NE(std::string::npos, log.find("DevId: Found device xml based on cached file name: " + Path(first)));
    EXPECT_EQ(std::string::npos, log.find("XML file lookup path"));

    // Another device scans again and replaces the cache; an unknown one clears it.
    auto other = MakeDevId();
    ASSERT_TRUE(other->LoadDeviceDatabase(0x200));
    EXPECT_EQ("two", other->GetModules().front()->GetName());
    EXPECT_EQ(Path("device_two.xml"), CDeviceIdentifierImpl::GetMatchedDeviceFile());
    EXPECT_FALSE(MakeDevId()->LoadDeviceDatabase(0x300));
    EXPECT_EQ("", CDeviceIdentifierImpl::GetMatchedDeviceFile());
}

TEST_F(DatabaseMatchingTest, ConfigurationLoadAcceptsFirstDeviceWithoutIdTest)
{
    db.write("device_only.xml", Tagged("id=\"o\" value=\"0x100\"", "only"));
    auto devId = MakeDevId();
    EXPECT_TRUE(devId->LoadConfiguration(0x999u));
    ASSERT_EQ(1u, devId->GetModules().size());
    EXPECT_EQ(Path("device_only.xml"), devId->GetLoadedDeviceFile());
    // A user's selection is not remembered as a match, and is not loaded twice.
    EXPECT_EQ("", CDeviceIdentifierImpl::GetMatchedDeviceFile());
    EXPECT_TRUE(devId->LoadConfiguration(0x999u));
    EXPECT_EQ(1u, devId->GetModules().size());
}

} // namespace
} // namespace devid_test

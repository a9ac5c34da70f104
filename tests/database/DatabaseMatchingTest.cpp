// Which description file a device ID selects: candidates, masks, order, the
// process-wide cache and the looser acceptance after a configuration load.
#include "tests/database/DatabaseTestSupport.h"

#include "devid/DeviceXmlCache.h"

#include <string>

namespace devid_test {
namespace {

using Mora::Lux::Trace::CacheDeviceXmlName;
using Mora::Lux::Trace::InvalidateDeviceXmlName;

// One module named after the file, so a test can see which file was loaded.
std::string Tagged(const std::string& attributes, const std::string& tag)
{
    return DeviceXml(attributes, "<modules><module id=\"" + tag + "\" kind=\"k\" proc=\"p\"/></modules>");
}

class DatabaseMatchingTest : public DatabaseTest {
protected:
    void TearDown() override { InvalidateDeviceXmlName(); }

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
    db.write("mydevice_xml.bak", Tagged("id=\"a\" value=\"0x100\"", "bak"));
    db.write("Device.xml", Tagged("id=\"b\" value=\"0x100\"", "capital"));
    db.write("device_notes.txt", Tagged("id=\"c\" value=\"0x100\"", "txt"));
    db.write("board.xml", Tagged("id=\"d\" value=\"0x100\"", "board"));
    auto devId = MakeDevId();

    std::string first;
    std::string next;
    ASSERT_TRUE(devId->GetFirstXMLFileName(first));
    EXPECT_EQ(Path("mydevice_xml.bak"), first);
    EXPECT_FALSE(devId->GetNextXMLFileName(next));
    EXPECT_NE(std::string::npos, Log().find("DevId: XML file lookup path " + db.path() + "/device*.xml."));
    EXPECT_NE(std::string::npos, Log().find("DevId: Next XML file not found."));

    EXPECT_EQ("bak", Select(0x100));
}

TEST_F(DatabaseMatchingTest, NoCandidatesOrNoMatchGiveFalse)
{
    db.write("readme.txt", "nothing");
    EXPECT_EQ("", Select(0x1));
    EXPECT_NE(std::string::npos, Log().find("DevId: No XML file found."));

    setenv("TRACE_XMLDB_DEVICES", (db.path() + "/missing").c_str(), 1);
    EXPECT_EQ("", Select(0x1));

    setenv("TRACE_XMLDB_DEVICES", "", 1);
    EXPECT_EQ("", Select(0x1));

    setenv("TRACE_XMLDB_DEVICES", db.path().c_str(), 1);
    db.write("device_a.xml", Tagged("id=\"a\" value=\"0x2\"", "a"));
    db.write("device_broken.xml", "<database><device id=\"x\" value=\"0x1\">");
    db.write("device_novalue.xml", Tagged("id=\"n\" mask=\"0\"", "novalue"));
    std::size_t mark = Log().size();
    EXPECT_EQ("", Select(0x1));
    EXPECT_NE(std::string::npos, LogSince(mark).find("DevId: Next XML file not found."));
    EXPECT_EQ("", Mora::Lux::Trace::CDeviceIdentifierImpl::GetMatchedDeviceFile());
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
    db.write("device.xml", Tagged("id=\"d\" value=\"0x1234ABCD\" mask=\"0xFFFF0000\"", "only"));
    std::size_t mark = Log().size();
    Select(0x1234ABCE);
    EXPECT_NE(std::string::npos, LogSince(mark).find("DevId: Mask value is 0xffff0000 xmlId: 0x1234abcd  devId: 0x1234abce"));
}

TEST_F(DatabaseMatchingTest, MaskCarriesOverToTheNextFile)
{
    db.write("device_1.xml", "");
    db.write("device_2.xml", "");
    std::vector<std::string> order = DirectoryOrder(db.path());
    ASSERT_EQ(2u, order.size());
    // The first file read sets a mask but does not match; the second has no
    // mask and matches only under the first file's mask.
    db.write(order[0], Tagged("id=\"a\" value=\"0x01\" mask=\"0xFF\"", "first"));
    db.write(order[1], Tagged("id=\"b\" value=\"0x3302\"", "second"));
    EXPECT_EQ("second", Select(0x1202));
}

TEST_F(DatabaseMatchingTest, FirstMatchingFileInDirectoryOrderWinsAndIsCached)
{
    for (std::string tag : {"p", "q", "r"})
        db.write("device_" + tag + ".xml", Tagged("id=\"" + tag + "\" value=\"0\" mask=\"0\"", tag));
    std::string first = DirectoryOrder(db.path()).front();
    std::string firstTag = first.substr(7, 1);

    EXPECT_EQ(firstTag, Select(0x5));
    EXPECT_EQ(Path(first), CDeviceIdentifierImpl::GetMatchedDeviceFile());
    EXPECT_NE(std::string::npos, Log().find("DevId: Found a new device xml: " + Path(first) + " that not in cache"));

    // A second instance tries the cached file first and needs no scan.
    std::size_t mark = Log().size();
    auto second = MakeDevId();
    ASSERT_TRUE(second->LoadDeviceDatabase(0x9));
    EXPECT_EQ(Path(first), second->GetLoadedDeviceFile());
    std::string log = LogSince(mark);
    EXPECT_NE(std::string::npos, log.find("DevId: Cached File Name is: " + Path(first)));
    EXPECT_NE(std::string::npos, log.find("DevId: Found device xml based on cached file name: " + Path(first)));
    EXPECT_EQ(std::string::npos, log.find("XML file lookup path"));
}

TEST_F(DatabaseMatchingTest, AnotherDeviceReplacesTheCachedFile)
{
    db.write("device_one.xml", Tagged("id=\"one\" value=\"0x100\"", "one"));
    db.write("device_two.xml", Tagged("id=\"two\" value=\"0x200\"", "two"));
    {
        auto devId = MakeDevId();
        ASSERT_TRUE(devId->LoadDeviceDatabase(0x100));
    }
    ASSERT_EQ(Path("device_one.xml"), CDeviceIdentifierImpl::GetMatchedDeviceFile());

    std::size_t mark = Log().size();
    auto devId = MakeDevId();
    ASSERT_TRUE(devId->LoadDeviceDatabase(0x200));
    EXPECT_EQ("two", devId->GetModules().front()->GetName());
    EXPECT_EQ(Path("device_two.xml"), CDeviceIdentifierImpl::GetMatchedDeviceFile());
    std::string log = LogSince(mark);
    EXPECT_NE(std::string::npos, log.find("DevId: XML file lookup path"));
    EXPECT_NE(std::string::npos, log.find("DevId: Found a new device xml: " + Path("device_two.xml")));

    // A device that no file describes leaves no valid cache behind.
    auto third = MakeDevId();
    EXPECT_FALSE(third->LoadDeviceDatabase(0x300));
    EXPECT_EQ("", CDeviceIdentifierImpl::GetMatchedDeviceFile());
}

TEST_F(DatabaseMatchingTest, CacheRefusesPathsThatDoNotFit)
{
    ASSERT_TRUE(CacheDeviceXmlName("/db/device.xml"));
    EXPECT_FALSE(CacheDeviceXmlName(std::string(4132, 'a')));
    EXPECT_FALSE(CacheDeviceXmlName(std::string("/db/dev\0ice.xml", 15)));
    EXPECT_EQ("/db/device.xml", CDeviceIdentifierImpl::GetMatchedDeviceFile());
    std::string longest = "/" + std::string(4130, 'b');
    EXPECT_TRUE(CacheDeviceXmlName(longest));
    EXPECT_EQ(longest, CDeviceIdentifierImpl::GetMatchedDeviceFile());
}

TEST_F(DatabaseMatchingTest, ConfigurationLoadAcceptsFirstDeviceWithoutIdTest)
{
    db.write("device_only.xml", Tagged("id=\"o\" value=\"0x100\"", "only"));
    auto devId = MakeDevId();
    EXPECT_TRUE(devId->LoadConfiguration(0x999u));
    ASSERT_EQ(1u, devId->GetModules().size());
    EXPECT_EQ("only", devId->GetModules().front()->GetName());
    EXPECT_EQ(Path("device_only.xml"), devId->GetLoadedDeviceFile());
    EXPECT_NE(std::string::npos, Log().find("DevId: Load selected device xml: " + Path("device_only.xml")));
    // A selection made by the user is not remembered as a match.
    EXPECT_EQ("", CDeviceIdentifierImpl::GetMatchedDeviceFile());

    // The same ID again is already known: nothing is loaded twice.
    EXPECT_TRUE(devId->LoadConfiguration(0x999u));
    EXPECT_EQ(1u, devId->GetModules().size());
}

} // namespace
} // namespace devid_test

// Nothing a user saved may be lost: a save that cannot write everything says
// so, and a save into a trace data file leaves every other section intact.
#include "tests/hardening/HardeningSupport.h"

#include <sys/resource.h>

#include <csignal>

using namespace Mora::Lux::Trace;
using namespace devid_test;

namespace {

std::string Header(uint32_t length, uint32_t version, const std::string& name)
{
    std::string bytes;
    for (uint32_t word : {length, version, static_cast<uint32_t>(name.size())})
        for (int shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>((word >> shift) & 0xFF);
    return bytes + name;
}

class SaveIntegrity : public HardeningTest {
protected:
    // A device identifier holding a restored session, so saving needs no target.
    std::unique_ptr<CDeviceIdentifierImpl> Restored()
    {
        auto devId = Make();
        EXPECT_TRUE(devId->LoadConfiguration(home.write("restored.dim", SessionText()), eTraceDataFileDCM));
        return devId;
    }
};

TEST_F(SaveIntegrity, FullDiskIsReportedNotIgnored)
{
    auto devId = Restored();
    // A file size limit fails writes the way a full disk does.
    RunInChild(false, [&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{16, 16};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        EXPECT_FALSE(devId->SaveConfiguration("full", eTraceDataFileDCM));
    });
    EXPECT_TRUE(devId->SaveConfiguration("whole", eTraceDataFileDCM));
    EXPECT_EQ(readFile(TraceFolder() + "/whole.dim"), SessionText());

    // A device is no file to save into.
    ASSERT_EQ(symlink("/dev/full", home.file("full.tdf").c_str()), 0);
    EXPECT_FALSE(devId->SaveConfiguration(home.file("full.tdf"), eTraceDataFileTDF));
}

TEST_F(SaveIntegrity, TdfSaveLeavesEverySectionAsItWas)
{
    std::string blob(100000, '\0');
    for (size_t i = 0; i < blob.size(); ++i)
        blob[i] = static_cast<char>(i * 131 % 251);
    const std::vector<TdfSection> sections = {
        {"TRACE", 3, blob}, {"DEVID", 2, "older version"}, {"", 0, ""}, {"NOTES", 1, std::string("notes\r\n\0x", 9)}, {"TRACE", 4, "tail"}};
    const std::string file = WriteTdf(home.file("session.tdf"), sections);
    const std::string before = readFile(file);
    auto devId = Restored();
    devId->SaveConfiguration(file, eTraceDataFileTDF);
    devId->SaveConfiguration(file, eTraceDataFileTDF);

    // The old bytes are untouched; two whole DEVID sections follow them.
    const std::string after = readFile(file);
    ASSERT_GT(after.size(), before.size());
    EXPECT_EQ(after.compare(0, before.size(), before), 0);
    const std::string saved = Header(static_cast<uint32_t>(17 + SessionText().size()), 1, "DEVID") + SessionText();
    EXPECT_EQ(after.substr(before.size()), saved + saved);
    TDFHandler tdf;
    for (const TdfSection& section : sections) {
        std::vector<char> buffer(section.data.size() + 1);
        uint32_t read = 0;
        tdf.LoadSectionData(file.c_str(), section.name.c_str(), section.version, buffer.data(), static_cast<uint32_t>(buffer.size()), read);
        EXPECT_EQ(std::string(buffer.data(), read), section.data) << section.name << " " << section.version;
    }
    auto reloaded = Make();
    EXPECT_TRUE(reloaded->LoadConfiguration(file, eTraceDataFileTDF));
    EXPECT_EQ(reloaded->GetConnections().size(), 2u);

    // Behind a last section that claims more bytes than the file holds, as after
    // a crash, the whole sections before it stay as they were.
    const std::string whole = "TDF2" + Header(12 + 5 + 4, 1, "FIRST") + "data";
    const std::string damaged = home.write("damaged.tdf", whole + Header(5000, 1, "CUT") + "partial");
    devId->SaveConfiguration(damaged, eTraceDataFileTDF);
    EXPECT_EQ(readFile(damaged).compare(0, whole.size(), whole), 0);
    char buffer[8] = {};
    uint32_t read = 0;
    tdf.LoadSectionData(damaged.c_str(), "FIRST", 1, buffer, sizeof buffer, read);
    EXPECT_EQ(std::string(buffer, read), "data");
}

} // namespace

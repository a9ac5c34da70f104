// What the speed-ups of the reader, the queries and the logger must not change.
#include "devid/model/TargetDbParser.h"
#include "common/source/source_utilities/uLogger.h"
#include "tests/common/DeviceIdentifierTestAccess.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>

using namespace Mora::Lux::Trace;
using MORA_LUX::uLogger;

namespace {

// The sanitizer runtime hides the test's run path from dlopen; the build folder then.
void* OpenParserLibrary()
{
    if (void* library = dlopen("libmora_targetdb_parser.so", RTLD_NOW | RTLD_LOCAL))
        return library;
    return dlopen(DEVID_BUILD_DIR "/lib/libmora_targetdb_parser.so", RTLD_NOW | RTLD_LOCAL);
}

class Reader : public ::testing::Test {
protected:
    void SetUp() override
    {
        library = OpenParserLibrary();
        ASSERT_NE(nullptr, library) << dlerror();
        auto create = reinterpret_cast<CreateParserCPPFn>(dlsym(library, "CreateParserCPP"));
        ASSERT_NE(nullptr, create);
        parser = create();
        ASSERT_NE(nullptr, parser);
        end = parser->GetEndNode();
    }
    void TearDown() override
    {
        if (parser != nullptr)
            reinterpret_cast<DestroyParserCPPPFn>(dlsym(library, "DestroyParserCPPP"))(parser);
        if (library != nullptr)
            dlclose(library);
    }
    DBNode* LoadPath(const std::string& path)
    {
        EXPECT_EQ(0, parser->ParseFile(path.c_str(), 1));
        return parser->GetRootNode();
    }

    devid_test::TempDir dir;
    void* library = nullptr;
    TargetDbParser* parser = nullptr;
    DBNode* end = nullptr;
};

} // namespace

TEST_F(Reader, EachElementHasOneNodeWhicheverWayItIsReached)
{
    DBNode* root = LoadPath(dir.write("db.xml", "<db><!-- c --><dev>text<a/><!-- x --><?pi?><b/>more<c/></dev></db>"));
    EXPECT_EQ(root, parser->GetRootNode());
    DBNode* device = root->GetFirstChild();
    ASSERT_NE(end, device);
    EXPECT_EQ(device, root->GetFirstChild());
    DBNode* a = device->GetFirstChild();
    DBNode* b = a->GetNextSibling();
    DBNode* c = b->GetNextSibling();
    EXPECT_STREQ("a", a->GetName());
    EXPECT_STREQ("b", b->GetName());
    EXPECT_STREQ("c", c->GetName());
    EXPECT_EQ(a, parser->GetRootNode()->GetFirstChild()->GetFirstChild());
    EXPECT_EQ(b, device->GetFirstChild()->GetNextSibling());
    EXPECT_EQ(end, c->GetNextSibling());
    EXPECT_EQ(end, c->GetFirstChild());
    EXPECT_EQ(end, root->GetNextSibling());
}

TEST_F(Reader, AttributesFollowTheElementAndTheDocumentAskedFor)
{
    DBNode* root = LoadPath(dir.write(
        "one.xml", "<db><dev ID=\"one\" value=\"1\" Id=\"later\"><r id=\"r1\" ADDRESS=\"0x10\" page=\"\"/></dev></db>"));
    DBNode* device = root->GetFirstChild();
    DBNode* reg = device->GetFirstChild();
    // Lookups alternate between elements; the first of case-variant names wins.
    EXPECT_STREQ("one", device->GetAttribute("id"));
    EXPECT_STREQ("0x10", reg->GetAttribute("address"));
    EXPECT_STREQ("1", device->GetAttribute("VALUE"));
    EXPECT_STREQ("r1", reg->GetAttribute("Id"));
    EXPECT_STREQ("", reg->GetAttribute("page"));
    EXPECT_EQ(nullptr, root->GetAttribute("id"));
    EXPECT_EQ(nullptr, end->GetAttribute("id"));
    EXPECT_EQ(nullptr, device->GetAttribute("page"));

    // A new document may place its elements where the old one had them.
    root = LoadPath(dir.write("two.xml", "<db><dev value=\"2\" ID=\"two\"><r id=\"r2\"/></dev></db>"));
    device = root->GetFirstChild();
    EXPECT_STREQ("two", device->GetAttribute("id"));
    EXPECT_STREQ("r2", device->GetFirstChild()->GetAttribute("id"));
    parser->ReleaseDocument();
    EXPECT_EQ(end, parser->GetRootNode());
}

TEST(ProcInfo, IsTheFirstSourceByNameOrIdAndLinksThoseBeforeIt)
{
    CDeviceIdentifierImpl devId;
    DeviceIdentifierTestAccess model{devId};
    model.AddModule("ETM");
    CSourceInfoImpl* a = model.AddSource("X", "coreA", {"ETM"});
    CSourceInfoImpl* b = model.AddSource("Y", "X", {"ETM"});
    CSourceInfoImpl* c = model.AddSource("Z", "Y", {"ETM"});
    model.MarkLoaded();

    EXPECT_EQ(b, devId.GetProcInfo("Y")) << "b's ID comes before c's name";
    EXPECT_TRUE(a->IsNormalized());
    EXPECT_FALSE(c->IsNormalized());
    EXPECT_EQ(a, devId.GetProcInfo("X")) << "a's ID comes before b's name";
    EXPECT_EQ(c, devId.GetProcInfo("Z"));
    EXPECT_EQ(1u, c->GetComponents().size());

    CSourceInfoImpl* late = model.AddSource("L", "coreL");
    EXPECT_EQ(nullptr, devId.GetProcInfo("nothing"));
    EXPECT_TRUE(late->IsNormalized()) << "a search that finds nothing links every source";
    EXPECT_EQ(late, devId.GetProcInfo("coreL")) << "sources added after a query are found";
}

TEST(Logger, LevelPrefixIsWhatItsPrintfFormWouldWrite)
{
    devid_test::TempDir dir;
    uLogger logger(dir.file("log.txt").c_str(), false);
    for (unsigned level = 1; level < 32; ++level) {
        for (int size = 1; size <= 8; ++size) {
            char mine[16];
            char reference[16];
            std::memset(mine, '#', sizeof mine);
            std::memset(reference, '#', sizeof reference);
            const int length = std::snprintf(reference, static_cast<size_t>(size), "%c%c%c%c%c ",
                                             (level & 1) ? 'M' : ' ', (level & 2) ? 'W' : ' ', (level & 4) ? 'F' : ' ',
                                             (level & 8) ? 'A' : ' ', (level & 16) ? 'E' : ' ');
            EXPECT_EQ(length < size ? length : size - 1, logger.SprintfLevel(level, mine, size));
            EXPECT_EQ(0, std::memcmp(mine, reference, sizeof mine)) << "level " << level << ", size " << size;
        }
    }
    char untouched[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(4, logger.SprintfLevel(0, untouched, 4));
    EXPECT_EQ('#', untouched[0]);
}

TEST(Logger, StampFollowsTheFormatAskedForAndTheRoomLeft)
{
    devid_test::TempDir dir;
    uLogger logger(dir.file("log.txt").c_str(), false);
    auto stamp = [&](uLogger::TIME_DATE format, int size) {
        char buffer[64];
        std::strcpy(buffer, "pre ");
        const int length = logger.SprintfCurrentTime(buffer, size, format);
        EXPECT_EQ(static_cast<int>(std::strlen(buffer)), length);
        return std::string(buffer);
    };
    // "HH:MM:SS:mmm | " with digits where the shape has '9'.
    auto shaped = [](const std::string& text, const std::string& shape) {
        if (text.size() != shape.size())
            return false;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (shape[i] == '9' ? !std::isdigit(static_cast<unsigned char>(text[i])) : text[i] != shape[i])
                return false;
        }
        return true;
    };
    // Formats switch within one second: each call must still use its own.
    EXPECT_EQ("pre  ", stamp(uLogger::TD_NONE, 64));
    EXPECT_TRUE(shaped(stamp(uLogger::TD_TIME, 64), "pre 99:99:99:999 | "));
    EXPECT_EQ("pre  ", stamp(uLogger::TD_NONE, 64));
    EXPECT_TRUE(shaped(stamp(uLogger::TD_DATE, 64), "pre 99/99/99 | "));
    EXPECT_TRUE(shaped(stamp(uLogger::TD_DATE_TIME, 64), "pre 99/99/99 99:99:99:999 | "));
    EXPECT_TRUE(shaped(stamp(uLogger::TD_TIME, 10), "pre 99:99"));
    EXPECT_EQ("pre ", stamp(uLogger::TD_TIME, 5));

    char full[8];
    std::memset(full, 'x', sizeof full);
    EXPECT_EQ(7, logger.SprintfCurrentTime(full, sizeof full, uLogger::TD_TIME));
    EXPECT_EQ('\0', full[7]);
}

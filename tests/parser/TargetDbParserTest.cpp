#include "devid/model/TargetDbParser.h"

#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

using Mora::Lux::Trace::CreateParserCPPFn;
using Mora::Lux::Trace::DBNode;
using Mora::Lux::Trace::DestroyParserCPPPFn;
using Mora::Lux::Trace::TargetDbParser;

namespace {

const char* const kDatabase = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- leading comment -->
<DataBase Version="3">
  text before the device
  <!-- a comment between elements -->
  <Device ID="alpha" Value="0x1234" mask='0xFFFF' empty="" escaped="a &amp; b">
    <?tool hint?>
    <module name="m1"/>
    text between
    <Module name="m2"><register name="r"/></Module>
    <![CDATA[ not a node ]]>
    <module name="m3">tail text</module>
  </Device>
</DataBase>
<!-- trailing comment -->
)";

class TargetDbParserTest : public ::testing::Test {
protected:
    // By the short name first, as the device identifier loads it through its run path. The
    // sanitizer runtime intercepts dlopen and so hides the test's own run path; then the
    // library is taken from the build folder.
    void SetUp() override
    {
        m_library = dlopen("libmora_targetdb_parser.so", RTLD_NOW | RTLD_LOCAL);
        if (!m_library)
            m_library = dlopen(DEVID_BUILD_DIR "/lib/libmora_targetdb_parser.so", RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(nullptr, m_library) << dlerror();
        auto create = reinterpret_cast<CreateParserCPPFn>(dlsym(m_library, "CreateParserCPP"));
        m_destroy = reinterpret_cast<DestroyParserCPPPFn>(dlsym(m_library, "DestroyParserCPPP"));
        ASSERT_TRUE(create && m_destroy);
        parser = create();
        ASSERT_NE(nullptr, parser);
        end = parser->GetEndNode();
    }

    void TearDown() override
    {
        if (m_destroy)
            m_destroy(parser);
        if (m_library)
            dlclose(m_library);
    }

    std::vector<std::string> ChildNames(DBNode* node)
    {
        std::vector<std::string> names;
        for (DBNode* child = node->GetFirstChild(); child != end; child = child->GetNextSibling())
            names.emplace_back(child->GetName());
        return names;
    }

    devid_test::TempDir dir;
    TargetDbParser* parser = nullptr;
    DBNode* end = nullptr;

private:
    void* m_library = nullptr;
    DestroyParserCPPPFn m_destroy = nullptr;
};

TEST_F(TargetDbParserTest, WalksElementsOnlyAndFindsAttributesInAnyCase)
{
    ASSERT_NE(nullptr, end);
    EXPECT_EQ(end, parser->GetRootNode());
    ASSERT_EQ(0, parser->ParseFile(dir.write("db.xml", kDatabase).c_str(), 1));

    DBNode* root = parser->GetRootNode();
    EXPECT_STREQ("DataBase", root->GetName());
    EXPECT_EQ(end, root->GetNextSibling());
    EXPECT_EQ(std::vector<std::string>{"Device"}, ChildNames(root));
    DBNode* device = root->GetFirstChild();
    EXPECT_EQ((std::vector<std::string>{"module", "Module", "module"}), ChildNames(device));
    DBNode* m2 = device->GetFirstChild()->GetNextSibling();
    EXPECT_EQ(std::vector<std::string>{"register"}, ChildNames(m2));
    EXPECT_EQ(end, m2->GetFirstChild()->GetFirstChild());
    EXPECT_EQ(end, m2->GetNextSibling()->GetFirstChild());
    EXPECT_EQ(end, end->GetNextSibling()) << "the end node leads only to itself";
    EXPECT_EQ(nullptr, end->GetAttribute("name"));

    EXPECT_STREQ("alpha", device->GetAttribute("id"));
    EXPECT_STREQ("0xFFFF", device->GetAttribute("Mask"));
    EXPECT_STREQ("", device->GetAttribute("empty"));
    EXPECT_STREQ("a & b", device->GetAttribute("escaped"));
    EXPECT_EQ(nullptr, device->GetAttribute("valu"));
    EXPECT_EQ(nullptr, device->GetAttribute("values"));
}

TEST_F(TargetDbParserTest, RunsOfSiblingsAroundTheBlockSizes)
{
    // Children are made in runs side by side; runs fill blocks of 64 nodes and up
    // to 8192, and a larger run gets a block of its own.
    const std::vector<std::size_t> counts{63, 64, 65, 1, 8192, 8193, 2};
    std::string xml = "<db>";
    for (std::size_t count : counts) {
        xml += "<p>";
        for (std::size_t i = 0; i < count; ++i)
            xml += "<c i='" + std::to_string(i) + "'/><!-- skipped -->";
        xml += "</p>";
    }
    ASSERT_EQ(0, parser->ParseFile(dir.write("runs.xml", xml + "</db>").c_str(), 1));
    std::vector<DBNode*> lasts;
    for (int pass = 0; pass < 2; ++pass) {
        std::size_t index = 0;
        for (DBNode* p = parser->GetRootNode()->GetFirstChild(); p != end; p = p->GetNextSibling(), ++index) {
            ASSERT_LT(index, counts.size());
            std::size_t seen = 0;
            DBNode* last = nullptr;
            for (DBNode* c = p->GetFirstChild(); c != end; c = c->GetNextSibling())
                last = c, ++seen;
            EXPECT_EQ(counts[index], seen);
            EXPECT_STREQ(std::to_string(counts[index] - 1).c_str(), last->GetAttribute("I"));
            // The second pass finds the nodes of the first: later runs moved nothing.
            if (pass == 0)
                lasts.push_back(last);
            else
                EXPECT_EQ(lasts[index], last);
        }
        EXPECT_EQ(counts.size(), index);
    }
}

TEST_F(TargetDbParserTest, SecondFileReplacesTheFirst)
{
    ASSERT_EQ(0, parser->ParseFile(dir.write("a.xml", "<first><child/></first>").c_str(), 1));
    ASSERT_EQ(0, parser->ParseFile(dir.write("b.xml", "<second a='1'/>").c_str(), 0));
    EXPECT_STREQ("second", parser->GetRootNode()->GetName());
    EXPECT_EQ(end, parser->GetRootNode()->GetFirstChild());
    // A failed load leaves nothing loaded, not the earlier document.
    EXPECT_EQ(-1, parser->ParseFile(dir.file("missing.xml").c_str(), 1));
    EXPECT_EQ(end, parser->GetRootNode());
}

TEST_F(TargetDbParserTest, RefusesFilesThatCannotBeLoaded)
{
    for (const char* content : {"<a><b></a>", "<a x=\"1\">", "", "<!-- nothing -->", "<a/><b/>", "<a x=1/>"}) {
        EXPECT_EQ(-1, parser->ParseFile(dir.write("broken.xml", content).c_str(), 1)) << content;
        EXPECT_EQ(end, parser->GetRootNode()) << content;
    }
    EXPECT_EQ(-1, parser->ParseFile(dir.path().c_str(), 1));
    EXPECT_EQ(-1, parser->ParseFile(nullptr, 1));
    const std::string locked = dir.write("locked.xml", "<a/>");
    ASSERT_EQ(0, chmod(locked.c_str(), 0));
    EXPECT_EQ(geteuid() == 0 ? 0 : -1, parser->ParseFile(locked.c_str(), 1)) << "root reads any file";
}

} // namespace

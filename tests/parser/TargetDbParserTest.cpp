#include "devid/model/TargetDbParser.h"

#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <string>
#include <vector>

using Mora::Lux::Trace::CreateParserCPPFn;
using Mora::Lux::Trace::DBNode;
using Mora::Lux::Trace::DestroyParserCPPPFn;
using Mora::Lux::Trace::TargetDbParser;

namespace {

// By the short name first, as the device identifier loads it through its run path. The
// sanitizer runtime intercepts dlopen and so hides the test's own run path; then the
// library is taken from the build folder.
void* OpenParserLibrary()
{
    if (void* library = dlopen("libmora_targetdb_parser.so", RTLD_NOW | RTLD_LOCAL))
        return library;
    return dlopen(DEVID_BUILD_DIR "/lib/libmora_targetdb_parser.so", RTLD_NOW | RTLD_LOCAL);
}

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
    void SetUp() override
    {
        m_library = OpenParserLibrary();
        ASSERT_NE(nullptr, m_library) << dlerror();
        auto create = reinterpret_cast<CreateParserCPPFn>(dlsym(m_library, "CreateParserCPP"));
        m_destroy = reinterpret_cast<DestroyParserCPPPFn>(dlsym(m_library, "DestroyParserCPPP"));
        ASSERT_NE(nullptr, create);
        ASSERT_NE(nullptr, m_destroy);
        parser = create();
        ASSERT_NE(nullptr, parser);
        end = parser->GetEndNode();
    }

    void TearDown() override
    {
        if (m_destroy) {
            m_destroy(parser);
            m_destroy(nullptr);
        }
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

TEST_F(TargetDbParserTest, WalksElementsOnly)
{
    ASSERT_NE(nullptr, end);
    EXPECT_EQ(end, parser->GetRootNode());
    ASSERT_EQ(0, parser->ParseFile(dir.write("db.xml", kDatabase).c_str(), 1));

    DBNode* root = parser->GetRootNode();
    ASSERT_NE(end, root);
    EXPECT_STREQ("DataBase", root->GetName());
    EXPECT_EQ(end, root->GetNextSibling());
    EXPECT_EQ(std::vector<std::string>{"Device"}, ChildNames(root));

    DBNode* device = root->GetFirstChild();
    EXPECT_EQ((std::vector<std::string>{"module", "Module", "module"}), ChildNames(device));
    DBNode* m2 = device->GetFirstChild()->GetNextSibling();
    EXPECT_EQ(std::vector<std::string>{"register"}, ChildNames(m2));
    EXPECT_EQ(end, m2->GetFirstChild()->GetFirstChild());
    EXPECT_EQ(end, m2->GetNextSibling()->GetFirstChild());
    EXPECT_EQ(end, m2->GetNextSibling()->GetNextSibling());

    // The end node is inert and leads only to itself.
    EXPECT_EQ(nullptr, end->GetName());
    EXPECT_EQ(nullptr, end->GetAttribute("name"));
    EXPECT_EQ(end, end->GetFirstChild());
    EXPECT_EQ(end, end->GetNextSibling());
    EXPECT_EQ(end, parser->GetEndNode());
}

TEST_F(TargetDbParserTest, FindsAttributesInAnyCase)
{
    ASSERT_EQ(0, parser->ParseFile(dir.write("db.xml", kDatabase).c_str(), 1));
    DBNode* device = parser->GetRootNode()->GetFirstChild();
    EXPECT_STREQ("alpha", device->GetAttribute("id"));
    EXPECT_STREQ("0x1234", device->GetAttribute("VALUE"));
    EXPECT_STREQ("0xFFFF", device->GetAttribute("Mask"));
    EXPECT_STREQ("", device->GetAttribute("empty"));
    EXPECT_STREQ("a & b", device->GetAttribute("escaped"));
    EXPECT_EQ(nullptr, device->GetAttribute("valu"));
    EXPECT_EQ(nullptr, device->GetAttribute("values"));
    EXPECT_EQ(nullptr, device->GetAttribute(nullptr));
}

TEST_F(TargetDbParserTest, KeepsOneNodePerElementUntilRelease)
{
    std::string xml = "<root>";
    for (int i = 0; i < 500; ++i)
        xml += "<item n=\"" + std::to_string(i) + "\"/>";
    xml += "</root>";
    ASSERT_EQ(0, parser->ParseFile(dir.write("many.xml", xml).c_str(), 1));

    DBNode* root = parser->GetRootNode();
    EXPECT_EQ(root, parser->GetRootNode());
    std::vector<DBNode*> items;
    std::vector<const char*> values;
    for (DBNode* item = root->GetFirstChild(); item != end; item = item->GetNextSibling()) {
        items.push_back(item);
        values.push_back(item->GetAttribute("N"));
    }
    ASSERT_EQ(500u, items.size());
    EXPECT_EQ(500u, std::set<DBNode*>(items.begin(), items.end()).size());
    // A second walk hands out the same objects, and earlier strings are still intact.
    DBNode* item = root->GetFirstChild();
    for (size_t i = 0; i < items.size(); ++i, item = item->GetNextSibling()) {
        ASSERT_EQ(items[i], item);
        EXPECT_EQ(std::to_string(i), values[i]);
    }

    parser->ReleaseDocument();
    EXPECT_EQ(end, parser->GetRootNode());
    parser->ReleaseDocument();
}

TEST_F(TargetDbParserTest, SecondFileReplacesTheFirst)
{
    ASSERT_EQ(0, parser->ParseFile(dir.write("a.xml", "<first><child/></first>").c_str(), 1));
    parser->GetRootNode()->GetFirstChild();
    ASSERT_EQ(0, parser->ParseFile(dir.write("b.xml", "<second a='1'/>").c_str(), 0));
    DBNode* root = parser->GetRootNode();
    EXPECT_STREQ("second", root->GetName());
    EXPECT_EQ(end, root->GetFirstChild());

    // A failed load leaves nothing loaded, not the earlier document.
    EXPECT_EQ(-1, parser->ParseFile(dir.file("missing.xml").c_str(), 1));
    EXPECT_EQ(end, parser->GetRootNode());
}

TEST_F(TargetDbParserTest, RefusesFilesThatCannotBeLoaded)
{
    const std::vector<std::pair<const char*, std::string>> broken = {
        {"unclosed.xml", "<a><b></a>"},
        {"truncated.xml", "<a x=\"1\">"},
        {"empty.xml", ""},
        {"comment-only.xml", "<!-- nothing -->"},
        {"two-roots.xml", "<a/><b/>"},
        {"bad-attribute.xml", "<a x=1/>"},
    };
    for (const auto& [name, content] : broken) {
        EXPECT_EQ(-1, parser->ParseFile(dir.write(name, content).c_str(), 1)) << name;
        EXPECT_EQ(end, parser->GetRootNode()) << name;
    }
    EXPECT_EQ(-1, parser->ParseFile(dir.file("missing.xml").c_str(), 1));
    EXPECT_EQ(-1, parser->ParseFile(dir.path().c_str(), 1));
    EXPECT_EQ(-1, parser->ParseFile(nullptr, 1));
    EXPECT_EQ(0, parser->ParseFile(dir.write("ok.xml", "<a/>").c_str(), 1));
}

TEST_F(TargetDbParserTest, RefusesAnUnreadableFile)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads any file";
    const std::string path = dir.write("locked.xml", "<a/>");
    ASSERT_EQ(0, chmod(path.c_str(), 0));
    EXPECT_EQ(-1, parser->ParseFile(path.c_str(), 1));
}

} // namespace

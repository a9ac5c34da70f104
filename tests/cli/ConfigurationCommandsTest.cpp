// Saving and loading a session through the tool, and the TDF commands.
#include "tests/cli/ToolRunner.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace devid_test {
namespace {

std::vector<std::string> ChainNames(const Json& doc)
{
    std::vector<std::string> names;
    for (const Json& device : doc["chain"].items)
        names.push_back(device["name"].text + "<" + device["parent"].text + ">" + device["type"].text);
    return names;
}

// A TDF file with a section written byte by byte, independent of the library.
std::string TdfBytes(const std::vector<std::pair<std::string, std::string>>& sections, uint32_t version = 1)
{
    const auto word = [](uint32_t value) {
        std::string bytes;
        for (int i = 0; i < 4; ++i)
            bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
        return bytes;
    };
    std::string file = "TDF2";
    for (const auto& [name, data] : sections)
        file += word(static_cast<uint32_t>(12 + name.size() + data.size())) + word(version) +
                word(static_cast<uint32_t>(name.size())) + name + data;
    return file;
}

TEST(ConfigurationCommands, DcmRoundTripGivesTheSameChainOffline)
{
    ToolRunner tool;
    const ToolResult live = tool.RunOnExample({"identify", "--json"});
    ASSERT_EQ(live.status, 0) << live.err;

    const ToolResult saved = tool.RunOnExample({"save", "run1", "--json"});
    ASSERT_EQ(saved.status, 0) << saved.err;
    const Json savedDoc = saved.json();
    const std::string dim = tool.home() + "/.MORA-trace/run1.dim";
    EXPECT_EQ(savedDoc["path"].text, dim);
    EXPECT_EQ(savedDoc["format"].text, "dcm");
    EXPECT_EQ(readFile(dim), savedDoc["text"].text);
    EXPECT_EQ(savedDoc["text"].text.rfind("EMU=kmr770u\nPORT=0x240\nDEVICEID=0x2b8e402f,", 0), 0u);

    // The sub-command form and the option form load the same way; the name
    // is found in the trace logging folder.
    for (const std::vector<std::string>& args : {std::vector<std::string>{"load", "run1.dim", "identify", "--json"},
                                                  {"--load", "run1.dim", "identify", "--json"},
                                                  {"load", "run1", "--json"}}) {
        const ToolResult offline = tool.RunOnExample(args);
        ASSERT_EQ(offline.status, 0) << offline.err;
        const Json doc = offline.json();
        EXPECT_EQ(doc["configuration"]["path"].text, dim);
        EXPECT_EQ(ChainNames(doc), ChainNames(live.json()));
        // Offline, the description is the one matching the first saved ID.
        ASSERT_GE(doc["descriptions"].size(), 1u);
        EXPECT_EQ(doc["descriptions"][0]["file"].text, ToolRunner::ExampleDb() + "/device_kestrel.xml");
    }

    const ToolResult procs = tool.RunOnExample({"load", dim, "procs", "--json"});
    ASSERT_EQ(procs.status, 0) << procs.err;
    EXPECT_EQ(procs.json()["sources"][0]["id"].text, "talon0");
    const ToolResult settings = tool.RunOnExample({"load", dim, "settings", "TALON_1"});
    ASSERT_EQ(settings.status, 0) << settings.err;
    EXPECT_NE(settings.out.find("trace_talon1.tdf"), std::string::npos);
}

TEST(ConfigurationCommands, OfflineWithoutAMatchingDescriptionIsNoDevice)
{
    ToolRunner tool;
    const std::string dim = tool.scratch().write(
        "alien.dim", "EMU=kmr770\nPORT=0x0\nDEVICEID=0x12345678\nDEVINFO=0x1$CPU$CPU~\nOUTFILES=\nTRACEID=\n");
    const ToolResult result = tool.RunOnExample({"load", dim, "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.json()["error"]["code"].text, "no-device");
    EXPECT_EQ(tool.RunOnExample({"load", dim, "procs"}).status, 1);
}

TEST(ConfigurationCommands, TdfSaveListCatAndLoad)
{
    ToolRunner tool;
    const std::string tdf = tool.scratch().file("trace.tdf");
    const ToolResult first = tool.RunOnExample({"save", tdf, "--tdf", "--json"});
    ASSERT_EQ(first.status, 0) << first.err;
    const Json firstDoc = first.json();
    EXPECT_EQ(firstDoc["section"]["offset"].number, 4);
    EXPECT_FALSE(firstDoc["section"]["shadowed"].boolean);

    const ToolResult ls = tool.Run({"tdf", "ls", tdf, "--json"});
    ASSERT_EQ(ls.status, 0) << ls.err;
    const Json listing = ls.json();
    const Json& sections = listing["sections"];
    ASSERT_EQ(sections.size(), 1u);
    EXPECT_EQ(sections[0]["name"].text, "DEVID");
    EXPECT_EQ(sections[0]["version"].number, 1);
    EXPECT_EQ(sections[0]["dataOffset"].number, 4 + 12 + 5);
    EXPECT_EQ(sections[0]["dataLength"].number, static_cast<double>(firstDoc["text"].text.size()));

    const ToolResult cat = tool.Run({"tdf", "cat", tdf, "DEVID", "1"});
    ASSERT_EQ(cat.status, 0) << cat.err;
    EXPECT_EQ(cat.out, firstDoc["text"].text);

    const ToolResult routes = tool.RunOnExample({"load", tdf, "routes", "--json"});
    ASSERT_EQ(routes.status, 0) << routes.err;
    const Json routesDoc = routes.json();
    EXPECT_EQ(routesDoc["configuration"]["kind"].text, "tdf");
    EXPECT_GT(routesDoc["routes"].size(), 0u);

    // A second save appends behind the first, which readers keep finding first.
    const ToolResult second = tool.RunOnExample({"save", tdf, "--tdf", "--json"});
    ASSERT_EQ(second.status, 0) << second.err;
    const Json secondDoc = second.json();
    EXPECT_TRUE(secondDoc["section"]["shadowed"].boolean);
    EXPECT_EQ(secondDoc["section"]["offset"].number, sections[0]["length"].number + 4);
}

TEST(ConfigurationCommands, TdfListingStopsAtADamagedSection)
{
    ToolRunner tool;
    std::string bytes = TdfBytes({{"ALPHA", "abc"}, {"BETA", "0123456789"}});
    bytes.resize(bytes.size() - 4);
    const std::string tdf = tool.scratch().write("cut.tdf", bytes);

    const ToolResult ls = tool.Run({"tdf", "ls", tdf, "--json"});
    EXPECT_EQ(ls.status, 4);
    const Json doc = ls.json();
    ASSERT_EQ(doc["sections"].size(), 1u);
    EXPECT_EQ(doc["sections"][0]["name"].text, "ALPHA");
    EXPECT_EQ(doc["error"]["code"].text, "file");
    EXPECT_NE(doc["error"]["message"].text.find("offset 24"), std::string::npos);

    const ToolResult cat = tool.Run({"tdf", "cat", tool.scratch().write("ok.tdf", TdfBytes({{"ALPHA", "abc"}}, 7)),
                                     "ALPHA", "7"});
    EXPECT_EQ(cat.status, 0);
    EXPECT_EQ(cat.out, "abc");
}

TEST(ConfigurationCommands, FileProblemsExitFour)
{
    ToolRunner tool;
    const std::string notTdf = tool.scratch().write("plain.tdf", "hello");
    const std::string noDevid = tool.scratch().write("other.tdf", TdfBytes({{"OTHER", "x"}}));
    const std::string text = tool.scratch().write("notes.txt", "just some text\n");
    const std::vector<std::vector<std::string>> cases{
        {"load", "nothere.dim"},
        {"load", text},
        {"load", notTdf},
        {"load", noDevid},
        {"tdf", "ls", notTdf},
        {"tdf", "ls", text},
        {"tdf", "ls", tool.scratch().file("missing.tdf")},
        {"tdf", "cat", noDevid, "DEVID", "1"},
        {"tdf", "cat", noDevid, "other", "1"},
        {"save", notTdf, "--tdf"},
        {"save", tool.scratch().file("trace.bin"), "--tdf"},
    };
    for (const auto& args : cases) {
        const ToolResult result = args.front() == "tdf" ? tool.Run(args) : tool.RunOnExample(args);
        EXPECT_EQ(result.status, 4) << args[0] << " " << args[1] << ": " << result.err;
        EXPECT_NE(result.err.find("devid: error:"), std::string::npos);
    }
    // Saving did not damage what was there.
    EXPECT_EQ(readFile(notTdf), "hello");
    EXPECT_EQ(tool.Run({"save", "a/b"}).status, 2);
}

} // namespace
} // namespace devid_test

// Saving and loading a session through the tool, and the TDF commands.
#include "tests/cli/ToolRunner.h"

#include <cstdint>

namespace devid_test {
namespace {

std::vector<std::string> ChainNames(const Json& doc)
{
    std::vector<std::string> names;
    for (const Json& device : doc.at("chain"))
        names.push_back(Text(device.at("name")) + "<" + Text(device.at("parent")) + ">" + Text(device.at("type")));
    return names;
}

// A TDF file written byte by byte, independent of the library.
std::string TdfBytes(const std::vector<std::pair<std::string, std::string>>& sections, uint32_t version = 1)
{
    const auto word = [](uint32_t value) {
        return std::string{static_cast<char>(value & 0xFF), static_cast<char>((value >> 8) & 0xFF),
                           static_cast<char>((value >> 16) & 0xFF), static_cast<char>(value >> 24)};
    };
    std::string file = "TDF2";
    for (const auto& [name, data] : sections)
        file += word(static_cast<uint32_t>(12 + name.size() + data.size())) + word(version) +
                word(static_cast<uint32_t>(name.size())) + name + data;
    return file;
}

TEST(ConfigurationCommands, DimRoundTripGivesTheSameChainOffline)
{
    ToolRunner tool;
    const Json live = tool.JsonOf({"identify"});
    const Json saved = tool.JsonOf({"save", "run1"});
    const std::string dim = tool.home() + "/.MORA-trace/run1.dim";
    EXPECT_EQ(Text(saved.at("path")), dim);
    EXPECT_EQ(readFile(dim), Text(saved.at("text")));
    EXPECT_EQ(Text(saved.at("text")).rfind("EMU=kmr770u\nPORT=0x240\nDEVICEID=0x2b8e402f,", 0), 0u);

    // The name alone is found in the trace logging folder, in either form of load.
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"load", "run1.dim", "identify"}, {"--load", "run1", "identify"}}) {
        const Json offline = tool.JsonOf(args);
        EXPECT_EQ(Text(offline.at("configuration").at("path")), dim);
        EXPECT_EQ(ChainNames(offline), ChainNames(live));
        ASSERT_GE(offline.at("descriptions").size(), 1u);
        EXPECT_EQ(Text(offline.at("descriptions").at(0).at("file")), kExampleDb + "/device_kestrel.xml");
    }
    EXPECT_NE(tool.RunOnExample({"load", "run1", "settings", "TALON_1"}).out.find("trace_talon1.tdf"), std::string::npos);

    const std::string alien = tool.scratch.write(
        "alien.dim", "EMU=kmr770\nPORT=0x0\nDEVICEID=0x12345678\nDEVINFO=0x1$CPU$CPU~\nOUTFILES=\nTRACEID=\n");
    EXPECT_EQ(tool.JsonOf({"load", alien}, 1).at("error").at("code"), "no-device");
}

TEST(ConfigurationCommands, TdfSaveListCatAndLoad)
{
    ToolRunner tool;
    const std::string tdf = tool.scratch.file("trace.tdf");
    const Json first = tool.JsonOf({"save", tdf, "--tdf"});
    EXPECT_EQ(first.at("section").at("offset"), 4);
    EXPECT_FALSE(first.at("section").at("shadowed").get<bool>());

    const Json listing = tool.JsonOf({"tdf", "ls", tdf}, 0, false);
    ASSERT_EQ(listing.at("sections").size(), 1u);
    const Json& section = listing.at("sections").at(0);
    EXPECT_EQ(section.at("name"), "DEVID");
    EXPECT_EQ(section.at("dataOffset"), 4 + 12 + 5);
    const ToolResult ls = tool.Run({"tdf", "ls", tdf});
    EXPECT_NE(ls.out.find("DEVID  1        4       " + std::to_string(12 + 5 + Text(first.at("text")).size())),
              std::string::npos) << ls.out;

    const ToolResult cat = tool.Run({"tdf", "cat", tdf, "DEVID", "1"});
    ASSERT_EQ(cat.status, 0) << cat.err;
    EXPECT_EQ(cat.out, Text(first.at("text")));

    const Json routes = tool.JsonOf({"load", tdf, "routes"});
    EXPECT_EQ(routes.at("configuration").at("kind"), "tdf");
    EXPECT_GE(routes.at("routes").size(), 7u) << "one description per saved ID, so routes may repeat";

    // A second save appends behind the first, which readers keep finding first.
    const Json second = tool.JsonOf({"save", tdf, "--tdf"});
    EXPECT_TRUE(second.at("section").at("shadowed").get<bool>());
    EXPECT_EQ(second.at("section").at("offset"), section.at("length").get<int>() + 4);

    const std::string other = tool.scratch.write("other.tdf", TdfBytes({{"ALPHA", "abc"}}, 7));
    EXPECT_EQ(tool.Run({"tdf", "cat", other, "ALPHA", "7"}).out, "abc");

    // Section names are raw bytes: bytes that are not UTF-8 come out as U+FFFD.
    const std::string odd = tool.scratch.write("odd.tdf", TdfBytes({{"A\xff\"\n", "x"}}));
    EXPECT_EQ(tool.JsonOf({"tdf", "ls", odd}, 0, false).at("sections").at(0).at("name"), "A\xef\xbf\xbd\"\n");
}

TEST(ConfigurationCommands, FileProblemsExitFour)
{
    ToolRunner tool;
    std::string cutBytes = TdfBytes({{"ALPHA", "abc"}, {"BETA", "0123456789"}});
    cutBytes.resize(cutBytes.size() - 4);
    const std::string cut = tool.scratch.write("cut.tdf", cutBytes);
    const Json listing = tool.JsonOf({"tdf", "ls", cut}, 4, false);
    ASSERT_EQ(listing.at("sections").size(), 1u) << "the listing stops at the damaged section";
    EXPECT_EQ(listing.at("sections").at(0).at("name"), "ALPHA");
    EXPECT_EQ(listing.at("error").at("code"), "file");
    EXPECT_NE(Text(listing.at("error").at("message")).find("offset 24"), std::string::npos);

    const std::string notTdf = tool.scratch.write("plain.tdf", "hello");
    const std::string noDevid = tool.scratch.write("other.tdf", TdfBytes({{"OTHER", "x"}}));
    const std::string text = tool.scratch.write("notes.txt", "just some text\n");
    const std::vector<std::vector<std::string>> cases{
        {"load", text},          {"load", notTdf},           {"load", noDevid},
        {"tdf", "ls", notTdf},   {"tdf", "ls", "none.tdf"},  {"tdf", "cat", noDevid, "DEVID", "1"},
        {"save", notTdf, "--tdf"}, {"save", tool.scratch.file("trace.bin"), "--tdf"},
    };
    for (const auto& args : cases) {
        const ToolResult result = args.front() == "tdf" ? tool.Run(args) : tool.RunOnExample(args);
        EXPECT_EQ(result.status, 4) << args[0] << " " << args[1] << ": " << result.err;
        EXPECT_NE(result.err.find("devid: error:"), std::string::npos);
    }
    EXPECT_EQ(readFile(notTdf), "hello") << "a failed save leaves the file as it was";
}

} // namespace
} // namespace devid_test

// Every kept fuzz input, seeds and past findings alike, goes through the same
// entry function as under the fuzzer; a crash, leak or broken rule fails here.
#include "fuzz/entries/FuzzEntries.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace devid_fuzz {

// Test names show the target, not the bytes of the entry.
void PrintTo(const Entry& entry, std::ostream* out)
{
    *out << entry.name;
}

} // namespace devid_fuzz

namespace {

std::vector<std::string> CorpusFiles(const std::string& target)
{
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(std::string(DEVID_SOURCE_DIR) + "/fuzz/corpus/" + target, error))
        if (entry.is_regular_file())
            files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

class CorpusReplay : public ::testing::TestWithParam<devid_fuzz::Entry> {};

TEST_P(CorpusReplay, EveryKeptInputPasses)
{
    const devid_fuzz::Entry entry = GetParam();
    const std::vector<std::string> files = CorpusFiles(entry.name);
    ASSERT_FALSE(files.empty()) << "no corpus for " << entry.name;
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        const std::string bytes = devid_test::readFile(file);
        EXPECT_EQ(0, entry.function(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
    }
}

INSTANTIATE_TEST_SUITE_P(Fuzz, CorpusReplay,
                         ::testing::ValuesIn(devid_fuzz::kEntries, devid_fuzz::kEntries + devid_fuzz::kEntryCount),
                         [](const ::testing::TestParamInfo<devid_fuzz::Entry>& info) { return std::string(info.param.name); });

} // namespace

// Every kept fuzz input, seeds and past findings alike, goes through the same
// entry function as under the fuzzer; a crash, leak or broken rule fails here.
#include "fuzz/entries/FuzzEntries.h"
#include "tests/common/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

TEST(CorpusReplay, EveryKeptInputPasses)
{
    for (const devid_fuzz::Entry* entry = devid_fuzz::kEntries; entry != devid_fuzz::kEntries + devid_fuzz::kEntryCount; ++entry) {
        int files = 0;
        for (const auto& file : std::filesystem::directory_iterator(std::string(DEVID_SOURCE_DIR) + "/fuzz/corpus/" + entry->name)) {
            SCOPED_TRACE(file.path().string());
            const std::string bytes = devid_test::readFile(file.path().string());
            EXPECT_EQ(0, entry->function(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
            ++files;
        }
        EXPECT_GT(files, 0) << "no corpus for " << entry->name;
    }
}

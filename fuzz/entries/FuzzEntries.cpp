#include "fuzz/entries/FuzzEntries.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace devid_fuzz {

const Entry kEntries[] = {
    {"dcm_reader", DcmReader},
    {"tdf_container", TdfContainer},
    {"board_files", BoardFiles},
    {"device_database", DeviceDatabase},
    {"simboard_reader", SimBoardReader},
    {"device_tree", DeviceTree},
};
const size_t kEntryCount = sizeof kEntries / sizeof kEntries[0];

EntryFunction FindEntry(const char* name)
{
    for (const Entry& entry : kEntries) {
        if (std::strcmp(entry.name, name) == 0)
            return entry.function;
    }
    std::fprintf(stderr, "no fuzz entry named %s\n", name);
    std::abort();
}

} // namespace devid_fuzz

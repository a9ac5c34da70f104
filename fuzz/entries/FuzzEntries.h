// Entry functions that feed one input to one reader. The libFuzzer targets and
// the corpus replay test call the same functions, so every input the fuzzer
// ever found keeps being checked by the ordinary test suite.
#ifndef DEVID_FUZZ_FUZZENTRIES_H
#define DEVID_FUZZ_FUZZENTRIES_H

#include <cstddef>
#include <cstdint>

namespace devid_fuzz {

/// Reads the bytes as an input of one reader. Returns 0; a broken rule of the
/// reader's own aborts with a message, so the fuzzer and the tests see it.
using EntryFunction = int (*)(const uint8_t* data, size_t size);

struct Entry {
    /// Also the name of the fuzz target and of its corpus folder fuzz/corpus/<name>.
    const char* name;
    EntryFunction function;
};

int DcmReader(const uint8_t* data, size_t size);
int TdfContainer(const uint8_t* data, size_t size);
int BoardFiles(const uint8_t* data, size_t size);
int DeviceDatabase(const uint8_t* data, size_t size);
int SimBoardReader(const uint8_t* data, size_t size);
int DeviceTree(const uint8_t* data, size_t size);

/// Every entry, in a fixed order.
extern const Entry kEntries[];
extern const size_t kEntryCount;

/// The entry of that name; aborts when there is none.
EntryFunction FindEntry(const char* name);

} // namespace devid_fuzz

#endif

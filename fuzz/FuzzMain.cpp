// The libFuzzer target of one reader; DEVID_FUZZ_TARGET names its entry.
#include "fuzz/entries/FuzzEntries.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const devid_fuzz::EntryFunction entry = devid_fuzz::FindEntry(DEVID_FUZZ_TARGET);
    return entry(data, size);
}

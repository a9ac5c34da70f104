// Counts the heap bytes the whole process holds, libraries included, while a
// measurement window is open, and keeps their high-water mark.
#ifndef DEVID_BENCH_ALLOCATIONCOUNTER_H
#define DEVID_BENCH_ALLOCATIONCOUNTER_H

#include <cstdint>

namespace devid_bench {

/// Opens a window on construction and closes it on destruction. Windows do
/// not nest. Blocks allocated before the window and freed inside it lower
/// the count, so the peak is that of the work done inside.
class AllocationWindow {
public:
    AllocationWindow();
    ~AllocationWindow();
    AllocationWindow(const AllocationWindow&) = delete;
    AllocationWindow& operator=(const AllocationWindow&) = delete;

    /// Highest number of bytes held above the start of the window.
    int64_t PeakBytes() const;
    /// Bytes held now above the start of the window.
    int64_t CurrentBytes() const;
};

} // namespace devid_bench

#endif

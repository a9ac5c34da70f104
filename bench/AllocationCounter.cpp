// The process's malloc family is replaced here so that the loader, the parser
// library and pugixml are counted alike; each call goes on to glibc's own
// allocator. Counting is off outside a window, which keeps the other
// benchmarks' timings free of it.
#include "bench/AllocationCounter.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<bool> gCounting{false};
std::atomic<int64_t> gCurrent{0};
std::atomic<int64_t> gPeak{0};

void Added(void* block)
{
    if (block == nullptr || !gCounting.load(std::memory_order_relaxed))
        return;
    const int64_t size = static_cast<int64_t>(malloc_usable_size(block));
    const int64_t now = gCurrent.fetch_add(size, std::memory_order_relaxed) + size;
    int64_t peak = gPeak.load(std::memory_order_relaxed);
    while (now > peak && !gPeak.compare_exchange_weak(peak, now, std::memory_order_relaxed)) {
    }
}

void Removed(void* block)
{
    if (block != nullptr && gCounting.load(std::memory_order_relaxed))
        gCurrent.fetch_sub(static_cast<int64_t>(malloc_usable_size(block)), std::memory_order_relaxed);
}

} // namespace

extern "C" {

void* malloc(size_t size)
{
    void* block = __libc_malloc(size);
    Added(block);
    return block;
}

void* calloc(size_t count, size_t size)
{
    void* block = __libc_calloc(count, size);
    Added(block);
    return block;
}

void* realloc(void* block, size_t size)
{
    Removed(block);
    void* moved = __libc_realloc(block, size);
    // A failed realloc keeps the old block.
    Added(moved != nullptr || size == 0 ? moved : block);
    return moved;
}

void free(void* block)
{
    Removed(block);
    __libc_free(block);
}

void* memalign(size_t alignment, size_t size)
{
    void* block = __libc_memalign(alignment, size);
    Added(block);
    return block;
}

void* aligned_alloc(size_t alignment, size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void** out, size_t alignment, size_t size)
{
    if (alignment < sizeof(void*) || (alignment & (alignment - 1)) != 0)
        return EINVAL;
    void* block = memalign(alignment, size);
    if (block == nullptr)
        return ENOMEM;
    *out = block;
    return 0;
}

} // extern "C"

namespace devid_bench {

AllocationWindow::AllocationWindow()
{
    gCurrent.store(0, std::memory_order_relaxed);
    gPeak.store(0, std::memory_order_relaxed);
    gCounting.store(true, std::memory_order_relaxed);
}

AllocationWindow::~AllocationWindow()
{
    gCounting.store(false, std::memory_order_relaxed);
}

int64_t AllocationWindow::PeakBytes() const
{
    return gPeak.load(std::memory_order_relaxed);
}

int64_t AllocationWindow::CurrentBytes() const
{
    return gCurrent.load(std::memory_order_relaxed);
}

} // namespace devid_bench

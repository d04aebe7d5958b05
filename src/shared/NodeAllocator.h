#pragma once

#include <cstddef>

namespace plist_detail {

/// Memory for the small heap nodes of plist values. A file of a hundred
/// megabytes holds millions of them, made in one burst and freed in another;
/// the general allocator spends much of a read in bookkeeping for them.
///
/// Blocks up to `kLargest` bytes come in sizes of 16 bytes, each size with a
/// free list per thread, and are cut from 2 MB chunks that ask the system for
/// huge pages, so a big read takes a few page faults rather than hundreds of
/// thousands. A block freed on another thread than the one that made it joins
/// the freeing thread's list. Chunks are kept for reuse, never given back; a
/// thread that ends hands its free blocks to the next. Larger blocks come from
/// `operator new`. The caller states the size again when freeing.
class NodeAllocator
{
public:
    static constexpr std::size_t kLargest = 256;

    static void *allocate(std::size_t size);
    static void deallocate(void *block, std::size_t size) noexcept;
};

} // namespace plist_detail

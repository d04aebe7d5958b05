#pragma once

#include <cstddef>

namespace plist_detail {

/// Asks for huge pages in the untouched part of a big buffer about to be
/// filled (decoded data, a file being written): a hundred megabytes then
/// take fifty page faults rather than twenty-five thousand. Harmless on
/// small buffers, which it leaves alone.
void adviseHugePages(void *buffer, std::size_t bytes) noexcept;
void *allocateHugePageBytes(std::size_t bytes);
void freeHugePageBytes(void *p, std::size_t bytes) noexcept;

/// A standard allocator for big arrays that are read at random, such as the
/// key index of a dictionary with millions of entries. From 2 MB up it asks
/// the system for huge pages, so that each probe costs a cache miss but not
/// also a walk of the page tables; below that it is `operator new`.
template <typename T> class HugePageAllocator
{
public:
    using value_type = T;

    HugePageAllocator() noexcept = default;
    template <typename U> HugePageAllocator(const HugePageAllocator<U> &) noexcept {}

    T *allocate(std::size_t n) { return static_cast<T *>(allocateHugePageBytes(n * sizeof(T))); }
    void deallocate(T *p, std::size_t n) noexcept { freeHugePageBytes(p, n * sizeof(T)); }

    template <typename U> bool operator==(const HugePageAllocator<U> &) const noexcept
    {
        return true;
    }
};

} // namespace plist_detail

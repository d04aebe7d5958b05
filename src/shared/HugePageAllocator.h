#pragma once

#include "HugePages.h"

#include <cstddef>

namespace plist_detail {

/// A standard allocator for big arrays that are read at random, such as the
/// key index of a dictionary with millions of entries: from one huge page up
/// it takes its memory from HugePages.
template <typename T> class HugePageAllocator
{
public:
    using value_type = T;

    HugePageAllocator() noexcept = default;
    template <typename U> HugePageAllocator(const HugePageAllocator<U> &) noexcept {}

    T *allocate(std::size_t n) { return static_cast<T *>(HugePages::allocate(n * sizeof(T))); }
    void deallocate(T *p, std::size_t n) noexcept { HugePages::release(p, n * sizeof(T)); }

    template <typename U> bool operator==(const HugePageAllocator<U> &) const noexcept
    {
        return true;
    }
};

} // namespace plist_detail

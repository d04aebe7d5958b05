#include "HugePageAllocator.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <new>

namespace plist_detail {

namespace {

constexpr std::size_t kHugePage = std::size_t(2) << 20;

std::size_t roundedUp(std::size_t bytes)
{
    return (bytes + kHugePage - 1) / kHugePage * kHugePage;
}

} // namespace

void adviseHugePages(void *buffer, std::size_t bytes) noexcept
{
    const auto from = (reinterpret_cast<std::uintptr_t>(buffer) + kHugePage - 1) / kHugePage;
    const auto to = (reinterpret_cast<std::uintptr_t>(buffer) + bytes) / kHugePage;
    if (to > from)
        madvise(reinterpret_cast<void *>(from * kHugePage), (to - from) * kHugePage, MADV_HUGEPAGE);
}

void *allocateHugePageBytes(std::size_t bytes)
{
    if (bytes < kHugePage)
        return ::operator new(bytes);
    void *p = std::aligned_alloc(kHugePage, roundedUp(bytes));
    if (!p)
        throw std::bad_alloc();
    madvise(p, roundedUp(bytes), MADV_HUGEPAGE); // only a hint; small pages work too
    return p;
}

void freeHugePageBytes(void *p, std::size_t bytes) noexcept
{
    if (bytes < kHugePage)
        ::operator delete(p);
    else
        std::free(p);
}

} // namespace plist_detail

#include "HugePageAllocator.h"

#include <sys/mman.h>

#include <cstdint>
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

// Fresh pages straight from the system: memory the heap recycles has
// mostly been touched already, in small pages, and would stay that way.
void *allocateHugePageBytes(std::size_t bytes)
{
    if (bytes < kHugePage)
        return ::operator new(bytes);
    const std::size_t size = roundedUp(bytes);
    const std::size_t span = size + kHugePage; // room to align the start
    void *mapped = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        throw std::bad_alloc();
    const auto first = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t start = (first + kHugePage - 1) / kHugePage * kHugePage;
    if (start > first)
        munmap(mapped, start - first);
    if (first + span > start + size)
        munmap(reinterpret_cast<void *>(start + size), first + span - start - size);
    madvise(reinterpret_cast<void *>(start), size, MADV_HUGEPAGE); // a hint; small pages work too
    return reinterpret_cast<void *>(start);
}

void freeHugePageBytes(void *p, std::size_t bytes) noexcept
{
    if (bytes < kHugePage)
        ::operator delete(p);
    else
        munmap(p, roundedUp(bytes));
}

} // namespace plist_detail

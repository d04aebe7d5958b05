#include "HugePages.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>

namespace {

std::size_t roundedUp(std::size_t bytes)
{
    return (bytes + HugePages::kPageBytes - 1) / HugePages::kPageBytes * HugePages::kPageBytes;
}

} // namespace

QByteArray HugePages::buffer(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    advise(bytes.data(), std::size_t(size));
    return bytes;
}

void HugePages::advise(void *part, std::size_t bytes) noexcept
{
    const auto from = (reinterpret_cast<std::uintptr_t>(part) + kPageBytes - 1) / kPageBytes;
    const auto to = (reinterpret_cast<std::uintptr_t>(part) + bytes) / kPageBytes;
    if (to > from)
        madvise(reinterpret_cast<void *>(from * kPageBytes), (to - from) * kPageBytes,
                MADV_HUGEPAGE);
}

void *HugePages::allocate(std::size_t bytes)
{
    if (bytes < kPageBytes)
        return Plain::allocate(bytes);
    const std::size_t size = roundedUp(bytes);
    const std::size_t span = size + kPageBytes; // room to align the start
    void *mapped = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        throw std::bad_alloc();
    const auto first = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t start = (first + kPageBytes - 1) / kPageBytes * kPageBytes;
    if (start > first)
        munmap(mapped, start - first);
    if (first + span > start + size)
        munmap(reinterpret_cast<void *>(start + size), first + span - start - size);
    madvise(reinterpret_cast<void *>(start), size, MADV_HUGEPAGE);
    return reinterpret_cast<void *>(start);
}

void HugePages::release(void *memory, std::size_t bytes) noexcept
{
    if (bytes < kPageBytes)
        Plain::release(memory, bytes);
    else
        munmap(memory, roundedUp(bytes));
}

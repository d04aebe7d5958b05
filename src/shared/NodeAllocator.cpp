#include "NodeAllocator.h"

#include "HugePages.h"

#include <array>
#include <mutex>
#include <new>
#include <type_traits>

// Off under AddressSanitizer: a pool would hide use-after-free from it.
#if defined(__SANITIZE_ADDRESS__)
#define AD_NODE_POOL 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define AD_NODE_POOL 0
#endif
#endif
#ifndef AD_NODE_POOL
#define AD_NODE_POOL 1
#endif

namespace plist_detail {

namespace {

constexpr std::size_t kGranule = 16;
constexpr std::size_t kClasses = NodeAllocator::kLargest / kGranule;
constexpr std::size_t kChunkBytes = std::size_t(2) << 20;

// A free block. The first block of a list handed between threads also links
// to the next such list.
struct FreeBlock
{
    FreeBlock *next;
    FreeBlock *nextList;
};

// The unused end of a chunk, described in its own first bytes.
struct FreeRange
{
    char *end;
    FreeRange *next;
};

std::size_t classOf(std::size_t size)
{
    return size == 0 ? 0 : (size - 1) / kGranule;
}

std::size_t blockBytes(std::size_t sizeClass)
{
    return (sizeClass + 1) * kGranule;
}

// What ended threads left: whole free lists and unused chunk ends. Trivially
// destructible on purpose, so that threads ending after static destruction
// still find it.
struct Leftovers
{
    std::mutex mutex;
    std::array<FreeBlock *, kClasses> lists{};
    FreeRange *ranges = nullptr;
};
static_assert(std::is_trivially_destructible_v<Leftovers>);
constinit Leftovers leftovers;

class Cache
{
public:
    ~Cache();
    void *allocate(std::size_t sizeClass);
    void deallocate(void *block, std::size_t sizeClass) noexcept
    {
        auto *free = static_cast<FreeBlock *>(block);
        free->next = _lists[sizeClass];
        _lists[sizeClass] = free;
    }

private:
    void *refill(std::size_t sizeClass);
    void *carve(std::size_t bytes);

    std::array<FreeBlock *, kClasses> _lists{};
    char *_bump = nullptr;
    char *_end = nullptr;
};

thread_local bool cacheEnded = false; // trivially destructible: readable to the very end

Cache *localCache()
{
    if (cacheEnded)
        return nullptr;
    thread_local Cache cache;
    return &cache;
}

Cache::~Cache()
{
    const std::scoped_lock lock(leftovers.mutex);
    for (std::size_t c = 0; c < kClasses; ++c) {
        if (FreeBlock *list = _lists[c]) {
            list->nextList = leftovers.lists[c];
            leftovers.lists[c] = list;
        }
    }
    if (std::size_t(_end - _bump) >= sizeof(FreeRange)) {
        auto *range = new (_bump) FreeRange{_end, leftovers.ranges};
        leftovers.ranges = range;
    }
    cacheEnded = true;
}

void *Cache::allocate(std::size_t sizeClass)
{
    if (FreeBlock *block = _lists[sizeClass]) {
        // Freed blocks come back in the order a tree was freed, scattered
        // over the heap; fetching the next one now overlaps its cache miss
        // with the work between two allocations.
        _lists[sizeClass] = block->next;
        if (block->next)
            __builtin_prefetch(block->next, 1);
        return block;
    }
    const std::size_t bytes = blockBytes(sizeClass);
    if (std::size_t(_end - _bump) >= bytes)
        return carve(bytes);
    return refill(sizeClass);
}

void *Cache::carve(std::size_t bytes)
{
    void *block = _bump;
    _bump += bytes;
    return block;
}

// Takes a list or a chunk end that an ended thread left, else a new chunk.
void *Cache::refill(std::size_t sizeClass)
{
    {
        const std::scoped_lock lock(leftovers.mutex);
        if (FreeBlock *list = leftovers.lists[sizeClass]) {
            leftovers.lists[sizeClass] = list->nextList;
            _lists[sizeClass] = list->next;
            return list;
        }
        if (FreeRange *range = leftovers.ranges) {
            leftovers.ranges = range->next;
            _bump = reinterpret_cast<char *>(range);
            _end = range->end;
        }
    }
    const std::size_t bytes = blockBytes(sizeClass);
    if (std::size_t(_end - _bump) < bytes) {
        _bump = static_cast<char *>(HugePages::allocate(kChunkBytes));
        _end = _bump + kChunkBytes;
    }
    return carve(bytes);
}

} // namespace

void *NodeAllocator::allocate(std::size_t size)
{
    if (!AD_NODE_POOL || size > kLargest)
        return ::operator new(size);
    const std::size_t sizeClass = classOf(size);
    if (Cache *cache = localCache())
        return cache->allocate(sizeClass);
    // A thread past its cache's end: a plain block serves, as pooled blocks
    // are never given back to the system.
    return ::operator new(blockBytes(sizeClass));
}

void NodeAllocator::deallocate(void *block, std::size_t size) noexcept
{
    if (!AD_NODE_POOL || size > kLargest) {
        ::operator delete(block);
        return;
    }
    const std::size_t sizeClass = classOf(size);
    if (Cache *cache = localCache()) {
        cache->deallocate(block, sizeClass);
        return;
    }
    auto *free = static_cast<FreeBlock *>(block);
    free->next = nullptr;
    const std::scoped_lock lock(leftovers.mutex);
    free->nextList = leftovers.lists[sizeClass];
    leftovers.lists[sizeClass] = free;
}

} // namespace plist_detail

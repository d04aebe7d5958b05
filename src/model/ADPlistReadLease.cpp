#include "ADPlistReadLease.h"

#include <QtGlobal>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace {

struct Leases
{
    std::mutex mutex;
    std::condition_variable released;
    std::vector<PlistValue> roots; // one entry per lease; a root may be leased twice
    std::atomic<int> count{0};
};

Leases &leases()
{
    static Leases shared;
    return shared;
}

std::vector<PlistValue>::iterator findLease(std::vector<PlistValue> &roots, const PlistValue &root)
{
    return std::find_if(roots.begin(), roots.end(),
                        [&](const PlistValue &leased) { return leased.isSameObject(root); });
}

} // namespace

ADPlistReadLease::ADPlistReadLease(PlistValue root) : _root(std::move(root))
{
    Leases &all = leases();
    const std::lock_guard lock(all.mutex);
    all.roots.push_back(_root);
    all.count.fetch_add(1, std::memory_order_release);
}

ADPlistReadLease::~ADPlistReadLease()
{
    Leases &all = leases();
    {
        const std::lock_guard lock(all.mutex);
        const auto found = findLease(all.roots, _root);
        Q_ASSERT(found != all.roots.end());
        all.roots.erase(found);
        all.count.fetch_sub(1, std::memory_order_release);
    }
    all.released.notify_all();
}

void ADPlistReadLease::waitUntilReleased(const PlistValue &root)
{
    Leases &all = leases();
    if (all.count.load(std::memory_order_acquire) == 0)
        return;
    std::unique_lock lock(all.mutex);
    all.released.wait(lock, [&] { return findLease(all.roots, root) == all.roots.end(); });
}

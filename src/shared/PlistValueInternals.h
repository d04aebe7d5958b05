#pragma once

#include "PlistValue.h"

namespace plist_detail {

/// What readers and writers do with values for speed, apart from the
/// value's public interface because it is easy to misuse: counting a
/// reference without an atomic instruction, and fetching a node ahead.
class PlistValueInternals
{
public:
    /// A copy of a value that no other thread can see yet, such as one a
    /// reader is still building: counts the reference without an atomic
    /// instruction, which costs as much as making a small string. Publishing
    /// the value later (a queued signal, a future) makes it safe to share as
    /// usual.
    static PlistValue unpublishedCopy(const PlistValue &value) noexcept
    {
        if (PlistNode *n = value.node())
            n->ref.store(n->ref.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        return PlistValue(value._bits, PlistValue::AdoptBits{});
    }
    /// A hint that `value` will be read soon: for walks over trees too big for
    /// the cache, a few steps ahead.
    static void prefetch(const PlistValue &value) noexcept
    {
        if (const PlistNode *n = value.node())
            __builtin_prefetch(n);
    }
};

} // namespace plist_detail

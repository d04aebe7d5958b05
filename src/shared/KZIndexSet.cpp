#include "KZIndexSet.h"

#include <algorithm>

KZIndexSet KZIndexSet::range(qint64 location, qint64 length)
{
    KZIndexSet set;
    set.addRange(location, length);
    return set;
}

KZIndexSet KZIndexSet::fromIndexes(const std::vector<qint64> &indexes)
{
    KZIndexSet set;
    for (const qint64 i : indexes)
        set.addIndex(i);
    return set;
}

void KZIndexSet::addRange(qint64 location, qint64 length)
{
    Q_ASSERT(location >= 0 && length >= 0);
    if (length == 0)
        return;
    // Appending in ascending order, the common case, touches only the last range.
    if (_ranges.empty() || location > _ranges.back().end()) {
        _ranges.push_back({location, length});
        return;
    }
    const qint64 end = location + length;
    // First range that ends at or after `location` (touching counts) and the first starting after
    // `end`.
    auto first = std::lower_bound(_ranges.begin(), _ranges.end(), location,
                                  [](const Range &r, qint64 at) { return r.end() < at; });
    auto last = std::upper_bound(first, _ranges.end(), end,
                                 [](qint64 at, const Range &r) { return at < r.location; });
    if (first == last) {
        _ranges.insert(first, {location, length});
        return;
    }
    const qint64 mergedStart = std::min(location, first->location);
    const qint64 mergedEnd = std::max(end, (last - 1)->end());
    *first = {mergedStart, mergedEnd - mergedStart};
    _ranges.erase(first + 1, last);
}

void KZIndexSet::removeIndex(qint64 index)
{
    auto it = std::upper_bound(_ranges.begin(), _ranges.end(), index,
                               [](qint64 at, const Range &r) { return at < r.location; });
    if (it == _ranges.begin())
        return;
    --it;
    if (index >= it->end())
        return;
    const Range before{it->location, index - it->location};
    const Range after{index + 1, it->end() - index - 1};
    it = _ranges.erase(it);
    if (after.length > 0)
        it = _ranges.insert(it, after);
    if (before.length > 0)
        _ranges.insert(it, before);
}

qint64 KZIndexSet::count() const
{
    qint64 n = 0;
    for (const Range &r : _ranges)
        n += r.length;
    return n;
}

bool KZIndexSet::contains(qint64 index) const
{
    auto it = std::upper_bound(_ranges.begin(), _ranges.end(), index,
                               [](qint64 at, const Range &r) { return at < r.location; });
    return it != _ranges.begin() && index < (it - 1)->end();
}

qint64 KZIndexSet::firstIndex() const
{
    return _ranges.empty() ? -1 : _ranges.front().location;
}

qint64 KZIndexSet::lastIndex() const
{
    return _ranges.empty() ? -1 : _ranges.back().end() - 1;
}

qint64 KZIndexSet::countBelow(qint64 index) const
{
    qint64 n = 0;
    for (const Range &r : _ranges) {
        if (r.location >= index)
            break;
        n += std::min(r.end(), index) - r.location;
    }
    return n;
}

std::vector<qint64> KZIndexSet::toVector() const
{
    std::vector<qint64> out;
    out.reserve(size_t(count()));
    forEach([&out](qint64 i) { out.push_back(i); });
    return out;
}

#pragma once

#include "KZIndexSet.h"

#include <QtGlobal>

#include <algorithm>
#include <functional>
#include <numeric>
#include <vector>

/// A permutation held as indexes: entry k is the old index of the element
/// that ends up at position k. A value type.
class KZIndexMap
{
public:
    KZIndexMap() = default;
    explicit KZIndexMap(std::vector<qint64> indices) : _indices(std::move(indices)) {}

    /// Moves `indexes`, in their order, to stand before `toIndex` of a list of `count`.
    static KZIndexMap mapToMoveIndexes(const KZIndexSet &indexes, qint64 toIndex, qint64 count);
    /// The members of the set in ascending order.
    static KZIndexMap mapWithIndexSet(const KZIndexSet &indexes);
    /// The stable sort of `count` elements by `compare(a, b)` (-1, 0 or 1).
    static KZIndexMap sortMap(qint64 count, const std::function<int(qint64, qint64)> &compare);

    /// The composition: entry k is this map's entry at `other`'s entry k.
    KZIndexMap mapByApplyingMap(const KZIndexMap &other) const;
    KZIndexMap inverseMap() const;
    bool isIdentity() const;

    qint64 count() const { return qint64(_indices.size()); }
    const std::vector<qint64> &indices() const { return _indices; }

    /// Puts the element at `map[k]` at k.
    template <typename T> void reorder(std::vector<T> &list) const
    {
        Q_ASSERT(list.size() == _indices.size());
        std::vector<T> reordered;
        reordered.reserve(list.size());
        for (const qint64 from : _indices)
            reordered.push_back(std::move(list[size_t(from)]));
        list.swap(reordered);
    }

    friend bool operator==(const KZIndexMap &, const KZIndexMap &) = default;

private:
    std::vector<qint64> _indices;
};

Q_DECLARE_METATYPE(KZIndexMap)

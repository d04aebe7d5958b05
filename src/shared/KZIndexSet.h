#pragma once

#include <QMetaType>
#include <QtGlobal>

#include <vector>

/// A set of non-negative indexes, kept as sorted, disjoint, non-adjacent
/// ranges, so "all 1,000,000 children" is one range. A value type.
class KZIndexSet
{
public:
    struct Range
    {
        qint64 location;
        qint64 length;
        qint64 end() const { return location + length; }
        friend bool operator==(const Range &, const Range &) = default;
    };

    KZIndexSet() = default;
    explicit KZIndexSet(qint64 index) { addIndex(index); }
    static KZIndexSet range(qint64 location, qint64 length);
    static KZIndexSet fromIndexes(const std::vector<qint64> &indexes);

    void addIndex(qint64 index) { addRange(index, 1); }
    void addRange(qint64 location, qint64 length);
    void removeIndex(qint64 index);

    bool isEmpty() const { return _ranges.empty(); }
    qint64 count() const;
    bool contains(qint64 index) const;
    qint64 firstIndex() const; // -1 when empty
    qint64 lastIndex() const;  // -1 when empty
    /// How many members lie below `index`.
    qint64 countBelow(qint64 index) const;
    const std::vector<Range> &ranges() const { return _ranges; }
    std::vector<qint64> toVector() const;

    template <typename Body> void forEach(Body &&body) const
    {
        for (const Range &r : _ranges) {
            for (qint64 i = r.location; i < r.end(); ++i)
                body(i);
        }
    }

    friend bool operator==(const KZIndexSet &, const KZIndexSet &) = default;

private:
    std::vector<Range> _ranges;
};

Q_DECLARE_METATYPE(KZIndexSet)

/// Inserts `items` so that they stand at `indexes` of the result (as many
/// indexes as items, each below the new size), in one linear pass.
template <typename List> void kz_insertAtIndexes(List &list, const KZIndexSet &indexes, List items)
{
    Q_ASSERT(qint64(items.size()) == indexes.count());
    List merged;
    merged.reserve(list.size() + items.size());
    qsizetype nextOld = 0, nextNew = 0;
    const qint64 total = qint64(list.size() + items.size());
    for (qint64 position = 0; position < total; ++position) {
        if (indexes.contains(position))
            merged.push_back(std::move(items[nextNew++]));
        else
            merged.push_back(std::move(list[nextOld++]));
    }
    list.swap(merged);
}

/// Removes the elements at `indexes`, in one linear pass.
template <typename List> void kz_removeAtIndexes(List &list, const KZIndexSet &indexes)
{
    List kept;
    kept.reserve(list.size() - qsizetype(indexes.count()));
    for (qsizetype i = 0; i < qsizetype(list.size()); ++i) {
        if (!indexes.contains(i))
            kept.push_back(std::move(list[i]));
    }
    list.swap(kept);
}

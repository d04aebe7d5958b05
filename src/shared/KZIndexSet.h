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
template <typename List>
void kz_insertAtIndexes(List &list, const KZIndexSet &indexes, List items)
{
    Q_ASSERT(qint64(items.size()) == indexes.count());
    List merged;
    merged.reserve(list.size() + items.size());
    qsizetype nextOld = 0, nextNew = 0;
    for (const KZIndexSet::Range &r : indexes.ranges()) {
        while (qint64(merged.size()) < r.location)
            merged.push_back(std::move(list[nextOld++]));
        for (qint64 k = 0; k < r.length; ++k)
            merged.push_back(std::move(items[nextNew++]));
    }
    while (nextOld < qsizetype(list.size()))
        merged.push_back(std::move(list[nextOld++]));
    list.swap(merged);
}

/// Removes the elements at `indexes`, in one linear pass.
template <typename List>
void kz_removeAtIndexes(List &list, const KZIndexSet &indexes)
{
    List kept;
    kept.reserve(list.size() - qsizetype(indexes.count()));
    qsizetype next = 0;
    for (const KZIndexSet::Range &r : indexes.ranges()) {
        while (next < r.location)
            kept.push_back(std::move(list[next++]));
        next = qsizetype(r.end());
    }
    while (next < qsizetype(list.size()))
        kept.push_back(std::move(list[next++]));
    list.swap(kept);
}

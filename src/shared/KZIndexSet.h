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

#include "KZIndexMap.h"

KZIndexMap KZIndexMap::mapToMoveIndexes(const KZIndexSet &indexes, qint64 toIndex, qint64 count)
{
    std::vector<qint64> map;
    map.reserve(size_t(count));
    for (qint64 i = 0; i < std::min(toIndex, count); ++i) {
        if (!indexes.contains(i))
            map.push_back(i);
    }
    indexes.forEach([&map, count](qint64 i) {
        if (i < count)
            map.push_back(i);
    });
    for (qint64 i = std::max<qint64>(toIndex, 0); i < count; ++i) {
        if (!indexes.contains(i))
            map.push_back(i);
    }
    return KZIndexMap(std::move(map));
}

KZIndexMap KZIndexMap::mapWithIndexSet(const KZIndexSet &indexes)
{
    return KZIndexMap(indexes.toVector());
}

KZIndexMap KZIndexMap::sortMap(qint64 count, const std::function<int(qint64, qint64)> &compare)
{
    std::vector<qint64> map(static_cast<size_t>(count));
    std::iota(map.begin(), map.end(), 0);
    std::stable_sort(map.begin(), map.end(),
                     [&compare](qint64 a, qint64 b) { return compare(a, b) < 0; });
    return KZIndexMap(std::move(map));
}

KZIndexMap KZIndexMap::mapByApplyingMap(const KZIndexMap &other) const
{
    std::vector<qint64> map;
    map.reserve(other._indices.size());
    for (const qint64 k : other._indices)
        map.push_back(_indices[size_t(k)]);
    return KZIndexMap(std::move(map));
}

KZIndexMap KZIndexMap::inverseMap() const
{
    std::vector<qint64> inverse(_indices.size());
    for (size_t k = 0; k < _indices.size(); ++k)
        inverse[size_t(_indices[k])] = qint64(k);
    return KZIndexMap(std::move(inverse));
}

bool KZIndexMap::isIdentity() const
{
    for (size_t k = 0; k < _indices.size(); ++k) {
        if (_indices[k] != qint64(k))
            return false;
    }
    return true;
}

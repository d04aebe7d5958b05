#pragma once

#include <QtGlobal>

#include <limits>

/// "Not found" for positions and indexes: the largest signed 64-bit integer.
constexpr qint64 KZNotFound = std::numeric_limits<qint64>::max();

/// A range of text in UTF-16 units. `{KZNotFound, 0}` is "no range"; handed to
/// an editing operation it means the whole text.
struct KZRange
{
    qint64 location = KZNotFound;
    qint64 length = 0;

    qint64 end() const { return location + length; }
    bool isNotFound() const { return location == KZNotFound; }
    friend bool operator==(const KZRange &, const KZRange &) = default;
};

#pragma once

#include <QByteArrayView>
#include <QtEndian>

#include <optional>

/// Bounds-checked reads of fixed-width integers at offsets of a record held
/// in memory, for the record parsers. Every read answers none when the bytes
/// are not all there, so a parser tests each field once and never reads past
/// the end. Does not own the bytes.
class KZByteView
{
public:
    explicit KZByteView(QByteArrayView bytes) : _bytes(bytes) {}

    qsizetype size() const { return _bytes.size(); }
    /// Whether `count` bytes lie at `offset` (neither may be negative).
    bool has(qint64 offset, qint64 count) const
    {
        return offset >= 0 && count >= 0 && offset <= _bytes.size() &&
               count <= _bytes.size() - offset; // offset + count could wrap
    }
    std::optional<QByteArrayView> bytes(qint64 offset, qint64 count) const
    {
        if (!has(offset, count))
            return std::nullopt;
        return _bytes.sliced(offset, count);
    }
    template <typename T> std::optional<T> bigEndian(qint64 offset) const
    {
        if (!has(offset, sizeof(T)))
            return std::nullopt;
        return qFromBigEndian<T>(_bytes.data() + offset);
    }
    template <typename T> std::optional<T> littleEndian(qint64 offset) const
    {
        if (!has(offset, sizeof(T)))
            return std::nullopt;
        return qFromLittleEndian<T>(_bytes.data() + offset);
    }

private:
    QByteArrayView _bytes;
};

#pragma once

#include <QByteArray>

/// owner[from, from + size) as bytes that share `owner`'s storage instead of
/// copying it; the slice keeps all of that storage alive.
inline QByteArray sharedSlice(const QByteArray &owner, qsizetype from, qsizetype size)
{
    QByteArray::DataPointer slice = QByteArray(owner).data_ptr(); // holds a reference
    slice.ptr += from;
    slice.size = size;
    return QByteArray(std::move(slice));
}

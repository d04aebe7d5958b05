#pragma once

#include "shared/ADTypes.h"
#include "shared/PlistValue.h"

#include <QByteArray>
#include <QString>

/// Why a reader refused its input, and where. Text formats give a line and a
/// column (from 1, in characters of the line); binary input a byte offset.
/// Unknown positions are -1.
struct ReadError
{
    QString message; // what was expected and what was found, without the position
    qint64 offset = -1;
    qint64 line = -1;
    qint64 column = -1;

    /// The message with its position in front: "line 12, column 5: ..." or
    /// "byte 4096: ...".
    QString description() const;
};

/// What a reader gives: a value with mutable containers and the format it was
/// read as, or the error.
struct [[nodiscard]] ReadResult
{
    PlistValue value; // none when the input was refused
    ADPlistFormat format = ADPlistFormatUnknown;
    ReadError error; // meaningful only when there is no value

    explicit operator bool() const { return !value.isNone(); }
    static ReadResult success(PlistValue value, ADPlistFormat format)
    {
        return {std::move(value), format, {}};
    }
    static ReadResult failure(ReadError error)
    {
        return {{}, ADPlistFormatUnknown, std::move(error)};
    }
};

/// What a writer gives: the bytes, or the reason it could not write the value.
struct [[nodiscard]] WriteResult
{
    QByteArray data;
    QString error; // empty on success

    explicit operator bool() const { return error.isEmpty(); }
    static WriteResult success(QByteArray data) { return {std::move(data), {}}; }
    static WriteResult failure(const QString &error) { return {{}, error}; }
};

#pragma once

#include "shared/ADTypes.h"
#include "shared/PlistValue.h"

#include <QByteArray>
#include <QString>

/// Why a reader refused its input, and where. Text formats give a line and a
/// column (from 1, in characters of the line); binary input a byte offset.
/// Unknown positions are -1. The kind says what went wrong in a way code can
/// act on; the message says it to a person.
struct ReadError
{
    enum class Kind : quint8
    {
        None,
        Empty,           // no bytes at all
        Encoding,        // not text in its encoding: bad UTF-8, UTF-16 or UTF-32, a NUL, an
                         // encoding that is not supported
        Truncated,       // the input ends inside something it opened, or an object runs past
                         // the end of the objects
        Syntax,          // a character, byte or markup stands where the format allows none
        TrailingContent, // more follows the one value
        UnknownType,     // an element, marker or type letter that names no value
        MismatchedTag,   // an end tag that closes another element
        Escape,          // an escape, entity or character reference that stands for nothing
        Number,          // number text or an integer or real object of no valid form
        OutOfRange,      // a number beyond what 64 bits or a double hold
        Date,            // date text or a date object that is no date
        Data,            // Base64 or hexadecimal data that does not decode
        Structure,       // a property list rule: a key without a value, a value without a key,
                         // a second top value, a key that is no string
        Unsupported,     // allowed by the format, not by a property list: a set, declarations
                         // in a DOCTYPE, a reference to fill
        Header,          // a binary file's magic, header or trailer
        Reference,       // a reference or offset to no object
        Cycle,           // a container that contains itself
        TooLarge,        // more than the reader takes: values past the input's worth, a string
                         // past 4 GB
    };

    QString message; // what was expected and what was found, without the position
    qint64 offset = -1;
    qint64 line = -1;
    qint64 column = -1;
    Kind kind = Kind::None;

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

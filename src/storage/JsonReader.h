#pragma once

#include "StorageResult.h"

#include <QByteArrayView>

/// Reads one JSON text held in memory, strictly by RFC 8259; does not keep
/// the bytes.
///
/// What comes out: objects are dictionaries in the text's key order (a
/// repeated key keeps its first place and takes the last value), `true` and
/// `false` booleans, `null` the null value. A number without fraction or
/// exponent is an integer: signed 64-bit, unsigned 64-bit above that, and a
/// real only beyond both. Other numbers are reals, exactly rounded; one too
/// large for a double is refused, one too small becomes zero. A `\u` escape
/// of a lone surrogate is kept as that UTF-16 unit (as JavaScript and Python
/// keep it); the writer escapes it again, so it survives a round trip.
///
/// Any value may stand at the top. The text is UTF-8 (a byte-order mark is
/// skipped), or UTF-16 or UTF-32 as its mark or its zero bytes show. Nothing
/// but white space may follow the value. Errors give line and column. Nesting
/// lives on an explicit stack. Stateless; safe on any thread.
class JsonReader
{
public:
    /// The value with mutable containers, as format ADPlistFormatJSON.
    static ReadResult read(QByteArrayView bytes);
};

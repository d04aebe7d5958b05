#pragma once

#include "StorageResult.h"

/// Writes a value as JSON text in UTF-8: compact (no white space at all) or
/// human-readable (one member or element a line, two spaces per level up to
/// 32 levels, ": " after keys). Keys keep the dictionary's order.
///
/// Strings escape the quote, the backslash and control characters (as `\n`,
/// `\t` and so on, else `\u00XX`); other characters are written as UTF-8, and
/// a lone surrogate as `\uXXXX`. Integers are exact, unsigned 64-bit ones
/// included. Reals take the shortest text that reads back to the same double
/// and still reads as a real (1.0 stays "1.0"). Booleans are `true` and
/// `false`, the null value `null`.
///
/// Refuses what JSON cannot hold: NaN and infinities, data, dates and UIDs,
/// with a message naming the type; also none and a container that holds
/// itself. Nesting lives on an explicit stack. Stateless; safe on any thread
/// for values not being changed meanwhile.
class JsonWriter
{
public:
    static WriteResult write(const PlistValue &value, bool humanReadable);
};

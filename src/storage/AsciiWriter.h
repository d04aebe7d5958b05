#pragma once

#include "StorageResult.h"

/// Writes a value in the old-style text form, as the description of a plain
/// value reads, in 7-bit ASCII:
///
///     {
///         name = Arbordeck;
///         list = (
///             "two words",
///             <0fbd7788 9900>
///         );
///     }
///
/// One entry a line, each level four spaces further in (up to 32 levels),
/// keys in the dictionary's order. Strings stay unquoted when they are not
/// empty, hold only letters, digits and `_$/:.-`, and do not start like a comment;
/// otherwise they are quoted with `\"`, `\\`, `\n`-style and octal escapes
/// for control characters and `\Uxxxx` for every UTF-16 unit beyond ASCII.
/// The form has no other leaf types, so numbers are written as their text
/// (reals in the shortest form that reads back exactly), booleans as 1 and 0,
/// dates as "2001-01-01 00:00:00 +0000", UIDs as `{"CF$UID" = 5;}`: reading
/// them back gives strings (and a dictionary). Data is hexadecimal in groups
/// of four bytes. Strings, data, arrays and dictionaries round-trip exactly.
///
/// Refuses the null value, none, a date too far off to write, and a container
/// that holds itself. Nesting lives on an explicit stack. Stateless; safe on
/// any thread for values not being changed meanwhile.
class AsciiWriter
{
public:
    static WriteResult write(const PlistValue &value);
};

#pragma once

#include "StorageResult.h"

#include <QByteArrayView>

/// Reads the old-style text form of a property list held in memory, strings
/// files included; does not keep the bytes.
///
/// The syntax: dictionaries `{ key = value; }` (the entry `key;` makes the key
/// its own value), arrays `( a, b, )` with an optional trailing comma (an
/// empty element between two commas is an empty string), strings quoted with
/// `"` or `'` or unquoted (letters, digits, marks and `_$/:.-*`), `<hex data>` with
/// blanks anywhere, `//` and `/* */` comments, and the typed forms GNUstep
/// writes: `<*I12>`, `<*R1.5>`, `<*BY>`/`<*BN>`, `<*D2001-01-01 00:00:00 +0000>`
/// (contents optionally in quotes) and base64 data `<[aGk=]>` (characters
/// outside the alphabet skipped). Untyped values are strings: the form has no
/// numbers, booleans or dates of its own.
///
/// Escapes in quoted strings: `\a \b \f \n \r \t \v`, `\uXXXX`/`\UXXXX` with
/// one to four hexadecimal digits (UTF-16 units, so two of them make a
/// surrogate pair; a lone surrogate is kept), `\x` with one or two, and octal
/// with one to three digits, taken as the code point of that value. Any other
/// escaped character stands for itself.
///
/// A document that is one string followed by more text is read again as a
/// strings file: `key = value;` entries without braces. An empty document, or
/// one of only blanks and comments, is an empty dictionary. A repeated key
/// keeps its first place and takes the last value.
///
/// Encodings: UTF-8 with or without a byte-order mark, UTF-16 and UTF-32 with
/// one or with the zero bytes of an ASCII first character. Errors give line
/// and column. Nesting lives on an explicit stack. Stateless; safe on any
/// thread.
class AsciiReader
{
public:
    /// The value with mutable containers, as format ADPlistFormatASCII.
    static ReadResult read(QByteArrayView bytes);
};

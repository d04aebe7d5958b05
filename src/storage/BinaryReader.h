#pragma once

#include "StorageResult.h"

#include <QByteArray>
#include <QByteArrayView>

/// Reads one binary property list ("bplist00") held in memory; does not keep
/// the bytes. Every offset, count and size is checked before use: bad input
/// gives an error naming its byte offset, never a crash, a hang or an
/// allocation the input cannot justify.
///
/// What comes out: the file's null object is the null value; 1-, 2- and 4-byte
/// integers are unsigned, 8-byte ones signed, and the 16-byte form counts only
/// its low 8 bytes, read as unsigned; 4-byte reals widen to double; strings
/// marked ASCII may hold UTF-8. Dictionary keys keep the file's order (a
/// repeated key keeps its first place and its last value) and must be strings;
/// integer keys become their decimal text. Sets, NaN dates, invalid UTF-8 or
/// UTF-16 and references to fill bytes are refused.
///
/// An object met twice on one path is a cycle (an error). A leaf referenced
/// from many places is shared; a shared array or dictionary comes out as a new
/// container each time, so the number of values made is capped by a multiple
/// of the input size. Nesting lives on an explicit stack, so depth is bounded
/// by memory only. Stateless; safe on any thread.
class BinaryReader
{
public:
    /// True when the bytes start with "bplist": a binary file, maybe of a version
    /// or a length that `read` refuses, but never text.
    static bool recognizes(QByteArrayView bytes);
    /// The top object with mutable containers, as format ADPlistFormatBinary.
    static ReadResult read(QByteArrayView bytes);
    /// The same, but data values of 64 KB and more share `bytes` rather than
    /// copy them, when such values make up at least half of it.
    static ReadResult read(const QByteArray &bytes);
};

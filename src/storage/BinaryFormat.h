#pragma once

#include <QtGlobal>

/// The layout of a binary property list, named once for the reader and the
/// writer: an 8-byte header, the objects, a table of their offsets, and a
/// 32-byte trailer. Each object starts with a marker byte whose high four bits
/// name its type and whose low four give a size: a count of bytes, units or
/// entries (0xF: the count follows as an integer object), or, for integers
/// and reals, the width as a power of two.
namespace BinaryFormat {

constexpr char kMagic[] = "bplist00";
constexpr qsizetype kVersionedMagicSize = 7; // "bplist0": versions share it
constexpr quint64 kHeaderSize = 8;
constexpr quint64 kTrailerSize = 32;
// Where the fields sit within the trailer; the first six bytes are unused.
constexpr quint64 kTrailerOffsetSize = 6;
constexpr quint64 kTrailerRefSize = 7;
constexpr quint64 kTrailerObjectCount = 8;
constexpr quint64 kTrailerTopObject = 16;
constexpr quint64 kTrailerTableOffset = 24;

/// The high four bits of a marker.
enum Type : quint8
{
    Special = 0x0, // null, booleans and fill: the whole marker says which
    Integer = 0x1,
    Real = 0x2,
    Date = 0x3,
    Data = 0x4,
    AsciiString = 0x5,
    Utf16String = 0x6,
    Uid = 0x8,
    Array = 0xA,
    Set = 0xC,
    Dictionary = 0xD,
};
constexpr quint8 kCountFollows = 0xF; // a low half: the count is an integer after it

constexpr quint8 marker(Type type, unsigned low)
{
    return quint8(type << 4 | low);
}
constexpr Type typeOf(quint8 marker)
{
    return Type(marker >> 4);
}
constexpr quint8 lowOf(quint8 marker)
{
    return marker & 0xF;
}

constexpr quint8 kNull = marker(Special, 0x0);
constexpr quint8 kFalse = marker(Special, 0x8);
constexpr quint8 kTrue = marker(Special, 0x9);
constexpr quint8 kFill = marker(Special, 0xF);
constexpr quint8 kDate = marker(Date, 3);          // eight bytes, a double
constexpr quint8 kReal64 = marker(Real, 3);        // eight bytes
constexpr quint8 kInteger128 = marker(Integer, 4); // sixteen bytes

} // namespace BinaryFormat

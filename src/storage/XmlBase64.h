#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>

/// Base64 as the XML property list holds it in <data>. Decoding skips white
/// space anywhere; encoding breaks lines as the platform's writer does. Pure
/// functions, safe on any thread.
class XmlBase64
{
public:
    /// The bytes of `text`, or false with `errorAt` the index of the first
    /// character that cannot be there (text.size() when it ends mid-byte).
    static bool decode(QByteArrayView text, QByteArray &out, qsizetype &errorAt);
    /// The bytes of the Base64 that begins `text`, up to the first character
    /// that cannot be in it, whose index goes to `end` (text.size() if none).
    /// False when that Base64 ends in the middle of a byte.
    static bool decodePrefix(QByteArrayView text, QByteArray &out, qsizetype &end);

    /// Characters `encodeLines` writes for `size` bytes.
    static qsizetype encodedSize(qsizetype size, int lineLength, int indent);
    /// Writes `bytes` as lines of `lineLength` characters (a multiple of 4; the
    /// last may be shorter), each led by `indent` tabs and ended by a newline;
    /// returns the end of what was written.
    static char *encodeLines(QByteArrayView bytes, int lineLength, int indent, char *out);
};

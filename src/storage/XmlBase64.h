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

    /// Line ends (LF, CR or CR LF) counted in text that is then overwritten.
    struct LineEnds
    {
        qint64 count = 0;
        qsizetype lastLineStart = -1; // just past the last line end; -1 if none
    };

    /// What `decodeInPlace` found. Indexes count from the start of the text.
    struct InPlace
    {
        qsizetype size = 0; // bytes of the whole groups, now at the start of the text
        char last[3] = {};  // the bytes of a last partial group (two at most), not written
        qsizetype lastSize = 0;
        qsizetype end = 0;     // the first character that cannot be in Base64, or the size
        bool whole = true;     // false when the Base64 ends in the middle of a byte
        qsizetype resume = 0;  // past the last whole group; the text from here on is intact
        LineEnds lineEnds;     // in text[0, end)
        LineEnds beforeResume; // in text[0, resume)
    };
    /// Decodes the Base64 that begins `text` as `decodePrefix` does, but over
    /// the text itself: the bytes never overtake the characters read. Only
    /// the whole groups are written, so decoding may start again at `resume`.
    static InPlace decodeInPlace(char *text, qsizetype size);

    /// Characters `encodeLines` writes for `size` bytes.
    static qsizetype encodedSize(qsizetype size, int lineLength, int indent);
    /// Writes `bytes` as lines of `lineLength` characters (a multiple of 4; the
    /// last may be shorter), each led by `indent` tabs and ended by a newline;
    /// returns the end of what was written.
    static char *encodeLines(QByteArrayView bytes, int lineLength, int indent, char *out);
};

#pragma once

#include <QByteArray>
#include <QByteArrayView>

/// How the bytes of an XML document are encoded, and their conversion to the
/// UTF-8 the reader parses. The form comes from a byte-order mark, else from
/// the zero bytes around the first '<' (UTF-16 and UTF-32 without a mark),
/// else it is UTF-8 or what the XML declaration names. Pure functions.
class XmlEncoding
{
public:
    enum class Form
    {
        Utf8,
        Utf16LE,
        Utf16BE,
        Utf32LE,
        Utf32BE,
    };
    struct Sniffed
    {
        Form form = Form::Utf8;
        qsizetype markSize = 0; // bytes of the byte-order mark
    };

    static Sniffed sniff(QByteArrayView bytes);
    /// Up to `limit` characters after the mark, as long as they are ASCII:
    /// enough to recognise the first markup in any form.
    static QByteArray asciiPrefix(QByteArrayView bytes, qsizetype limit);
    /// UTF-16 or UTF-32 (after the mark) as UTF-8. On a unit that is no
    /// character, false, with `out` holding the text before it.
    static bool toUtf8(QByteArrayView bytes, Sniffed sniffed, QByteArray &out);
    /// The encoding named by an XML declaration at the start of `text` (after
    /// white space), or an empty view.
    static QByteArrayView declared(QByteArrayView text);
    /// Whether a declared name means the text is read as UTF-8 as it is: UTF-8
    /// and ASCII, and the UTF-16 and UTF-32 names, which a file whose
    /// declaration reads as ASCII cannot truly be in.
    static bool readsAsUtf8(QByteArrayView name);
    /// The offset of the first byte that is not part of well-formed UTF-8
    /// (overlong forms and surrogates included), or -1.
    static qsizetype invalidUtf8At(QByteArrayView text);
};

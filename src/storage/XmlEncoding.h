#pragma once

#include "UnicodeText.h"

#include <QByteArray>
#include <QByteArrayView>

/// How the bytes of an XML document are encoded. The form comes from a
/// byte-order mark, else from the zero bytes around the first '<' (UTF-16
/// and UTF-32 without a mark), else it is UTF-8 or what the XML declaration
/// names. Pure functions.
class XmlEncoding
{
public:
    struct Sniffed
    {
        UnicodeText::Form form = UnicodeText::Form::Utf8;
        qsizetype markSize = 0; // bytes of the byte-order mark
    };

    static Sniffed sniff(QByteArrayView bytes);
    /// Up to `limit` characters after the mark, as long as they are ASCII:
    /// enough to recognise the first markup in any form.
    static QByteArray asciiPrefix(QByteArrayView bytes, qsizetype limit);
    /// The encoding named by an XML declaration at the start of `text` (after
    /// white space), or an empty view.
    static QByteArrayView declared(QByteArrayView text);
    /// Whether a declared name means the text is read as UTF-8 as it is: UTF-8
    /// and ASCII, and the UTF-16 and UTF-32 names, which a file whose
    /// declaration reads as ASCII cannot truly be in.
    static bool readsAsUtf8(QByteArrayView name);
};

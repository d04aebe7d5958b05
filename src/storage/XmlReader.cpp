#include "XmlReader.h"

#include "TextPosition.h"
#include "UnicodeText.h"
#include "XmlEncoding.h"
#include "XmlMarkup.h"
#include "XmlParser.h"

#include <QStringDecoder>

namespace {

// Text that is not what its encoding says.
ReadResult encodingFailure(QByteArrayView text, qsizetype offset, const QString &message)
{
    const TextPosition position = TextPosition::at(text, offset);
    return ReadResult::failure(
        {message, offset, position.line, position.column, ReadError::Kind::Encoding});
}

// An 8-bit file whose declaration names another encoding than UTF-8.
ReadResult readDeclared(QByteArrayView text, QByteArrayView name)
{
    QStringDecoder decoder(name.toByteArray().constData());
    if (!decoder.isValid())
        return encodingFailure(
            text, name.data() - text.data(),
            QStringLiteral("unsupported encoding \"%1\"").arg(QString::fromUtf8(name)));
    const QString decoded = decoder.decode(text);
    if (decoder.hasError())
        return encodingFailure(
            text, 0, QStringLiteral("the text is not valid %1").arg(QString::fromUtf8(name)));
    return XmlParser::parse(decoded.toUtf8());
}

} // namespace

ReadResult XmlReader::read(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return ReadResult::failure(
            {QStringLiteral("the input is empty"), -1, -1, -1, ReadError::Kind::Empty});
    const XmlEncoding::Sniffed sniffed = XmlEncoding::sniff(bytes);
    if (sniffed.form != UnicodeText::Form::Utf8) {
        const UnicodeText::Transcoded transcoded = UnicodeText::toUtf8(
            bytes.sliced(sniffed.markSize), sniffed.form, UnicodeText::Nul::Allowed);
        if (transcoded.flaw != UnicodeText::Flaw::None) {
            const bool wide = UnicodeText::unitSize(sniffed.form) == 4;
            return encodingFailure(
                transcoded.utf8, transcoded.utf8.size(),
                QStringLiteral("the text is not valid %1")
                    .arg(wide ? QStringLiteral("UTF-32") : QStringLiteral("UTF-16")));
        }
        return XmlParser::parse(transcoded.utf8);
    }
    const QByteArrayView text = bytes.sliced(sniffed.markSize);
    const QByteArrayView declared = XmlEncoding::declared(text);
    if (sniffed.markSize == 0 && !declared.isEmpty() && !XmlEncoding::readsAsUtf8(declared))
        return readDeclared(text, declared);
    const qsizetype invalid = UnicodeText::firstFlaw(text, UnicodeText::Nul::Allowed);
    if (invalid >= 0)
        return encodingFailure(text, invalid,
                               QStringLiteral("invalid UTF-8: byte 0x%1 does not belong here")
                                   .arg(quint8(text[invalid]), 2, 16, QLatin1Char('0')));
    return XmlParser::parse(text);
}

bool XmlReader::recognizes(QByteArrayView bytes)
{
    const QByteArray prefix =
        XmlEncoding::asciiPrefix(bytes.first(std::min<qsizetype>(bytes.size(), 1024)), 256);
    qsizetype i = 0;
    while (i < prefix.size() && XmlMarkup::isSpace(prefix[i]))
        ++i;
    const QByteArrayView rest = QByteArrayView(prefix).sliced(i);
    if (rest.startsWith("<?xml") || rest.startsWith("<!") || rest.startsWith("<plist"))
        return true;
    // A bare value element as the root. Every name holds a letter that is no
    // hexadecimal digit, so this is never old-style <hex data>.
    static const char *const kValueElements[] = {"array", "dict",  "string", "integer", "real",
                                                 "true",  "false", "date",   "data"};
    for (const char *name : kValueElements) {
        const QByteArrayView tag(name);
        if (rest.size() > tag.size() + 1 && rest[0] == '<' && rest.sliced(1).startsWith(tag)) {
            const char after = rest[tag.size() + 1];
            if (after == '>' || after == '/' || XmlMarkup::isSpace(after))
                return true;
        }
    }
    return false;
}

#include "JsonEncoding.h"

#include "TextPosition.h"

#include "UnicodeText.h"

namespace {

using Form = UnicodeText::Form;

struct Detected
{
    Form form;
    qsizetype bomSize;
};

Detected detect(QByteArrayView bytes)
{
    const auto at = [&bytes](qsizetype i) { return i < bytes.size() ? uchar(bytes[i]) : 0x100; };
    if (at(0) == 0xEF && at(1) == 0xBB && at(2) == 0xBF)
        return {Form::Utf8, 3};
    if (at(0) == 0xFF && at(1) == 0xFE && at(2) == 0 && at(3) == 0)
        return {Form::Utf32LE, 4};
    if (at(0) == 0 && at(1) == 0 && at(2) == 0xFE && at(3) == 0xFF)
        return {Form::Utf32BE, 4};
    if (at(0) == 0xFF && at(1) == 0xFE)
        return {Form::Utf16LE, 2};
    if (at(0) == 0xFE && at(1) == 0xFF)
        return {Form::Utf16BE, 2};
    if (bytes.size() < 2)
        return {Form::Utf8, 0};
    // Without a mark, the first character is taken to be ASCII.
    if (at(0) == 0)
        return {at(1) == 0 && bytes.size() >= 4 ? Form::Utf32BE : Form::Utf16BE, 0};
    if (at(1) == 0) {
        const bool wide = bytes.size() >= 4 && at(2) == 0 && at(3) == 0;
        return {wide ? Form::Utf32LE : Form::Utf16LE, 0};
    }
    return {Form::Utf8, 0};
}

// Why transcoded text stopped short, in the words of the encoding it was in.
QString flawMessage(const UnicodeText::Transcoded &transcoded, Form form)
{
    const bool wide = UnicodeText::unitSize(form) == 4;
    switch (transcoded.flaw) {
    case UnicodeText::Flaw::Nul:
        return QStringLiteral("the text contains a NUL character");
    case UnicodeText::Flaw::UnpairedHigh:
        return QStringLiteral("the UTF-16 text has an unpaired high surrogate");
    case UnicodeText::Flaw::UnpairedLow:
        return QStringLiteral("the UTF-16 text has an unpaired low surrogate");
    case UnicodeText::Flaw::NotACharacter:
        return QStringLiteral("the UTF-32 text holds 0x%1, which is no character")
            .arg(transcoded.unit, 0, 16);
    case UnicodeText::Flaw::PartialUnit:
        return wide ? QStringLiteral("the UTF-32 text ends in part of a unit")
                    : QStringLiteral("the UTF-16 text ends in half a unit");
    case UnicodeText::Flaw::None:
        break;
    }
    return {};
}

} // namespace

ReadError JsonEncoding::Utf8Text::parseError(const Failure &failure) const
{
    const qsizetype bad = UnicodeText::firstFlaw(text, UnicodeText::Nul::Refused);
    if (bad < 0)
        return readError(failure);
    return readError({bad, ReadError::Kind::Encoding,
                      text[bad] == 0 ? QStringLiteral("the text contains a NUL character")
                                     : QStringLiteral("byte 0x%1 is not valid UTF-8")
                                           .arg(uint(uchar(text[bad])), 2, 16, QLatin1Char('0'))});
}

ReadError JsonEncoding::Utf8Text::readError(const Failure &failure) const
{
    const TextPosition position = TextPosition::at(text, failure.offset);
    return {failure.message, transcoded ? -1 : skipped + failure.offset, position.line,
            position.column, failure.kind};
}

JsonEncoding::Utf8Text JsonEncoding::decode(QByteArrayView bytes)
{
    const Detected detected = detect(bytes);
    const QByteArrayView units = bytes.sliced(detected.bomSize);
    Utf8Text result;
    if (detected.form == Form::Utf8) {
        result.skipped = detected.bomSize;
        result.text = units;
        return result;
    }
    UnicodeText::Transcoded transcoded =
        UnicodeText::toUtf8(units, detected.form, UnicodeText::Nul::Refused);
    result.transcoded = true;
    result.storage = std::move(transcoded.utf8);
    result.text = result.storage;
    if (transcoded.flaw != UnicodeText::Flaw::None)
        result.error = result.readError({result.storage.size(), ReadError::Kind::Encoding,
                                         flawMessage(transcoded, detected.form)});
    return result;
}

JsonEncoding::Failure JsonEncoding::failure(const char *begin, const char *end, const char *at,
                                            ReadError::Kind kind, const QString &message)
{
    if (kind == ReadError::Kind::Syntax && at == end)
        kind = ReadError::Kind::Truncated;
    return {at - begin, kind, message};
}

QString JsonEncoding::unclosedNote(const char *begin, const char *end, const char *openedAt,
                                   QLatin1StringView what)
{
    const TextPosition opened = TextPosition::at(QByteArrayView(begin, end), openedAt - begin);
    return QStringLiteral(" (the %1 opened at line %2, column %3 is not closed)")
        .arg(what)
        .arg(opened.line)
        .arg(opened.column);
}

QString JsonEncoding::describe(const char *p, const char *end)
{
    if (p >= end)
        return QStringLiteral("the end of the text");
    const auto c = uchar(*p);
    if (c >= 0x20 && c < 0x7F)
        return QStringLiteral("'%1'").arg(QChar(c));
    if (c < 0x80 || UnicodeText::sequenceLength(p, end) == 0)
        return QStringLiteral("character 0x%1").arg(uint(c), 2, 16, QLatin1Char('0'));
    const char32_t code = UnicodeText::decode(p);
    return QStringLiteral("'%1'").arg(QString::fromUcs4(&code, 1));
}

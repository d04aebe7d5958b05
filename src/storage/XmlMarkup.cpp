#include "XmlMarkup.h"

#include "TextPosition.h"
#include "UnicodeText.h"
#include "shared/NumberText.h"

namespace {

bool isNameStart(char c)
{
    const auto u = static_cast<unsigned char>(c);
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || u == '_' || u == ':' || u >= 0x80;
}

bool isNameChar(char c)
{
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

} // namespace

QString XmlMarkup::tagText(QByteArrayView name, bool closing)
{
    return (closing ? QStringLiteral("</") : QStringLiteral("<")) + QString::fromUtf8(name) + u'>';
}

QString XmlMarkup::quoted(const Text &text)
{
    const QByteArrayView shown = text.bytes.first(std::min<qsizetype>(text.bytes.size(), 40));
    return u'"' + QString::fromUtf8(shown) + u'"';
}

bool XmlMarkup::fail(const char *at, ReadError::Kind kind, const QString &message)
{
    const qint64 offset = at - _text.data();
    const TextPosition position = TextPosition::at(_text, offset);
    if (kind == ReadError::Kind::Syntax && at == _end)
        kind = ReadError::Kind::Truncated;
    _error = {message, offset, position.line, position.column, kind};
    return false;
}

qint64 XmlMarkup::lineOf(const char *at) const
{
    return TextPosition::at(_text, at - _text.data()).line;
}

QByteArrayView XmlMarkup::nameAt(const char *p) const
{
    const char *q = p;
    while (q < _end && q - p < 40 && !isSpace(*q) && *q != '>' && *q != '/' && *q != '<')
        ++q;
    return QByteArrayView(p, q - p);
}

QString XmlMarkup::found(const char *at) const
{
    if (at >= _end)
        return QStringLiteral("the end of the input");
    if (*at == '<' && _end - at >= 2) {
        if (at[1] == '/')
            return tagText(nameAt(at + 2), true);
        if (startsWith(at, "<!--"))
            return QStringLiteral("a comment");
        if (startsWith(at, "<![CDATA["))
            return QStringLiteral("a CDATA section");
        if (at[1] == '!')
            return QStringLiteral("<!") + QString::fromUtf8(nameAt(at + 2));
        if (at[1] == '?')
            return QStringLiteral("a processing instruction");
        if (isNameStart(at[1]))
            return tagText(nameAt(at + 1));
    }
    const auto first = static_cast<unsigned char>(*at);
    if (first < 0x20 && !isSpace(*at))
        return QStringLiteral("the control character 0x%1").arg(first, 2, 16, QLatin1Char('0'));
    const char *q = at;
    while (q < _end && q - at < 24 && static_cast<unsigned char>(*q) >= 0x20 && *q != '<')
        ++q;
    if (q == at)
        ++q;
    return u'"' + QString::fromUtf8(at, q - at) + u'"';
}

bool XmlMarkup::skipPast(QByteArrayView terminator, const char *at, const QString &what)
{
    const qsizetype from = _p - _text.data();
    const qsizetype found = _text.indexOf(terminator, from);
    if (found < 0)
        return fail(at, ReadError::Kind::Truncated,
                    QStringLiteral("unterminated %1: no \"%2\" follows")
                        .arg(what, QString::fromLatin1(terminator)));
    _p = _text.data() + found + terminator.size();
    return true;
}

bool XmlMarkup::skipComment()
{
    const char *at = _p;
    _p += 4;
    return skipPast("-->", at, QStringLiteral("comment"));
}

bool XmlMarkup::isXmlDeclaration(const char *p) const
{
    return startsWith(p, "<?xml") && _end - p > 5 && (isSpace(p[5]) || p[5] == '?');
}

bool XmlMarkup::skipProcessingInstruction()
{
    const char *at = _p;
    _p += 2;
    return skipPast("?>", at, QStringLiteral("processing instruction"));
}

bool XmlMarkup::skipQuoted(const char *what)
{
    if (_p == _end || (*_p != '"' && *_p != '\''))
        return fail(_p, ReadError::Kind::Syntax,
                    QStringLiteral("expected a quoted %1, found %2")
                        .arg(QLatin1StringView(what), found(_p)));
    const char quote = *_p;
    const char *at = _p;
    const void *close = std::memchr(_p + 1, quote, size_t(_end - _p - 1));
    if (!close)
        return fail(
            at, ReadError::Kind::Truncated,
            QStringLiteral("unterminated %1: no closing quote").arg(QLatin1StringView(what)));
    _p = static_cast<const char *>(close) + 1;
    return true;
}

// The internal subset may hold comments, processing instructions and
// parameter-entity references; declarations are refused, as by the
// platform's reader (they could only define what a plist does not use).
bool XmlMarkup::skipInternalSubset()
{
    ++_p;
    for (;;) {
        skipSpace();
        if (_p == _end)
            return fail(_p, ReadError::Kind::Truncated,
                        QStringLiteral("unterminated DOCTYPE: expected ']', found the "
                                       "end of the input"));
        if (*_p == ']') {
            ++_p;
            return true;
        }
        if (startsWith(_p, "<!--")) {
            if (!skipComment())
                return false;
        } else if (startsWith(_p, "<?")) {
            if (!skipProcessingInstruction())
                return false;
        } else if (*_p == '%') {
            const char *at = _p++;
            while (_p < _end && isNameChar(*_p))
                ++_p;
            if (_p == _end || *_p != ';' || _p == at + 1)
                return fail(at, ReadError::Kind::Syntax,
                            QStringLiteral("malformed parameter-entity reference in "
                                           "the DOCTYPE"));
            ++_p;
        } else if (startsWith(_p, "<!")) {
            return fail(_p, ReadError::Kind::Unsupported,
                        QStringLiteral("declarations in the DOCTYPE are not supported: "
                                       "found %1")
                            .arg(found(_p)));
        } else {
            return fail(_p, ReadError::Kind::Syntax,
                        QStringLiteral("expected ']' to end the DOCTYPE's internal subset, "
                                       "found %1")
                            .arg(found(_p)));
        }
    }
}

bool XmlMarkup::skipDoctype()
{
    _p += 9; // "<!DOCTYPE"
    if (!skipSpace())
        return fail(
            _p, ReadError::Kind::Syntax,
            QStringLiteral("expected white space after <!DOCTYPE, found %1").arg(found(_p)));
    const char *name = _p;
    while (_p < _end && isNameChar(*_p))
        ++_p;
    if (_p == name)
        return fail(_p, ReadError::Kind::Syntax,
                    QStringLiteral("expected the root element's name in the DOCTYPE, "
                                   "found %1")
                        .arg(found(_p)));
    skipSpace();
    if (startsWith(_p, "PUBLIC")) {
        _p += 6;
        skipSpace();
        if (!skipQuoted("public identifier"))
            return false;
        skipSpace();
        if (_p < _end && (*_p == '"' || *_p == '\'') && !skipQuoted("system identifier"))
            return false;
    } else if (startsWith(_p, "SYSTEM")) {
        _p += 6;
        skipSpace();
        if (!skipQuoted("system identifier"))
            return false;
    }
    skipSpace();
    if (_p < _end && *_p == '[') {
        if (!skipInternalSubset())
            return false;
        skipSpace();
    }
    if (_p == _end || *_p != '>')
        return fail(_p, ReadError::Kind::Syntax,
                    QStringLiteral("expected '>' to end the DOCTYPE, found %1").arg(found(_p)));
    ++_p;
    return true;
}

// Up to the root element's '<'.
bool XmlMarkup::prolog()
{
    bool first = true;
    bool sawDoctype = false;
    for (;; first = false) {
        skipSpace();
        if (_p == _end) {
            if (_text.isEmpty())
                return fail(_p, ReadError::Kind::Empty, QStringLiteral("the input is empty"));
            return fail(_p, ReadError::Kind::Truncated,
                        QStringLiteral("expected <plist> or a value element, found the end of "
                                       "the input"));
        }
        if (isXmlDeclaration(_p) && !first)
            return fail(_p, ReadError::Kind::Syntax,
                        QStringLiteral("the XML declaration must come first"));
        if (startsWith(_p, "<?")) {
            if (!skipProcessingInstruction())
                return false;
        } else if (startsWith(_p, "<!--")) {
            if (!skipComment())
                return false;
        } else if (startsWith(_p, "<!DOCTYPE")) {
            if (sawDoctype)
                return fail(_p, ReadError::Kind::Syntax, QStringLiteral("a second DOCTYPE"));
            sawDoctype = true;
            if (!skipDoctype())
                return false;
        } else if (_end - _p >= 2 && *_p == '<' && isNameStart(_p[1])) {
            return true;
        } else {
            return fail(
                _p, ReadError::Kind::Syntax,
                QStringLiteral("expected <plist> or a value element, found %1").arg(found(_p)));
        }
    }
}

bool XmlMarkup::epilog()
{
    for (;;) {
        skipSpace();
        if (_p == _end)
            return true;
        if (startsWith(_p, "<!--")) {
            if (!skipComment())
                return false;
        } else if (startsWith(_p, "<?") && !isXmlDeclaration(_p)) {
            if (!skipProcessingInstruction())
                return false;
        } else {
            return fail(_p, ReadError::Kind::TrailingContent,
                        QStringLiteral("expected the end of the input after the "
                                       "property list, found %1")
                            .arg(found(_p)));
        }
    }
}

// Attributes are checked for form and skipped: no plist element needs one.
bool XmlMarkup::skipAttributes(Tag &tag)
{
    for (;;) {
        const bool spaced = skipSpace();
        if (_p == _end)
            return fail(_p, ReadError::Kind::Truncated,
                        QStringLiteral("unterminated tag %1").arg(tagText(tag.name)));
        if (*_p == '>') {
            ++_p;
            return true;
        }
        if (*_p == '/' && _end - _p >= 2 && _p[1] == '>') {
            _p += 2;
            tag.empty = true;
            return true;
        }
        if (!spaced || !isNameStart(*_p))
            return fail(_p, ReadError::Kind::Syntax,
                        QStringLiteral("expected an attribute, '>' or '/>' in %1, found "
                                       "%2")
                            .arg(tagText(tag.name), found(_p)));
        while (_p < _end && isNameChar(*_p))
            ++_p;
        skipSpace();
        if (_p == _end || *_p != '=')
            return fail(_p, ReadError::Kind::Syntax,
                        QStringLiteral("expected '=' after an attribute name in %1, "
                                       "found %2")
                            .arg(tagText(tag.name), found(_p)));
        ++_p;
        skipSpace();
        const char *value = _p;
        if (!skipQuoted("attribute value"))
            return false;
        if (std::memchr(value, '<', size_t(_p - value)))
            return fail(value, ReadError::Kind::Syntax,
                        QStringLiteral("'<' in an attribute value of %1").arg(tagText(tag.name)));
    }
}

// At '<' before a name.
bool XmlMarkup::unknownElement(const Tag &tag)
{
    return fail(tag.at, ReadError::Kind::UnknownType,
                QStringLiteral("unknown element %1").arg(tagText(tag.name)));
}

bool XmlMarkup::unclosedEndTag(QByteArrayView name)
{
    return fail(
        _p, ReadError::Kind::Syntax,
        QStringLiteral("expected '>' to end %1, found %2").arg(tagText(name, true), found(_p)));
}

// At '&': appends the character a reference stands for.
bool XmlMarkup::reference(Text &text)
{
    const char *at = _p;
    const char *q = _p + 1;
    while (q < _end && q - at < 64 && (isNameChar(*q) || *q == '#'))
        ++q;
    if (q == _end || *q != ';')
        return fail(at, ReadError::Kind::Escape,
                    QStringLiteral("expected ';' after %1")
                        .arg(u'"' + QString::fromUtf8(at, q - at) + u'"'));
    const QByteArrayView name(at + 1, q - at - 1);
    _p = q + 1;
    static constexpr struct
    {
        QByteArrayView name;
        char c;
    } kEntities[] = {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto &entity : kEntities) {
        if (name == entity.name) {
            _scratch += entity.c;
            return true;
        }
    }
    if (!name.startsWith('#'))
        return fail(at, ReadError::Kind::Escape,
                    QStringLiteral("unknown entity &%1;").arg(QString::fromUtf8(name)));
    const bool hex = name.size() > 1 && name[1] == 'x';
    const QByteArrayView digits = name.sliced(hex ? 2 : 1);
    quint64 c = 0;
    bool overflow = false;
    const char *digitsEnd = digits.data() + digits.size();
    const bool whole =
        !digits.isEmpty() && NumberText::accumulateDigits(digits.data(), digitsEnd, hex ? 16 : 10,
                                                          c, overflow) == digitsEnd;
    if (!whole || overflow || c == 0 || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
        return fail(at, ReadError::Kind::Escape,
                    QStringLiteral("&%1; is not a character").arg(QString::fromUtf8(name)));
    UnicodeText::append(_scratch, char32_t(c));
    text.ascii = text.ascii && c < 0x80;
    return true;
}

// At `</` closing a leaf.
bool XmlMarkup::closeLeaf(const Tag &tag)
{
    const char *at = _p;
    QByteArrayView name;
    if (!endTag(name))
        return false;
    if (!sameName(name, tag.name))
        return fail(at, ReadError::Kind::MismatchedTag,
                    QStringLiteral("%1 closes %2 opened on line %3")
                        .arg(tagText(name, true), tagText(tag.name))
                        .arg(lineOf(tag.at)));
    return true;
}

// Content with references, CDATA, comments or processing instructions,
// gathered in the scratch buffer from `_p` (where `stop` was found).
bool XmlMarkup::readMixedText(const Tag &tag, Text &text, const char *stop, bool nonAscii)
{
    _scratch.assign(_p, stop);
    _p = stop;
    for (;;) {
        if (_p == _end)
            return fail(_p, ReadError::Kind::Truncated,
                        QStringLiteral("unexpected end of the input: %1 opened on line "
                                       "%2 is not closed")
                            .arg(tagText(tag.name))
                            .arg(lineOf(tag.at)));
        if (*_p == '&') {
            if (!reference(text))
                return false;
        } else if (startsWith(_p, "</")) {
            break;
        } else if (startsWith(_p, "<![CDATA[")) {
            const char *start = _p + 9;
            _p = start;
            if (!skipPast("]]>", start - 9, QStringLiteral("CDATA section")))
                return false;
            nonAscii = nonAscii || SimdText::skipAscii(start, _p - 3, false) != _p - 3;
            _scratch.append(start, _p - 3);
        } else if (startsWith(_p, "<!--")) {
            if (!skipComment())
                return false;
        } else if (startsWith(_p, "<?")) {
            if (!skipProcessingInstruction())
                return false;
        } else {
            return fail(
                _p, ReadError::Kind::Syntax,
                QStringLiteral("%1 is not allowed in %2").arg(found(_p), tagText(tag.name)));
        }
        const char *run = _p;
        _p = SimdText::findMarkup(_p, _end, nonAscii);
        _scratch.append(run, _p);
    }
    text.bytes = QByteArrayView(_scratch.data(), qsizetype(_scratch.size()));
    text.ascii = text.ascii && !nonAscii;
    text.raw = false;
    return closeLeaf(tag);
}

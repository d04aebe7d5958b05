#include "XmlReader.h"

#include "ContainerBuilder.h"
#include "SimdText.h"
#include "SizeThreshold.h"
#include "StringCache.h"

#include "TextPosition.h"
#include "UnicodeText.h"
#include "XmlBase64.h"
#include "XmlDate.h"
#include "XmlEncoding.h"
#include "shared/NumberText.h"
#include "shared/PlistArray.h"
#include "shared/PlistDictionary.h"

#include <QStringDecoder>

#include <array>
#include <cstring>
#include <limits>
#include <string>

namespace {

enum class Element : quint8
{
    Plist,
    Dict,
    Array,
    Key,
    String,
    Integer,
    Real,
    True,
    False,
    Date,
    Data,
    Unknown,
};

constexpr QByteArrayView kElementNames[] = {"plist", "dict", "array", "key",  "string", "integer",
                                            "real",  "true", "false", "date", "data"};

QByteArrayView nameOf(Element element)
{
    return kElementNames[int(element)];
}

// Byte for byte: names are a few bytes long, so a loop beats a call to memcmp.
bool sameName(QByteArrayView a, QByteArrayView b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (a[i] != b[i])
            return false;
    }
    return true;
}

// The only element a name of this length and these letters could be.
Element candidateFor(QByteArrayView name)
{
    switch (name.size()) {
    case 3:
        return Element::Key;
    case 4:
        if (name[0] == 'r')
            return Element::Real;
        if (name[0] == 't')
            return Element::True;
        return name[3] == 't' ? Element::Dict : name[3] == 'e' ? Element::Date : Element::Data;
    case 5:
        return name[0] == 'p' ? Element::Plist : name[0] == 'a' ? Element::Array : Element::False;
    case 6:
        return Element::String;
    case 7:
        return Element::Integer;
    default:
        return Element::Unknown;
    }
}

Element elementNamed(QByteArrayView name)
{
    const Element candidate = candidateFor(name);
    return candidate != Element::Unknown && sameName(name, nameOf(candidate)) ? candidate
                                                                              : Element::Unknown;
}

bool isSpace(char c)
{
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

// Data whose content runs past this many bytes counts as large.
constexpr qsizetype kLargeData = sizeThreshold(64 * 1024, 64);

// What ends an element name: white space, '>', '/' and '<'.
constexpr std::array<bool, 256> kEndsName = [] {
    std::array<bool, 256> table{};
    for (const char c : {' ', '\n', '\t', '\r', '>', '/', '<'})
        table[size_t(c)] = true;
    return table;
}();

bool isNameStart(char c)
{
    const auto u = static_cast<unsigned char>(c);
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || u == '_' || u == ':' || u >= 0x80;
}

bool isNameChar(char c)
{
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

QString tagText(QByteArrayView name, bool closing = false)
{
    return (closing ? QStringLiteral("</") : QStringLiteral("<")) + QString::fromUtf8(name) + u'>';
}

/// A start tag as read: where it began, its name, and whether it was empty (`<x/>`).
struct Tag
{
    const char *at = nullptr;
    QByteArrayView name;
    Element element = Element::Unknown;
    bool empty = false;
};

/// The character content of a leaf element: a view into the document when it
/// held no references or markup, else into the reader's scratch buffer.
struct Text
{
    QByteArrayView bytes;
    const char *at = nullptr; // where the content began
    bool ascii = true;
    bool raw = true; // `bytes` lies in the document, so offsets map back
};

/// An open element that holds others: <dict>, <array>, or <plist>, which is
/// built as an array of its one value.
struct Opened
{
    Element element;
    const char *at;
};
using Builder = ContainerBuilder<Opened>;

/// One pass over one UTF-8 document: the prolog, the elements on an explicit
/// stack of open containers, then the epilog. The first failure ends the pass
/// and is kept with its position.
class Parser
{
public:
    explicit Parser(QByteArrayView text)
        : _text(text), _p(text.data()), _end(text.data() + text.size())
    {}

    ReadResult run()
    {
        if (!prolog() || !body() || !epilog())
            return ReadResult::failure(_error);
        return ReadResult::success(std::move(_root), ADPlistFormatXML);
    }

private:
    // --- errors -------------------------------------------------------------

    // Markup out of place at the end of the input means it was cut short.
    bool fail(const char *at, ReadError::Kind kind, const QString &message)
    {
        const qint64 offset = at - _text.data();
        const TextPosition position = TextPosition::at(_text, offset);
        if (kind == ReadError::Kind::Syntax && at == _end)
            kind = ReadError::Kind::Truncated;
        _error = {message, offset, position.line, position.column, kind};
        return false;
    }

    qint64 lineOf(const char *at) const { return TextPosition::at(_text, at - _text.data()).line; }

    bool startsWith(const char *p, QByteArrayView prefix) const
    {
        return _end - p >= prefix.size() && std::memcmp(p, prefix.data(), prefix.size()) == 0;
    }

    QByteArrayView nameAt(const char *p) const
    {
        const char *q = p;
        while (q < _end && q - p < 40 && !isSpace(*q) && *q != '>' && *q != '/' && *q != '<')
            ++q;
        return QByteArrayView(p, q - p);
    }

    // What stands at `at`, for "found ..." in messages.
    QString found(const char *at) const
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

    // The innermost open element, for messages.
    QString opened() const
    {
        return QStringLiteral("%1 opened on line %2")
            .arg(tagText(nameOf(_open.info().element)))
            .arg(lineOf(_open.info().at));
    }

    // --- markup around the values ---------------------------------------------

    bool skipSpace()
    {
        const char *start = _p;
        _p = SimdText::skipSpace(_p, _end);
        return _p != start;
    }

    bool skipPast(QByteArrayView terminator, const char *at, const QString &what)
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

    bool skipComment()
    {
        const char *at = _p;
        _p += 4;
        return skipPast("-->", at, QStringLiteral("comment"));
    }

    bool isXmlDeclaration(const char *p) const
    {
        return startsWith(p, "<?xml") && _end - p > 5 && (isSpace(p[5]) || p[5] == '?');
    }

    bool skipProcessingInstruction()
    {
        const char *at = _p;
        _p += 2;
        return skipPast("?>", at, QStringLiteral("processing instruction"));
    }

    bool skipQuoted(const char *what)
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
    bool skipInternalSubset()
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

    bool skipDoctype()
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
    bool prolog()
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

    bool epilog()
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

    // --- tags -------------------------------------------------------------------

    // Attributes are checked for form and skipped: no plist element needs one.
    bool skipAttributes(Tag &tag)
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
                return fail(
                    value, ReadError::Kind::Syntax,
                    QStringLiteral("'<' in an attribute value of %1").arg(tagText(tag.name)));
        }
    }

    // At '<' before a name.
    bool startTag(Tag &tag)
    {
        tag.at = _p;
        const char *name = ++_p;
        const char *p = name; // a local, which the compiler keeps in a register
        while (p < _end && !kEndsName[static_cast<unsigned char>(*p)])
            ++p;
        _p = p;
        tag.name = QByteArrayView(name, _p - name);
        tag.element = elementNamed(tag.name);
        if (tag.element == Element::Unknown)
            return fail(tag.at, ReadError::Kind::UnknownType,
                        QStringLiteral("unknown element %1").arg(tagText(tag.name)));
        if (_p < _end && *_p == '>') {
            ++_p;
            return true;
        }
        return skipAttributes(tag);
    }

    // At "</": reads the name and the closing '>'.
    bool endTag(QByteArrayView &name)
    {
        const char *start = _p + 2;
        const char *p = start;
        while (p < _end && !isSpace(*p) && *p != '>' && *p != '<')
            ++p;
        _p = p;
        name = QByteArrayView(start, _p - start);
        skipSpace();
        if (_p == _end || *_p != '>')
            return fail(_p, ReadError::Kind::Syntax,
                        QStringLiteral("expected '>' to end %1, found %2")
                            .arg(tagText(name, true), found(_p)));
        ++_p;
        return true;
    }

    // --- leaf content -------------------------------------------------------------

    // At '&': appends the character a reference stands for.
    bool reference(Text &text)
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
        const bool whole = !digits.isEmpty() &&
                           NumberText::accumulateDigits(digits.data(), digitsEnd, hex ? 16 : 10, c,
                                                        overflow) == digitsEnd;
        if (!whole || overflow || c == 0 || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
            return fail(at, ReadError::Kind::Escape,
                        QStringLiteral("&%1; is not a character").arg(QString::fromUtf8(name)));
        UnicodeText::append(_scratch, char32_t(c));
        text.ascii = text.ascii && c < 0x80;
        return true;
    }

    // At `</` closing a leaf.
    bool closeLeaf(const Tag &tag)
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
    bool readMixedText(const Tag &tag, Text &text, const char *stop, bool nonAscii)
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

    // A leaf's content before any of it is read.
    Text emptyTextHere() const { return Text{QByteArrayView(_p, qsizetype(0)), _p, true, true}; }

    // After a leaf's start tag: its content and end tag.
    bool readText(const Tag &tag, Text &text)
    {
        text = emptyTextHere();
        if (tag.empty)
            return true;
        bool nonAscii = false;
        const char *stop = SimdText::findMarkup(_p, _end, nonAscii); // before it is passed on
        return finishText(tag, text, stop, nonAscii);
    }

    // The content of a leaf from `_p`, whose first markup is at `stop`.
    bool finishText(const Tag &tag, Text &text, const char *stop, bool nonAscii)
    {
        if (_end - stop >= 2 && stop[0] == '<' && stop[1] == '/') {
            text.bytes = QByteArrayView(_p, stop - _p);
            text.ascii = !nonAscii;
            _p = stop;
            // Most end tags are exactly "</name>".
            if (const char *after = pastExactEndTag(stop, tag)) {
                _p = after;
                return true;
            }
            return closeLeaf(tag);
        }
        return readMixedText(tag, text, stop, nonAscii);
    }

    // Just past `at` if "</name>" of `tag` stands there, else null.
    const char *pastExactEndTag(const char *at, const Tag &tag) const
    {
        const qsizetype size = tag.name.size();
        if (_end - at < size + 3 || at[0] != '<' || at[1] != '/' || at[size + 2] != '>' ||
            !sameName(QByteArrayView(at + 2, size), tag.name))
            return nullptr;
        return at + size + 3;
    }

    bool makeString(const Text &text, PlistValue &value)
    {
        if (quint64(text.bytes.size()) > std::numeric_limits<quint32>::max())
            return fail(text.at, ReadError::Kind::TooLarge,
                        QStringLiteral("a string longer than 4 GB"));
        if (text.ascii) {
            value = _strings.ascii(text.bytes.data(), text.bytes.size());
            return true;
        }
        _wide.resize(size_t(text.bytes.size()));
        const char *p = text.bytes.data();
        const char16_t *end = UnicodeText::toUtf16(p, p + text.bytes.size(), _wide.data());
        value = PlistValue::fromUtf16(_wide.data(), end - _wide.data());
        return true;
    }

    QString quoted(const Text &text) const
    {
        const QByteArrayView shown = text.bytes.first(std::min<qsizetype>(text.bytes.size(), 40));
        return u'"' + QString::fromUtf8(shown) + u'"';
    }

    // Decimal or 0x hexadecimal, with a sign; white space may lead and follow
    // the sign, as the platform's reader allows.
    bool makeInteger(const Text &text, PlistValue &value)
    {
        NumberText::Integer integer;
        const int forms = NumberText::Hexadecimal | NumberText::SpaceAroundSign;
        switch (NumberText::parseInteger(text.bytes, forms, integer)) {
        case NumberText::Status::Ok:
            value =
                integer.negative ? PlistValue(integer.toSigned()) : PlistValue(integer.magnitude);
            return true;
        case NumberText::Status::OutOfRange:
            return fail(text.at, ReadError::Kind::OutOfRange,
                        QStringLiteral("integer %1 is out of the 64-bit range").arg(quoted(text)));
        case NumberText::Status::Malformed:
            break;
        }
        return fail(text.at, ReadError::Kind::Number,
                    QStringLiteral("expected an integer in <integer>, found %1").arg(quoted(text)));
    }

    // White space may lead, not follow; a real too large or too small for a
    // double becomes the infinity or zero it rounds to.
    bool makeReal(const Text &text, PlistValue &value)
    {
        const char *first =
            SimdText::skipSpace(text.bytes.data(), text.bytes.data() + text.bytes.size());
        double d = 0;
        const QByteArrayView number(first, text.bytes.data() + text.bytes.size());
        if (NumberText::parseReal(number, d) == NumberText::Status::Malformed)
            return fail(text.at, ReadError::Kind::Number,
                        QStringLiteral("expected a number in <real>, found %1").arg(quoted(text)));
        value = PlistValue(d);
        return true;
    }

    bool makeLeaf(const Tag &tag, const Text &text, PlistValue &value)
    {
        switch (tag.element) {
        case Element::Key:
        case Element::String:
            return makeString(text, value);
        case Element::Integer:
            return makeInteger(text, value);
        case Element::Real:
            return makeReal(text, value);
        case Element::True:
        case Element::False:
            for (const char c : text.bytes) {
                if (!isSpace(c))
                    return fail(
                        text.at, ReadError::Kind::Syntax,
                        QStringLiteral("%1 holds text: %2").arg(tagText(tag.name), quoted(text)));
            }
            value = PlistValue(tag.element == Element::True);
            return true;
        case Element::Date: {
            const std::optional<double> seconds = XmlDate::parse(text.bytes);
            if (!seconds)
                return fail(text.at, ReadError::Kind::Date,
                            QStringLiteral("expected a date like "
                                           "2001-01-01T00:00:00Z in <date>, found %1")
                                .arg(quoted(text)));
            value = PlistValue::date(*seconds);
            return true;
        }
        case Element::Data:
            return makeData(text, value);
        default:
            break;
        }
        return false;
    }

    // Data that runs past kLargeData is decoded as it is found rather than
    // scanned for its end first: one pass over the document, not two.
    bool readData(const Tag &tag, PlistValue &value)
    {
        Text text;
        if (tag.empty)
            return readText(tag, text) && makeData(text, value);
        text = emptyTextHere();
        const char *limit = _end - _p > kLargeData ? _p + kLargeData : _end;
        bool nonAscii = false;
        const char *stop = SimdText::findMarkup(_p, limit, nonAscii);
        if (stop == limit && limit != _end) {
            if (readLargeData(tag, value))
                return true;
            stop = SimdText::findMarkup(limit, _end, nonAscii);
        }
        return finishText(tag, text, stop, nonAscii) && makeData(text, value);
    }

    // Plain Base64 closed by its end tag; anything else (references, CDATA,
    // comments, a mistake) is left to the general way, which also words
    // the errors.
    bool readLargeData(const Tag &tag, PlistValue &value)
    {
        QByteArray bytes;
        qsizetype end = 0;
        if (!XmlBase64::decodePrefix(QByteArrayView(_p, _end - _p), bytes, end))
            return false;
        const char *after = pastExactEndTag(_p + end, tag);
        if (!after)
            return false;
        _p = after;
        bytes.squeeze(); // the last step of growth may have left room
        value = PlistValue::data(bytes);
        return true;
    }

    bool makeData(const Text &text, PlistValue &value)
    {
        QByteArray bytes;
        if (!decodeText(text, bytes))
            return false;
        value = PlistValue::data(bytes);
        return true;
    }

    bool decodeText(const Text &text, QByteArray &bytes)
    {
        qsizetype errorAt = 0;
        if (XmlBase64::decode(text.bytes, bytes, errorAt))
            return true;
        const char *at = text.raw ? text.at + errorAt : text.at;
        if (errorAt == text.bytes.size())
            return fail(at, ReadError::Kind::Data,
                        QStringLiteral("Base64 in <data> ends in the middle of a byte"));
        return fail(at, ReadError::Kind::Data,
                    QStringLiteral("expected Base64 in <data>, found %1")
                        .arg(u'"' + QString::fromUtf8(text.bytes.sliced(errorAt).first(1)) + u'"'));
    }

    // --- values and containers ------------------------------------------------------

    void deliver(PlistValue value)
    {
        if (_open.isEmpty()) {
            _root = std::move(value);
            _done = true;
            return;
        }
        _open.add(std::move(value));
    }

    // Whether the start tag may stand where it is.
    bool placeAllowed(const Tag &tag)
    {
        if (_open.isEmpty())
            return tag.element != Element::Key ||
                   fail(tag.at, ReadError::Kind::Structure,
                        QStringLiteral("<key> stands outside a <dict>"));
        const Element top = _open.info().element;
        if (top == Element::Dict) {
            const bool wantsKey = _open.count() % 2 == 0;
            if (wantsKey == (tag.element == Element::Key))
                return true;
            if (wantsKey)
                return fail(
                    tag.at, ReadError::Kind::Structure,
                    QStringLiteral("expected <key> in <dict>, found %1").arg(tagText(tag.name)));
            return fail(tag.at, ReadError::Kind::Structure,
                        QStringLiteral("key \"%1\" has no value: expected a value, found "
                                       "<key>")
                            .arg(_open.lastKey().toString()));
        }
        if (tag.element == Element::Key)
            return fail(
                tag.at, ReadError::Kind::Structure,
                QStringLiteral("expected a value in %1, found <key>").arg(tagText(nameOf(top))));
        if (tag.element == Element::Plist)
            return fail(tag.at, ReadError::Kind::Structure,
                        QStringLiteral("<plist> may only be the root element"));
        if (top == Element::Plist && _open.count() > 0)
            return fail(tag.at, ReadError::Kind::Structure,
                        QStringLiteral("<plist> holds more than one value: found %1")
                            .arg(tagText(tag.name)));
        return true;
    }

    bool open(const Tag &tag)
    {
        if (!placeAllowed(tag))
            return false;
        switch (tag.element) {
        case Element::Plist:
            if (tag.empty)
                return fail(tag.at, ReadError::Kind::Structure,
                            QStringLiteral("<plist> holds no value"));
            _open.open(Builder::Kind::Array, {Element::Plist, tag.at});
            return true;
        case Element::Dict:
            if (tag.empty)
                deliver(PlistDictionary::create());
            else
                _open.open(Builder::Kind::Dictionary, {Element::Dict, tag.at});
            return true;
        case Element::Array:
            if (tag.empty)
                deliver(PlistArray::create());
            else
                _open.open(Builder::Kind::Array, {Element::Array, tag.at});
            return true;
        case Element::Data: {
            PlistValue value;
            if (!readData(tag, value))
                return false;
            deliver(std::move(value));
            return true;
        }
        default: {
            Text text;
            PlistValue value;
            if (!readText(tag, text) || !makeLeaf(tag, text, value))
                return false;
            deliver(std::move(value)); // a key goes into its dictionary like a value
            return true;
        }
        }
    }

    // A dictionary of just "CF$UID" and a non-negative integer is a keyed-archiver UID.
    static PlistValue finishDictionary(const PlistDictionary &dict)
    {
        if (dict.count() != 1)
            return dict;
        const PlistValue &value = dict.valueAt(0);
        const bool uid =
            value.isInteger() && (value.isUnsigned() || value.toInteger() >= 0) &&
            QAnyStringView::equal(dict.keyValueAt(0).stringView(), QLatin1StringView("CF$UID"));
        return uid ? PlistValue::uid(value.toUnsigned()) : PlistValue(dict);
    }

    bool close()
    {
        const char *at = _p;
        QByteArrayView name;
        if (!endTag(name))
            return false;
        const Element element = _open.info().element;
        if (!sameName(name, nameOf(element)))
            return fail(at, ReadError::Kind::MismatchedTag,
                        QStringLiteral("%1 closes %2").arg(tagText(name, true), opened()));
        if (element == Element::Dict && _open.count() % 2 != 0)
            return fail(at, ReadError::Kind::Structure,
                        QStringLiteral("key \"%1\" has no value: expected a value, found %2")
                            .arg(_open.lastKey().toString(), tagText(name, true)));
        if (element == Element::Plist && _open.count() == 0)
            return fail(at, ReadError::Kind::Structure, QStringLiteral("<plist> holds no value"));
        const PlistValue value = _open.close();
        if (element == Element::Dict)
            deliver(finishDictionary(value.toDictionary()));
        else if (element == Element::Plist)
            deliver(value.toArray().at(0));
        else
            deliver(value);
        return true;
    }

    // "<!" inside a container: only a comment may stand there.
    bool markupInContainer()
    {
        if (startsWith(_p, "<!--"))
            return skipComment();
        if (startsWith(_p, "<!DOCTYPE"))
            return fail(_p, ReadError::Kind::Syntax,
                        QStringLiteral("a DOCTYPE must come before the root element"));
        return fail(_p, ReadError::Kind::Syntax,
                    QStringLiteral("%1 is not allowed in %2")
                        .arg(found(_p), tagText(nameOf(_open.info().element))));
    }

    bool body()
    {
        while (!_done) {
            if (!_open.isEmpty()) {
                skipSpace();
                if (_p == _end)
                    return fail(_p, ReadError::Kind::Truncated,
                                QStringLiteral("unexpected end of the input: %1 is not closed")
                                    .arg(opened()));
                if (*_p != '<' || _end - _p < 2)
                    return fail(_p, ReadError::Kind::Syntax,
                                QStringLiteral("text is not allowed in %1: found %2")
                                    .arg(tagText(nameOf(_open.info().element)), found(_p)));
            }
            bool ok;
            switch (_p[1]) {
            case '/':
                ok = close();
                break;
            case '!':
                ok = markupInContainer();
                break;
            case '?':
                ok = skipProcessingInstruction();
                break;
            default: {
                Tag tag;
                ok = startTag(tag) && open(tag);
                break;
            }
            }
            if (!ok)
                return false;
        }
        return true;
    }

    QByteArrayView _text;
    const char *_p;
    const char *_end;
    Builder _open;
    PlistValue _root;
    bool _done = false;
    StringCache _strings;
    std::string _scratch; // text with references, reused
    std::u16string _wide; // non-ASCII text as UTF-16, reused
    ReadError _error;
};

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
    return Parser(decoded.toUtf8()).run();
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
        return Parser(transcoded.utf8).run();
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
    return Parser(text).run();
}

bool XmlReader::recognizes(QByteArrayView bytes)
{
    const QByteArray prefix =
        XmlEncoding::asciiPrefix(bytes.first(std::min<qsizetype>(bytes.size(), 1024)), 256);
    qsizetype i = 0;
    while (i < prefix.size() && isSpace(prefix[i]))
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
            if (after == '>' || after == '/' || isSpace(after))
                return true;
        }
    }
    return false;
}

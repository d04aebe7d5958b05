#include "JsonReader.h"

#include "BackslashEscapes.h"
#include "JsonEncoding.h"
#include "SimdText.h"
#include "TextParser.h"
#include "UnicodeText.h"
#include "shared/NumberText.h"

#include <cmath>
#include <cstring>
#include <string>
#include <string_view>

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isWhite(char c)
{
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

struct Opened
{
    const char *at;
};

/// One pass over checked UTF-8 text in the JSON grammar.
class Parser : public TextParser<Parser, Opened>
{
public:
    using TextParser::TextParser;

    /// The text's value, or none with `failure()` set.
    PlistValue parse();

private:
    friend class TextParser;

    Step startValue(PlistValue &out);
    Step next(PlistValue &out)
    {
        return _open.kind() == Builder::Kind::Dictionary ? nextMember(out) : startValue(out);
    }
    Step open(bool isObject, PlistValue &out);
    Step attach(PlistValue element, PlistValue &out);
    Step nextMember(PlistValue &out);
    void skipWhite();
    Step readLiteral(std::string_view word, PlistValue value, PlistValue &out);
    Step readNumber(PlistValue &out);
    Step readReal(const char *start, PlistValue &out);
    Step readString(PlistValue &out);
    Step readEscaped(const char *start, const char *run, PlistValue &out);
    bool readEscape();
    QString unclosed() const;
};

PlistValue Parser::parse()
{
    PlistValue value;
    if (run(startValue(value), value) == Step::Failed)
        return {};
    skipWhite();
    if (_p != _end) {
        fail(_p, ReadError::Kind::TrailingContent,
             QStringLiteral("expected the end of the text after the value, found %1").arg(found()));
        return {};
    }
    return value;
}

Parser::Step Parser::startValue(PlistValue &out)
{
    skipWhite();
    if (_p == _end)
        return fail(
            _p, _begin == _end ? ReadError::Kind::Empty : ReadError::Kind::Truncated,
            QStringLiteral("expected a value, found the end of the text%1").arg(unclosed()));
    switch (*_p) {
    case '{':
        return open(true, out);
    case '[':
        return open(false, out);
    case '"':
        return readString(out);
    case 't':
        return readLiteral("true", PlistValue(true), out);
    case 'f':
        return readLiteral("false", PlistValue(false), out);
    case 'n':
        return readLiteral("null", PlistValue::null(), out);
    default:
        break;
    }
    if (*_p == '-' || isDigit(*_p))
        return readNumber(out);
    return fail(_p, ReadError::Kind::Syntax,
                QStringLiteral("expected a value, found %1").arg(found()));
}

Parser::Step Parser::open(bool isObject, PlistValue &out)
{
    const char *opened = _p++;
    skipWhite();
    if (_p < _end && *_p == (isObject ? '}' : ']')) {
        ++_p;
        out = isObject ? PlistValue(PlistDictionary::create()) : PlistValue(PlistArray::create());
        return Step::Value;
    }
    _open.open(isObject ? Builder::Kind::Dictionary : Builder::Kind::Array, {opened});
    return Step::Next;
}

Parser::Step Parser::attach(PlistValue element, PlistValue &out)
{
    _open.add(std::move(element));
    const bool isObject = _open.kind() == Builder::Kind::Dictionary;
    skipWhite();
    if (_p < _end && *_p == ',') {
        ++_p;
        return Step::Next;
    }
    const char closer = isObject ? '}' : ']';
    if (_p < _end && *_p == closer) {
        ++_p;
        out = _open.close();
        return Step::Value;
    }
    return fail(
        _p, ReadError::Kind::Syntax,
        QStringLiteral("expected ',' or '%1' after %2, found %3%4")
            .arg(QChar(closer),
                 isObject ? QStringLiteral("an object member") : QStringLiteral("an array element"),
                 found(), unclosed()));
}

Parser::Step Parser::nextMember(PlistValue &out)
{
    skipWhite();
    if (_p == _end || *_p != '"')
        return fail(
            _p, ReadError::Kind::Syntax,
            QStringLiteral("expected a string as key, found %1%2").arg(found(), unclosed()));
    PlistValue key;
    if (readString(key) == Step::Failed)
        return Step::Failed;
    skipWhite();
    if (_p == _end || *_p != ':')
        return fail(_p, ReadError::Kind::Syntax,
                    QStringLiteral("expected ':' after the key \"%1\", found %2%3")
                        .arg(key.toString(), found(), unclosed()));
    ++_p;
    _open.add(std::move(key));
    return startValue(out);
}

void Parser::skipWhite()
{
    while (_p < _end && isWhite(*_p))
        ++_p;
}

Parser::Step Parser::readLiteral(std::string_view word, PlistValue value, PlistValue &out)
{
    if (size_t(_end - _p) >= word.size() && std::memcmp(_p, word.data(), word.size()) == 0) {
        _p += word.size();
        out = std::move(value);
        return Step::Value;
    }
    const char *last = _p;
    while (last < _end && last - _p < 16 && ((*last >= 'a' && *last <= 'z') || isDigit(*last)))
        ++last;
    return fail(_p, ReadError::Kind::Syntax,
                QStringLiteral("expected %1, found '%2'")
                    .arg(QLatin1StringView(word.data(), qsizetype(word.size())),
                         QLatin1StringView(_p, last - _p)));
}

Parser::Step Parser::readNumber(PlistValue &out)
{
    const char *start = _p;
    const bool negative = *_p == '-';
    if (negative)
        ++_p;
    if (_p == _end || !isDigit(*_p))
        return fail(_p, ReadError::Kind::Number,
                    QStringLiteral("expected a digit after '-', found %1").arg(found()));
    quint64 magnitude = 0;
    bool tooLong = false;
    if (*_p == '0') {
        if (++_p < _end && isDigit(*_p))
            return fail(start, ReadError::Kind::Number,
                        QStringLiteral("a number must not start with 0 followed by digits"));
    }
    _p = NumberText::accumulateDigits(_p, _end, 10, magnitude, tooLong);
    bool real = false;
    if (_p < _end && *_p == '.') {
        if (++_p == _end || !isDigit(*_p))
            return fail(_p, ReadError::Kind::Number,
                        QStringLiteral("expected a digit after '.', found %1").arg(found()));
        while (_p < _end && isDigit(*_p))
            ++_p;
        real = true;
    }
    if (_p < _end && (*_p == 'e' || *_p == 'E')) {
        if (++_p < _end && (*_p == '+' || *_p == '-'))
            ++_p;
        if (_p == _end || !isDigit(*_p))
            return fail(_p, ReadError::Kind::Number,
                        QStringLiteral("expected a digit in the exponent, found %1").arg(found()));
        while (_p < _end && isDigit(*_p))
            ++_p;
        real = true;
    }
    if (real || tooLong || (negative && magnitude > NumberText::kMinSignedMagnitude))
        return readReal(start, out);
    out = negative ? PlistValue(qint64(0 - magnitude)) : PlistValue(magnitude);
    return Step::Value;
}

Parser::Step Parser::readReal(const char *start, PlistValue &out)
{
    double value = 0;
    const NumberText::Status status = NumberText::parseReal(QByteArrayView(start, _p), value);
    if (status == NumberText::Status::OutOfRange && std::isinf(value))
        return fail(start, ReadError::Kind::OutOfRange,
                    QStringLiteral("the number is too large for a double"));
    out = PlistValue(value); // one too small is the zero it rounds to
    return Step::Value;
}

Parser::Step Parser::readString(PlistValue &out)
{
    const char *start = _p++;
    const char *run = _p;
    _p = SimdText::findStringEnd(_p, _end, '"', ' ');
    if (_p < _end && *_p == '"') {
        out = _strings.ascii(run, _p - run);
        ++_p;
        return Step::Value;
    }
    return readEscaped(start, run, out);
}

// The rest of a string from its first backslash, control character, byte
// beyond ASCII or end. The text is checked here, as nothing else looks at it.
Parser::Step Parser::readEscaped(const char *start, const char *run, PlistValue &out)
{
    _buffer.clear();
    for (;;) {
        _buffer.append(run, _p);
        if (_p == _end)
            return fail(start, ReadError::Kind::Truncated,
                        QStringLiteral("the string is not closed: expected '\"' before "
                                       "the end of the text"));
        const auto c = uchar(*_p);
        if (c == '"') {
            ++_p;
            out = PlistValue::fromUtf16(_buffer.data(), qsizetype(_buffer.size()));
            return Step::Value;
        }
        if (c >= 0x80) {
            if (UnicodeText::sequenceLength(_p, _end) == 0)
                return fail(_p, ReadError::Kind::Encoding,
                            QStringLiteral("the text is not valid UTF-8"));
            UnicodeText::appendUtf16(_buffer, UnicodeText::decode(_p));
        } else if (c != '\\') {
            return fail(_p, ReadError::Kind::Syntax,
                        QStringLiteral("control character 0x%1 in a string: it must be escaped")
                            .arg(uint(c), 2, 16, QLatin1Char('0')));
        } else if (!readEscape()) {
            return Step::Failed;
        }
        run = _p;
        _p = SimdText::findStringEnd(_p, _end, '"', ' ');
    }
}

bool Parser::readEscape()
{
    const char *escape = _p++;
    const char c = _p < _end ? *_p++ : '\0';
    if (const int unit = BackslashEscapes::unitFor(c, "\"\\/bfnrt"); unit >= 0) {
        _buffer.push_back(char16_t(unit));
        return true;
    }
    if (c != 'u') {
        fail(escape, ReadError::Kind::Escape,
             QStringLiteral("invalid escape: expected one of \\\" \\\\ \\/ \\b \\f \\n "
                            "\\r \\t \\u after the backslash, found %1")
                 .arg(describe(escape + 1)));
        return false;
    }
    char16_t unit = 0;
    for (int i = 0; i < 4; ++i, ++_p) {
        const unsigned digit = _p < _end ? NumberText::digitValue(*_p) : 16;
        if (digit >= 16) {
            fail(_p, ReadError::Kind::Escape,
                 QStringLiteral("expected four hexadecimal digits after '\\u', found %1")
                     .arg(found()));
            return false;
        }
        unit = char16_t(unit * 16 + digit);
    }
    // Surrogates, paired or not, go in as units: a pair makes its character.
    _buffer.push_back(unit);
    return true;
}

// For messages at the end of the text: where the innermost open container began.
QString Parser::unclosed() const
{
    if (_p < _end || _open.isEmpty())
        return {};
    return JsonEncoding::unclosedNote(_begin, _end, _open.info().at,
                                      _open.kind() == Builder::Kind::Dictionary
                                          ? QLatin1StringView("object")
                                          : QLatin1StringView("array"));
}

} // namespace

ReadResult JsonReader::read(QByteArrayView bytes)
{
    return JsonEncoding::read<Parser>(bytes, ADPlistFormatJSON);
}

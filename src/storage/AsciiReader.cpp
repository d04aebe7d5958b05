#include "AsciiReader.h"

#include "AsciiDate.h"
#include "BackslashEscapes.h"
#include "JsonEncoding.h"
#include "SimdText.h"
#include "TextParser.h"
#include "UnicodeText.h"
#include "shared/NumberText.h"
#include "shared/PlistDictionary.h"

#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

enum CharClass : quint8
{
    kUnquoted = 1,
    kBlank = 2,
};

constexpr std::array<quint8, 256> makeClasses()
{
    std::array<quint8, 256> classes{};
    for (int c = 'a'; c <= 'z'; ++c)
        classes[c] |= kUnquoted;
    for (int c = 'A'; c <= 'Z'; ++c)
        classes[c] |= kUnquoted;
    for (int c = '0'; c <= '9'; ++c)
        classes[c] |= kUnquoted;
    // '*' goes beyond the classic set: other writers leave it unquoted.
    for (const char c : std::string_view("_$/:.-*"))
        classes[uchar(c)] |= kUnquoted;
    for (const char c : std::string_view(" \t\n\r\v\f"))
        classes[uchar(c)] |= kBlank;
    return classes;
}

constexpr std::array<quint8, 256> kClasses = makeClasses();

bool isUnquoted(char c)
{
    return kClasses[uchar(c)] & kUnquoted;
}

// Letters, digits and marks beyond ASCII stand unquoted too, as other
// writers leave them; symbols and punctuation do not.
bool isUnquotedAt(const char *p, const char *end)
{
    if (uchar(*p) < 0x80)
        return isUnquoted(*p);
    if (UnicodeText::sequenceLength(p, end) == 0)
        return false;
    const char32_t c = UnicodeText::decode(p);
    return QChar::isLetterOrNumber(c) || QChar::isMark(c);
}

bool isBlank(char c)
{
    return kClasses[uchar(c)] & kBlank;
}

// The value of a hexadecimal digit, or -1.
int hexValue(char c)
{
    const unsigned value = NumberText::digitValue(c);
    return value < 16 ? int(value) : -1;
}

int base64Value(char c)
{
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+')
        return 62;
    if (c == '/')
        return 63;
    return -1;
}

// What a number's status means for a typed form.
ReadError::Kind mistakeOf(NumberText::Status status)
{
    switch (status) {
    case NumberText::Status::Ok:
        return ReadError::Kind::None;
    case NumberText::Status::OutOfRange:
        return ReadError::Kind::OutOfRange;
    case NumberText::Status::Malformed:
        break;
    }
    return ReadError::Kind::Number;
}

// The value of a typed form's contents, or the kind of mistake they hold.
ReadError::Kind typedInteger(QByteArrayView text, PlistValue &out)
{
    NumberText::Integer integer;
    const NumberText::Status status = NumberText::parseInteger(text, NumberText::Decimal, integer);
    if (status == NumberText::Status::Ok)
        out = integer.negative ? PlistValue(integer.toSigned()) : PlistValue(integer.magnitude);
    return mistakeOf(status);
}

ReadError::Kind typedReal(QByteArrayView text, PlistValue &out)
{
    double value = 0;
    const NumberText::Status status = NumberText::parseReal(text, value);
    if (status == NumberText::Status::Ok)
        out = PlistValue(value);
    return mistakeOf(status);
}

ReadError::Kind typedBoolean(QByteArrayView text, PlistValue &out)
{
    if (text != "Y" && text != "N")
        return ReadError::Kind::Syntax;
    out = PlistValue(text == "Y");
    return ReadError::Kind::None;
}

ReadError::Kind typedDate(QByteArrayView text, PlistValue &out)
{
    const std::optional<double> date = AsciiDate::parse(text);
    if (!date)
        return ReadError::Kind::Date;
    out = PlistValue::date(*date);
    return ReadError::Kind::None;
}

struct Opened
{
    const char *at;
    bool stringsFile; // a dictionary without braces that ends with the text
};

/// One pass over checked UTF-8 text in the old-style grammar.
class Parser : public TextParser<Parser, Opened>
{
public:
    using TextParser::TextParser;

    /// The document's value, or none with `failure()` set.
    PlistValue parse();

private:
    friend class TextParser;

    Step startValue(PlistValue &out);
    Step attach(PlistValue element, PlistValue &out);
    Step next(PlistValue &out)
    {
        return _open.kind() == Builder::Kind::Array ? nextInArray(out) : nextInDictionary(out);
    }
    Step nextInArray(PlistValue &out);
    Step nextInDictionary(PlistValue &out);
    Step close(PlistValue &out);
    bool inStringsFile() const { return _open.info().stringsFile; }
    bool skipBlanks();
    bool checkText(const char *from, const char *to);
    Step readKey(PlistValue &out);
    Step readUnquoted(PlistValue &out);
    Step readQuoted(PlistValue &out);
    Step readEscaped(const char *start, const char *run, PlistValue &out);
    bool readCharacter();
    bool readEscape(const char *start);
    bool readHexEscape(const char *escape, int maxDigits);
    Step readAngle(PlistValue &out);
    Step readHexData(const char *start, PlistValue &out);
    Step readBase64(const char *start, PlistValue &out);
    Step readTyped(const char *start, PlistValue &out);
    QString unclosed() const;
};

PlistValue Parser::parse()
{
    if (!skipBlanks())
        return {};
    if (_p == _end)
        return PlistDictionary::create();
    const char *start = _p;
    PlistValue value;
    Step step = startValue(value);
    if (step == Step::Value && value.isString()) {
        if (!skipBlanks())
            return {};
        if (_p == _end)
            return value;
        // One string and more text: a strings file.
        _p = start;
        _open.open(Builder::Kind::Dictionary, {start, true});
        step = Step::Next;
    }
    if (run(step, value) == Step::Failed || !skipBlanks())
        return {};
    if (_p != _end) {
        fail(_p, ReadError::Kind::TrailingContent,
             QStringLiteral("expected the end of the text after the property list, found %1")
                 .arg(found()));
        return {};
    }
    return value;
}

Parser::Step Parser::startValue(PlistValue &out)
{
    if (!skipBlanks())
        return Step::Failed;
    if (_p == _end)
        return fail(_p, ReadError::Kind::Truncated,
                    QStringLiteral("expected a value, found the end of the text"));
    switch (*_p) {
    case '{':
        _open.open(Builder::Kind::Dictionary, {_p++, false});
        return Step::Next;
    case '(':
        _open.open(Builder::Kind::Array, {_p++, false});
        return Step::Next;
    case '"':
    case '\'':
        return readQuoted(out);
    case '<':
        return readAngle(out);
    default:
        break;
    }
    if (isUnquotedAt(_p, _end))
        return readUnquoted(out);
    return fail(_p, ReadError::Kind::Syntax,
                QStringLiteral("expected a value, found %1").arg(found()));
}

Parser::Step Parser::attach(PlistValue element, PlistValue &out)
{
    _open.add(std::move(element));
    if (!skipBlanks())
        return Step::Failed;
    if (_open.kind() == Builder::Kind::Array) {
        if (_p < _end && *_p == ',') {
            ++_p;
            return Step::Next;
        }
        if (_p < _end && *_p == ')') {
            ++_p;
            return close(out);
        }
        return fail(_p, ReadError::Kind::Syntax,
                    QStringLiteral("expected ',' or ')' after an array element, found %1%2")
                        .arg(found(), unclosed()));
    }
    if (_p < _end && *_p == ';') {
        ++_p;
        return Step::Next;
    }
    return fail(_p, ReadError::Kind::Syntax,
                QStringLiteral("expected ';' after the value of \"%1\", found %2%3")
                    .arg(_open.lastKey().toString(), found(), unclosed()));
}

Parser::Step Parser::nextInArray(PlistValue &out)
{
    for (;;) {
        if (!skipBlanks())
            return Step::Failed;
        if (_p == _end)
            return fail(_p, ReadError::Kind::Truncated,
                        QStringLiteral("expected a value or ')', found the end of the text%1")
                            .arg(unclosed()));
        if (*_p == ')') {
            ++_p;
            return close(out);
        }
        if (*_p != ',')
            return startValue(out);
        // Two commas in a row hold an empty string, as other readers have it.
        _open.add(_strings.ascii(_p, 0));
        ++_p;
    }
}

Parser::Step Parser::nextInDictionary(PlistValue &out)
{
    for (;;) {
        if (!skipBlanks())
            return Step::Failed;
        const bool stringsFile = inStringsFile();
        if (_p == _end && stringsFile)
            return close(out);
        if (_p < _end && *_p == '}' && !stringsFile) {
            ++_p;
            return close(out);
        }
        PlistValue key;
        if (readKey(key) == Step::Failed)
            return Step::Failed;
        if (!skipBlanks())
            return Step::Failed;
        if (_p < _end && *_p == ';') {
            ++_p; // "key;" is short for "key = key;"
            _open.add(key);
            _open.add(std::move(key));
            continue;
        }
        if (_p < _end && *_p == '=') {
            ++_p;
            _open.add(std::move(key));
            return startValue(out);
        }
        return fail(_p, ReadError::Kind::Syntax,
                    QStringLiteral("expected '=' or ';' after the key \"%1\", found %2%3")
                        .arg(key.toString(), found(), unclosed()));
    }
}

Parser::Step Parser::close(PlistValue &out)
{
    out = _open.close();
    return Step::Value;
}

bool Parser::skipBlanks()
{
    for (;;) {
        while (_p < _end && isBlank(*_p))
            ++_p;
        if (_end - _p < 2 || _p[0] != '/')
            return true;
        if (_p[1] == '/') {
            const char *start = _p;
            while (_p < _end && *_p != '\n' && *_p != '\r')
                ++_p;
            if (!checkText(start, _p))
                return false;
            continue;
        }
        if (_p[1] != '*')
            return true;
        const char *start = _p;
        const char *star = _p + 2;
        for (;;) {
            star = static_cast<const char *>(std::memchr(star, '*', size_t(_end - star)));
            if (!star || _end - star < 2) {
                fail(start, ReadError::Kind::Truncated,
                     QStringLiteral("the comment is not closed: expected '*/' before the "
                                    "end of the text"));
                return false;
            }
            if (star[1] == '/')
                break;
            ++star;
        }
        _p = star + 2;
        if (!checkText(start, _p))
            return false;
    }
}

// Text no rule looks into (comments, what base64 skips) is checked here.
bool Parser::checkText(const char *from, const char *to)
{
    if (UnicodeText::firstFlaw(QByteArrayView(from, to), UnicodeText::Nul::Refused) < 0)
        return true;
    fail(from, ReadError::Kind::Encoding, QStringLiteral("the text is not valid UTF-8"));
    return false;
}

Parser::Step Parser::readKey(PlistValue &out)
{
    if (_p < _end && (*_p == '"' || *_p == '\''))
        return readQuoted(out);
    if (_p < _end && isUnquotedAt(_p, _end))
        return readUnquoted(out);
    const bool stringsFile = inStringsFile();
    return fail(_p, ReadError::Kind::Syntax,
                QStringLiteral("expected a key%1, found %2%3")
                    .arg(stringsFile ? QString() : QStringLiteral(" or '}'"), found(), unclosed()));
}

Parser::Step Parser::readUnquoted(PlistValue &out)
{
    const char *start = _p;
    bool ascii = true;
    for (;;) {
        while (_p < _end && isUnquoted(*_p))
            ++_p;
        if (_p == _end || uchar(*_p) < 0x80 || !isUnquotedAt(_p, _end))
            break;
        ascii = false;
        UnicodeText::decode(_p);
    }
    if (ascii) {
        out = _strings.ascii(start, _p - start);
        return Step::Value;
    }
    _buffer.clear();
    UnicodeText::appendUtf16(_buffer, start, _p);
    out = PlistValue::fromUtf16(_buffer.data(), qsizetype(_buffer.size()));
    return Step::Value;
}

Parser::Step Parser::readQuoted(PlistValue &out)
{
    const char quote = *_p;
    const char *start = _p++;
    const char *run = _p;
    _p = SimdText::findStringEnd(_p, _end, quote, 1);
    if (_p < _end && *_p == quote) {
        out = _strings.ascii(run, _p - run);
        ++_p;
        return Step::Value;
    }
    return readEscaped(start, run, out);
}

// The rest of a quoted string from its first backslash, NUL, byte beyond
// ASCII or end. The text is checked here, as nothing else looks at it.
Parser::Step Parser::readEscaped(const char *start, const char *run, PlistValue &out)
{
    const char quote = *start;
    _buffer.clear();
    for (;;) {
        _buffer.append(run, _p);
        if (_p == _end)
            return fail(start, ReadError::Kind::Truncated,
                        QStringLiteral("the quoted string is not closed: expected %1 "
                                       "before the end of the text")
                            .arg(quote));
        const auto c = uchar(*_p);
        if (c == uchar(quote)) {
            ++_p;
            out = PlistValue::fromUtf16(_buffer.data(), qsizetype(_buffer.size()));
            return Step::Value;
        }
        if (c >= 0x80 || c == 0) {
            if (!readCharacter())
                return Step::Failed;
        } else if (!readEscape(start)) {
            return Step::Failed;
        }
        run = _p;
        _p = SimdText::findStringEnd(_p, _end, quote, 1);
    }
}

// One character beyond ASCII, checked, into `_buffer`.
bool Parser::readCharacter()
{
    if (*_p == 0 || UnicodeText::sequenceLength(_p, _end) == 0) {
        fail(_p, ReadError::Kind::Encoding, QStringLiteral("the text is not valid UTF-8"));
        return false;
    }
    UnicodeText::appendUtf16(_buffer, UnicodeText::decode(_p));
    return true;
}

bool Parser::readEscape(const char *start)
{
    const char *escape = _p++;
    if (_p == _end) {
        fail(start, ReadError::Kind::Truncated,
             QStringLiteral("the quoted string is not closed: expected %1 before the end "
                            "of the text")
                 .arg(*start));
        return false;
    }
    const char c = *_p++;
    if (const int unit = BackslashEscapes::unitFor(c, "abfnrtv"); unit >= 0) {
        _buffer.push_back(char16_t(unit));
        return true;
    }
    if (c == 'x')
        return readHexEscape(escape, 2);
    if (c == 'u' || c == 'U')
        return readHexEscape(escape, 4);
    if (c >= '0' && c <= '7') {
        char16_t value = char16_t(c - '0');
        for (int i = 1; i < 3 && _p < _end && *_p >= '0' && *_p <= '7'; ++i)
            value = char16_t(value * 8 + (*_p++ - '0'));
        _buffer.push_back(value);
        return true;
    }
    // Any other escaped character stands for itself.
    _p = escape + 1;
    if (uchar(*_p) < 0x80 && *_p != 0) {
        _buffer.push_back(char16_t(*_p++));
        return true;
    }
    return readCharacter();
}

bool Parser::readHexEscape(const char *escape, int maxDigits)
{
    char16_t value = 0;
    int digits = 0;
    for (; digits < maxDigits && _p < _end && hexValue(*_p) >= 0; ++digits)
        value = char16_t(value * 16 + hexValue(*_p++));
    if (digits == 0) {
        fail(escape, ReadError::Kind::Escape,
             QStringLiteral("expected a hexadecimal digit after '\\%1', found %2")
                 .arg(QChar(escape[1]), found()));
        return false;
    }
    _buffer.push_back(value);
    return true;
}

Parser::Step Parser::readAngle(PlistValue &out)
{
    const char *start = _p++;
    if (_p < _end && *_p == '*')
        return readTyped(start, out);
    if (_p < _end && *_p == '[')
        return readBase64(start, out);
    return readHexData(start, out);
}

Parser::Step Parser::readHexData(const char *start, PlistValue &out)
{
    const auto *close = static_cast<const char *>(std::memchr(_p, '>', size_t(_end - _p)));
    QByteArray data(((close ? close : _end) - _p) / 2, Qt::Uninitialized);
    char *next = data.data();
    int pending = -1;
    for (; _p < _end && *_p != '>'; ++_p) {
        if (isBlank(*_p))
            continue;
        const int digit = hexValue(*_p);
        if (digit < 0)
            return fail(_p, ReadError::Kind::Data,
                        QStringLiteral("expected a hexadecimal digit or '>' in data, found %1")
                            .arg(found()));
        if (pending < 0) {
            pending = digit;
        } else {
            *next++ = char(pending << 4 | digit);
            pending = -1;
        }
    }
    if (_p == _end)
        return fail(start, ReadError::Kind::Truncated,
                    QStringLiteral("the data is not closed: expected '>' before the end "
                                   "of the text"));
    if (pending >= 0)
        return fail(_p, ReadError::Kind::Data,
                    QStringLiteral("the data ends in half a byte: expected an even number of "
                                   "hexadecimal digits"));
    ++_p;
    data.truncate(next - data.data());
    out = PlistValue::data(data);
    return Step::Value;
}

Parser::Step Parser::readBase64(const char *start, PlistValue &out)
{
    _p = start + 2;
    QByteArray data;
    quint32 bits = 0;
    int count = 0;
    bool padded = false;
    for (; _p < _end && *_p != ']'; ++_p) {
        if (*_p == '=') {
            padded = true;
            continue;
        }
        const int value = base64Value(*_p);
        if (value < 0)
            continue; // GNUstep skips what is not base64
        if (padded)
            return fail(_p, ReadError::Kind::Data,
                        QStringLiteral("base64 data goes on after its padding '='"));
        bits = bits << 6 | quint32(value);
        if (++count % 4 == 0) {
            const char bytes[] = {char(bits >> 16), char(bits >> 8), char(bits)};
            data.append(bytes, 3);
        }
    }
    if (_p == _end)
        return fail(start, ReadError::Kind::Truncated,
                    QStringLiteral("the base64 data is not closed: expected ']>' before "
                                   "the end of the text"));
    if (!checkText(start, _p))
        return Step::Failed;
    if (_end - _p < 2 || _p[1] != '>')
        return fail(_p + 1, ReadError::Kind::Syntax,
                    QStringLiteral("expected '>' after ']' of base64 data, found %1")
                        .arg(describe(_p + 1)));
    if (count % 4 == 1)
        return fail(start, ReadError::Kind::Data,
                    QStringLiteral("the base64 data ends in a lone character"));
    if (count % 4 == 2)
        data.append(char(bits >> 4));
    if (count % 4 == 3) {
        const char bytes[] = {char(bits >> 10), char(bits >> 2)};
        data.append(bytes, 2);
    }
    _p += 2;
    out = PlistValue::data(data);
    return Step::Value;
}

Parser::Step Parser::readTyped(const char *start, PlistValue &out)
{
    _p = start + 2;
    if (_p == _end)
        return fail(_p, ReadError::Kind::Truncated,
                    QStringLiteral("expected I, R, B or D after '<*', found the end of the text"));
    const char type = *_p;
    if (type != 'I' && type != 'R' && type != 'B' && type != 'D')
        return fail(_p, ReadError::Kind::UnknownType,
                    QStringLiteral("expected I, R, B or D after '<*', found %1").arg(found()));
    ++_p;
    if (_p < _end && *_p == '"')
        ++_p; // GNUstep may quote the contents
    const char *contents = _p;
    while (_p < _end && *_p != '>' && *_p != '"')
        ++_p;
    const QByteArrayView text(contents, _p);
    if (!checkText(contents, _p))
        return Step::Failed;
    if (_p < _end && *_p == '"')
        ++_p;
    if (_p == _end || *_p != '>')
        return fail(_p, ReadError::Kind::Syntax,
                    QStringLiteral("expected '>' to close the typed value, found %1").arg(found()));
    ++_p;
    ReadError::Kind mistake = ReadError::Kind::None;
    QString expected;
    switch (type) {
    case 'I':
        mistake = typedInteger(text, out);
        expected = QStringLiteral("a 64-bit integer");
        break;
    case 'R':
        mistake = typedReal(text, out);
        expected = QStringLiteral("a real number");
        break;
    case 'B':
        mistake = typedBoolean(text, out);
        expected = QStringLiteral("Y or N");
        break;
    default:
        mistake = typedDate(text, out);
        expected = QStringLiteral("a date \"YYYY-MM-DD HH:MM:SS +HHMM\"");
        break;
    }
    if (mistake != ReadError::Kind::None)
        return fail(contents, mistake,
                    QStringLiteral("expected %1 in '<*%2...>', found \"%3\"")
                        .arg(expected, QChar(type),
                             QString::fromUtf8(text.first(qMin<qsizetype>(text.size(), 40)))));
    return Step::Value;
}

// For messages at the end of the text: where the open container began.
QString Parser::unclosed() const
{
    if (_p < _end || inStringsFile())
        return {};
    return JsonEncoding::unclosedNote(_begin, _end, _open.info().at,
                                      _open.kind() == Builder::Kind::Array
                                          ? QLatin1StringView("array")
                                          : QLatin1StringView("dictionary"));
}

} // namespace

ReadResult AsciiReader::read(QByteArrayView bytes)
{
    // Zero bytes are no document at all, unlike white space, which is an empty strings file.
    if (bytes.isEmpty())
        return ReadResult::failure(
            {QStringLiteral("the data is empty"), 0, 1, 1, ReadError::Kind::Empty});
    return JsonEncoding::read<Parser>(bytes, ADPlistFormatASCII);
}

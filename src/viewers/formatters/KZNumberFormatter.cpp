#include "KZNumberFormatter.h"

#include "shared/KZLocalizedString.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

namespace {

constexpr int kUnboundedFraction = 17;

bool isDigitPatternChar(QChar c)
{
    return c == u'#' || c == u'0' || c == u',' || c == u'.';
}

void appendGroupedDigits(QString &out, std::string_view digits, const QString &separator)
{
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            out += separator;
        out += QLatin1Char(digits[i]);
    }
}

quint64 magnitudeOf(const PlistValue &number, bool *negative)
{
    if (number.isUnsigned()) {
        *negative = false;
        return number.toUnsigned();
    }
    const qint64 value = number.toInteger();
    *negative = value < 0;
    return value < 0 ? quint64(-(value + 1)) + 1 : quint64(value);
}

} // namespace

KZNumberFormatter::KZNumberFormatter()
    : _locale(currentLocale()), _decimalPoint(_locale.decimalPoint()),
      _groupSeparator(_locale.groupSeparator()), _negativeSign(_locale.negativeSign()),
      _exponential(_locale.exponential())
{
    setFormat(QString());
}

void KZNumberFormatter::setFormat(const QString &format)
{
    _format = format;
    _parts.clear();
    for (const QString &part : format.split(u';'))
        _parts.push_back(parsePart(part));
}

KZNumberFormatter::Part KZNumberFormatter::parsePart(const QString &text)
{
    Part part;
    qsizetype first = 0;
    while (first < text.size() && !isDigitPatternChar(text[first]))
        ++first;
    if (first == text.size()) {
        part.hasDigits = text.isEmpty();
        part.prefix = text;
        return part;
    }
    qsizetype last = text.size() - 1;
    while (!isDigitPatternChar(text[last]))
        --last;
    part.prefix = text.left(first);
    part.suffix = text.mid(last + 1);
    const QString digits = text.mid(first, last - first + 1);
    const qsizetype point = digits.indexOf(u'.');
    const QString integer = point < 0 ? digits : digits.left(point);
    const QString fraction = point < 0 ? QString() : digits.mid(point + 1);
    part.grouping = integer.contains(u',');
    part.minimumIntegerDigits = int(integer.count(u'0'));
    part.minimumFractionDigits = int(fraction.count(u'0'));
    part.maximumFractionDigits = int(fraction.count(u'0') + fraction.count(u'#'));
    part.shortest = part.maximumFractionDigits >= kUnboundedFraction;
    return part;
}

const KZNumberFormatter::Part &KZNumberFormatter::partFor(bool negative, bool zero,
                                                          bool *needsSign) const
{
    *needsSign = false;
    if (zero && _parts.size() > 1)
        return _parts[1];
    if (negative && _parts.size() > 2) {
        const Part &part = _parts[2];
        *needsSign = !(part.prefix + part.suffix).contains(u'-');
        return part;
    }
    *needsSign = negative;
    return _parts[0];
}

QString KZNumberFormatter::assemble(const Part &part, std::string_view integerDigits,
                                    std::string_view fractionDigits, bool negativeSign) const
{
    if (!part.hasDigits)
        return part.prefix;
    while (integerDigits.size() > size_t(part.minimumIntegerDigits) && integerDigits.front() == '0')
        integerDigits.remove_prefix(1);
    while (fractionDigits.size() > size_t(part.minimumFractionDigits) &&
           fractionDigits.back() == '0')
        fractionDigits.remove_suffix(1);
    const size_t integerPadding =
        std::max<size_t>(integerDigits.empty() && fractionDigits.empty() ? 1 : 0,
                         size_t(part.minimumIntegerDigits) -
                             std::min(integerDigits.size(), size_t(part.minimumIntegerDigits)));
    const size_t fractionPadding =
        size_t(part.minimumFractionDigits) -
        std::min(fractionDigits.size(), size_t(part.minimumFractionDigits));
    QString text;
    text.reserve(part.prefix.size() + part.suffix.size() + qsizetype(integerDigits.size()) +
                 qsizetype(fractionDigits.size()) + 16);
    text += part.prefix;
    if (negativeSign)
        text += _negativeSign;
    const std::string padded = std::string(integerPadding, '0') + std::string(integerDigits);
    if (part.grouping)
        appendGroupedDigits(text, padded, _groupSeparator);
    else
        text += QLatin1StringView(padded.data(), qsizetype(padded.size()));
    if (!fractionDigits.empty() || fractionPadding > 0) {
        text += _decimalPoint;
        text += QLatin1StringView(fractionDigits.data(), qsizetype(fractionDigits.size()));
        text += QString(qsizetype(fractionPadding), u'0');
    }
    return text + part.suffix;
}

QString KZNumberFormatter::realText(const Part &part, double magnitude, bool negativeSign) const
{
    if (!part.hasDigits)
        return part.prefix;
    char digits[400];
    if (magnitude != 0 && (magnitude < 1e-4 || magnitude >= 1e15)) {
        const char *end =
            std::to_chars(digits, digits + sizeof digits, magnitude, std::chars_format::scientific)
                .ptr;
        const std::string_view text(digits, size_t(end - digits));
        const size_t exponent = text.find('e');
        const std::string_view mantissa = text.substr(0, exponent);
        const size_t point = mantissa.find('.');
        QString out = part.prefix;
        if (negativeSign)
            out += _negativeSign;
        out += QLatin1StringView(mantissa.data(),
                                 qsizetype(point == mantissa.npos ? mantissa.size() : point));
        out += _decimalPoint;
        out += point == mantissa.npos ? QStringLiteral("0")
                                      : QString::fromLatin1(mantissa.substr(point + 1));
        out += _exponential;
        out += QLatin1StringView(text.data() + exponent + 1, qsizetype(text.size() - exponent - 1));
        return out + part.suffix;
    }
    // The shortest digits that read back as the number, unless they need more
    // fraction digits than the part shows; then rounded to what it shows.
    const char *end =
        std::to_chars(digits, digits + sizeof digits, magnitude, std::chars_format::fixed).ptr;
    std::string_view fixed(digits, size_t(end - digits));
    size_t point = fixed.find('.');
    if (!part.shortest && point != fixed.npos &&
        fixed.size() - point - 1 > size_t(part.maximumFractionDigits)) {
        end = std::to_chars(digits, digits + sizeof digits, magnitude, std::chars_format::fixed,
                            part.maximumFractionDigits)
                  .ptr;
        fixed = std::string_view(digits, size_t(end - digits));
        point = fixed.find('.');
    }
    return assemble(part, fixed.substr(0, point),
                    point == fixed.npos ? std::string_view() : fixed.substr(point + 1),
                    negativeSign);
}

QString KZNumberFormatter::stringFromNumber(const PlistValue &number) const
{
    bool needsSign = false;
    if (number.isReal()) {
        const double value = number.toReal();
        if (!std::isfinite(value))
            return _locale.toString(value);
        const Part &part = partFor(value < 0, value == 0, &needsSign);
        return realText(part, std::fabs(value), needsSign);
    }
    bool negative = false;
    const quint64 magnitude = magnitudeOf(number, &negative);
    const Part &part = partFor(negative, magnitude == 0, &needsSign);
    char digits[24];
    const char *end = std::to_chars(digits, digits + sizeof digits, magnitude).ptr;
    return assemble(part, std::string_view(digits, size_t(end - digits)), {}, needsSign);
}

std::optional<PlistValue> KZNumberFormatter::numberFromString(const QString &string,
                                                              QString *errorDescription) const
{
    const QString text = string.trimmed();
    const bool looksReal =
        text.contains(_decimalPoint) || text.contains(_exponential, Qt::CaseInsensitive) ||
        text.contains(u"inf", Qt::CaseInsensitive) || text.contains(u"nan", Qt::CaseInsensitive);
    bool ok = false;
    if (!looksReal) {
        const qint64 integer = _locale.toLongLong(text, &ok);
        if (ok)
            return PlistValue(integer);
        const quint64 unsignedInteger = _locale.toULongLong(text, &ok);
        if (ok)
            return PlistValue(unsignedInteger);
    }
    if (_allowsFloats) {
        const double real = _locale.toDouble(text, &ok);
        if (ok)
            return PlistValue(real);
        fail(errorDescription,
             KZStringWithFormat(
                 KZLocalizedStringWithID(4001, QStringLiteral("“%@” is not a number")), {string}));
        return std::nullopt;
    }
    fail(
        errorDescription,
        KZStringWithFormat(
            KZLocalizedStringWithID(4002, QStringLiteral("“%@” is not a whole number")), {string}));
    return std::nullopt;
}

std::optional<QString> KZNumberFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (!value.isNumber())
        return std::nullopt;
    return stringFromNumber(value);
}

bool KZNumberFormatter::getObjectValue(PlistValue *value, const QString &string,
                                       QString *errorDescription) const
{
    const std::optional<PlistValue> number = numberFromString(string, errorDescription);
    if (!number)
        return false;
    if (value)
        *value = *number;
    return true;
}

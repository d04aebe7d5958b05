#include "KZNumberFormatter.h"

#include "shared/KZLocalizedString.h"

#include <cmath>

namespace {

constexpr int kUnboundedFraction = 17;

bool isDigitPatternChar(QChar c)
{
    return c == u'#' || c == u'0' || c == u',' || c == u'.';
}

QString groupedDigits(const QString &digits, const QString &separator)
{
    QString out;
    out.reserve(digits.size() + digits.size() / 3 * separator.size());
    for (qsizetype i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            out += separator;
        out += digits[i];
    }
    return out;
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

QString KZNumberFormatter::assemble(const Part &part, QString integerDigits, QString fractionDigits,
                                    bool negativeSign) const
{
    if (!part.hasDigits)
        return part.prefix;
    while (integerDigits.size() > part.minimumIntegerDigits && integerDigits.startsWith(u'0'))
        integerDigits.remove(0, 1);
    while (integerDigits.size() < part.minimumIntegerDigits)
        integerDigits.prepend(u'0');
    while (fractionDigits.size() > part.minimumFractionDigits && fractionDigits.endsWith(u'0'))
        fractionDigits.chop(1);
    while (fractionDigits.size() < part.minimumFractionDigits)
        fractionDigits.append(u'0');
    if (integerDigits.isEmpty() && fractionDigits.isEmpty())
        integerDigits = QStringLiteral("0");
    QString text = part.prefix;
    if (negativeSign)
        text += _negativeSign;
    text += part.grouping ? groupedDigits(integerDigits, _groupSeparator) : integerDigits;
    if (!fractionDigits.isEmpty())
        text += _decimalPoint + fractionDigits;
    return text + part.suffix;
}

QString KZNumberFormatter::realText(const Part &part, double magnitude, bool negativeSign) const
{
    if (!part.hasDigits)
        return part.prefix;
    if (magnitude != 0 && (magnitude < 1e-4 || magnitude >= 1e15)) {
        QString text = QLocale::c().toString(magnitude, 'e', QLocale::FloatingPointShortest);
        const qsizetype exponent = text.indexOf(u'e');
        QString mantissa = text.left(exponent);
        if (!mantissa.contains(u'.'))
            mantissa += QStringLiteral(".0");
        text = mantissa + text.mid(exponent);
        text.replace(u'.', _decimalPoint);
        text.replace(u'e', _exponential);
        return part.prefix + (negativeSign ? _negativeSign : QString()) + text + part.suffix;
    }
    const QString fixed =
        part.shortest ? QLocale::c().toString(magnitude, 'f', QLocale::FloatingPointShortest)
                      : QLocale::c().toString(magnitude, 'f', part.maximumFractionDigits);
    const qsizetype point = fixed.indexOf(u'.');
    return assemble(part, point < 0 ? fixed : fixed.left(point),
                    point < 0 ? QString() : fixed.mid(point + 1), negativeSign);
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
    return assemble(part, QString::number(magnitude), QString(), needsSign);
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

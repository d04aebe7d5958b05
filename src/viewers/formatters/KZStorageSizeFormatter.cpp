#include "KZStorageSizeFormatter.h"

#include "shared/KZLocalizedString.h"

#include <limits>

namespace {

struct Unit
{
    const char *name;
    quint64 binary;
    quint64 decimal;
};

constexpr Unit kUnits[] = {
    {"TB", 1099511627776ULL, 1000000000000ULL},
    {"GB", 1073741824ULL, 1000000000ULL},
    {"MB", 1048576ULL, 1000000ULL},
    {"KB", 1024ULL, 1000ULL},
    {"bytes", 1ULL, 1ULL},
};

} // namespace

KZStorageSizeFormatter::KZStorageSizeFormatter()
{
    setFormat(QStringLiteral("#,##0.0;0;#,##0.0"));
}

QString KZStorageSizeFormatter::storageSizeStringForBytes(quint64 bytes)
{
    static const KZStorageSizeFormatter shared;
    return shared.stringForObjectValue(PlistValue(bytes)).value_or(QString());
}

quint64 KZStorageSizeFormatter::multiplier(int index) const
{
    return _storageSizeMode == BinaryMode ? kUnits[index].binary : kUnits[index].decimal;
}

std::optional<QString> KZStorageSizeFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (!value.isNumber())
        return std::nullopt;
    if (!value.isUnsigned() && value.toInteger() < 0)
        return QStringLiteral("--");
    const quint64 bytes = value.isUnsigned() ? value.toUnsigned() : quint64(value.toInteger());
    for (int i = 0; i < int(std::size(kUnits)); ++i) {
        if (multiplier(i) <= bytes) {
            const float quotient = float(bytes) / float(multiplier(i));
            return stringFromNumber(PlistValue(double(quotient))) + u' ' +
                   QString::fromLatin1(kUnits[i].name);
        }
    }
    return stringFromNumber(PlistValue(qint64(bytes))) + QStringLiteral(" bytes");
}

std::optional<QString>
KZStorageSizeFormatter::editingStringForObjectValue(const PlistValue &value) const
{
    return KZNumberFormatter::stringForObjectValue(value);
}

bool KZStorageSizeFormatter::getObjectValue(PlistValue *value, const QString &string,
                                            QString *errorDescription) const
{
    QString text = string;
    quint64 factor = 1;
    for (int i = 0; i < int(std::size(kUnits)); ++i) {
        const qsizetype at =
            string.lastIndexOf(QLatin1StringView(kUnits[i].name), -1, Qt::CaseInsensitive);
        if (at >= 0) {
            text = string.left(at).remove(u' ');
            factor = multiplier(i);
            break;
        }
    }
    const std::optional<PlistValue> number = numberFromString(text, errorDescription);
    if (!number)
        return false;
    const bool negative =
        number->isReal() ? number->toReal() < 0 : !number->isUnsigned() && number->toInteger() < 0;
    if (negative)
        return fail(
            errorDescription,
            KZLocalizedStringWithID(4006, QStringLiteral("A storage size cannot be negative")));
    const double whole = number->isReal() ? number->toReal() : 0;
    if (number->isReal() && whole >= 0x1p64)
        return fail(
            errorDescription,
            KZStringWithFormat(KZLocalizedStringWithID(
                                   4007, QStringLiteral("“%@” is too large for a storage size")),
                               {string}));
    const quint64 count = number->isReal()       ? quint64(whole)
                          : number->isUnsigned() ? number->toUnsigned()
                                                 : quint64(number->toInteger());
    if (count > std::numeric_limits<quint64>::max() / factor)
        return fail(
            errorDescription,
            KZStringWithFormat(KZLocalizedStringWithID(
                                   4007, QStringLiteral("“%@” is too large for a storage size")),
                               {string}));
    if (value)
        *value = PlistValue(count * factor);
    return true;
}

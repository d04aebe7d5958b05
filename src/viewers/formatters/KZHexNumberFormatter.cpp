#include "KZHexNumberFormatter.h"

#include "shared/KZLocalizedString.h"

#include <cmath>

namespace {

constexpr int kMaximumDigits = 16;

QString hexDigits(quint64 bits, bool littleEndian)
{
    int bytes = 1;
    while (bytes < 8 && (bits >> (8 * bytes)) != 0)
        ++bytes;
    QString text = QStringLiteral("0x");
    for (int i = 0; i < bytes; ++i) {
        const int byte = littleEndian ? i : bytes - 1 - i;
        text += QStringLiteral("%1")
                    .arg((bits >> (8 * byte)) & 0xFF, 2, 16, QLatin1Char('0'))
                    .toUpper();
    }
    return text;
}

QString notHexMessage(const QString &string)
{
    return KZStringWithFormat(
        KZLocalizedStringWithID(4004, QStringLiteral("“%@” is not a hexadecimal number")),
        {string});
}

} // namespace

std::optional<QString> KZHexNumberFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (!value.isNumber())
        return std::nullopt;
    if (value.isReal()) {
        const double real = value.toReal();
        if (!std::isfinite(real) || std::trunc(real) != real || std::fabs(real) >= 0x1p63)
            return value.displayString();
    }
    const quint64 bits = value.isUnsigned() ? value.toUnsigned() : quint64(value.toInteger());
    return hexDigits(bits, _byteOrder == LittleEndian);
}

bool KZHexNumberFormatter::getObjectValue(PlistValue *value, const QString &string,
                                          QString *errorDescription) const
{
    QString digits = string.simplified().remove(u' ');
    const bool negative = digits.startsWith(u'-');
    if (negative)
        digits.remove(0, 1);
    if (digits.startsWith(u"0x", Qt::CaseInsensitive))
        digits.remove(0, 2);
    if (digits.isEmpty())
        return fail(errorDescription, notHexMessage(string));
    while (digits.size() > 1 && digits.startsWith(u'0'))
        digits.remove(0, 1);
    if (digits.size() > kMaximumDigits)
        return fail(errorDescription,
                    KZLocalizedStringWithID(
                        4005, QStringLiteral("A hexadecimal number has at most 16 digits")));
    bool ok = false;
    quint64 bits = digits.toULongLong(&ok, 16);
    if (!ok)
        return fail(errorDescription, notHexMessage(string));
    if (_byteOrder == LittleEndian) {
        const int bytes = int((digits.size() + 1) / 2);
        quint64 swapped = 0;
        for (int i = 0; i < bytes; ++i)
            swapped |= ((bits >> (8 * i)) & 0xFF) << (8 * (bytes - 1 - i));
        bits = swapped;
    }
    const qint64 signedValue = qint64(bits);
    if (value)
        *value = PlistValue(negative ? -signedValue : signedValue);
    return true;
}

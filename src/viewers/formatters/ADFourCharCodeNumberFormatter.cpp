#include "ADFourCharCodeNumberFormatter.h"

#include "KZStringEncoding.h"

#include "shared/KZLocalizedString.h"

QString ADFourCharCodeNumberFormatter::stringWithOSType(quint32 type)
{
    const char bytes[4] = {char(type >> 24), char(type >> 16), char(type >> 8), char(type)};
    return KZStringEncoding::decode(QByteArrayView(bytes, 4), KZStringEncoding::MacOSRoman)
        .value_or(QString());
}

std::optional<QString>
ADFourCharCodeNumberFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (!value.isNumber())
        return std::nullopt;
    const quint64 bits = value.isUnsigned() ? value.toUnsigned() : quint64(value.toInteger());
    return stringWithOSType(quint32(bits));
}

bool ADFourCharCodeNumberFormatter::getObjectValue(PlistValue *value, const QString &string,
                                                   QString *errorDescription) const
{
    if (string.size() != 4)
        return fail(errorDescription,
                    KZLocalizedStringWithID(
                        151, QStringLiteral("OSType string must be exactly 4 characters long")));
    const std::optional<QByteArray> bytes =
        KZStringEncoding::encode(string, KZStringEncoding::MacOSRoman);
    if (!bytes || bytes->size() != 4)
        return fail(
            errorDescription,
            KZLocalizedStringWithID(150, QStringLiteral("Could not encode string as OSType")));
    const quint32 type = quint32(uchar(bytes->at(0))) << 24 | quint32(uchar(bytes->at(1))) << 16 |
                         quint32(uchar(bytes->at(2))) << 8 | quint32(uchar(bytes->at(3)));
    if (value)
        *value = PlistValue(qint64(type));
    return true;
}

std::optional<KZStyledText>
ADFourCharCodeNumberFormatter::attributedStringForObjectValue(const PlistValue &value) const
{
    const std::optional<QString> text = stringForObjectValue(value);
    if (!text)
        return std::nullopt;
    return attributedStringWithLabel(KZLocalizedStringWithID(152, QStringLiteral("OSType: ")),
                                     *text);
}

#include "ADTextDataFormatter.h"

#include "shared/KZLocalizedString.h"

std::optional<QString> ADTextDataFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (value.kind() != PlistValue::Kind::Data)
        return std::nullopt;
    return KZStringEncoding::decode(value.dataView(), _encoding);
}

bool ADTextDataFormatter::getObjectValue(PlistValue *value, const QString &string,
                                         QString *errorDescription) const
{
    const std::optional<QByteArray> bytes = KZStringEncoding::encode(string, _encoding);
    if (!bytes)
        return fail(
            errorDescription,
            KZStringWithFormat(
                KZLocalizedStringWithID(195, QStringLiteral("The string cannot be encoded as %@")),
                {encodingName()}));
    if (value)
        *value = PlistValue::data(*bytes);
    return true;
}

std::optional<KZStyledText>
ADTextDataFormatter::attributedStringForObjectValue(const PlistValue &value) const
{
    if (value.kind() != PlistValue::Kind::Data)
        return std::nullopt;
    if (const std::optional<QString> text = stringForObjectValue(value))
        return attributedStringWithLabel(
            KZStringWithFormat(KZLocalizedStringWithID(197, QStringLiteral("%@ String: ")),
                               {encodingName()}),
            *text);
    KZStyledText error;
    error.text = KZStringWithFormat(
        KZLocalizedStringWithID(196, QStringLiteral("The data is not a valid %@ string")),
        {encodingName()});
    error.textRole = KZStyledText::Role::Error;
    return error;
}

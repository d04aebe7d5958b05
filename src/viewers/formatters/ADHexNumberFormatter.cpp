#include "ADHexNumberFormatter.h"

#include "shared/KZLocalizedString.h"

std::optional<KZStyledText>
ADHexNumberFormatter::attributedStringForObjectValue(const PlistValue &value) const
{
    const std::optional<QString> text = stringForObjectValue(value);
    if (!text)
        return std::nullopt;
    const QString label =
        byteOrder() == BigEndian
            ? KZLocalizedStringWithID(34, QStringLiteral("Hex (big-endian): "))
            : KZLocalizedStringWithID(35, QStringLiteral("Hex (little-endian): "));
    return attributedStringWithLabel(label, *text);
}

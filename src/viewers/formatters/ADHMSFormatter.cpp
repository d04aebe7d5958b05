#include "ADHMSFormatter.h"

#include "shared/KZLocalizedString.h"

std::optional<KZStyledText>
ADHMSFormatter::attributedStringForObjectValue(const PlistValue &value) const
{
    const std::optional<QString> text = stringForObjectValue(value);
    if (!text)
        return std::nullopt;
    return attributedStringWithLabel(KZLocalizedStringWithID(161, QStringLiteral("HMS: ")), *text);
}

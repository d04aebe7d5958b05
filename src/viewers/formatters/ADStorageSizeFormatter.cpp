#include "ADStorageSizeFormatter.h"

#include "shared/KZLocalizedString.h"

std::optional<KZStyledText>
ADStorageSizeFormatter::attributedStringForObjectValue(const PlistValue &value) const
{
    const std::optional<QString> text = stringForObjectValue(value);
    if (!text)
        return std::nullopt;
    return attributedStringWithLabel(KZLocalizedStringWithID(48, QStringLiteral("Storage Size: ")),
                                     *text);
}

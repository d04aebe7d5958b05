#include "ADCollectionFormatter.h"

bool ADCollectionFormatter::getObjectValue(PlistValue *, const QString &, QString *) const
{
    return false;
}

std::optional<KZStyledText>
ADCollectionFormatter::attributedStringForObjectValue(const PlistValue &value) const
{
    const std::optional<QString> text = stringForObjectValue(value);
    if (!text)
        return std::nullopt;
    return KZStyledText{{},
                        KZStyledText::Role::Secondary,
                        *text,
                        KZStyledText::Role::Disabled,
                        KZStyledText::Font::OutlineFont};
}

#include "ADArrayFormatter.h"

#include "shared/KZLocalizedString.h"
#include "shared/PlistArray.h"

ADArrayFormatter::ADArrayFormatter()
    : _countFormat(KZLocalizedStringWithID(198, QStringLiteral("%lu ordered objects")))
{}

QString ADArrayFormatter::stringForArray(const PlistValue &array) const
{
    return KZStringWithFormat(_countFormat, {QString::number(array.toArray().count())});
}

std::optional<QString> ADArrayFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (!value.isArray())
        return std::nullopt;
    return stringForArray(value);
}

bool ADArrayFormatter::getObjectValue(PlistValue *, const QString &, QString *) const
{
    return false;
}

std::optional<KZStyledText>
ADArrayFormatter::attributedStringForObjectValue(const PlistValue &value) const
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

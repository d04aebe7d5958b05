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

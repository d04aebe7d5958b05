#include "ADNullFormatter.h"

std::optional<QString> ADNullFormatter::stringForObjectValue(const PlistValue &) const
{
    return QStringLiteral("<null>");
}

bool ADNullFormatter::getObjectValue(PlistValue *value, const QString &string, QString *) const
{
    if (value)
        *value = string == u"<null>" ? PlistValue::null() : PlistValue(string);
    return true;
}

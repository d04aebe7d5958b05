#include "ADBooleanFormatter.h"

#include "shared/KZLocalizedString.h"

std::optional<QString> ADBooleanFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (!value.isBoolean() && !value.isNumber())
        return std::nullopt;
    const bool truth = value.isBoolean() ? value.toBool() : value.toReal() != 0;
    return truth ? QStringLiteral("YES") : QStringLiteral("NO");
}

bool ADBooleanFormatter::getObjectValue(PlistValue *value, const QString &string,
                                        QString *errorDescription) const
{
    if (string != u"YES" && string != u"NO")
        return fail(
            errorDescription,
            KZLocalizedStringWithID(
                11, QStringLiteral("The string for a boolean must be either “YES” or “NO”.")));
    if (value)
        *value = PlistValue(string == u"YES");
    return true;
}

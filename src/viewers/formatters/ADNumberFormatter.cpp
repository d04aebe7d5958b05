#include "ADNumberFormatter.h"

#include "shared/KZLocalizedString.h"

ADNumberFormatter::ADNumberFormatter()
{
    _intFormatter.setAllowsFloats(false);
    _editingIntFormatter.setAllowsFloats(false);
    _intFormatter.setFormat(QStringLiteral("0"));
    _editingIntFormatter.setFormat(QStringLiteral("0"));
    _floatFormatter.setFormat(QStringLiteral("0.0##########"));
    _editingFloatFormatter.setFormat(QStringLiteral("0.0################"));
}

std::optional<QString> ADNumberFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (!value.isNumber())
        return std::nullopt;
    return (value.isReal() ? _floatFormatter : _intFormatter).stringFromNumber(value);
}

std::optional<QString> ADNumberFormatter::editingStringForObjectValue(const PlistValue &value) const
{
    if (!value.isNumber())
        return std::nullopt;
    return (value.isReal() ? _editingFloatFormatter : _editingIntFormatter).stringFromNumber(value);
}

bool ADNumberFormatter::getObjectValue(PlistValue *value, const QString &string,
                                       QString *errorDescription) const
{
    QString text = string;
    text.remove(_floatFormatter.thousandSeparator());
    if (text.isEmpty()) {
        if (value)
            *value = PlistValue();
        return fail(errorDescription,
                    KZLocalizedStringWithID(314, QStringLiteral("No value entered")));
    }
    if (text.contains(_floatFormatter.decimalSeparator()))
        return _floatFormatter.getObjectValue(value, text, errorDescription);
    return _intFormatter.getObjectValue(value, text, errorDescription);
}

#include "ADTimeIntervalNumberFormatter.h"

#include "shared/KZLocalizedString.h"
#include "shared/KZReferenceDate.h"

#include <cmath>

QDateTime ADTimeIntervalNumberFormatter::referenceDate() const
{
    return KZReferenceDate::toDateTime(_referenceDate);
}

void ADTimeIntervalNumberFormatter::setReferenceDate(const QDateTime &date)
{
    if (date.isValid())
        _referenceDate = KZReferenceDate::fromDateTime(date);
}

double ADTimeIntervalNumberFormatter::localOffset(double secondsSinceReferenceDate) const
{
    if (!_useLocalTime)
        return 0;
    return _dateFormatter.timeZone().offsetFromUtc(
        KZReferenceDate::toDateTime(secondsSinceReferenceDate));
}

std::optional<double>
ADTimeIntervalNumberFormatter::dateForObjectValue(const PlistValue &value) const
{
    if (!value.isNumber() || !std::isfinite(value.toReal()))
        return std::nullopt;
    const double date = _referenceDate + value.toReal();
    return date + localOffset(date);
}

double ADTimeIntervalNumberFormatter::objectValueForDate(double secondsSinceReferenceDate) const
{
    return secondsSinceReferenceDate - _referenceDate - localOffset(secondsSinceReferenceDate);
}

std::optional<QString>
ADTimeIntervalNumberFormatter::stringForObjectValue(const PlistValue &value) const
{
    const std::optional<double> date = dateForObjectValue(value);
    if (!date)
        return std::nullopt;
    return _dateFormatter.stringFromDate(*date);
}

bool ADTimeIntervalNumberFormatter::getObjectValue(PlistValue *value, const QString &string,
                                                   QString *errorDescription) const
{
    PlistValue date;
    if (!_dateFormatter.getObjectValue(&date, string, errorDescription))
        return false;
    if (value)
        *value = PlistValue(objectValueForDate(date.toDate()));
    return true;
}

std::optional<KZStyledText>
ADTimeIntervalNumberFormatter::attributedStringForObjectValue(const PlistValue &value) const
{
    const std::optional<QString> text = stringForObjectValue(value);
    if (!text)
        return std::nullopt;
    return attributedStringWithLabel(
        KZLocalizedStringWithID(10, QStringLiteral("Time interval date: ")), *text);
}

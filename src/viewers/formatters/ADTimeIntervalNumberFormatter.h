#pragma once

#include "ADDateFormatter.h"

#include <QDateTime>

/// A number of seconds since `referenceDate` (2001-01-01 00:00:00 UTC unless
/// set), shown and typed as a date with the standard date formatter. With
/// `useLocalTime` the number counts local time: the offset of the time zone
/// at that date is added for showing and taken off for parsing. Parsing
/// gives a real.
class ADTimeIntervalNumberFormatter : public KZFormatter
{
    Q_OBJECT
    Q_PROPERTY(bool useLocalTime READ useLocalTime WRITE setUseLocalTime)
    Q_PROPERTY(QDateTime referenceDate READ referenceDate WRITE setReferenceDate)
public:
    Q_INVOKABLE ADTimeIntervalNumberFormatter() = default;

    bool useLocalTime() const { return _useLocalTime; }
    void setUseLocalTime(bool useLocalTime) { _useLocalTime = useLocalTime; }
    QDateTime referenceDate() const;
    void setReferenceDate(const QDateTime &date);

    /// The date (seconds since 2001) that the number stands for.
    std::optional<double> dateForObjectValue(const PlistValue &value) const;
    double objectValueForDate(double secondsSinceReferenceDate) const;

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;
    std::optional<KZStyledText>
    attributedStringForObjectValue(const PlistValue &value) const override;

private:
    double localOffset(double secondsSinceReferenceDate) const;

    bool _useLocalTime = false;
    double _referenceDate = 0; // seconds since 2001-01-01 UTC
    ADDateFormatter _dateFormatter;
};

#pragma once

#include "KZFormatter.h"

/// A number of seconds as days:hours:minutes:seconds.milliseconds, leaving
/// out leading components that are zero: 3661.5 shows 1:01:01.500, 65 shows
/// 01:05 and 5 shows :05, its leading colon kept. Typed text is read from the
/// right, each component within its range; more than four components ignore
/// what stands left of the fourth.
class KZHMSFormatter : public KZFormatter
{
    Q_OBJECT
    Q_PROPERTY(bool includeMilliseconds READ includeMilliseconds WRITE setIncludeMilliseconds)
    Q_PROPERTY(bool includeLeadingZero READ includeLeadingZero WRITE setIncludeLeadingZero)
public:
    Q_INVOKABLE KZHMSFormatter() = default;

    bool includeMilliseconds() const { return _includeMilliseconds; }
    void setIncludeMilliseconds(bool include) { _includeMilliseconds = include; }
    bool includeLeadingZero() const { return _includeLeadingZero; }
    void setIncludeLeadingZero(bool include) { _includeLeadingZero = include; }

    std::optional<QString> stringForObjectValue(const PlistValue &value) const override;
    bool getObjectValue(PlistValue *value, const QString &string,
                        QString *errorDescription) const override;

private:
    bool _includeMilliseconds = true;
    bool _includeLeadingZero = true;
};

#pragma once

#include <QDateTime>
#include <QTimeZone>

/// Dates are kept as seconds since 2001-01-01 00:00:00 UTC, the reference
/// clock of the binary format; these convert to and from date-times for
/// showing and parsing. Values beyond what a date-time can hold are clamped.
class KZReferenceDate
{
public:
    static constexpr double kSecondsFromEpoch = 978307200.0; // 1970 to 2001

    static QDateTime toDateTime(double secondsSinceReferenceDate,
                                const QTimeZone &zone = QTimeZone::utc());
    static double fromDateTime(const QDateTime &when);
    /// The current time, to the millisecond.
    static double now();
};

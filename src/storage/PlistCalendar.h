#pragma once

#include <QtGlobal>

/// The calendar of the platform's property list dates: Gregorian from
/// 1582-10-15, Julian before it (so 0000-01-02 is 63145612800 seconds before
/// 2001). Days count from 1970-01-01. Pure functions.
class PlistCalendar
{
public:
    struct Civil
    {
        qint64 year;
        int month; // 1 to 12
        int day;   // 1 to 31
    };

    static constexpr qint64 kReferenceDay = 11323; // 2001-01-01
    static constexpr qint64 kSecondsPerDay = 86400;

    /// The day of a date; the month is 1 to 12, the day may run past the month's end.
    static qint64 daysFromCivil(qint64 year, qint64 month, qint64 day);
    static Civil civilFromDays(qint64 days);
    static int daysInMonth(qint64 year, int month);
};

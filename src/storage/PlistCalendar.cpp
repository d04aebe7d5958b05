#include "PlistCalendar.h"

namespace {

// Days since 1970-01-01 of a Gregorian date; the month is 1-12, the day may
// run past the month's end.
constexpr qint64 gregorianDaysFromCivil(qint64 year, qint64 month, qint64 day)
{
    year -= month <= 2;
    const qint64 era = (year >= 0 ? year : year - 399) / 400;
    const qint64 yearOfEra = year - era * 400;
    const qint64 dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const qint64 dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

constexpr qint64 floorDiv(qint64 a, qint64 b)
{
    return a / b - (a % b != 0 && (a < 0) != (b < 0));
}

// The same in the Julian calendar, from its day number.
qint64 julianDaysFromCivil(qint64 year, qint64 month, qint64 day)
{
    const qint64 a = (14 - month) / 12;
    const qint64 y = year + 4800 - a;
    const qint64 m = month + 12 * a - 3;
    return day + (153 * m + 2) / 5 + 365 * y + floorDiv(y, 4) - 32083 - 2440588;
}

// Dates before the Gregorian calendar began are Julian, as the platform's
// calendar has them: year 0000-01-02 is 63145612800 seconds before 2001.
constexpr qint64 kGregorianStart = gregorianDaysFromCivil(1582, 10, 15);

PlistCalendar::Civil gregorianCivilFromDays(qint64 days)
{
    days += 719468;
    const qint64 era = (days >= 0 ? days : days - 146096) / 146097;
    const qint64 dayOfEra = days - era * 146097;
    const qint64 yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const qint64 mp = (5 * dayOfYear + 2) / 153;
    const int day = int(dayOfYear - (153 * mp + 2) / 5 + 1);
    const int month = int(mp < 10 ? mp + 3 : mp - 9);
    return {yearOfEra + era * 400 + (month <= 2), month, day};
}

PlistCalendar::Civil julianCivilFromDays(qint64 days)
{
    const qint64 c = days + 2440588 + 32082;
    const qint64 d = floorDiv(4 * c + 3, 1461);
    const qint64 e = c - floorDiv(1461 * d, 4);
    const qint64 m = (5 * e + 2) / 153;
    return {d - 4800 + m / 10, int(m + 3 - 12 * (m / 10)), int(e - (153 * m + 2) / 5 + 1)};
}

} // namespace

qint64 PlistCalendar::daysFromCivil(qint64 year, qint64 month, qint64 day)
{
    const qint64 days = gregorianDaysFromCivil(year, month, 1) + day - 1;
    return days < kGregorianStart ? julianDaysFromCivil(year, month, 1) + day - 1 : days;
}

PlistCalendar::Civil PlistCalendar::civilFromDays(qint64 days)
{
    return days < kGregorianStart ? julianCivilFromDays(days) : gregorianCivilFromDays(days);
}

int PlistCalendar::daysInMonth(qint64 year, int month)
{
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap =
        year < 1582 ? year % 4 == 0 : (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : kDays[month - 1];
}

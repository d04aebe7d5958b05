#include "AsciiDate.h"

#include <cmath>
#include <cstdio>

namespace {

constexpr qint64 kSecondsPerDay = 86400;
constexpr qint64 kReferenceDay = 11323; // 2001-01-01 in days since 1970-01-01
// Far enough for any date a person writes, near enough that days fit easily.
constexpr double kLargestSeconds = 1e15;

// Days since 1970-01-01 of a day of the proleptic Gregorian calendar.
qint64 daysFromCivil(qint64 year, int month, int day)
{
    year -= month <= 2;
    const qint64 era = (year >= 0 ? year : year - 399) / 400;
    const qint64 yearOfEra = year - era * 400;
    const qint64 dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const qint64 dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

struct Civil
{
    qint64 year;
    int month;
    int day;
};

Civil civilFromDays(qint64 days)
{
    days += 719468;
    const qint64 era = (days >= 0 ? days : days - 146096) / 146097;
    const qint64 dayOfEra = days - era * 146097;
    const qint64 yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const qint64 shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int day = int(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    const int month = int(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    return {yearOfEra + era * 400 + (month <= 2), month, day};
}

bool isLeapYear(qint64 year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysInMonth(qint64 year, int month)
{
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

// The decimal number of `count` digits at `at`, or -1.
int digitsAt(QByteArrayView text, qsizetype at, int count)
{
    int value = 0;
    for (int i = 0; i < count; ++i) {
        const char c = text[at + i];
        if (c < '0' || c > '9')
            return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

} // namespace

std::optional<double> AsciiDate::parse(QByteArrayView text)
{
    // YYYY-MM-DD HH:MM:SS +HHMM
    // 0123456789012345678901234
    if (text.size() != 25 || text[4] != '-' || text[7] != '-' || text[10] != ' ' ||
        text[13] != ':' || text[16] != ':' || text[19] != ' ' ||
        (text[20] != '+' && text[20] != '-'))
        return std::nullopt;
    const int year = digitsAt(text, 0, 4);
    const int month = digitsAt(text, 5, 2);
    const int day = digitsAt(text, 8, 2);
    const int hour = digitsAt(text, 11, 2);
    const int minute = digitsAt(text, 14, 2);
    const int second = digitsAt(text, 17, 2);
    const int zoneHours = digitsAt(text, 21, 2);
    const int zoneMinutes = digitsAt(text, 23, 2);
    if (year < 0 || month < 1 || month > 12 || day < 1 || hour < 0 || hour > 23 || minute < 0 ||
        minute > 59 || second < 0 || second > 59 || zoneHours < 0 || zoneHours > 23 ||
        zoneMinutes < 0 || zoneMinutes > 59)
        return std::nullopt;
    if (day > daysInMonth(year, month))
        return std::nullopt;
    const qint64 zone = (zoneHours * 3600 + zoneMinutes * 60) * (text[20] == '-' ? -1 : 1);
    const qint64 days = daysFromCivil(year, month, day) - kReferenceDay;
    return double(days * kSecondsPerDay + hour * 3600 + minute * 60 + second - zone);
}

std::optional<QByteArray> AsciiDate::format(double secondsSinceReferenceDate)
{
    if (!std::isfinite(secondsSinceReferenceDate) ||
        std::fabs(secondsSinceReferenceDate) > kLargestSeconds)
        return std::nullopt;
    const auto seconds = qint64(std::floor(secondsSinceReferenceDate));
    const qint64 days = (seconds >= 0 ? seconds : seconds - kSecondsPerDay + 1) / kSecondsPerDay;
    const qint64 ofDay = seconds - days * kSecondsPerDay;
    const Civil civil = civilFromDays(days + kReferenceDay);
    char text[64];
    const int size =
        std::snprintf(text, sizeof text, "%s%04lld-%02d-%02d %02d:%02d:%02d +0000",
                      civil.year < 0 ? "-" : "", qAbs(civil.year), civil.month, civil.day,
                      int(ofDay / 3600), int(ofDay / 60 % 60), int(ofDay % 60));
    return QByteArray(text, size);
}

#include "AsciiDate.h"

#include "PlistCalendar.h"

#include <cmath>
#include <cstdio>

namespace {

constexpr qint64 kSecondsPerDay = PlistCalendar::kSecondsPerDay;
constexpr qint64 kReferenceDay = PlistCalendar::kReferenceDay;
// Far enough for any date a person writes, near enough that days fit easily.
constexpr double kLargestSeconds = 1e15;

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
    if (day > PlistCalendar::daysInMonth(year, month))
        return std::nullopt;
    const qint64 zone = (zoneHours * 3600 + zoneMinutes * 60) * (text[20] == '-' ? -1 : 1);
    const qint64 days = PlistCalendar::daysFromCivil(year, month, day) - kReferenceDay;
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
    const PlistCalendar::Civil civil = PlistCalendar::civilFromDays(days + kReferenceDay);
    char text[64];
    const int size =
        std::snprintf(text, sizeof text, "%s%04lld-%02d-%02d %02d:%02d:%02d +0000",
                      civil.year < 0 ? "-" : "", qAbs(civil.year), civil.month, civil.day,
                      int(ofDay / 3600), int(ofDay / 60 % 60), int(ofDay % 60));
    return QByteArray(text, size);
}

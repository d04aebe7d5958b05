#include "KZReferenceDate.h"

#include <algorithm>
#include <cmath>

QDateTime KZReferenceDate::toDateTime(double secondsSinceReferenceDate, const QTimeZone &zone)
{
    constexpr double kLimitMs = 8.0e15; // about 250,000 years either way
    const double ms = std::floor((secondsSinceReferenceDate + kSecondsFromEpoch) * 1000.0);
    return QDateTime::fromMSecsSinceEpoch(
        qint64(std::isnan(ms) ? 0.0 : std::clamp(ms, -kLimitMs, kLimitMs)), zone);
}

double KZReferenceDate::fromDateTime(const QDateTime &when)
{
    return double(when.toMSecsSinceEpoch()) / 1000.0 - kSecondsFromEpoch;
}

double KZReferenceDate::now()
{
    return fromDateTime(QDateTime::currentDateTimeUtc());
}

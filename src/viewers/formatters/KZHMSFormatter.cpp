#include "KZHMSFormatter.h"

#include "shared/KZLocalizedString.h"

#include <cmath>
#include <limits>

namespace {

struct Component
{
    const char *name;
    qint64 largest;
    qint64 secondsPerUnit;
};

// From the right end of the text.
constexpr Component kComponents[] = {
    {"seconds", 59, 1},
    {"minutes", 59, 60},
    {"hours", 23, 3600},
    {"days", 2147483647, 86400},
};

// An integer as a scanner reads one: blanks skipped, an optional sign, digits.
struct ScannedInteger
{
    bool found = false;
    qint64 value = 0;
    int digits = 0;
    qsizetype end = 0; // where the scan stopped
};

ScannedInteger scanInteger(QStringView text, qsizetype from)
{
    ScannedInteger result;
    qsizetype at = from;
    while (at < text.size() && text[at].isSpace())
        ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == u'-' || text[at] == u'+'))
        negative = text[at++] == u'-';
    constexpr qint64 kLimit = std::numeric_limits<qint32>::max();
    while (at < text.size() && text[at] >= u'0' && text[at] <= u'9') {
        result.value = std::min(result.value * 10 + (text[at].unicode() - u'0'), kLimit + 1);
        ++result.digits;
        ++at;
    }
    result.found = result.digits > 0;
    result.value = std::min(result.value, kLimit);
    if (negative)
        result.value = -result.value;
    result.end = result.found ? at : from;
    return result;
}

QString twoDigits(qint64 n)
{
    return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0'));
}

} // namespace

std::optional<QString> KZHMSFormatter::stringForObjectValue(const PlistValue &value) const
{
    if (!value.isNumber())
        return std::nullopt;
    double seconds = value.toReal();
    if (!std::isfinite(seconds))
        return std::nullopt;
    const QString sign = seconds < 0 ? QStringLiteral("-") : QString();
    seconds = std::fabs(seconds);
    const double whole = std::floor(seconds);
    const qint64 total = whole >= 2147483647.0 ? 2147483647 : qint64(whole);
    const qint64 ms = qint64((seconds - whole) * 1000);
    const QString fraction = ms != 0 && _includeMilliseconds
                                 ? QStringLiteral(".%1").arg(ms, 3, 10, QLatin1Char('0'))
                                 : QString();
    const qint64 secs = total % 60;
    const qint64 minutes = (total / 60) % 60;
    const qint64 hours = (total / 3600) % 24;
    const qint64 days = total / 86400;
    const QString secondsText =
        minutes != 0 || _includeLeadingZero ? twoDigits(secs) : QString::number(secs);
    const QString minutesText =
        hours != 0 || _includeLeadingZero ? twoDigits(minutes) : QString::number(minutes);
    if (total >= 86400)
        return QStringLiteral("%1%2:%3:%4:%5%6")
            .arg(sign)
            .arg(days)
            .arg(hours)
            .arg(minutesText, secondsText, fraction);
    if (hours != 0)
        return QStringLiteral("%1%2:%3:%4%5")
            .arg(sign)
            .arg(hours)
            .arg(minutesText, secondsText, fraction);
    if (minutes != 0)
        return sign + minutesText + u':' + secondsText + fraction;
    return sign + u':' + secondsText + fraction;
}

bool KZHMSFormatter::getObjectValue(PlistValue *value, const QString &string,
                                    QString *errorDescription) const
{
    const QStringView text(string);
    qsizetype start = 0;
    while (start < text.size() && text[start].isSpace())
        ++start;
    const bool negative = start < text.size() && text[start] == u'-';
    start = negative ? start + 1 : 0;
    qsizetype end = text.size();

    double fraction = 0;
    const qsizetype point = text.lastIndexOf(u'.', end - 1);
    if (point >= start) {
        const ScannedInteger ms = scanInteger(text, point + 1);
        if (!ms.found)
            return fail(errorDescription,
                        KZLocalizedStringWithID(39, QStringLiteral("Illegal milliseconds value")));
        if (ms.end < text.size())
            return fail(errorDescription,
                        KZLocalizedStringWithID(38, QStringLiteral("Illegal extra characters")));
        fraction = double(ms.value) / std::pow(10.0, ms.digits);
        end = point;
    }

    qint64 total = 0;
    for (const Component &component : kComponents) {
        if (end <= start)
            break;
        const QStringView range = text.sliced(start, end - start);
        const qsizetype colon = range.lastIndexOf(u':');
        const ScannedInteger scanned = scanInteger(range, colon + 1);
        const QString name = QString::fromLatin1(component.name);
        if (!scanned.found)
            return fail(errorDescription,
                        KZLocalizedStringWithFormat(
                            43, QStringLiteral("Invalid value for %@ component"), {name}));
        if (scanned.value > component.largest)
            return fail(errorDescription,
                        KZLocalizedStringWithFormat(
                            40, QStringLiteral("Value %d too large for %@ component"),
                            {QString::number(scanned.value), name}));
        if (scanned.value < 0)
            return fail(errorDescription,
                        KZLocalizedStringWithFormat(
                            41, QStringLiteral("Value %d too small for %@ component"),
                            {QString::number(scanned.value), name}));
        if (scanned.end < range.size())
            return fail(errorDescription,
                        KZLocalizedStringWithFormat(
                            42, QStringLiteral("Illegal characters in %@ component"), {name}));
        total += scanned.value * component.secondsPerUnit;
        end = colon < 0 ? start : start + colon;
    }

    const qint64 signedTotal = negative ? -total : total;
    if (value)
        *value =
            fraction == 0 ? PlistValue(signedTotal) : PlistValue(double(signedTotal) + fraction);
    return true;
}
